#pragma once

#include <support/smallData.hpp>

#include <tavrin/domain/CurvilinearGrid.hpp>
#include <tavrin/domain/RectilinearGrid.hpp>
#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/domain/UnstructuredGrid.hpp>
#include <tavrin/location/ShapeFunctions.hpp>
#include <tavrin/location/locatorOf.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <random>

namespace meshes
{

using namespace support;
using namespace tavrin;

template<std::size_t D>
using Points = std::vector<Tensor<double, D>>;
template<std::size_t D>
using Grid = std::shared_ptr<const EmbeddedCellComplex<D>>;

/// Points and cells of any type, collected one by one.
template<std::size_t D>
struct Mesh
{
    Points<D> points;
    std::vector<CellType> types;
    std::vector<std::int64_t> offsets{0};
    std::vector<std::int64_t> connectivity;

    void addCell(CellType type, const std::vector<std::int64_t>& vertices)
    {
        types.push_back(type);
        connectivity.insert(connectivity.end(), vertices.begin(), vertices.end());
        offsets.push_back(static_cast<std::int64_t>(connectivity.size()));
    }

    /// A cell with vertices of its own.
    void addCell(CellType type, const Points<D>& vertices)
    {
        std::vector<std::int64_t> indices(vertices.size());
        std::iota(indices.begin(), indices.end(), static_cast<std::int64_t>(points.size()));
        points.insert(points.end(), vertices.begin(), vertices.end());
        addCell(type, indices);
    }

    std::shared_ptr<const UnstructuredGrid<D>> grid() const
    {
        return std::make_shared<UnstructuredGrid<D>>(
            stored(points), CellTable{types, IndexArray(offsets), IndexArray(connectivity)});
    }
};

/// The location of a position, if a cell contains it.
template<std::size_t D>
std::optional<Location> locate(const EmbeddedCellComplex<D>& grid,
                               const Tensor<double, D>& position)
{
    typename CellLocator<D>::Hint hint;
    Location location;
    std::uint8_t isInside = 0;
    locatorOf(grid).locate(std::span(&position, 1), &location, &isInside, hint);
    if (isInside == 0)
        return std::nullopt;
    double sum = 0.0;
    for (std::size_t k = 0; k < location.numVertices; ++k)
    {
        EXPECT_TRUE(std::isfinite(location.weights[k]));
        sum += location.weights[k];
    }
    EXPECT_NEAR(sum, 1.0, 1e-12);
    return location;
}

template<std::size_t D>
std::optional<std::size_t> cellAt(const EmbeddedCellComplex<D>& grid,
                                  const Tensor<double, D>& position)
{
    const auto location = locate(grid, position);
    return location ? std::optional(location->cell) : std::nullopt;
}

template<std::size_t D>
Tensor<double, D> positionOf(const EmbeddedCellComplex<D>& grid, const Location& location)
{
    Tensor<double, D> position{};
    for (std::size_t k = 0; k < location.numVertices; ++k)
        position += location.weights[k] * grid.point(location.pointIndices[k]);
    return position;
}

inline Vector3 randomVector(std::mt19937& random, double size = 1.0)
{
    std::uniform_real_distribution<double> coordinate(-size, size);
    return {coordinate(random), coordinate(random), coordinate(random)};
}

template<std::size_t D>
Tensor<double, D> firstCoordinates(const std::array<double, 3>& numbers)
{
    Tensor<double, D> vector;
    std::copy_n(numbers.begin(), D, vector.begin());
    return vector;
}

/// The vertices of a reference cell, displaced by up to `distortion`, stretched and sheared.
template<std::size_t D>
Points<D> distortedCell(CellType type, double distortion, std::mt19937& random)
{
    const Matrix3 shear(2.0, 0.3, -0.4, 0.1, 1.5, 0.2, -0.2, 0.5, 0.8);
    Points<D> vertices;
    for (std::size_t k = 0; k < numVerticesOf(type); ++k)
    {
        const Reference at = vertexReference(type, k);
        const Vector3 corner = Vector3(at[0], at[1], at[2]) + randomVector(random, distortion);
        const Vector3 moved = multiply(shear, corner) + Vector3(100.0, -50.0, 7.0);
        vertices.push_back(firstCoordinates<D>({moved[0], moved[1], moved[2]}));
    }
    return vertices;
}

/// One grid of n points per axis of the same box, as every kind of grid.
inline std::vector<Grid<3>> sameGrids(std::size_t n, const Vector3& origin, const Vector3& spacing)
{
    const auto uniform = std::make_shared<UniformGrid<3>>(UniformGrid<3>::Layout{
        .size = {n, n, n}, .origin = origin, .spacing = spacing, .firstIndex = {3, 0, -2}});
    const auto turned = std::make_shared<UniformGrid<3>>(
        UniformGrid<3>::Layout{.size = {n, n, n},
                               .origin = origin,
                               .spacing = {-spacing[0], spacing[1], spacing[2]},
                               .firstIndex = {3, 0, -2},
                               .direction = {-1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0}});
    RectilinearGrid<3>::Coordinates coordinates;
    Mesh<3> mesh;
    for (std::size_t i = 0; i < uniform->numPoints(); ++i)
        mesh.points.push_back(uniform->point(i));
    for (std::size_t axis = 0; axis < 3; ++axis)
        for (std::size_t i = 0, step = axis == 0 ? 1 : axis == 1 ? n : n * n; i < n; ++i)
            coordinates[axis].push_back(mesh.points[i * step][axis]);
    for (std::size_t i = 0; i < uniform->numCells(); ++i)
    {
        const Cell cell = uniform->cell(i);
        const auto indices = cell.pointIndices();
        mesh.addCell(CellType::Hexahedra,
                     std::vector<std::int64_t>(indices.begin(), indices.end()));
    }
    return {uniform, turned, std::make_shared<RectilinearGrid<3>>(coordinates),
            std::make_shared<CurvilinearGrid<3>>(uniform->size(), stored(mesh.points)),
            mesh.grid()};
}

}
