#pragma once

#include <tavrin/function/StepInterpolator.hpp>

namespace tavrin
{

/// The values of a function at a time: interpolated linearly between the two steps around it.
///
/// A new evaluator is valid and stands at the first step. A steady function is valid at every time.
template<typename T>
class FunctionEvaluator
{
public:
    explicit FunctionEvaluator(const TimeSeries<T>& series)
        : mSteps(series), mSize(series.valuesPerStep)
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

}
