#pragma once

#include <tavrin/value/Tensor.hpp>

namespace tavrin
{

/// A box with sides parallel to the axes.
template<std::size_t D>
struct Box
{
    Tensor<double, D> lower;
    Tensor<double, D> upper;

    bool contains(const Tensor<double, D>& position) const
    {
        bool inside = true;
        for (std::size_t i = 0; i < D; ++i)
            inside &= position[i] >= lower[i] && position[i] <= upper[i];
        return inside;
    }
};

}
