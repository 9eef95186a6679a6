#pragma once

#include <tavrin/domain/RectilinearGrid.hpp>
#include <tavrin/domain/UniformGrid.hpp>

#include <algorithm>
#include <array>
#include <functional>
#include <limits>
#include <optional>
#include <span>
#include <vector>

namespace tavrin
{

/// How many points are sampled together at most.
constexpr std::size_t pointsPerRun = 256;

/// The points where samples are taken, as positions of a field.
template<std::size_t D>
struct Positions
{
    using Position = Tensor<double, D>;

    using Planes = std::array<std::vector<double>, D>;

    std::size_t count;
    /// Whether positions that follow one another may lie far apart.
    bool mayBeScattered;
    /// The positions from `first` on, as `ValueArray::read` delivers values.
    std::function<std::span<const Position>(std::size_t first, std::span<Position> scratch)> read;
    /// Those of the lattice that the positions are, if they are one.
    std::optional<Planes> planes;
};

/// The planes of the lattice that the points of a grid are, if they are one.
template<std::size_t D>
std::optional<typename Positions<D>::Planes> planesOf(const PointSet<D>& grid)
{
    const auto* const uniform = dynamic_cast<const UniformGrid<D>*>(&grid);
    const bool isLattice = uniform != nullptr
                               ? !uniform->isOriented()
                               : dynamic_cast<const RectilinearGrid<D>*>(&grid) != nullptr;
    if (!isLattice || grid.numPoints() == 0)
        return {};
    const GridSize& size = dynamic_cast<const StructuredGrid<D>&>(grid).size();
    // Planes must be few beside the positions, and are numbered in 32 bits.
    if (8 * (size[0] + size[1] + size[2]) > grid.numPoints() ||
        std::ranges::max(size) > std::numeric_limits<std::uint32_t>::max())
        return {};
    typename Positions<D>::Planes planes;
    std::size_t step = 1;
    for (std::size_t axis = 0; axis < D; ++axis)
    {
        planes[axis].reserve(size[axis]);
        for (std::size_t i = 0; i < size[axis]; ++i)
            planes[axis].push_back(grid.point(i * step)[axis]);
        if (!std::ranges::is_sorted(planes[axis]))
            return {};
        step *= size[axis];
    }
    return planes;
}

/// The points of a grid of any dimension. Coordinates that a field of dimension D does not have are
/// dropped, missing ones are 0. The grid must outlive the answer.
template<std::size_t D, std::size_t G>
Positions<D> positionsOf(const PointSet<G>& grid)
{
    using Position = Tensor<double, D>;
    const auto read = [&grid](std::size_t first,
                              std::span<Position> scratch) -> std::span<const Position>
    {
        if constexpr (D == G)
            return grid.points(first, scratch);
        else
        {
            std::array<Tensor<double, G>, pointsPerRun> block;
            for (std::size_t done = 0; done < scratch.size();)
            {
                const auto part =
                    std::span(block).first(std::min(pointsPerRun, scratch.size() - done));
                for (const auto& point : grid.points(first + done, part))
                {
                    Position& position = scratch[done++] = {};
                    std::copy_n(point.begin(), std::min(D, G), position.begin());
                }
            }
            return scratch;
        }
    };
    const bool isStructured = dynamic_cast<const StructuredGrid<G>*>(&grid) != nullptr;
    Positions<D> positions{grid.numPoints(), !isStructured, read, {}};
    if constexpr (D == G)
        positions.planes = planesOf(grid);
    return positions;
}

}
