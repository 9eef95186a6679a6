#pragma once

#include <tavrin/base/LargeVector.hpp>
#include <tavrin/location/ShapeFunctions.hpp>

#include <algorithm>
#include <cstdint>
#include <span>

namespace tavrin
{

/// For each of some positions, the lowest cell found so far that contains it, and the reference point in
/// that cell. A view of two arrays: cells are kept apart from points, since they are read more often.
class CellMatches
{
public:
    static constexpr std::uint32_t nothing = 0xffffffff;

    /// Both arrays have one entry per position and must outlive the view. Starts without matches.
    CellMatches(std::span<std::uint32_t> cells, std::span<Reference> points)
        : mCells(cells.data()), mPoints(points.data())
    {
        std::ranges::fill(cells, nothing);
    }

    /// The matches from position `first` on.
    CellMatches from(std::size_t first) const
    {
        CellMatches rest = *this;
        rest.mCells += first;
        rest.mPoints += first;
        return rest;
    }

    bool isInside(std::size_t k) const { return mCells[k] != nothing; }
    std::uint32_t cell(std::size_t k) const { return mCells[k]; }
    const Reference& point(std::size_t k) const { return mPoints[k]; }

    /// Whether `keep` would keep the cell, which is lower than the one found so far.
    bool accepts(std::size_t k, std::uint32_t cell) const { return cell < mCells[k]; }

    void keep(std::size_t k, std::uint32_t cell, const Reference& point)
    {
        if (accepts(k, cell))
        {
            mCells[k] = cell;
            mPoints[k] = point;
        }
    }

private:
    std::uint32_t* mCells;
    Reference* mPoints;
};

/// Matches with memory of their own.
class StoredCellMatches
{
public:
    explicit StoredCellMatches(std::size_t count)
        : mCells(count), mPoints(count), mMatches(mCells, mPoints)
    {
    }
    StoredCellMatches(StoredCellMatches&&) = default;

    CellMatches matches() const { return mMatches; }

private:
    LargeVector<std::uint32_t> mCells;
    LargeVector<Reference> mPoints;
    CellMatches mMatches;
};

}
