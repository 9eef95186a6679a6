#pragma once

#include <tavrin/function/Function.hpp>

#include <limits>
#include <optional>

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

/// Mixes the one or two steps of a function that lie around a time. The function must outlive it.
template<typename T>
class StepInterpolator
{
public:
    explicit StepInterpolator(const Function<T>& function) : mFunction(&function) {}

    /// The time of the first and the last step; minus and plus infinity for a steady function.
    double firstTime() const { return isSteady() ? -infinity : mFunction->timeSteps().front(); }
    double lastTime() const { return isSteady() ? infinity : mFunction->timeSteps().back(); }

    /// Moves to a time and returns true, or returns false and stays, for one outside first ... last.
    /// Steps that the time does not need are let go before missing ones are fetched: this object
    /// never holds more than two. Throws what loading a step throws.
    bool moveTo(double time)
    {
        if (time == mTime)
            return true;
        if (isSteady())
        {
            select(0, 0, 0.0);
            mTime = time;
            return true;
        }
        if (!(time >= firstTime() && time <= lastTime()))
            return false;
        const auto& steps = mFunction->timeSteps();
        const auto above = std::ranges::upper_bound(steps, time);
        const auto lower = static_cast<std::size_t>(above - steps.begin()) - 1;
        if (steps[lower] == time)
            select(lower, lower, 0.0);
        else
            select(lower, lower + 1, (time - steps[lower]) / (steps[lower + 1] - steps[lower]));
        mTime = time;
        return true;
    }

    /// Lets go of all steps; the next thing to do is to move to a time.
    void release()
    {
        mTime = std::numeric_limits<double>::quiet_NaN();
        mLower = {};
        mUpper = {};
    }

    /// The value at an index below the function's `valuesPerStep()`.
    T value(std::size_t index) const
    {
        return mixed([index](const DiscreteFunctionEvaluator<T>& step)
                     { return step.value(index); });
    }

    /// The sum of weights[k] * value(indices[k]), without values whose weight is 0.
    T combination(std::span<const std::size_t> indices, const double* weights) const
    {
        return mixed([&](const DiscreteFunctionEvaluator<T>& step)
                     { return step.combination(indices, weights); });
    }

private:
    static constexpr double infinity = std::numeric_limits<double>::infinity();

    struct Held
    {
        std::size_t step = 0;
        std::optional<DiscreteFunctionEvaluator<T>> values;

        bool is(std::size_t wanted) const { return values.has_value() && step == wanted; }
    };

    bool isSteady() const { return mFunction->timeBehavior() == TimeBehavior::Steady; }

    void select(std::size_t lower, std::size_t upper, double weight)
    {
        mTime = std::numeric_limits<double>::quiet_NaN();
        if (mUpper.is(lower))
            std::swap(mLower, mUpper);
        if (!mLower.is(lower))
            mLower = {};
        if (upper == lower || !mUpper.is(upper))
            mUpper = {};
        fetch(mLower, lower);
        if (upper != lower)
            fetch(mUpper, upper);
        mWeight = weight;
    }

    void fetch(Held& held, std::size_t step)
    {
        if (!held.values)
            held = {step, mFunction->makeDiscreteEvaluator(step)};
    }

    template<typename Read>
    T mixed(const Read& read) const
    {
        if (mWeight == 0.0)
            return read(*mLower.values);
        return read(*mLower.values) * (1.0 - mWeight) + read(*mUpper.values) * mWeight;
    }

    const Function<T>* mFunction;
    double mTime = std::numeric_limits<double>::quiet_NaN();
    Held mLower;
    Held mUpper;
    double mWeight = 0.0;
};

/// The values of a function at a time: interpolated linearly between the two steps around it.
///
/// It starts at the first step and valid. A steady function is valid at every time.
template<typename T>
class FunctionEvaluator
{
public:
    explicit FunctionEvaluator(const Function<T>& function)
        : mSteps(function), mSize(function.valuesPerStep())
    {
        mSteps.moveTo(mSteps.firstTime());
    }

    /// The time of the first and the last step; minus and plus infinity for a steady function.
    double firstTime() const { return mSteps.firstTime(); }
    double lastTime() const { return mSteps.lastTime(); }

    bool isValid() const { return mIsValid; }

    /// Moves to a time. A time outside first ... last, both included, makes the evaluator invalid
    /// and leaves it where it was.
    void reset(double time) { mIsValid = mSteps.moveTo(time); }

    /// The number of values.
    std::size_t size() const { return mSize; }

    /// The value at an index below `size()`.
    T value(std::size_t index) const { return mSteps.value(index); }

private:
    StepInterpolator<T> mSteps;
    std::size_t mSize;
    bool mIsValid = true;
};

template<typename T>
DiscreteFunctionEvaluator<T> Function<T>::makeDiscreteEvaluator(std::size_t step) const
{
    return DiscreteFunctionEvaluator<T>(stepValues(step));
}

template<typename T>
FunctionEvaluator<T> Function<T>::makeEvaluator() const
{
    return FunctionEvaluator<T>(*this);
}

}
