#pragma once

#include <tavrin/domain/CellType.hpp>
#include <tavrin/field/Box.hpp>
#include <tavrin/value/Tensor.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>

namespace tavrin
{

template<std::size_t D>
class EmbeddedCellComplex;

/// Where a position lies in a grid: the cell, and how much each vertex of the cell counts there.
///
/// The value of point data at the position is the sum of weights[k] * value[pointIndices[k]] for k
/// below numVertices; that of cell data is value[cell]. Entries from numVertices on are undefined.
struct Location
{
    std::size_t cell;
    std::size_t numVertices;
    std::array<std::size_t, maximumVertices> pointIndices;
    /// They sum to 1. Those of linear cells lie in 0 to 1, up to the tolerance.
    std::array<double, maximumVertices> weights;
};

/// How far outside a cell a position may lie and still belong to it: so many units of the cell's
/// reference coordinates, which are of the order of 1, and in a cell of fewer dimensions than the
/// space, so many times the size of the cell across.
///
/// Coordinates have an end of digits: where four units in the last place of the cell's largest
/// coordinate (`coordinateRounding` times it; on uniform grids the grid's) are a longer way, that
/// counts instead, up to `largestTolerance`.
inline constexpr double locationTolerance = 1e-9;
inline constexpr double coordinateRounding = 4.0 * std::numeric_limits<double>::epsilon();
inline constexpr double largestTolerance = 1e-3;

/// Finds the cell of a grid that contains a position.
///
/// Cells are closed, and where several contain the position (on shared faces, or where cells
/// overlap) the one with the lowest index is the answer. So the answer depends on the grid and the
/// position alone. Degenerate cells, and positions that are not finite, are in no one's way.
template<std::size_t D>
class TAVRIN_API CellLocator
{
public:
    using Position = Tensor<double, D>;

    /// What one query leaves for the next, which is fast where the positions are neighbors. It
    /// never changes an answer. Each thread needs its own.
    struct Hint
    {
        /// The locator that wrote it.
        const CellLocator* locator = nullptr;
        /// Where the last search ended.
        std::array<std::size_t, D> indices{};
    };

    CellLocator() = default;
    CellLocator(const CellLocator&) = delete;
    CellLocator& operator=(const CellLocator&) = delete;
    virtual ~CellLocator() = default;

    /// Finds where each position lies. isInside[k] is 1, or 0 where no cell contains position k, and
    /// then locations[k] is undefined. Both have room for all. Positions that are neighbors are
    /// found faster together. May be called from several threads at once, each with its own hint, and
    /// allocates nothing.
    virtual void locate(std::span<const Position> positions, Location* locations,
                        std::uint8_t* isInside, Hint& hint) const = 0;

    /// A box that holds every position in a cell, tolerance included.
    virtual Box<D> bounds() const = 0;

    /// What it keeps in memory beside the grid, in bytes.
    virtual std::size_t memory() const = 0;
};

/// Makes the locator that suits the kind of grid, on all threads. The grid must outlive it.
/// `EmbeddedCellComplex::locator()` keeps one. Throws `std::bad_alloc`, and `runtime_error` for a
/// grid of 2^32 cells or more whose points are stored.
template<std::size_t D>
TAVRIN_API std::shared_ptr<const CellLocator<D>> makeLocator(const EmbeddedCellComplex<D>& grid);

extern template class CellLocator<1>;
extern template class CellLocator<2>;
extern template class CellLocator<3>;

}
