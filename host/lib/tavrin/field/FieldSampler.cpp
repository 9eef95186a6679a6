#include <tavrin/field/FieldSampler.hpp>

#include <tavrin/base/Memory.hpp>
#include <tavrin/field/SampleWorker.hpp>

#include <omp.h>

#include <cassert>
#include <iomanip>
#include <sstream>

namespace tavrin
{

void requireMemoryForSamples(std::size_t positions, std::size_t times, std::size_t bytesPerSample)
{
    const double bytes = static_cast<double>(positions) * static_cast<double>(times) *
                         static_cast<double>(bytesPerSample);
    const std::size_t available = availableMemory();
    if (bytes <= static_cast<double>(available))
        return;
    std::ostringstream text;
    text << "sampling " << positions << " points at " << times << (times == 1 ? " time" : " times")
         << " takes " << std::fixed << std::setprecision(0) << bytes << " bytes, and only "
         << available << " bytes of memory are available";
    throw runtime_error(text.str());
}

template<std::size_t D, Value T>
FieldSampler<D, T>::FieldSampler(const Field<D, T>& field, SamplePositions<D> positions,
                                 std::size_t numTimes)
    : mField(field), mPositions(std::move(positions)),
      mPlan(std::make_unique<SamplePlan>(planFor(numTimes))),
      mWorkers(static_cast<std::size_t>(omp_get_max_threads()))
{
}

template<std::size_t D, Value T>
FieldSampler<D, T>::~FieldSampler() = default;

/// Called outside of a parallel region: what the first evaluator builds is built by all threads.
template<std::size_t D, Value T>
SamplePlan FieldSampler<D, T>::planFor(std::size_t numTimes) const
{
    const bool isSearching = mField.makeBatchEvaluator()->isSearching();
    // Kept positions take at most a quarter of what the result takes, and only memory that is left
    // beside it.
    constexpr std::size_t bytesPerKept = PreparedPositions::mostBytesPerPosition;
    const std::size_t bytesOfResult = numTimes * bytesPerSample;
    const bool fits = 4 * bytesPerKept <= bytesOfResult &&
                      mPositions.count <= availableMemory() / (bytesOfResult + bytesPerKept);
    return {.isLattice = isSearching && mPositions.planes.has_value(),
            .isSorting = isSearching && mPositions.mayBeScattered,
            .isKeeping = isSearching && fits};
}

template<std::size_t D, Value T>
std::size_t FieldSampler<D, T>::valuesAt(double time, std::span<T> values,
                                         std::span<std::uint8_t> isValid, ProgressCounter& progress,
                                         const volatile bool& abortFlag)
{
    const std::size_t n = mPositions.count;
    assert(values.size() == n && isValid.size() == n);
    const std::size_t team = mWorkers.size();
    TeamFailure failure;
    std::atomic<std::size_t> numOutside = 0;
    const SampleStep<T> step{time, values.data(), isValid.data(), progress, abortFlag, failure};
    // The same thread samples the same positions each time, if the team is as large as expected.
#pragma omp parallel for schedule(static, 1) num_threads(static_cast<int>(team))
    for (std::size_t number = 0; number < team; ++number)
        failure.guard(
            [&]
            {
                auto& worker = mWorkers[number];
                const std::size_t first = number * (n / team) + std::min(number, n % team);
                const std::size_t last = first + n / team + (number < n % team ? 1 : 0);
                if (worker == nullptr)
                    worker = std::make_unique<SampleWorker<D, T>>(mField, mPositions, *mPlan, first,
                                                                  last);
                numOutside += worker->sample(step);
            });
    failure.rethrow();
    return numOutside;
}

template class FieldSampler<1, Scalar>;
template class FieldSampler<1, Vector1>;
template class FieldSampler<1, Vector2>;
template class FieldSampler<1, Vector3>;
template class FieldSampler<1, Vector4>;
template class FieldSampler<1, Matrix1>;
template class FieldSampler<1, Matrix2>;
template class FieldSampler<1, Matrix3>;
template class FieldSampler<1, Matrix4>;
template class FieldSampler<1, Vector242>;
template class FieldSampler<1, Vector375>;
template class FieldSampler<2, Scalar>;
template class FieldSampler<2, Vector1>;
template class FieldSampler<2, Vector2>;
template class FieldSampler<2, Vector3>;
template class FieldSampler<2, Vector4>;
template class FieldSampler<2, Matrix1>;
template class FieldSampler<2, Matrix2>;
template class FieldSampler<2, Matrix3>;
template class FieldSampler<2, Matrix4>;
template class FieldSampler<2, Vector242>;
template class FieldSampler<2, Vector375>;
template class FieldSampler<3, Scalar>;
template class FieldSampler<3, Vector1>;
template class FieldSampler<3, Vector2>;
template class FieldSampler<3, Vector3>;
template class FieldSampler<3, Vector4>;
template class FieldSampler<3, Matrix1>;
template class FieldSampler<3, Matrix2>;
template class FieldSampler<3, Matrix3>;
template class FieldSampler<3, Matrix4>;
template class FieldSampler<3, Vector242>;
template class FieldSampler<3, Vector375>;

}
