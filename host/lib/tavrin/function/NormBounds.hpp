#pragma once

#include <tavrin/base/Processors.hpp>
#include <tavrin/value/ValueArray.hpp>

#include <array>
#include <limits>

namespace tavrin
{

/// The least and the greatest of some norms, and how many norms were not a number, which counts
/// for neither.
struct NormBounds
{
    double least = std::numeric_limits<double>::infinity();
    double greatest = -std::numeric_limits<double>::infinity();
    std::size_t notANumber = 0;

    /// How many values are best looked at together.
    static constexpr std::size_t valuesPerBlock = 512;

    /// The bounds widened by the norms of more values, which are written to `norms`.
    template<typename T>
    TAVRIN_FOR_SEVERAL_PROCESSORS NormBounds widenedBy(std::span<const T> values,
                                                       double* norms) const
    {
        NormBounds bounds = *this;
        for (std::size_t i = 0; i < values.size(); ++i)
            norms[i] = norm(values[i]);
        for (std::size_t i = 0; i < values.size(); ++i)
        {
            bounds.least = norms[i] < bounds.least ? norms[i] : bounds.least;
            bounds.greatest = norms[i] > bounds.greatest ? norms[i] : bounds.greatest;
            bounds.notANumber += norms[i] != norms[i] ? 1 : 0;
        }
        return bounds;
    }
};

/// Of all values of an array, those of a series step by step. Least and greatest are infinite where
/// no norm is a number.
template<typename T>
NormBounds boundNorms(const ValueArray<T>& values)
{
    NormBounds bounds;
    std::array<T, NormBounds::valuesPerBlock> scratch;
    std::array<double, NormBounds::valuesPerBlock> norms;
    for (std::size_t first = 0; first < values.size(); first += scratch.size())
    {
        const std::size_t count = std::min(scratch.size(), values.size() - first);
        bounds =
            bounds.widenedBy(values.read(first, std::span(scratch).first(count)), norms.data());
    }
    return bounds;
}

}
