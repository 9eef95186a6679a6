#pragma once

#include <tavrin/domain/CellLocator.hpp>
#include <tavrin/domain/StructuredGrid.hpp>
#include <tavrin/domain/structuredCorners.hpp>

namespace tavrin
{

/// Turns the place of a cell along the axes of a structured grid into a location.
class StructuredCell
{
public:
    explicit StructuredCell(const GridSize& size)
    {
        std::array<std::size_t, 3> steps{};
        std::size_t step = 1;
        std::size_t cells = 1;
        std::size_t numAxes = 0;
        for (std::size_t axis = 0; axis < size.size(); ++axis)
        {
            if (size[axis] > 1)
            {
                mSlotOfAxis[axis] = numAxes;
                steps[numAxes++] = step;
                mCellStep[axis] = cells;
                mPointStep[axis] = step;
                cells *= size[axis] - 1;
            }
            step *= size[axis];
        }
        mNumVertices = std::size_t{1} << numAxes;
        mOffsets = structuredCorners(steps);
    }

    /// How much further the next cell, or point, along an axis is.
    std::size_t cellStep(std::size_t axis) const { return mCellStep[axis]; }
    std::size_t pointStep(std::size_t axis) const { return mPointStep[axis]; }

    /// Takes the numbers of the cell and of its first point, and the share of the way through the cell
    /// along each axis that counts.
    void fill(std::size_t cell, std::size_t corner, const std::array<double, 3>& shares,
              Location& location) const
    {
        location.cell = cell;
        location.numVertices = mNumVertices;
        for (std::size_t k = 0; k < mOffsets.size(); ++k)
            location.pointIndices[k] = corner + mOffsets[k];
        const auto& [r, s, t] = shares;
        const std::array<double, 4> quad{(1.0 - r) * (1.0 - s), r * (1.0 - s), r * s,
                                         (1.0 - r) * s};
        for (std::size_t k = 0; k < quad.size(); ++k)
        {
            location.weights[k] = quad[k] * (1.0 - t);
            location.weights[k + 4] = quad[k] * t;
        }
    }

    /// Takes the index of the cell and the share of the way through it along each axis.
    class Place
    {
    public:
        explicit Place(const StructuredCell& cells) : mCells(&cells) {}

        void set(std::size_t axis, std::size_t index, double share)
        {
            mCell += index * mCells->mCellStep[axis];
            mCorner += index * mCells->mPointStep[axis];
            mShares[mCells->mSlotOfAxis[axis]] = share;
        }

        void fill(Location& location) const { mCells->fill(mCell, mCorner, mShares, location); }

    private:
        const StructuredCell* mCells;
        std::size_t mCell = 0;
        std::size_t mCorner = 0;
        /// Axes that do not count stay at 0, and leave weight to the first vertices alone.
        std::array<double, 3> mShares{};
    };

private:
    std::size_t mNumVertices;
    std::array<std::size_t, 8> mOffsets;
    std::array<std::size_t, 3> mSlotOfAxis{};
    std::array<std::size_t, 3> mCellStep{};
    std::array<std::size_t, 3> mPointStep{};
};

}
