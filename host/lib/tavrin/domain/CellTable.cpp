#include <tavrin/domain/CellTable.hpp>

#include <tavrin/base/Exceptions.hpp>

#include <algorithm>
#include <string>

namespace tavrin
{

namespace
{

/// How many cells are faulty and which is the first.
struct Faults
{
    std::size_t count = 0;
    std::size_t first = static_cast<std::size_t>(-1);

    void add(std::size_t cell)
    {
        ++count;
        first = std::min(first, cell);
    }

    void complainIfAny(const std::string& fault) const
    {
        if (count > 0)
            throw runtime_error(std::to_string(count) + (count == 1 ? " cell " : " cells ") +
                                fault + ", the first is cell " + std::to_string(first));
    }
};

/// Not worth the threads.
constexpr std::size_t fewCells = 10000;

/// Calls `isFaulty(cell)` for all cells, on all threads.
template<typename Check>
Faults findFaults(std::size_t cells, const Check& isFaulty)
{
    Faults faults;
#pragma omp parallel if (cells > fewCells)
    {
        Faults local;
#pragma omp for schedule(static) nowait
        for (std::size_t cell = 0; cell < cells; ++cell)
            if (isFaulty(cell))
                local.add(cell);
#pragma omp critical(tavrinCellTableFaults)
        {
            faults.count += local.count;
            faults.first = std::min(faults.first, local.first);
        }
    }
    return faults;
}

}

bool IndexArray::operator==(const IndexArray& other) const
{
    return std::visit([](const auto& a, const auto& b) { return std::ranges::equal(a, b); },
                      mIndices, other.mIndices);
}

void CellTable::check(std::size_t numPoints) const
{
    if (offsets.size() != types.size() + 1)
        throw runtime_error(std::to_string(types.size()) + " cells need " +
                            std::to_string(types.size() + 1) + " offsets, not " +
                            std::to_string(offsets.size()));
    std::visit(
        [&](const auto& start, const auto& vertices)
        {
            const auto available = static_cast<std::int64_t>(vertices.size());
            const auto pointCount = static_cast<std::int64_t>(numPoints);
            // Offsets inside the connectivity come first: what follows reads between them.
            findFaults(types.size(),
                       [&](std::size_t cell) {
                           return start[cell] < 0 || start[cell + 1] < start[cell] ||
                                  start[cell + 1] > available;
                       })
                .complainIfAny("with offsets that descend or leave the connectivity");
            findFaults(types.size(),
                       [&](std::size_t cell) {
                           return static_cast<std::size_t>(start[cell + 1] - start[cell]) !=
                                  numVerticesOf(types[cell]);
                       })
                .complainIfAny("with another number of vertices than the type has");
            findFaults(types.size(),
                       [&](std::size_t cell)
                       {
                           return std::any_of(vertices.begin() + start[cell],
                                              vertices.begin() + start[cell + 1],
                                              [&](std::int64_t vertex)
                                              { return vertex < 0 || vertex >= pointCount; });
                       })
                .complainIfAny("with vertices beyond the " + std::to_string(numPoints) + " points");
        },
        offsets.storage(), connectivity.storage());
}

}
