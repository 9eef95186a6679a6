#include <tavrin/colormap/NormRange.hpp>

#include <tavrin/function/visit.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace tavrin
{

namespace
{

template<typename T>
std::optional<ValueRange> rangeOf(const Function<T>& function)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr std::size_t valuesPerBlock = 512;
    const ValueArray<T>& values = *function.values();
    const std::uint8_t* const isValid =
        function.validity() != nullptr ? function.validity()->data() : nullptr;
    ValueRange range{infinity, -infinity};
    std::array<T, valuesPerBlock> scratch;
    for (std::size_t first = 0; first < values.size(); first += valuesPerBlock)
    {
        const std::size_t count = std::min(valuesPerBlock, values.size() - first);
        const auto block = values.read(first, std::span(scratch).first(count));
        for (std::size_t i = 0; i < count; ++i)
        {
            const double length = norm(block[i]);
            if (!std::isfinite(length) || (isValid != nullptr && isValid[first + i] == 0))
                continue;
            range.low = std::min(range.low, length);
            range.high = std::max(range.high, length);
        }
    }
    return range.low <= range.high ? std::optional(range) : std::nullopt;
}

}

std::optional<ValueRange> finiteNormRange(const FunctionBase& function)
{
    std::optional<ValueRange> range;
    visitFunction<ValueTypes>(function, [&](const auto& typed) { range = rangeOf(typed); });
    return range;
}

}
