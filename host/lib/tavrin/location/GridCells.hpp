#pragma once

#include <tavrin/base/LargeVector.hpp>
#include <tavrin/domain/Box.hpp>
#include <tavrin/domain/CellComplex.hpp>
#include <tavrin/domain/CellTable.hpp>

#include <span>

namespace tavrin
{

/// The cells of a grid in a form that gives their vertices without virtual calls. The grid must outlive
/// it.
template<std::size_t D>
class GridCells
{
public:
    using Position = Tensor<double, D>;

    /// The type of a cell and the positions of its vertices, multiplied by `scale()`.
    struct Vertices
    {
        CellType type;
        std::array<Position, maximumVertices> positions;
    };

    /// Throws `runtime_error` for a grid of 2^32 cells or more.
    explicit GridCells(const EmbeddedCellComplex<D>& grid);

    std::size_t size() const { return mSize; }

    /// The type of all cells, or `Invalid` where they are of different types.
    CellType commonType() const { return mCommonType; }

    /// A power of two by which positions are multiplied, so that products of coordinates neither
    /// overflow nor underflow. It is 1 for all but extreme coordinates.
    double scale() const { return mScale; }

    /// The rounding of coordinates relative to their size, by the precision in which they are stored.
    double rounding() const { return mRounding; }

    /// A box around the scaled points that are finite.
    const Box<D>& box() const { return mBox; }

    /// A box around the inner three quarters of them along each axis, estimated from a sample.
    const Box<D>& boxOfMost() const { return mBoxOfMost; }

    CellType type(std::size_t cell) const
    {
        return mCommonType != CellType::Invalid ? mCommonType : mTypes[cell];
    }

    /// Writes the numbers of the cell's vertices. Returns how many there are.
    std::size_t gather(std::size_t cell, std::span<std::size_t, maximumVertices> points) const;

    void gather(std::size_t cell, Vertices& vertices) const;

    /// A point, not scaled.
    const Position& point(std::size_t index) const { return mPoints[index]; }

    /// Memory that it takes in addition to the grid, in bytes.
    std::size_t memory() const { return mCopiedPoints.size() * sizeof(Position); }

private:
    /// Indices of 32 or 64 bits.
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
    void measurePoints(std::size_t numPoints);

    std::size_t mSize;
    CellType mCommonType = CellType::Invalid;
    std::size_t mCommonCount = 0;
    double mScale = 1.0;
    double mRounding;
    Box<D> mBox{};
    Box<D> mBoxOfMost{};

    const Position* mPoints = nullptr;
    LargeVector<Position> mCopiedPoints;

    /// Listed cells, as in a `CellTable`.
    const CellType* mTypes = nullptr;
    Indices mOffsets;
    Indices mConnectivity;
    std::size_t mFirstOffset = 0;

    /// Structured cells: the number of cells and the stride of points along each axis with cells.
    std::array<std::uint32_t, 3> mAxisCells{1, 1, 1};
    std::array<std::size_t, 3> mAxisStride{};
    /// The difference in number between each vertex of a cell and the first one.
    std::array<std::size_t, 8> mCornerOffsets{};
};

template<std::size_t D>
inline std::size_t GridCells<D>::gather(std::size_t cell,
                                        std::span<std::size_t, maximumVertices> points) const
{
    if (mTypes == nullptr)
    {
        // Numbers of cells fit into 32 bits, which are faster to divide than 64.
        const auto [ni, nj, nk] = mAxisCells;
        const auto& [i, j, k] = mAxisStride;
        const auto number = static_cast<std::uint32_t>(cell);
        const std::uint32_t row = number / ni;
        const std::uint32_t layer = row / nj;
        const std::size_t corner = (number - row * ni) * i + (row - layer * nj) * j + layer * k;
        for (std::size_t n = 0; n < mCornerOffsets.size(); ++n)
            points[n] = corner + mCornerOffsets[n];
        return mCommonCount;
    }
    const bool areAlike = mCommonType != CellType::Invalid;
    const std::size_t count = areAlike ? mCommonCount : numVerticesOf(mTypes[cell]);
    const std::size_t first = areAlike ? mFirstOffset + cell * mCommonCount : mOffsets[cell];
    for (std::size_t n = 0; n < count; ++n)
        points[n] = mConnectivity[first + n];
    return count;
}

template<std::size_t D>
inline void GridCells<D>::gather(std::size_t cell, Vertices& vertices) const
{
    std::array<std::size_t, maximumVertices> points;
    const std::size_t count = gather(cell, points);
    vertices.type = type(cell);
    for (std::size_t n = 0; n < count; ++n)
        vertices.positions[n] = mScale * point(points[n]);
}

extern template class GridCells<1>;
extern template class GridCells<2>;
extern template class GridCells<3>;

}
