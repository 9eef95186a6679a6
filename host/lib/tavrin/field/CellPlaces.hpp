#pragma once

#include <tavrin/base/LargeVector.hpp>
#include <tavrin/field/ShapeFunctions.hpp>

#include <algorithm>
#include <cstdint>
#include <span>

namespace tavrin
{

/// A view of what is known of some positions: of each the lowest cell found so far that contains it, and the
/// reference point there. Cells and points lie apart, since cells are looked at more often.
class CellPlaces
{
public:
    static constexpr std::uint32_t nothing = 0xffffffff;

    /// As many cells as reference points, both of which must outlive it. No cell has been found yet.
    CellPlaces(std::span<std::uint32_t> cells, std::span<Reference> points)
        : mCells(cells.data()), mPoints(points.data())
    {
        std::ranges::fill(cells, nothing);
    }

    /// Those from a position on.
    CellPlaces from(std::size_t first) const
    {
        CellPlaces rest = *this;
        rest.mCells += first;
        rest.mPoints += first;
        return rest;
    }

    bool isInside(std::size_t k) const { return mCells[k] != nothing; }
    std::uint32_t cell(std::size_t k) const { return mCells[k]; }
    const Reference& point(std::size_t k) const { return mPoints[k]; }

    /// Whether a cell would be kept.
    bool isOpenTo(std::size_t k, std::uint32_t cell) const { return cell < mCells[k]; }

    void keep(std::size_t k, std::uint32_t cell, const Reference& point)
    {
        if (isOpenTo(k, cell))
        {
            mCells[k] = cell;
            mPoints[k] = point;
        }
    }

private:
    std::uint32_t* mCells;
    Reference* mPoints;
};

/// Places with memory of their own.
class StoredCellPlaces
{
public:
    explicit StoredCellPlaces(std::size_t count)
        : mCells(count), mPoints(count), mPlaces(mCells, mPoints)
    {
    }
    StoredCellPlaces(StoredCellPlaces&&) = default;

    CellPlaces places() const { return mPlaces; }

private:
    LargeVector<std::uint32_t> mCells;
    LargeVector<Reference> mPoints;
    CellPlaces mPlaces;
};

}
