#pragma once

#include <tavrin/value/ValueArray.hpp>

#include <algorithm>
#include <cassert>
#include <memory>
#include <span>

namespace tavrin
{

/// The values of a function at its time steps, step after step in one array. The owner of `times` must
/// outlive it.
template<typename T>
struct TimeSeries
{
    std::shared_ptr<const ValueArray<T>> values;
    /// Ascending; a function without times has one step, which counts for every time.
    std::span<const double> times;
    std::size_t valuesPerStep;

    /// At least 1.
    std::size_t numSteps() const { return std::max<std::size_t>(1, times.size()); }
    bool isSteady() const { return numSteps() == 1; }

    /// The values of one step, below `numSteps()`.
    std::shared_ptr<const ValueArray<T>> step(std::size_t number) const
    {
        assert(number < numSteps());
        return isSteady() && values->isInMemory()
                   ? values
                   : values->part(number * valuesPerStep, valuesPerStep);
    }
};

}
