#include <tavrin/colormap/NormRange.hpp>

#include <tavrin/function/stepsAround.hpp>
#include <tavrin/function/visit.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace tavrin
{

namespace
{

/// The range of the lengths added so far.
class RangeOfLengths
{
public:
    void add(double length)
    {
        if (!std::isfinite(length))
            return;
        mRange.low = std::min(mRange.low, length);
        mRange.high = std::max(mRange.high, length);
    }

    std::optional<ValueRange> range() const
    {
        return mRange.low <= mRange.high ? std::optional(mRange) : std::nullopt;
    }

private:
    static constexpr double infinity = std::numeric_limits<double>::infinity();
    ValueRange mRange{infinity, -infinity};
};

template<typename T>
std::optional<ValueRange> rangeOf(const Function<T>& function)
{
    constexpr std::size_t valuesPerBlock = 512;
    const ValueArray<T>& values = *function.values();
    const std::uint8_t* const isValid =
        function.validity() != nullptr ? function.validity()->data() : nullptr;
    RangeOfLengths lengths;
    std::array<T, valuesPerBlock> scratch;
    for (std::size_t first = 0; first < values.size(); first += valuesPerBlock)
    {
        const std::size_t count = std::min(valuesPerBlock, values.size() - first);
        const auto block = values.read(first, std::span(scratch).first(count));
        for (std::size_t i = 0; i < count; ++i)
            if (isValid == nullptr || isValid[first + i] != 0)
                lengths.add(norm(block[i]));
    }
    return lengths.range();
}

template<typename T>
std::optional<ValueRange> rangeAt(const Function<T>& function, double time)
{
    auto evaluator = function.makeEvaluator();
    // A time that the function does not have leaves the evaluator at the first step.
    evaluator.reset(time);
    const std::size_t count = evaluator.size();
    const auto [lower, upper] = stepsAround(function.timeSteps(), time);
    const std::uint8_t* const isValid =
        function.validity() != nullptr ? function.validity()->data() : nullptr;
    RangeOfLengths lengths;
    for (std::size_t i = 0; i < count; ++i)
        if (isValid == nullptr ||
            (isValid[lower * count + i] != 0 && isValid[upper * count + i] != 0))
            lengths.add(norm(evaluator.value(i)));
    return lengths.range();
}

}

std::optional<ValueRange> finiteNormRange(const FunctionBase& function)
{
    std::optional<ValueRange> range;
    visitFunction<ValueTypes>(function, [&](const auto& typed) { range = rangeOf(typed); });
    return range;
}

std::optional<ValueRange> finiteNormRangeAt(const FunctionBase& function, double time)
{
    std::optional<ValueRange> range;
    visitFunction<ValueTypes>(function, [&](const auto& typed) { range = rangeAt(typed, time); });
    return range;
}

}
