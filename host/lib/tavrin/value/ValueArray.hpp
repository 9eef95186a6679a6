#pragma once

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/value/Precision.hpp>
#include <tavrin/value/Tensor.hpp>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace tavrin
{

/// The values of a function in storage order: one per element of the domain part, and for a
/// function of several time steps the values of all steps, step after step.
/// All reading operations may be called from several threads at once.
class TAVRIN_API ValueArrayBase
{
public:
    /// `inMemory` is false where reading values may load them from slower storage.
    ValueArrayBase(Precision precision, bool inMemory) : mPrecision(precision), mInMemory(inMemory)
    {
    }
    ValueArrayBase(const ValueArrayBase&) = delete;
    ValueArrayBase& operator=(const ValueArrayBase&) = delete;
    virtual ~ValueArrayBase() = default;

    /// How the components are stored; they are always read as doubles.
    Precision precision() const { return mPrecision; }

    bool isInMemory() const { return mInMemory; }

    /// The number of values.
    virtual std::size_t size() const = 0;

    /// The number of consecutive values that are loaded together. A loop over all values that works
    /// through one segment after the other loads each only once. An array in memory is one segment.
    virtual std::size_t segmentSize() const { return size(); }

private:
    Precision mPrecision;
    bool mInMemory;
};

/// The address of numbers in memory; at most one of the pointers is not null.
struct NumbersInMemory
{
    const double* doubles = nullptr;
    const float* floats = nullptr;
};

/// A value array whose values are of type T.
template<typename T>
class TAVRIN_API ValueArray : public ValueArrayBase,
                              public std::enable_shared_from_this<ValueArray<T>>
{
public:
    using ValueArrayBase::ValueArrayBase;

    /// The value at an index below `size()`.
    virtual T operator[](std::size_t index) const = 0;

    /// The values first ... first + scratch.size() - 1, which must exist. The result is a view of the
    /// array's own memory where that holds values of type T, otherwise of `scratch`, into which they
    /// are copied. It is valid as long as the array and `scratch` are.
    virtual std::span<const T> read(std::size_t first, std::span<T> scratch) const = 0;

    /// The components of all values, where the array holds them in memory one after the other. Valid as
    /// long as the array.
    virtual NumbersInMemory numbers() const { return {}; }

    /// A view of `count` values from `first` on. It shares ownership of this array, or of the part of it
    /// that it shows. The array must be held by a shared pointer.
    virtual std::shared_ptr<const ValueArray> part(std::size_t first, std::size_t count) const;
};

/// Values of type T in memory.
template<typename T>
class TAVRIN_API DefaultValueArray : public ValueArray<T>
{
public:
    /// Takes over a vector with any allocator without copying it.
    template<typename Allocator>
    DefaultValueArray(std::vector<T, Allocator> values, Precision precision, bool inMemory = true)
        : ValueArray<T>(precision, inMemory)
    {
        auto owned = std::make_shared<const std::vector<T, Allocator>>(std::move(values));
        mValues = *owned;
        mOwner = std::move(owned);
    }

    std::size_t size() const override { return mValues.size(); }
    T operator[](std::size_t index) const override { return mValues[index]; }
    std::span<const T> read(std::size_t first, std::span<T> scratch) const override
    {
        return mValues.subspan(first, scratch.size());
    }
    NumbersInMemory numbers() const override
    {
        return {.doubles = mValues.empty() ? nullptr : mValues.front().begin()};
    }

private:
    std::shared_ptr<const void> mOwner;
    std::span<const T> mValues;
};

/// Consecutive values of another array.
template<typename T>
class TAVRIN_API SubValueArray : public ValueArray<T>
{
public:
    /// Throws `logic_error` if the array does not have that many values.
    SubValueArray(std::shared_ptr<const ValueArray<T>> array, std::size_t first, std::size_t count)
        : ValueArray<T>(array->precision(), array->isInMemory()), mArray(std::move(array)),
          mFirst(first), mCount(count)
    {
        if (mFirst > mArray->size() || mCount > mArray->size() - mFirst)
            throw logic_error("sub-array leaves its array");
    }

    std::size_t size() const override { return mCount; }
    T operator[](std::size_t index) const override { return (*mArray)[mFirst + index]; }
    std::span<const T> read(std::size_t first, std::span<T> scratch) const override
    {
        return mArray->read(mFirst + first, scratch);
    }
    NumbersInMemory numbers() const override
    {
        auto [doubles, floats] = mArray->numbers();
        return {.doubles = doubles == nullptr ? nullptr : doubles + mFirst * T::size,
                .floats = floats == nullptr ? nullptr : floats + mFirst * T::size};
    }

private:
    std::shared_ptr<const ValueArray<T>> mArray;
    std::size_t mFirst;
    std::size_t mCount;
};

template<typename T>
std::shared_ptr<const ValueArray<T>> ValueArray<T>::part(std::size_t first, std::size_t count) const
{
    return std::make_shared<SubValueArray<T>>(this->shared_from_this(), first, count);
}

}
