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

    /// One that holds everything, and one that holds nothing.
    static Box everything() { return infinite(-std::numeric_limits<double>::infinity()); }
    static Box nothing() { return infinite(std::numeric_limits<double>::infinity()); }

    void add(const Tensor<double, D>& position)
    {
        for (std::size_t i = 0; i < D; ++i)
        {
            lower[i] = std::min(lower[i], position[i]);
            upper[i] = std::max(upper[i], position[i]);
        }
    }

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
