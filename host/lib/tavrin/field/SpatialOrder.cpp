#include <tavrin/field/SpatialOrder.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace tavrin
{

namespace
{

/// The binary logarithm of the number of steps of the curve along an axis: three axes fit into 32 bits.
constexpr unsigned stepBits = 10;
constexpr std::uint32_t lastStep = (1U << stepBits) - 1;

template<std::size_t D>
class MortonCurve
{
public:
    using Position = Tensor<double, D>;

    explicit MortonCurve(std::span<const Position> positions)
    {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        std::array<double, D> upper;
        std::ranges::fill(mLower, infinity);
        std::ranges::fill(upper, -infinity);
        for (const Position& position : positions)
            for (std::size_t i = 0; i < D; ++i)
                if (std::isfinite(position[i]))
                {
                    mLower[i] = std::min(mLower[i], position[i]);
                    upper[i] = std::max(upper[i], position[i]);
                }
        for (std::size_t i = 0; i < D; ++i)
            mSteps[i] = upper[i] > mLower[i] ? (lastStep + 0.5) / (upper[i] - mLower[i]) : 0.0;
    }

    std::array<std::uint32_t, D> stepsTo(const Position& position) const
    {
        std::array<std::uint32_t, D> steps;
        for (std::size_t i = 0; i < D; ++i)
        {
            const double step = (position[i] - mLower[i]) * mSteps[i];
            steps[i] =
                step > 0.0
                    ? static_cast<std::uint32_t>(std::min(step, static_cast<double>(lastStep)))
                    : 0;
        }
        return steps;
    }

    /// The number of steps along the curve to a position.
    std::uint32_t placeOf(const Position& position) const
    {
        std::uint32_t place = 0;
        const auto steps = stepsTo(position);
        for (std::size_t i = 0; i < D; ++i)
            place |= spread(steps[i]) << i;
        return place;
    }

private:
    /// Spreads bits apart, to leave room for those of the other axes.
    static std::uint32_t spread(std::uint32_t bits)
    {
        if constexpr (D == 3)
        {
            bits = (bits | bits << 16) & 0x030000ff;
            bits = (bits | bits << 8) & 0x0300f00f;
            bits = (bits | bits << 4) & 0x030c30c3;
            bits = (bits | bits << 2) & 0x09249249;
        }
        else if constexpr (D == 2)
        {
            bits = (bits | bits << 8) & 0x00ff00ff;
            bits = (bits | bits << 4) & 0x0f0f0f0f;
            bits = (bits | bits << 2) & 0x33333333;
            bits = (bits | bits << 1) & 0x55555555;
        }
        return bits;
    }

    Position mLower;
    Position mSteps;
};

/// Whether at least seven of eight positions are within a sixteenth of the box of the one before.
template<std::size_t D>
bool areCoherent(std::span<const Tensor<double, D>> positions, const MortonCurve<D>& curve)
{
    constexpr std::uint32_t close = (lastStep + 1) / 16;
    std::size_t jumps = 0;
    auto before = curve.stepsTo(positions.front());
    for (const auto& position : positions)
    {
        const auto steps = curve.stepsTo(position);
        bool isJump = false;
        for (std::size_t i = 0; i < D; ++i)
            isJump |= std::max(steps[i], before[i]) - std::min(steps[i], before[i]) > close;
        jumps += isJump ? 1U : 0U;
        before = steps;
    }
    return jumps * 8 <= positions.size();
}

}

template<std::size_t D>
std::vector<std::uint32_t> spatialOrder(std::span<const Tensor<double, D>> positions)
{
    const std::size_t count = positions.size();
    if (count < 3 || count > std::numeric_limits<std::uint32_t>::max())
        return {};
    const MortonCurve<D> curve(positions);
    if (areCoherent(positions, curve))
        return {};

    struct Item
    {
        std::uint32_t place;
        std::uint32_t index;
    };
    std::vector<Item> items(count);
    std::vector<Item> sorted(count);
    for (std::size_t i = 0; i < count; ++i)
        items[i] = {curve.placeOf(positions[i]), static_cast<std::uint32_t>(i)};
    // A radix sort, digit by digit from the last one.
    for (unsigned digit = 0; digit < D; ++digit)
    {
        const auto digitOf = [&](const Item& item)
        { return item.place >> (stepBits * digit) & lastStep; };
        std::array<std::uint32_t, lastStep + 1> next{};
        for (const Item& item : items)
            ++next[digitOf(item)];
        std::uint32_t begin = 0;
        for (std::uint32_t& number : next)
            begin += std::exchange(number, begin);
        for (const Item& item : items)
            sorted[next[digitOf(item)]++] = item;
        items.swap(sorted);
    }
    std::vector<std::uint32_t> order(count);
    std::ranges::transform(items, order.begin(), &Item::index);
    return order;
}

template std::vector<std::uint32_t> spatialOrder<1>(std::span<const Vector1>);
template std::vector<std::uint32_t> spatialOrder<2>(std::span<const Vector2>);
template std::vector<std::uint32_t> spatialOrder<3>(std::span<const Vector3>);

}
