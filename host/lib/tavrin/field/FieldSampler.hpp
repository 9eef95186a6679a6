#pragma once

#include <tavrin/base/LargeVector.hpp>
#include <tavrin/base/ProgressCounter.hpp>
#include <tavrin/field/Field.hpp>
#include <tavrin/field/SamplePositions.hpp>

namespace tavrin
{

template<std::size_t D, Value T>
class SampleWorker;
struct SamplePlan;

/// Throws `runtime_error` where that many samples take more memory than is available.
TAVRIN_API void requireMemoryForSamples(std::size_t positions, std::size_t times,
                                        std::size_t bytesPerSample);

/// Samples a field at many positions, at one time after the other, on all threads.
///
///     FieldSampler<D, T> sampler(*field, positionsOf<D>(*grid), times.size());
///     for (const double time : times)
///         sampler.valuesAt(time, values, isValid, progress, abortFlag);
///
/// The results are those of a `FieldEvaluator` of the field at each position, bit for bit and for every
/// number of threads. Positions that have to be searched for are searched for once, and kept for later
/// times where the memory for that is small beside the result. Between two calls the sampler holds no
/// values of the field, so that a series of any length takes memory for two of its steps.
template<std::size_t D, Value T>
class TAVRIN_API FieldSampler
{
public:
    /// The memory of a sample: its value, and the mark whether it is real.
    static constexpr std::size_t bytesPerSample = sizeof(T) + sizeof(ValidityMask::value_type);

    /// `numTimes` is the expected number of calls of `valuesAt`. The first sampler of a field may take
    /// long, since it builds the search structure of a grid. The field must outlive the sampler.
    FieldSampler(const Field<D, T>& field, SamplePositions<D> positions, std::size_t numTimes = 1);
    FieldSampler(const FieldSampler&) = delete;
    FieldSampler& operator=(const FieldSampler&) = delete;
    ~FieldSampler();

    std::size_t numPositions() const { return mPositions.count; }

    /// Writes the value at each position and 1 to `isValid`, or 0 and 0 where the field has no value at
    /// that time and position. Both arrays have `numPositions()` entries. Returns how many positions
    /// have no value.
    ///
    /// `progress` counts positions. Soon after `abortFlag` reads true the call returns, and results are undefined. Throws what
    /// evaluating the field throws.
    std::size_t valuesAt(double time, std::span<T> values, std::span<std::uint8_t> isValid,
                         ProgressCounter& progress, const volatile bool& abortFlag);

private:
    SamplePlan planFor(std::size_t numTimes) const;

    const Field<D, T>& mField;
    SamplePositions<D> mPositions;
    std::unique_ptr<SamplePlan> mPlan;
    /// One for each thread, made by the first call of `valuesAt`.
    std::vector<std::unique_ptr<SampleWorker<D, T>>> mWorkers;
};

extern template class FieldSampler<1, Scalar>;
extern template class FieldSampler<1, Vector1>;
extern template class FieldSampler<1, Vector2>;
extern template class FieldSampler<1, Vector3>;
extern template class FieldSampler<1, Vector4>;
extern template class FieldSampler<1, Matrix1>;
extern template class FieldSampler<1, Matrix2>;
extern template class FieldSampler<1, Matrix3>;
extern template class FieldSampler<1, Matrix4>;
extern template class FieldSampler<1, Vector242>;
extern template class FieldSampler<1, Vector375>;
extern template class FieldSampler<2, Scalar>;
extern template class FieldSampler<2, Vector1>;
extern template class FieldSampler<2, Vector2>;
extern template class FieldSampler<2, Vector3>;
extern template class FieldSampler<2, Vector4>;
extern template class FieldSampler<2, Matrix1>;
extern template class FieldSampler<2, Matrix2>;
extern template class FieldSampler<2, Matrix3>;
extern template class FieldSampler<2, Matrix4>;
extern template class FieldSampler<2, Vector242>;
extern template class FieldSampler<2, Vector375>;
extern template class FieldSampler<3, Scalar>;
extern template class FieldSampler<3, Vector1>;
extern template class FieldSampler<3, Vector2>;
extern template class FieldSampler<3, Vector3>;
extern template class FieldSampler<3, Vector4>;
extern template class FieldSampler<3, Matrix1>;
extern template class FieldSampler<3, Matrix2>;
extern template class FieldSampler<3, Matrix3>;
extern template class FieldSampler<3, Matrix4>;
extern template class FieldSampler<3, Vector242>;
extern template class FieldSampler<3, Vector375>;

}
