#pragma once

#include <tavrin/function/DiscreteFunctionEvaluator.hpp>
#include <tavrin/function/TimeSeries.hpp>

#include <limits>
#include <optional>
#include <utility>

namespace tavrin
{

/// Interpolates between the one or two steps of a series that lie around a time.
template<typename T>
class StepInterpolator
{
public:
    explicit StepInterpolator(TimeSeries<T> series) : mSeries(std::move(series)) {}

    /// The time of the first and the last step; minus and plus infinity for a steady series.
    double firstTime() const { return isSteady() ? -infinity : mSeries.times.front(); }
    double lastTime() const { return isSteady() ? infinity : mSeries.times.back(); }

    /// Moves to a time and returns true; for a time outside first ... last it returns false and stays
    /// where it is. Steps that the time does not need are released before missing ones are fetched:
    /// this object never holds more than two. Throws what loading a step throws.
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
        const auto& steps = mSeries.times;
        const auto above = std::ranges::upper_bound(steps, time);
        const auto lower = static_cast<std::size_t>(above - steps.begin()) - 1;
        if (steps[lower] == time)
            select(lower, lower, 0.0);
        else
            select(lower, lower + 1, (time - steps[lower]) / (steps[lower + 1] - steps[lower]));
        mTime = time;
        return true;
    }

    /// Releases all steps. Values can be read again after the next `moveTo`.
    void release()
    {
        mTime = std::numeric_limits<double>::quiet_NaN();
        mLower = {};
        mUpper = {};
    }

    /// The two steps that values are interpolated between, which are one at the time of a step. Not
    /// before the first `moveTo`.
    std::pair<std::size_t, std::size_t> steps() const
    {
        return {mLower.step, mWeight == 0.0 ? mLower.step : mUpper.step};
    }

    /// The value at an index below the series' `valuesPerStep`.
    T value(std::size_t index) const
    {
        return interpolated([index](const DiscreteFunctionEvaluator<T>& step)
                            { return step.value(index); });
    }

    /// The sum of weights[k] * value(indices[k]), leaving out values whose weight is 0.
    T combination(std::span<const std::size_t> indices, const double* weights) const
    {
        return interpolated([&](const DiscreteFunctionEvaluator<T>& step)
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

    bool isSteady() const { return mSeries.isSteady(); }

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
            held = {step, DiscreteFunctionEvaluator<T>(mSeries.step(step))};
    }

    template<typename Read>
    T interpolated(const Read& read) const
    {
        if (mWeight == 0.0)
            return read(*mLower.values);
        return read(*mLower.values) * (1.0 - mWeight) + read(*mUpper.values) * mWeight;
    }

    TimeSeries<T> mSeries;
    double mTime = std::numeric_limits<double>::quiet_NaN();
    Held mLower;
    Held mUpper;
    double mWeight = 0.0;
};

}
