#pragma once

#include <tavrin/base/Export.hpp>
#include <tavrin/domain/CellType.hpp>

#include <array>
#include <cstddef>
#include <span>

namespace tavrin
{

/// The number of points along each of the three index axes of a structured grid.
using GridSize = std::array<std::size_t, 3>;

/// How the points and cells of a structured grid are numbered: fastest along the first index axis. An
/// axis with one point has no cells: n x m x 1 points form quads, n x 1 x 1 points lines.
class TAVRIN_API GridNumbering
{
public:
    /// An axis with cells.
    struct Axis
    {
        /// Which of the three index axes it is.
        std::size_t index;
        std::size_t cells;
        /// The difference in number between a point, or a cell, and the next one along the axis.
        std::size_t pointStride;
        std::size_t cellStride;
    };

    /// Every axis needs at least one point; a grid without points has 0 on every axis.
    explicit GridNumbering(const GridSize& size);

    const GridSize& size() const { return mSize; }
    std::size_t numPoints() const { return mSize[0] * mSize[1] * mSize[2]; }
    std::size_t numCells() const { return mNumCells; }

    /// The axes with cells, in ascending order.
    std::span<const Axis> axes() const { return std::span(mAxes).first(mNumAxes); }

    /// The linear type of the cells: points, lines, quads or hexahedra.
    CellType cellType() const;

    /// The difference in number between each vertex of a cell and the first one, in the order of
    /// the linear cell types. A quad has the first four, a line the first two.
    const std::array<std::size_t, 8>& cornerOffsets() const { return mCornerOffsets; }

    /// The index along each axis of a point.
    GridSize indicesOf(std::size_t point) const
    {
        return {point % mSize[0], point / mSize[0] % mSize[1], point / mSize[0] / mSize[1]};
    }

    /// The number of the first vertex of a cell.
    std::size_t firstVertexOf(std::size_t cell) const
    {
        std::size_t vertex = 0;
        for (const Axis& axis : axes())
        {
            vertex += cell % axis.cells * axis.pointStride;
            cell /= axis.cells;
        }
        return vertex;
    }

private:
    GridSize mSize;
    std::size_t mNumCells = 1;
    std::array<Axis, 3> mAxes{};
    std::size_t mNumAxes = 0;
    std::array<std::size_t, 8> mCornerOffsets;
};

}
