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

    /// The bounds widened by the norms of more values, at most `valuesPerBlock`.
    template<typename T>
    TAVRIN_FOR_SEVERAL_PROCESSORS NormBounds widenedBy(std::span<const T> values) const
    {
        // The root never swaps two numbers: it is enough to take that of the extremes.
        constexpr bool hasOneComponent = T::size == 1;
        std::array<double, valuesPerBlock> squares;
        std::size_t numNot = 0;
        for (std::size_t i = 0; i < values.size(); ++i)
        {
            squares[i] = hasOneComponent ? norm(values[i]) : dot(values[i], values[i]);
            numNot += squares[i] != squares[i] ? 1 : 0;
        }
        // So many minima and maxima side by side keep a processor busy.
        constexpr std::size_t lanes = 32;
        const std::size_t padded = (values.size() + lanes - 1) / lanes * lanes;
        for (std::size_t i = values.size(); i < padded; ++i)
            squares[i] = std::numeric_limits<double>::quiet_NaN();
        std::array<double, lanes> leasts;
        std::array<double, lanes> greatests;
        leasts.fill(std::numeric_limits<double>::infinity());
        greatests.fill(-std::numeric_limits<double>::infinity());
        for (std::size_t i = 0; i < padded; i += lanes)
            for (std::size_t lane = 0; lane < lanes; ++lane)
            {
                const double square = squares[i + lane];
                leasts[lane] = square < leasts[lane] ? square : leasts[lane];
                greatests[lane] = square > greatests[lane] ? square : greatests[lane];
            }
        NormBounds bounds = *this;
        bounds.notANumber += numNot;
        if (numNot == values.size())
            return bounds;
        const auto root = [](double square)
        { return hasOneComponent ? square : std::sqrt(square); };
        bounds.least = std::min(least, root(std::ranges::min(leasts)));
        bounds.greatest = std::max(greatest, root(std::ranges::max(greatests)));
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
    for (std::size_t first = 0; first < values.size(); first += scratch.size())
    {
        const std::size_t count = std::min(scratch.size(), values.size() - first);
        bounds = bounds.widenedBy(values.read(first, std::span(scratch).first(count)));
    }
    return bounds;
}

}
