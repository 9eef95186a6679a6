#pragma once

#include <tavrin/value/ValueArray.hpp>

#include <array>
#include <cstdint>

namespace tavrin
{

namespace detail
{

/// Converts `count` numbers. The overload for the most common precision is compiled for several
/// generations of processors.
template<typename Stored>
void convertToDouble(const Stored* source, std::size_t count, double* target)
{
    for (std::size_t i = 0; i < count; ++i)
        target[i] = static_cast<double>(source[i]);
}

TAVRIN_API void convertToDouble(const float* source, std::size_t count, double* target);

}

/// Which stored component each component of a value is read from.
template<typename T>
using ComponentMap = std::array<std::uint16_t, T::size>;

/// Component i of the value is component i of the tuple.
template<typename T>
constexpr ComponentMap<T> identityComponents()
{
    ComponentMap<T> map{};
    for (std::size_t i = 0; i < T::size; ++i)
        map[i] = static_cast<std::uint16_t>(i);
    return map;
}

/// A symmetric 3x3 matrix from its six components in the order XX YY ZZ XY YZ XZ.
inline constexpr ComponentMap<Matrix3> symmetricComponents{0, 3, 5, 3, 1, 4, 5, 4, 2};

/// Values over tuples of numbers in memory that belongs to someone else. Numbers keep their precision and
/// are converted when read; tuples of doubles with the layout of T are viewed in place.
template<typename T, typename Stored>
class TAVRIN_API WrappedValueArray : public ValueArray<T>
{
public:
    /// `data` points to `count` tuples of `stride` components each, which `owner` keeps alive. Every entry
    /// of `components` must be below `stride`.
    WrappedValueArray(const Stored* data, std::size_t count, std::size_t stride,
                      std::shared_ptr<const void> owner,
                      const ComponentMap<T>& components = identityComponents<T>())
        : ValueArray<T>(precisionOf<Stored>(), true), mData(data), mCount(count), mStride(stride),
          mOwner(std::move(owner)), mComponents(components),
          mIsPlain(stride == T::size && components == identityComponents<T>())
    {
    }

    std::size_t size() const override { return mCount; }

    T operator[](std::size_t index) const override
    {
        T value;
        const Stored* const tuple = mData + index * mStride;
        for (std::size_t i = 0; i < T::size; ++i)
            value[i] = static_cast<double>(tuple[mComponents[i]]);
        return value;
    }

    std::span<const T> read(std::size_t first, std::span<T> scratch) const override
    {
        if (!mIsPlain)
        {
            for (std::size_t i = 0; i < scratch.size(); ++i)
                scratch[i] = WrappedValueArray::operator[](first + i);
            return scratch;
        }
        const Stored* const source = mData + first * T::size;
        if constexpr (std::is_same_v<Stored, double>)
            return {reinterpret_cast<const T*>(source), scratch.size()};
        if (!scratch.empty())
            detail::convertToDouble(source, scratch.size() * T::size, scratch.front().begin());
        return scratch;
    }

    NumbersInMemory numbers() const override
    {
        if constexpr (std::is_same_v<Stored, double>)
            return {.doubles = mIsPlain ? mData : nullptr};
        if constexpr (std::is_same_v<Stored, float>)
            return {.floats = mIsPlain ? mData : nullptr};
        return {};
    }

private:
    const Stored* mData;
    std::size_t mCount;
    std::size_t mStride;
    std::shared_ptr<const void> mOwner;
    ComponentMap<T> mComponents;
    bool mIsPlain;
};

}
