#include <tavrin/io/tables/TableFile.hpp>

#include <tavrin/io/ArrayChoice.hpp>
#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/tables/Table.hpp>
#include <tavrin/io/tables/TableColumns.hpp>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tavrin::io
{

namespace
{

/// A whole table, and its rows by time.
struct SteppedTable
{
    Table table;
    TableColumns columns;
    /// The rows in ascending order of time; empty where they are in this order.
    std::vector<std::size_t> order;
    /// The times, and the number of the first row of each step and of the end. Without times, all rows
    /// are one step.
    std::vector<double> times;
    std::vector<std::size_t> firstRows{0};

    SteppedTable(Table read, TableColumns found) : table(std::move(read)), columns(std::move(found))
    {
        if (columns.time)
            groupByTime();
        else
            firstRows.push_back(table.rows);
    }

    std::size_t numSteps() const { return firstRows.size() - 1; }

    const double* row(std::size_t number) const
    {
        return table.row(order.empty() ? number : order[number]);
    }

private:
    void groupByTime()
    {
        const auto timeOf = [&](std::size_t row) { return table.row(row)[*columns.time]; };
        bool isAscending = true;
        for (std::size_t row = 0; row < table.rows; ++row)
        {
            if (!std::isfinite(timeOf(row)))
                throw Malformed("row " + std::to_string(row + 1) + " has no finite time");
            isAscending = isAscending && (row == 0 || timeOf(row - 1) <= timeOf(row));
        }
        if (!isAscending)
        {
            order.resize(table.rows);
            std::iota(order.begin(), order.end(), std::size_t{0});
            std::ranges::stable_sort(order, {}, timeOf);
        }
        for (std::size_t number = 0; number < table.rows; ++number)
            if (const double time = row(number)[*columns.time];
                times.empty() || times.back() != time)
            {
                times.push_back(time);
                if (number > 0)
                    firstRows.push_back(number);
            }
        firstRows.push_back(table.rows);
    }
};

/// One step of a table.
class TableFile final : public DataFile
{
public:
    TableFile(std::string_view formatName, std::shared_ptr<const SteppedTable> table,
              std::size_t step);

    std::unique_ptr<DataFile> openStep(std::size_t step) const override
    {
        return std::make_unique<TableFile>(format, mTable, step);
    }

    StoredArray readArray(const Array& array) override;
    std::optional<Marks> readMarks(Association) override { return std::nullopt; }
    StoredArray readPoints() override;
    Coordinates readCoordinates(std::size_t) override
    {
        throw Malformed("has no coordinates along axes");
    }
    FileCells readCells() override { return {}; }

private:
    StoredArray gatherColumns(const std::vector<std::optional<std::size_t>>& columns) const;

    std::shared_ptr<const SteppedTable> mTable;
    std::size_t mFirstRow;
};

TableFile::TableFile(std::string_view formatName, std::shared_ptr<const SteppedTable> table,
                     std::size_t step)
    : mTable(std::move(table)), mFirstRow(mTable->firstRows[step])
{
    format = formatName;
    numPoints = mTable->firstRows[step + 1] - mFirstRow;
    if (!mTable->times.empty())
        time = mTable->times[step];
    if (mTable->numSteps() > 1)
        stepTimes = mTable->times;
    for (const TableColumns::Array& array : mTable->columns.arrays)
        addArray({array.name, Association::Points, Precision::Float64, array.columns.size(),
                  array.componentNames});
    if (mTable->columns.validity)
        addArray({std::string(validityMaskName), Association::Points, Precision::Float64, 1, {""}});
}

/// The numbers of columns as tuples; 0 for a column that is not there.
StoredArray TableFile::gatherColumns(const std::vector<std::optional<std::size_t>>& columns) const
{
    auto result = StoredArray::allocate(Precision::Float64, numPoints, columns.size());
    auto* const numbers = result.as<double>();
#pragma omp parallel for schedule(static) if (numPoints > worthThreads)
    for (std::size_t i = 0; i < numPoints; ++i)
    {
        const double* const row = mTable->row(mFirstRow + i);
        for (std::size_t k = 0; k < columns.size(); ++k)
            numbers[i * columns.size() + k] = columns[k] ? row[*columns[k]] : 0.0;
    }
    return result;
}

StoredArray TableFile::readArray(const Array& array)
{
    const TableColumns& columns = mTable->columns;
    if (columns.validity && array.name == validityMaskName)
        return gatherColumns({*columns.validity});
    // The last one of several arrays with a name counts, as in `addArray`.
    const auto found = std::ranges::find(columns.arrays.rbegin(), columns.arrays.rend(), array.name,
                                         &TableColumns::Array::name);
    return gatherColumns({found->columns.begin(), found->columns.end()});
}

StoredArray TableFile::readPoints()
{
    const auto& coordinates = mTable->columns.coordinates;
    return gatherColumns({coordinates.begin(), coordinates.end()});
}

}

std::unique_ptr<DataFile> openTable(const FileFormat& format, InputFile file,
                                    const volatile bool& abortFlag)
{
    Table table = readTable(std::move(file), abortFlag);
    TableColumns columns = findColumns(table.columns);
    return std::make_unique<TableFile>(
        format.name, std::make_shared<const SteppedTable>(std::move(table), std::move(columns)), 0);
}

}
