#include <tavrin/domain/CellTable.hpp>

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/domain/CellFaults.hpp>

#include <algorithm>
#include <string>

namespace tavrin
{

namespace
{

/// Checking fewer cells takes less time than starting the other threads.
constexpr std::size_t fewCells = 10000;

/// Calls `isFaulty(cell)` for all cells, on all threads. It must not throw. Throws `runtime_error` if a cell is
/// faulty.
template<typename Check>
void refuse(const std::string& fault, std::size_t cells, const Check& isFaulty)
{
    CellFaults faults;
#pragma omp parallel if (cells > fewCells)
    {
        CellFaults local;
#pragma omp for schedule(static) nowait
        for (std::size_t cell = 0; cell < cells; ++cell)
            if (isFaulty(cell))
                local.add(cell);
#pragma omp critical(tavrinCellTableFaults)
        faults.add(local);
    }
    complainIfAny<runtime_error>(faults, fault);
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
    // First of all, since the properties of other types are not known.
    refuse("of a type that does not exist", types.size(),
           [&](std::size_t cell) { return static_cast<std::size_t>(types[cell]) >= numCellTypes; });
    std::visit(
        [&](const auto& start, const auto& vertices)
        {
            const auto available = static_cast<std::int64_t>(vertices.size());
            const auto pointCount = static_cast<std::int64_t>(numPoints);
            // Before the checks that read the connectivity between them.
            refuse("with offsets that descend or leave the connectivity", types.size(),
                   [&](std::size_t cell) {
                       return start[cell] < 0 || start[cell + 1] < start[cell] ||
                              start[cell + 1] > available;
                   });
            refuse("with another number of vertices than the type has", types.size(),
                   [&](std::size_t cell) {
                       return static_cast<std::size_t>(start[cell + 1] - start[cell]) !=
                              numVerticesOf(types[cell]);
                   });
            refuse("with vertices beyond the " + std::to_string(numPoints) + " points",
                   types.size(),
                   [&](std::size_t cell)
                   {
                       return std::any_of(
                           vertices.begin() + start[cell], vertices.begin() + start[cell + 1],
                           [&](std::int64_t vertex) { return vertex < 0 || vertex >= pointCount; });
                   });
        },
        offsets.storage(), connectivity.storage());
}

}
