#include "examples/RoundBar.hpp"

#include <cmath>

namespace tavrin::app::examples
{

namespace
{

using Index = std::array<std::size_t, 3>;

/// The points of a bar on a lattice: `along` points times `across` points in y and z.
class Lattice
{
public:
    Lattice(const RoundBar& bar, std::size_t stepsPerCell)
        : mBar(bar), mAlong(bar.cellsAlong * stepsPerCell), mAcross(bar.cellsAcross * stepsPerCell)
    {
    }

    std::size_t number(const Index& index) const
    {
        return index[0] + (mAlong + 1) * (index[1] + (mAcross + 1) * index[2]);
    }

    std::vector<Vector3> makePoints() const
    {
        std::vector<Vector3> points;
        for (std::size_t k = 0; k <= mAcross; ++k)
            for (std::size_t j = 0; j <= mAcross; ++j)
                for (std::size_t i = 0; i <= mAlong; ++i)
                    points.push_back(position({i, j, k}));
        return points;
    }

private:
    /// Maps the square [-1, 1]^2 smoothly to the unit disc and that to the ellipse.
    Vector3 position(const Index& index) const
    {
        const double s = static_cast<double>(index[0]) / static_cast<double>(mAlong);
        const double u = 2.0 * static_cast<double>(index[1]) / static_cast<double>(mAcross) - 1.0;
        const double v = 2.0 * static_cast<double>(index[2]) / static_cast<double>(mAcross) - 1.0;
        return {mBar.begin + s * (mBar.end - mBar.begin),
                mBar.halfAxisY * u * std::sqrt(1.0 - v * v / 2.0),
                mBar.halfAxisZ * v * std::sqrt(1.0 - u * u / 2.0)};
    }

    const RoundBar& mBar;
    std::size_t mAlong;
    std::size_t mAcross;
};

/// The corners of one tetrahedron of the unit cube. They lie on the path from one corner of the cube
/// to the opposite one along the three axes in the given order.
std::array<Index, 4> pathAlong(const std::array<std::size_t, 3>& axes)
{
    std::array<Index, 4> corners{};
    for (std::size_t step = 0; step < axes.size(); ++step)
    {
        corners[step + 1] = corners[step];
        corners[step + 1][axes[step]] = 1;
    }
    return corners;
}

bool isEvenPermutation(const std::array<std::size_t, 3>& axes)
{
    return (axes[0] + 1) % 3 == axes[1];
}

constexpr std::array<std::array<std::size_t, 2>, 6> edges{
    {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}}};

}

std::shared_ptr<const UnstructuredGrid<3>> RoundBar::make(CellType type) const
{
    const bool isQuadratic = type == CellType::QuadraticTetrahedron;
    const std::size_t steps = isQuadratic ? 2 : 1;
    const Lattice lattice(*this, steps);
    std::vector<std::int64_t> connectivity;
    const auto addVertex = [&](const Index& index)
    { connectivity.push_back(static_cast<std::int64_t>(lattice.number(index))); };

    const auto addCube = [&](const Index& cube)
    {
        // The subdivision starts at the corner next to the axis of the bar. That way mirrored halves
        // fit together, and no tetrahedron has two collinear edges on the round side.
        const std::array<bool, 3> isMirrored{false, cube[1] < cellsAcross / 2,
                                             cube[2] < cellsAcross / 2};
        std::array<std::size_t, 3> axes{0, 1, 2};
        do
        {
            std::array<Index, 4> corners = pathAlong(axes);
            for (Index& corner : corners)
                for (std::size_t axis = 0; axis < axes.size(); ++axis)
                {
                    const std::size_t side = isMirrored[axis] ? 1 - corner[axis] : corner[axis];
                    corner[axis] = steps * (cube[axis] + side);
                }
            if (isEvenPermutation(axes) == (isMirrored[1] != isMirrored[2]))
                std::swap(corners[2], corners[3]);
            for (const Index& corner : corners)
                addVertex(corner);
            if (!isQuadratic)
                continue;
            for (const auto& [a, b] : edges)
                addVertex({(corners[a][0] + corners[b][0]) / 2, (corners[a][1] + corners[b][1]) / 2,
                           (corners[a][2] + corners[b][2]) / 2});
        } while (std::ranges::next_permutation(axes).found);
    };
    for (std::size_t k = 0; k < cellsAcross; ++k)
        for (std::size_t j = 0; j < cellsAcross; ++j)
            for (std::size_t i = 0; i < cellsAlong; ++i)
                addCube({i, j, k});

    const std::size_t numCells = 6 * cellsAlong * cellsAcross * cellsAcross;
    std::vector<std::int64_t> offsets;
    for (std::size_t cell = 0; cell <= numCells; ++cell)
        offsets.push_back(static_cast<std::int64_t>(cell * numVerticesOf(type)));
    CellTable cells{std::vector(numCells, type), IndexArray(std::move(offsets)),
                    IndexArray(std::move(connectivity))};
    return std::make_shared<const UnstructuredGrid<3>>(
        std::make_shared<DefaultValueArray<Vector3>>(lattice.makePoints(), Precision::Float64),
        std::move(cells));
}

std::shared_ptr<const UnstructuredGrid<3>> RoundBar::makeTetrahedra() const
{
    return make(CellType::Tetrahedra);
}

std::shared_ptr<const UnstructuredGrid<3>> RoundBar::makeQuadraticTetrahedra() const
{
    return make(CellType::QuadraticTetrahedron);
}

}
