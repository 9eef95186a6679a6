#pragma once

#include <tavrin/value/Tensor.hpp>

#include <algorithm>
#include <limits>

namespace tavrin
{

/// A box with sides parallel to the axes.
template<std::size_t D>
struct Box
{
    Tensor<double, D> lower;
    Tensor<double, D> upper;

    /// A box that holds every position, and one that holds none.
    static Box everything() { return infinite(-std::numeric_limits<double>::infinity()); }
    static Box nothing() { return infinite(std::numeric_limits<double>::infinity()); }

    /// Extends the box so that it holds a position, or another box.
    void add(const Tensor<double, D>& position)
    {
        for (std::size_t i = 0; i < D; ++i)
        {
            lower[i] = std::min(lower[i], position[i]);
            upper[i] = std::max(upper[i], position[i]);
        }
    }

    void add(const Box& other)
    {
        for (std::size_t i = 0; i < D; ++i)
        {
            lower[i] = std::min(lower[i], other.lower[i]);
            upper[i] = std::max(upper[i], other.upper[i]);
        }
    }

    /// Whether both boxes have a position in common.
    bool meets(const Box& other) const
    {
        bool isMet = true;
        for (std::size_t i = 0; i < D; ++i)
            isMet = isMet && lower[i] <= other.upper[i] && upper[i] >= other.lower[i];
        return isMet;
    }

    bool contains(const Tensor<double, D>& position) const
    {
        bool inside = true;
        for (std::size_t i = 0; i < D; ++i)
            inside &= position[i] >= lower[i] && position[i] <= upper[i];
        return inside;
    }

private:
    static Box infinite(double lower)
    {
        Box box;
        for (std::size_t i = 0; i < D; ++i)
        {
            box.lower[i] = lower;
            box.upper[i] = -lower;
        }
        return box;
    }
};

}
