#pragma once

#include <tavrin/domain/CellLocator.hpp>
#include <tavrin/domain/StructuredGrid.hpp>

namespace tavrin
{

/// Turns the indices of a cell of a structured grid and the reference coordinates in it into a
/// `Location`.
class StructuredCell
{
public:
    explicit StructuredCell(const GridNumbering& numbering)
        : mNumVertices(numVerticesOf(numbering.cellType())), mOffsets(numbering.cornerOffsets())
    {
        const auto axes = numbering.axes();
        for (std::size_t slot = 0; slot < axes.size(); ++slot)
        {
            mSlotOfAxis[axes[slot].index] = slot;
            mCellStride[axes[slot].index] = axes[slot].cellStride;
            mPointStride[axes[slot].index] = axes[slot].pointStride;
        }
    }

    /// The difference in number between a cell, or a point, and the next one along an axis.
    std::size_t cellStride(std::size_t axis) const { return mCellStride[axis]; }
    std::size_t pointStride(std::size_t axis) const { return mPointStride[axis]; }

    /// Takes the numbers of the cell and of its first point, and the reference coordinates.
    void fill(std::size_t cell, std::size_t corner, const std::array<double, 3>& reference,
              Location& location) const
    {
        location.cell = cell;
        location.numVertices = mNumVertices;
        for (std::size_t k = 0; k < mOffsets.size(); ++k)
            location.pointIndices[k] = corner + mOffsets[k];
        const auto& [r, s, t] = reference;
        const std::array<double, 4> quad{(1.0 - r) * (1.0 - s), r * (1.0 - s), r * s,
                                         (1.0 - r) * s};
        for (std::size_t k = 0; k < quad.size(); ++k)
        {
            location.weights[k] = quad[k] * (1.0 - t);
            location.weights[k + 4] = quad[k] * t;
        }
    }

    /// Collects the index of a cell and the reference coordinate in it, axis by axis.
    class Builder
    {
    public:
        explicit Builder(const StructuredCell& cells) : mCells(&cells) {}

        void set(std::size_t axis, std::size_t index, double coordinate)
        {
            mCell += index * mCells->mCellStride[axis];
            mCorner += index * mCells->mPointStride[axis];
            mReference[mCells->mSlotOfAxis[axis]] = coordinate;
        }

        void fill(Location& location) const { mCells->fill(mCell, mCorner, mReference, location); }

    private:
        const StructuredCell* mCells;
        std::size_t mCell = 0;
        std::size_t mCorner = 0;
        /// Axes without cells stay at 0, which leaves all weight to the first vertices.
        std::array<double, 3> mReference{};
    };

private:
    std::size_t mNumVertices;
    std::array<std::size_t, 8> mOffsets;
    std::array<std::size_t, 3> mSlotOfAxis{};
    std::array<std::size_t, 3> mCellStride{};
    std::array<std::size_t, 3> mPointStride{};
};

}
