#include <tavrin/io/tables/TableWriter.hpp>

#include <tavrin/base/TeamFailure.hpp>
#include <tavrin/domain/elementPosition.hpp>
#include <tavrin/function/visit.hpp>
#include <tavrin/io/OutputFile.hpp>
#include <tavrin/io/Shape.hpp>
#include <tavrin/io/XmlText.hpp>
#include <tavrin/io/tables/TableColumns.hpp>

#include <charconv>

#include <omp.h>

namespace tavrin::io
{

namespace fs = std::filesystem;

namespace
{

/// The longest text of a double, "-2.2250738585072014e-308", has 24 characters.
constexpr std::size_t longestNumber = 32;

constexpr std::size_t rowsPerBlock = 4096;

/// The name as a field. A table has one line per row, so that control characters become blanks.
std::string quoted(const std::string& name)
{
    std::string text = toXmlText(name);
    const bool isPlain = text.find_first_of(",;\"") == std::string::npos && !text.empty() &&
                         text.front() != ' ' && text.back() != ' ';
    if (isPlain)
        return text;
    std::string field = "\"";
    for (const char character : text)
        field.append(character == '"' ? 2 : 1, character);
    return field + '"';
}

/// What all steps of a table have in common.
struct Layout
{
    std::vector<std::string> columns;
    bool hasTimes;
    std::size_t dimension;
    /// Larger than the dimension where the name of the array would be taken for a coordinate.
    std::size_t coordinates;

    Layout(const FunctionBase& function, const std::string& arrayName)
        : hasTimes(!function.timeSteps().empty()),
          dimension(dynamic_cast<const PointSetBase&>(*function.domain()).dimension()),
          coordinates(isCoordinate(arrayName) ? 3 : dimension)
    {
        if (hasTimes)
            columns.emplace_back("time");
        for (std::size_t axis = 0; axis < coordinates; ++axis)
            columns.emplace_back(1, "xyz"[axis]);
        visitFunction<ValueTypes>(function,
                                  [&]<typename T>(const Function<T>&)
                                  {
                                      for (const std::string& name :
                                           columnNamesFor(arrayName, shapeOfType<T>()))
                                          columns.push_back(quoted(name));
                                  });
    }

    bool operator==(const Layout&) const = default;

    std::string header() const
    {
        std::string line;
        for (const std::string& column : columns)
            line += (line.empty() ? "" : ",") + column;
        return line;
    }
};

/// The text of one row after the other.
class RowText
{
public:
    RowText(const RowText& other) : mText(other.mText.size()) {}
    RowText& operator=(const RowText&) = delete;
    ~RowText() = default;

    /// Makes room for rows, so that appending numbers cannot fail.
    RowText(std::size_t rows, std::size_t columns) : mText(rows * columns * longestNumber) {}

    void add(double number)
    {
        mEnd = std::to_chars(mEnd, mText.data() + mText.size(), number).ptr;
        *mEnd++ = ',';
    }

    /// Replaces the separator after the last number.
    void endRow() { mEnd[-1] = '\n'; }

    void clear() { mEnd = mText.data(); }
    std::string_view text() const { return {mText.data(), mEnd}; }

private:
    std::vector<char> mText;
    char* mEnd = mText.data();
};

/// One step of a function, as rows.
template<std::size_t D, typename T>
class StepRows
{
public:
    StepRows(const Function<T>& function, std::size_t step, const Layout& layout, bool hasMask)
        : mSet(dynamic_cast<const PointSet<D>&>(*function.domain())),
          mGrid(function.domainType() == DomainType::PointBased
                    ? nullptr
                    : dynamic_cast<const EmbeddedCellComplex<D>*>(&mSet)),
          mValues(function.stepValues(step)), mLayout(layout), mHasMask(hasMask)
    {
        if (layout.hasTimes)
            mTime = function.timeSteps()[step];
        if (function.validity() != nullptr)
            mMask = std::span(*function.validity()).subspan(step * size(), size());
    }

    std::size_t size() const { return mValues->size(); }

    void append(std::size_t first, std::size_t count, RowText& text) const
    {
        std::vector<T> scratch(count);
        const std::span<const T> values = mValues->read(first, scratch);
        std::vector<typename PointSet<D>::Point> positions(count);
        std::span<const typename PointSet<D>::Point> read(positions);
        if (mGrid == nullptr)
            read = mSet.points(first, positions);
        else
            for (std::size_t i = 0; i < count; ++i)
                positions[i] = centerOf(*mGrid, first + i);
        for (std::size_t i = 0; i < count; ++i)
        {
            if (mLayout.hasTimes)
                text.add(mTime);
            for (const double coordinate : read[i])
                text.add(coordinate);
            for (std::size_t axis = D; axis < mLayout.coordinates; ++axis)
                text.add(0.0);
            for (const double component : values[i])
                text.add(component);
            if (mHasMask)
                text.add(mMask.empty() || mMask[first + i] != 0 ? 1.0 : 0.0);
            text.endRow();
        }
    }

private:
    const PointSet<D>& mSet;
    /// Null for values on points.
    const EmbeddedCellComplex<D>* mGrid;
    std::shared_ptr<const ValueArray<T>> mValues;
    const Layout& mLayout;
    bool mHasMask;
    double mTime = 0.0;
    std::span<const std::uint8_t> mMask;
};

class TableWriter final : public FunctionWriter
{
public:
    TableWriter(const fs::path& file, const volatile bool& abortFlag)
        : mFile(file), mAbortFlag(abortFlag), mOutput(std::make_unique<OutputFile>(file, abortFlag))
    {
    }

    void append(const FunctionBase& function, const std::string& arrayName) override
    {
        const Layout layout(function, arrayName);
        const bool hasMask = function.validity() != nullptr;
        if (!mLayout)
        {
            mLayout = layout;
            mHasMask = hasMask;
            mOutput->stream() << layout.header() << (hasMask ? ",valid\n" : "\n");
        }
        if (!(layout == *mLayout))
            throw usage_error(mFile.string() + ": a table has one header; the columns " +
                              layout.header() + " differ from " + mLayout->header() +
                              " of the steps before");
        if (hasMask && !mHasMask)
            addMask();
        visitFunction<ValueTypes>(function,
                                  [&](const auto& typed)
                                  {
                                      for (std::size_t s = 0; s < typed.numTimeSteps(); ++s)
                                          writeStep(typed, s);
                                  });
    }

    std::unique_ptr<PendingFile> finish() override
    {
        mOutput->complete();
        return std::move(mOutput);
    }

private:
    template<typename T>
    void writeStep(const Function<T>& function, std::size_t step)
    {
        if (mLayout->dimension == 1)
            writeRows(StepRows<1, T>(function, step, *mLayout, mHasMask));
        else if (mLayout->dimension == 2)
            writeRows(StepRows<2, T>(function, step, *mLayout, mHasMask));
        else
            writeRows(StepRows<3, T>(function, step, *mLayout, mHasMask));
    }

    /// All threads make the text of a block each, which is then written in order.
    void writeRows(const auto& rows)
    {
        const std::size_t blocks = (rows.size() + rowsPerBlock - 1) / rowsPerBlock;
        const std::size_t atOnce =
            std::min(blocks, static_cast<std::size_t>(omp_get_max_threads()));
        std::vector<RowText> texts(
            atOnce, RowText(std::min(rows.size(), rowsPerBlock), mLayout->columns.size() + 1));
        for (std::size_t first = 0; first < blocks; first += atOnce)
        {
            TeamFailure failure;
            const std::size_t count = std::min(atOnce, blocks - first);
#pragma omp parallel for schedule(static) num_threads(static_cast<int>(atOnce)) if (atOnce > 1)
            for (std::size_t i = 0; i < count; ++i)
                failure.guard(
                    [&]
                    {
                        const std::size_t row = (first + i) * rowsPerBlock;
                        texts[i].clear();
                        rows.append(row, std::min(rowsPerBlock, rows.size() - row), texts[i]);
                    });
            failure.rethrow();
            for (std::size_t i = 0; i < count; ++i)
                mOutput->stream() << texts[i].text();
            if (mAbortFlag)
                throw Aborted();
        }
    }

    /// Gives the rows that have been written, all of them valid, the column of the mask.
    void addMask()
    {
        auto wider = std::make_unique<OutputFile>(mFile, mAbortFlag);
        bool isHeader = true;
        mOutput->readBack(
            [&](std::string_view text)
            {
                while (!text.empty())
                {
                    const std::size_t end = std::min(text.find('\n'), text.size());
                    wider->stream() << text.substr(0, end);
                    if (end < text.size())
                        wider->stream() << (std::exchange(isHeader, false) ? ",valid\n" : ",1\n");
                    text.remove_prefix(std::min(end + 1, text.size()));
                }
            });
        mOutput = std::move(wider);
        mHasMask = true;
    }

    fs::path mFile;
    const volatile bool& mAbortFlag;
    std::unique_ptr<OutputFile> mOutput;
    std::optional<Layout> mLayout;
    bool mHasMask = false;
};

}

std::unique_ptr<FunctionWriter> startTable(const fs::path& file, const volatile bool& abortFlag)
{
    return std::make_unique<TableWriter>(file, abortFlag);
}

}
