#include <tavrin/field/SamplePositions.hpp>

#include <tavrin/domain/RectilinearGrid.hpp>
#include <tavrin/domain/UniformGrid.hpp>

#include <algorithm>
#include <limits>

namespace tavrin
{

namespace
{

/// A grid with fewer points for each plane is not worth treating as a lattice.
constexpr std::size_t leastPointsPerPlane = 8;

/// The planes of the lattice that the points of a grid form, if they form one.
template<std::size_t D>
std::optional<typename SamplePositions<D>::Planes> planesOf(const PointSet<D>& points)
{
    const auto* const uniform = dynamic_cast<const UniformGrid<D>*>(&points);
    const bool isLattice = uniform != nullptr
                               ? !uniform->isOriented()
                               : dynamic_cast<const RectilinearGrid<D>*>(&points) != nullptr;
    if (!isLattice || points.numPoints() == 0)
        return {};
    const auto& grid = dynamic_cast<const StructuredGrid<D>&>(points);
    const GridSize& size = grid.size();
    if (leastPointsPerPlane * (size[0] + size[1] + size[2]) > grid.numPoints() ||
        std::ranges::max(size) > std::numeric_limits<std::uint32_t>::max())
        return {};
    typename SamplePositions<D>::Planes planes;
    for (std::size_t axis = 0; axis < D; ++axis)
        planes[axis].assign(size[axis], grid.point(0)[axis]);
    for (const auto& [axis, cells, stride, cellStride] : grid.numbering().axes())
        for (std::size_t i = 1; i <= cells; ++i)
            planes[axis][i] = grid.point(i * stride)[axis];
    const auto ascends = [](const std::vector<double>& plane)
    { return std::ranges::is_sorted(plane); };
    if (!std::ranges::all_of(planes, ascends))
        return {};
    return planes;
}

/// Reads points of G coordinates as positions of D coordinates.
template<std::size_t D, std::size_t G>
void readConverted(const PointSet<G>& points, std::size_t first,
                   std::span<Tensor<double, D>> positions)
{
    constexpr std::size_t pointsPerBlock = 256;
    std::array<Tensor<double, G>, pointsPerBlock> block;
    for (std::size_t done = 0; done < positions.size();)
    {
        const auto part = std::span(block).first(std::min(pointsPerBlock, positions.size() - done));
        for (const auto& point : points.points(first + done, part))
        {
            auto& position = positions[done++] = {};
            std::copy_n(point.begin(), std::min(D, G), position.begin());
        }
    }
}

}

template<std::size_t D, std::size_t G>
SamplePositions<D> positionsOf(const PointSet<G>& points)
{
    using Position = Tensor<double, D>;
    const bool isStructured = dynamic_cast<const StructuredGrid<G>*>(&points) != nullptr;
    SamplePositions<D> positions{points.numPoints(), !isStructured, {}, {}};
    if constexpr (D == G)
    {
        positions.read = [&points](std::size_t first, std::span<Position> scratch)
        { return points.points(first, scratch); };
        positions.planes = planesOf(points);
    }
    else
        positions.read = [&points](std::size_t first,
                                   std::span<Position> scratch) -> std::span<const Position>
        {
            readConverted<D>(points, first, scratch);
            return scratch;
        };
    return positions;
}

template<std::size_t D>
SamplePositions<D> positionsOf(std::span<const Tensor<double, D>> positions)
{
    const auto read = [positions](std::size_t first, std::span<Tensor<double, D>> scratch)
    { return positions.subspan(first, scratch.size()); };
    return {positions.size(), true, read, {}};
}

template SamplePositions<1> positionsOf(const PointSet<1>&);
template SamplePositions<1> positionsOf(const PointSet<2>&);
template SamplePositions<1> positionsOf(const PointSet<3>&);
template SamplePositions<2> positionsOf(const PointSet<1>&);
template SamplePositions<2> positionsOf(const PointSet<2>&);
template SamplePositions<2> positionsOf(const PointSet<3>&);
template SamplePositions<3> positionsOf(const PointSet<1>&);
template SamplePositions<3> positionsOf(const PointSet<2>&);
template SamplePositions<3> positionsOf(const PointSet<3>&);
template SamplePositions<1> positionsOf(std::span<const Vector1>);
template SamplePositions<2> positionsOf(std::span<const Vector2>);
template SamplePositions<3> positionsOf(std::span<const Vector3>);

}
