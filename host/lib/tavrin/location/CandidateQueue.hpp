#pragma once

#include <tavrin/location/Lanes.hpp>
#include <tavrin/value/Tensor.hpp>

#include <array>
#include <cassert>
#include <cstdint>

namespace tavrin
{

/// Positions that wait to be tested in a candidate cell, batch by batch. The cell is given by the lane
/// that holds it.
template<std::size_t D>
class CandidateQueue
{
public:
    /// Eight batches, so that the last, partly filled one is a small part of the work.
    static constexpr std::size_t capacity = 64;
    static constexpr std::size_t numBatches = capacity / Lanes::size;

    std::size_t size() const { return mSize; }
    bool isFull() const { return mSize == capacity; }
    void clear() { mSize = 0; }

    /// Adds position number k, to be tested in the cell of a lane. The queue must not be full.
    void add(std::size_t k, const Tensor<double, D>& position, std::size_t lane)
    {
        assert(!isFull());
        mNumbers[mSize] = static_cast<std::uint32_t>(k);
        mLanes[mSize] = static_cast<std::int64_t>(lane);
        for (std::size_t axis = 0; axis < D; ++axis)
            mPositions[axis][mSize] = position[axis];
        ++mSize;
    }

    std::size_t number(std::size_t trial) const { return mNumbers[trial]; }
    std::size_t lane(std::size_t trial) const { return static_cast<std::size_t>(mLanes[trial]); }
    Tensor<double, D> position(std::size_t trial) const
    {
        Tensor<double, D> result;
        for (std::size_t axis = 0; axis < D; ++axis)
            result[axis] = mPositions[axis][trial];
        return result;
    }

    /// Adds it if `isWanted`, without a branch, which would be mispredicted about every other time.
    void addIf(bool isWanted, std::size_t k, const Tensor<double, D>& position, std::size_t lane)
    {
        add(k, position, lane);
        mSize -= isWanted ? 0 : 1;
    }

    /// Fills the last batch with copies of its last position. Returns the number of batches.
    std::size_t completeBatches()
    {
        assert(mSize > 0);
        std::size_t end = mSize;
        for (; end % Lanes::size != 0; ++end)
            copy(mSize - 1, end);
        return end / Lanes::size;
    }

    Tensor<Lanes, D> positionsOf(std::size_t batch) const
    {
        Tensor<Lanes, D> result;
        for (std::size_t axis = 0; axis < D; ++axis)
            result[axis] = Lanes::at(&mPositions[axis][batch * Lanes::size]);
        return result;
    }
    Lanes::Sources lanesOf(std::size_t batch) const
    {
        return Lanes::sourcesAt(&mLanes[batch * Lanes::size]);
    }

private:
    void copy(std::size_t from, std::size_t to)
    {
        mNumbers[to] = mNumbers[from];
        mLanes[to] = mLanes[from];
        for (std::size_t axis = 0; axis < D; ++axis)
            mPositions[axis][to] = mPositions[axis][from];
    }

    std::size_t mSize = 0;
    std::array<std::uint32_t, capacity> mNumbers;
    std::array<std::int64_t, capacity> mLanes;
    /// Coordinates by axis.
    std::array<std::array<double, capacity>, D> mPositions;
};

}
