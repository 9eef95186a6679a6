#pragma once

#include <tavrin/domain/Box.hpp>
#include <tavrin/domain/CellType.hpp>
#include <tavrin/domain/Lattice.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace tavrin
{

/// Where a position lies in a grid: the cell, and the interpolation weight of each of its vertices.
///
/// The value of point data at the position is the sum of weights[k] * value[pointIndices[k]] for k
/// below numVertices; that of cell data is value[cell]. Entries from numVertices on are undefined.
struct Location
{
    std::size_t cell;
    std::size_t numVertices;
    std::array<std::size_t, maximumVertices> pointIndices;
    /// They sum to 1. The weights of linear cells lie between 0 and 1, up to the tolerance.
    std::array<double, maximumVertices> weights;
};

/// Positions that a locator has found once, so that they can be located again without a search. The
/// locator must outlive them.
class TAVRIN_API FoundPositions
{
public:
    FoundPositions() = default;
    FoundPositions(const FoundPositions&) = delete;
    FoundPositions& operator=(const FoundPositions&) = delete;
    virtual ~FoundPositions() = default;

    /// The answers of `CellLocator::locate` for `count` of the positions, from number `first` on.
    virtual void locate(std::size_t first, std::size_t count, Location* locations,
                        std::uint8_t* isInside) const = 0;
};

/// Finds the cell of a grid that contains a position.
///
/// Cells are closed, and where several contain the position (on shared faces, or where cells
/// overlap) the one with the lowest index is the answer. So the answer depends on the grid and the
/// position alone. Degenerate cells contain nothing, and positions that are not finite are outside.
///
/// The classes that implement it are private to the library, which makes one for each grid on first
/// use.
template<std::size_t D>
class TAVRIN_API CellLocator
{
public:
    using Position = Tensor<double, D>;

    /// Carries the result of one query over to the next, which makes queries for neighboring
    /// positions faster. It never changes an answer. Each thread needs its own.
    struct Hint
    {
        /// The locator that wrote the hint.
        const CellLocator* locator = nullptr;
        /// Where the last search ended.
        std::array<std::size_t, D> indices{};
    };

    CellLocator() = default;
    CellLocator(const CellLocator&) = delete;
    CellLocator& operator=(const CellLocator&) = delete;
    virtual ~CellLocator() = default;

    /// Finds where each position lies. isInside[k] is 1, or 0 where no cell contains position k, and
    /// then locations[k] is undefined. Both arrays have one entry per position. Neighboring positions
    /// are found faster in one call. May be called from several threads at once, each with its own
    /// hint, and allocates nothing.
    virtual void locate(std::span<const Position> positions, Location* locations,
                        std::uint8_t* isInside, Hint& hint) const = 0;

    /// Whether a position is searched for among stored cells. That is slow enough to be worth
    /// remembering its result, and faster for positions that come in spatial order.
    virtual bool isSearching() const { return false; }

    /// Finds positions that will be located several times. Null where `locate` is as fast.
    virtual std::unique_ptr<FoundPositions> find(std::span<const Position>) const
    {
        return nullptr;
    }

    /// Finds all positions of a lattice of fewer than 2^32 positions in one sweep over the cells. Null
    /// where that is not faster than locating them one after the other, and where `abortFlag` was set
    /// in the meantime.
    virtual std::unique_ptr<FoundPositions> find(const Lattice<D>&, const volatile bool&) const
    {
        return nullptr;
    }

    /// A box that holds every position in a cell, tolerance included.
    virtual Box<D> bounds() const = 0;

    /// Memory that the locator keeps in addition to the grid, in bytes.
    virtual std::size_t memory() const = 0;
};

extern template class CellLocator<1>;
extern template class CellLocator<2>;
extern template class CellLocator<3>;

}
