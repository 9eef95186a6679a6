#pragma once

#include <tavrin/value/ValueArray.hpp>

#include <functional>
#include <mutex>

namespace tavrin
{

/// The values of a time series, of which only a few steps are in memory at a time.
///
/// A step is loaded when one of its values is first read; the two steps used last are kept, as
/// interpolation in time needs. What the loader throws leaves the call that reads the value.
template<typename T>
class TAVRIN_API SeriesValueArray : public ValueArray<T>
{
public:
    using Step = std::shared_ptr<const ValueArray<T>>;
    using Loader = std::function<Step(std::size_t step)>;

    static constexpr std::size_t stepsKept = 2;

    /// `loader(k)` returns the values of step k, exactly `valuesPerStep` of them.
    SeriesValueArray(Precision precision, std::size_t steps, std::size_t valuesPerStep,
                     Loader loader)
        : ValueArray<T>(precision, false), mSteps(steps), mValuesPerStep(valuesPerStep),
          mLoader(std::move(loader))
    {
    }

    std::size_t size() const override { return mSteps * mValuesPerStep; }
    std::size_t segmentSize() const override { return mValuesPerStep; }

    T operator[](std::size_t index) const override
    {
        return (*step(index / mValuesPerStep))[index % mValuesPerStep];
    }

    /// Always copies, since a view could outlive its step.
    std::span<const T> read(std::size_t first, std::span<T> scratch) const override
    {
        for (std::size_t done = 0; done < scratch.size();)
        {
            const std::size_t offset = (first + done) % mValuesPerStep;
            const std::size_t count = std::min(scratch.size() - done, mValuesPerStep - offset);
            const auto target = scratch.subspan(done, count);
            const Step values = step((first + done) / mValuesPerStep);
            const auto source = values->read(offset, target);
            if (source.data() != target.data())
                std::ranges::copy(source, target.begin());
            done += count;
        }
        return scratch;
    }

    /// A part inside one step keeps only that step in memory.
    std::shared_ptr<const ValueArray<T>> part(std::size_t first, std::size_t count) const override
    {
        const bool insideOneStep =
            count > 0 && first < size() && first % mValuesPerStep + count <= mValuesPerStep;
        if (!insideOneStep)
            return ValueArray<T>::part(first, count);
        const Step values = step(first / mValuesPerStep);
        return count == mValuesPerStep ? values : values->part(first % mValuesPerStep, count);
    }

private:
    struct KeptStep
    {
        std::size_t number;
        Step values;
    };

    Step step(std::size_t number) const
    {
        const std::lock_guard lock(mMutex);
        const auto kept = std::ranges::find(mKept, number, &KeptStep::number);
        if (kept != mKept.end())
        {
            std::rotate(kept, kept + 1, mKept.end());
            return mKept.back().values;
        }
        if (mKept.size() == stepsKept)
            mKept.erase(mKept.begin());
        Step values = mLoader(number);
        if (values == nullptr || values->size() != mValuesPerStep)
            throw logic_error("the loader of a time series returned a step of another size");
        mKept.push_back({number, values});
        return values;
    }

    std::size_t mSteps;
    std::size_t mValuesPerStep;
    Loader mLoader;
    mutable std::mutex mMutex;
    mutable std::vector<KeptStep> mKept;
};

}
