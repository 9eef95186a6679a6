#pragma once

#include <tavrin/base/LargeVector.hpp>
#include <tavrin/domain/CellComplex.hpp>
#include <tavrin/domain/CellTable.hpp>

namespace tavrin
{

/// The cells of a grid with stored points, for many quick lookups. The grid must outlive it.
template<std::size_t D>
class GridCells
{
public:
    using Position = Tensor<double, D>;

    /// A cell whose vertices are gathered. Their positions are scaled by `scale()`.
    struct Vertices
    {
        CellType type;
        std::size_t count;
        std::array<std::size_t, maximumVertices> pointIndices;
        std::array<Position, maximumVertices> positions;
    };

    /// Throws `runtime_error` for a grid of 2^32 cells or more.
    explicit GridCells(const EmbeddedCellComplex<D>& grid);

    std::size_t size() const { return mSize; }

    /// Every cell is of this type, or they differ if it is `Invalid`.
    CellType commonType() const { return mCommonType; }

    /// A power of two by which positions are multiplied, so that they are moderate numbers.
    double scale() const { return mScale; }

    /// A box around the scaled points that are finite, and the largest absolute coordinate.
    const Position& lower() const { return mLower; }
    const Position& upper() const { return mUpper; }

    void gather(std::size_t cell, Vertices& vertices) const;

    /// What it keeps beside the grid.
    std::size_t memory() const { return mCopiedPoints.size() * sizeof(Position); }

private:
    /// Indices of either width.
    struct Indices
    {
        const std::int32_t* narrow = nullptr;
        const std::int64_t* wide = nullptr;

        std::size_t operator[](std::size_t i) const
        {
            return static_cast<std::size_t>(narrow != nullptr ? narrow[i] : wide[i]);
        }
    };
    static Indices viewOf(const IndexArray& indices);

    void takeCells(const EmbeddedCellComplex<D>& grid);
    void takePoints(const EmbeddedCellComplex<D>& grid);

    std::size_t mSize;
    CellType mCommonType = CellType::Invalid;
    std::size_t mCommonCount = 0;
    double mScale = 1.0;
    Position mLower{};
    Position mUpper{};

    const Position* mPoints = nullptr;
    LargeVector<Position> mCopiedPoints;

    /// Of listed cells.
    const CellType* mTypes = nullptr;
    Indices mOffsets;
    Indices mConnectivity;
    std::size_t mFirstOffset = 0;

    /// Of structured cells: cells and the step to the next point, along each axis that counts.
    std::array<std::uint32_t, 3> mAxisCells{1, 1, 1};
    std::array<std::size_t, 3> mAxisStep{};
};

template<std::size_t D>
inline void GridCells<D>::gather(std::size_t cell, Vertices& vertices) const
{
    auto& indices = vertices.pointIndices;
    const bool areAlike = mCommonType != CellType::Invalid;
    vertices.type = areAlike ? mCommonType : mTypes[cell];
    vertices.count = areAlike ? mCommonCount : numVerticesOf(vertices.type);
    if (mTypes == nullptr)
    {
        // Cells are numbered in 32 bits, which are divided faster.
        const auto [ni, nj, nk] = mAxisCells;
        const auto& [i, j, k] = mAxisStep;
        const auto number = static_cast<std::uint32_t>(cell);
        const std::uint32_t row = number / ni;
        const std::uint32_t layer = row / nj;
        const std::size_t corner = (number - row * ni) * i + (row - layer * nj) * j + layer * k;
        const std::array<std::size_t, 8> corners{
            corner,     corner + i,     corner + i + j,     corner + j,
            corner + k, corner + i + k, corner + i + j + k, corner + j + k};
        std::ranges::copy(corners, indices.begin());
    }
    else
    {
        const std::size_t first = areAlike ? mFirstOffset + cell * mCommonCount : mOffsets[cell];
        for (std::size_t n = 0; n < vertices.count; ++n)
            indices[n] = mConnectivity[first + n];
    }
    for (std::size_t n = 0; n < vertices.count; ++n)
        vertices.positions[n] = mScale * mPoints[indices[n]];
}

extern template class GridCells<1>;
extern template class GridCells<2>;
extern template class GridCells<3>;

}
