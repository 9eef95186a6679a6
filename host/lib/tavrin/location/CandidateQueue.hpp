#pragma once

#include <tavrin/location/Lanes.hpp>
#include <tavrin/value/Tensor.hpp>

#include <array>
#include <cstdint>

namespace tavrin
{

/// Positions, each with a cell that may contain it and is one of a few, to be tried batch by batch.
template<std::size_t D>
class CandidateQueue
{
public:
    static constexpr std::size_t capacity = 64;
    static constexpr std::size_t numBatches = capacity / Lanes::size;

    std::size_t size() const { return mSize; }
    bool isFull() const { return mSize == capacity; }
    void clear() { mSize = 0; }

    /// Adds position number k and the cell in a lane.
    void add(std::size_t k, const Tensor<double, D>& position, std::size_t lane)
    {
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

    /// The same, if it is wanted, without a branch, which would be a guess.
    void addIf(bool isWanted, std::size_t k, const Tensor<double, D>& position, std::size_t lane)
    {
        add(k, position, lane);
        mSize -= isWanted ? 0 : 1;
    }

    /// Fills the last batch up with what is in it. Returns how many batches there are.
    std::size_t completeBatches()
    {
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
    /// By axis.
    std::array<std::array<double, capacity>, D> mPositions;
};

}
