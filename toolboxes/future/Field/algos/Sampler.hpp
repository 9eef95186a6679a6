#pragma once

#include <tavrin/algorithm/Algorithm.hpp>
#include <tavrin/domain/StructuredGrid.hpp>
#include <tavrin/field/Field.hpp>
#include <tavrin/field/SpatialOrder.hpp>

#include <omp.h>

#include <atomic>
#include <exception>
#include <functional>

namespace tavrin
{

/// Points that are sampled, and counted as progress, together.
constexpr std::size_t pointsPerBlock = 256;

/// Keeps the first exception of a team of threads, none of which may leave its parallel region.
class TeamFailure
{
public:
    template<typename Work>
    void guard(const Work& work) noexcept
    {
        if (hasHappened())
            return;
        try
        {
            work();
        }
        catch (...)
        {
            if (!mHasHappened.exchange(true))
                mException = std::current_exception();
        }
    }

    bool hasHappened() const { return mHasHappened; }

    /// To be called when the team is done.
    void rethrow() const
    {
        if (mException != nullptr)
            std::rethrow_exception(mException);
    }

private:
    std::atomic<bool> mHasHappened = false;
    std::exception_ptr mException;
};

/// The points where samples are taken, as positions of a field.
template<std::size_t D>
struct Positions
{
    using Position = Tensor<double, D>;

    std::size_t count;
    /// Whether positions that follow one another may lie far apart.
    bool mayBeScattered;
    /// The positions from `first` on, as `ValueArray::read` delivers values.
    std::function<std::span<const Position>(std::size_t first, std::span<Position> scratch)> read;
};

/// The points of a grid of any dimension. Coordinates that a field of dimension D does not have are
/// dropped, missing ones are 0. The grid must outlive the answer.
template<std::size_t D, std::size_t G>
Positions<D> positionsOf(const PointSet<G>& grid)
{
    using Position = Tensor<double, D>;
    const auto read = [&grid](std::size_t first,
                              std::span<Position> scratch) -> std::span<const Position>
    {
        if constexpr (D == G)
            return grid.points(first, scratch);
        else
        {
            std::array<Tensor<double, G>, pointsPerBlock> block;
            for (std::size_t done = 0; done < scratch.size();)
            {
                const auto part =
                    std::span(block).first(std::min(pointsPerBlock, scratch.size() - done));
                for (const auto& point : grid.points(first + done, part))
                {
                    Position& position = scratch[done++] = {};
                    std::copy_n(point.begin(), std::min(D, G), position.begin());
                }
            }
            return scratch;
        }
    };
    const bool isStructured = dynamic_cast<const StructuredGrid<G>*>(&grid) != nullptr;
    return {grid.numPoints(), !isStructured, read};
}

/// Samples a field at every position at one time after the other, on all threads.
template<std::size_t D, typename T>
class Sampler
{
public:
    /// What a sample takes in the result: its value, and the mark whether it is real.
    static constexpr std::size_t bytesPerSample = sizeof(T) + sizeof(ValidityMask::value_type);

    /// What it takes to keep where a position is.
    static constexpr std::size_t bytesPerPlace = 40;

    /// Where positions are can be found out once for all times, or at each time again.
    Sampler(const Field<D, T>& field, const std::vector<double>& times, Positions<D> positions,
            bool keepsPlaces)
        : mField(field), mTimes(times), mPositions(std::move(positions)), mKeepsPlaces(keepsPlaces),
          mIsSorted(mPositions.mayBeScattered && field.isSearched()),
          mValues(mTimes.size() * mPositions.count),
          mValidity(std::make_shared<ValidityMask>(mValues.size()))
    {
    }

    /// After an abort some values are undefined. Throws what evaluating the field throws.
    void run(Algorithm::Progress& progress, const volatile bool& abortFlag);

    /// Those of all positions at the first time, then at the next; 0 where the field has none.
    LargeVector<T> takeValues() { return std::move(mValues); }
    std::shared_ptr<const ValidityMask> validity() const { return mValidity; }
    std::size_t numOutside() const { return mNumOutside; }

private:
    using Evaluator = FieldEvaluator<D, T>;
    using Position = Tensor<double, D>;

    /// Scattered points that are fetched together and sampled in spatial order: so many that
    /// neighbours among them share what they read of the field, in a few megabytes.
    static constexpr std::size_t pointsPerSorting = std::size_t{1} << 18;

    /// Positions that are fetched together.
    struct Chunk
    {
        std::size_t first;
        std::size_t count;
        /// In which they are sampled; as they come where it is empty.
        std::vector<std::uint32_t> order;
        /// Of one block after the other, where they are kept.
        std::vector<std::unique_ptr<typename Evaluator::Places>> places;
    };

    /// What a thread works with.
    struct Worker
    {
        std::unique_ptr<Evaluator> evaluator;
        std::vector<Chunk> chunks;
        std::vector<Position> scratch;
        /// Of a block in the order of the chunk.
        std::vector<Position> positions;
        std::vector<T> values;
        std::vector<std::uint8_t> validity;
    };

    Worker makeWorker(std::size_t first, std::size_t last) const;
    void sampleStep(Worker& worker, std::size_t step, Algorithm::Progress& progress,
                    const volatile bool& abortFlag);
    void sampleBlock(Worker& worker, Chunk& chunk, std::span<const Position> positions,
                     std::size_t block, std::size_t step, const volatile bool& abortFlag);

    const Field<D, T>& mField;
    const std::vector<double>& mTimes;
    Positions<D> mPositions;
    bool mKeepsPlaces;
    bool mIsSorted;
    LargeVector<T> mValues;
    std::shared_ptr<ValidityMask> mValidity;
    std::atomic<std::size_t> mNumOutside = 0;
    TeamFailure mFailure;
};

template<std::size_t D, typename T>
void Sampler<D, T>::run(Algorithm::Progress& progress, const volatile bool& abortFlag)
{
    // The first evaluator makes what all of them share, and here all threads take part in that.
    mField.makeEvaluator();
    const std::size_t n = mPositions.count;
    std::atomic<std::size_t> numSteps = mTimes.size();
#pragma omp parallel
    {
        const auto team = static_cast<std::size_t>(omp_get_num_threads());
        const auto thread = static_cast<std::size_t>(omp_get_thread_num());
        const std::size_t first = thread * (n / team) + std::min(thread, n % team);
        const std::size_t last = first + n / team + (thread < n % team ? 1 : 0);
        Worker worker;
        mFailure.guard([&] { worker = makeWorker(first, last); });
        for (std::size_t step = 0; step < numSteps; ++step)
        {
            mFailure.guard([&] { sampleStep(worker, step, progress, abortFlag); });
            // Set before the barrier, so that all threads see it after this very step.
            if (abortFlag || mFailure.hasHappened())
                numSteps = step + 1;
#pragma omp barrier
        }
    }
    mFailure.rethrow();
}

/// For the positions first ... last - 1.
template<std::size_t D, typename T>
typename Sampler<D, T>::Worker Sampler<D, T>::makeWorker(std::size_t first, std::size_t last) const
{
    Worker worker;
    worker.evaluator = mField.makeEvaluator();
    const std::size_t atOnce = mIsSorted ? pointsPerSorting : pointsPerBlock;
    for (; first < last; first += atOnce)
        worker.chunks.push_back({first, std::min(atOnce, last - first), {}, {}});
    worker.scratch.resize(worker.chunks.empty() ? 0 : worker.chunks.front().count);
    if (mIsSorted)
    {
        worker.positions.resize(pointsPerBlock);
        worker.values.resize(pointsPerBlock);
        worker.validity.resize(pointsPerBlock);
    }
    return worker;
}

template<std::size_t D, typename T>
void Sampler<D, T>::sampleStep(Worker& worker, std::size_t step, Algorithm::Progress& progress,
                               const volatile bool& abortFlag)
{
    std::size_t outside = 0;
    for (Chunk& chunk : worker.chunks)
    {
        std::span<const Position> positions;
        if (step == 0 || !mKeepsPlaces)
        {
            positions = mPositions.read(chunk.first, std::span(worker.scratch).first(chunk.count));
            if (mIsSorted)
                chunk.order = spatialOrder(positions);
        }
        for (std::size_t block = 0; block < chunk.count; block += pointsPerBlock)
        {
            sampleBlock(worker, chunk, positions, block, step, abortFlag);
            if (abortFlag || mFailure.hasHappened())
                return;
            progress.advance(std::min(pointsPerBlock, chunk.count - block));
        }
        if (!mKeepsPlaces)
            chunk.order = {};
        const auto marks =
            std::span(*mValidity).subspan(step * mPositions.count + chunk.first, chunk.count);
        outside += static_cast<std::size_t>(std::ranges::count(marks, 0));
    }
    mNumOutside += outside;
    // Nobody then holds steps of a series that the next time does not need.
    worker.evaluator->release();
}

/// Samples the positions of a chunk from the one with the number `block` on. `positions` are those of
/// the chunk, if their places are not known yet.
template<std::size_t D, typename T>
void Sampler<D, T>::sampleBlock(Worker& worker, Chunk& chunk, std::span<const Position> positions,
                                std::size_t block, std::size_t step, const volatile bool& abortFlag)
{
    const std::size_t count = std::min(pointsPerBlock, chunk.count - block);
    const bool hasOrder = !chunk.order.empty();
    const std::size_t start = step * mPositions.count + chunk.first;
    T* const values = hasOrder ? worker.values.data() : mValues.data() + start + block;
    std::uint8_t* const validity =
        hasOrder ? worker.validity.data() : mValidity->data() + start + block;
    std::span<const Position> here;
    if (!positions.empty() && hasOrder)
    {
        for (std::size_t k = 0; k < count; ++k)
            worker.positions[k] = positions[chunk.order[block + k]];
        here = std::span(worker.positions).first(count);
    }
    else if (!positions.empty())
        here = positions.subspan(block, count);

    if (mKeepsPlaces)
    {
        if (!here.empty())
            chunk.places.push_back(worker.evaluator->place(here));
        worker.evaluator->sampleAt(mTimes[step], *chunk.places[block / pointsPerBlock], values,
                                   validity, abortFlag);
    }
    else
        worker.evaluator->sample(mTimes[step], here, values, validity, abortFlag);
    for (std::size_t k = 0; k < count && hasOrder && !abortFlag; ++k)
    {
        mValues[start + chunk.order[block + k]] = values[k];
        (*mValidity)[start + chunk.order[block + k]] = validity[k];
    }
}

}
