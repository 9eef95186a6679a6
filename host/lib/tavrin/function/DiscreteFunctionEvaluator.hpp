#pragma once

#include <tavrin/value/ValueArray.hpp>

#include <cassert>
#include <memory>
#include <span>
#include <type_traits>

namespace tavrin
{

/// The stored values of one time step of a function. Cheap to read; values in memory are reached
/// without a virtual call.
template<typename T>
class DiscreteFunctionEvaluator
{
public:
    explicit DiscreteFunctionEvaluator(std::shared_ptr<const ValueArray<T>> values)
        : mValues(std::move(values)), mSize(mValues->size()), mNumbers(mValues->numbers())
    {
    }

    /// The number of values.
    std::size_t size() const { return mSize; }

    /// The value at an index below `size()`.
    T value(std::size_t index) const
    {
        assert(index < mSize);
        if (mNumbers.doubles != nullptr)
            return converted(mNumbers.doubles + index * T::size);
        if (mNumbers.floats != nullptr)
            return converted(mNumbers.floats + index * T::size);
        return (*mValues)[index];
    }

    /// Several values at once, as `ValueArray::read` delivers them.
    std::span<const T> read(std::size_t first, std::span<T> scratch) const
    {
        return mValues->read(first, scratch);
    }

    /// The sum of weights[k] * value(indices[k]), in this order. A value whose weight is 0 takes no
    /// part, whatever it is.
    T combination(std::span<const std::size_t> indices, const double* weights) const
    {
        if (mNumbers.doubles == nullptr && mNumbers.floats == nullptr)
            return carefulCombination(indices, weights);
        const T sum = mNumbers.doubles != nullptr ? sumOf(indices, weights, mNumbers.doubles)
                                                  : sumOf(indices, weights, mNumbers.floats);
        // A weight of 0 makes a difference where the value is not finite: this sum is no number.
        bool isNumber = true;
        for (const double component : sum)
            isNumber &= component == component;
        return isNumber ? sum : carefulCombination(indices, weights);
    }

private:
    template<typename Stored>
    static T converted(const Stored* components)
    {
        T value;
        for (std::size_t i = 0; i < T::size; ++i)
            value[i] = static_cast<double>(components[i]);
        return value;
    }

    /// Of all values, whatever their weight.
    template<typename Stored>
    static T sumOf(std::span<const std::size_t> indices, const double* weights, const Stored* data)
    {
        const auto sumOfFirst = [&](auto count)
        {
            T sum{};
            for (std::size_t k = 0; k < count; ++k)
                for (std::size_t i = 0; i < T::size; ++i)
                    sum[i] += weights[k] * static_cast<double>(data[indices[k] * T::size + i]);
            return sum;
        };
        // Most cells have eight vertices, a number for which the compiler spares the loop.
        return indices.size() == 8 ? sumOfFirst(std::integral_constant<std::size_t, 8>())
                                   : sumOfFirst(indices.size());
    }

    /// Does not even read a value whose weight is 0.
    [[gnu::noinline]] T carefulCombination(std::span<const std::size_t> indices,
                                           const double* weights) const
    {
        T sum{};
        for (std::size_t k = 0; k < indices.size(); ++k)
            if (weights[k] != 0.0)
                sum += weights[k] * value(indices[k]);
        return sum;
    }

    std::shared_ptr<const ValueArray<T>> mValues;
    std::size_t mSize;
    NumbersInMemory mNumbers;
};

}
