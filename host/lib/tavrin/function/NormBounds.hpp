#pragma once

#include <tavrin/base/Processors.hpp>
#include <tavrin/value/ValueArray.hpp>

#include <array>
#include <limits>

namespace tavrin
{

/// The least and the greatest of some norms. Norms that are NaN are counted apart.
struct NormBounds
{
    double least = std::numeric_limits<double>::infinity();
    double greatest = -std::numeric_limits<double>::infinity();
    std::size_t notANumber = 0;

    /// The maximum number of values in a call of `widenedBy`: their squares fit into the nearest
    /// cache.
    static constexpr std::size_t valuesPerBlock = 512;

    /// The bounds extended by the norms of at most `valuesPerBlock` values.
    template<typename T>
    TAVRIN_FOR_SEVERAL_PROCESSORS NormBounds widenedBy(std::span<const T> values) const
    {
        // The root is monotonic, rounding included, so that it is only needed of the extremes.
        constexpr bool hasOneComponent = T::size == 1;
        std::array<double, valuesPerBlock> squares;
        std::size_t numNot = 0;
        for (std::size_t i = 0; i < values.size(); ++i)
        {
            squares[i] = hasOneComponent ? norm(values[i]) : dot(values[i], values[i]);
            numNot += squares[i] != squares[i] ? 1 : 0;
        }
        // Independent minima and maxima hide the latency of the comparisons: 32 doubles are four
        // registers of AVX-512 or eight of AVX2.
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

/// The bounds of the norms of all values of an array; a series is read step by step. They are infinite where
/// all norms are NaN.
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
