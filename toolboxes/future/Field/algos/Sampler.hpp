#pragma once

#include "SamplePositions.hpp"

#include <tavrin/algorithm/Algorithm.hpp>
#include <tavrin/field/Field.hpp>
#include <tavrin/field/SpatialOrder.hpp>

#include <omp.h>

#include <atomic>
#include <exception>
#include <numeric>

namespace tavrin
{

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

/// Samples a field at every position at one time after the other, on all threads.
template<std::size_t D, typename T>
class Sampler
{
public:
    /// What a sample takes in the result: its value, and the mark whether it is real.
    static constexpr std::size_t bytesPerSample = sizeof(T) + sizeof(ValidityMask::value_type);

    /// What it takes at most to keep where a position is.
    static constexpr std::size_t bytesPerPlace = FieldEvaluator<D, T>::bytesPerPlace;

    /// Where positions are can be found out once for all times, or at each time again.
    Sampler(const Field<D, T>& field, const std::vector<double>& times, Positions<D> positions,
            bool keepsPlaces)
        : mField(field), mTimes(times), mPositions(std::move(positions)), mKeepsPlaces(keepsPlaces),
          mIsSearched(field.isSearched()), mIsSorted(mPositions.mayBeScattered && mIsSearched),
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

    /// Positions of a lattice that are found together: so many that few cells are looked at again with
    /// the next ones, in a few megabytes.
    static constexpr std::size_t pointsPerLookup = std::size_t{1} << 17;

    /// Scattered points that are fetched together and sampled in spatial order: so many that
    /// neighbors among them share what they read of the field.
    static constexpr std::size_t pointsPerSorting = std::size_t{1} << 18;

    /// Positions that follow one another, and are sampled and counted as progress together.
    struct Run
    {
        std::size_t first;
        std::size_t count;
    };

    /// Positions that are found together.
    struct Chunk
    {
        std::vector<Run> runs;
        /// What they are of the lattice, if they are found as such.
        std::optional<LatticeBlock> block;
        /// Of all of them, while they are known.
        std::unique_ptr<typename Evaluator::Places> places;
        /// Of one run after the other, where they are kept and not found together.
        std::vector<std::unique_ptr<typename Evaluator::Places>> placesOfRuns;
        /// In which scattered ones are sampled; as they come where it is empty.
        std::vector<std::uint32_t> order;

        void addRuns(std::size_t first, std::size_t count)
        {
            for (; count > 0; first += runs.back().count, count -= runs.back().count)
                runs.push_back({first, std::min(pointsPerRun, count)});
        }
        std::size_t first() const { return runs.front().first; }
        std::size_t count() const
        {
            return std::accumulate(runs.begin(), runs.end(), std::size_t{0},
                                   [](std::size_t sum, const Run& run) { return sum + run.count; });
        }
    };

    /// What a thread works with.
    struct Worker
    {
        std::unique_ptr<Evaluator> evaluator;
        std::vector<Chunk> chunks;
        /// Of a chunk of scattered positions, or of a run.
        std::vector<Position> scratch;
        /// Those of the chunk that was prepared last, if they are scattered.
        std::span<const Position> fetched;
        /// Of a run in the order of the chunk.
        std::vector<Position> positions;
        std::vector<T> values;
        std::vector<std::uint8_t> validity;
    };

    Worker makeWorker(std::size_t first, std::size_t last) const;
    void addLatticeChunks(std::size_t first, std::size_t last, std::vector<Chunk>& chunks) const;
    void sampleStep(Worker& worker, std::size_t step, Algorithm::Progress& progress,
                    const volatile bool& abortFlag);
    std::size_t sampleChunk(Worker& worker, Chunk& chunk, std::size_t step,
                            Algorithm::Progress& progress, const volatile bool& abortFlag);
    void prepare(Worker& worker, Chunk& chunk, const volatile bool& abortFlag) const;
    std::size_t sampleRun(Worker& worker, Chunk& chunk, std::size_t number, std::size_t before,
                          std::size_t step, const volatile bool& abortFlag);
    std::span<const Position> positionsOf(Worker& worker, const Chunk& chunk, const Run& run,
                                          std::size_t before) const;

    const Field<D, T>& mField;
    const std::vector<double>& mTimes;
    Positions<D> mPositions;
    bool mKeepsPlaces;
    bool mIsSearched;
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
    if (mIsSearched && mPositions.planes)
        addLatticeChunks(first, last, worker.chunks);
    else
    {
        const std::size_t atOnce = mIsSorted ? pointsPerSorting : last - first;
        for (; first < last; first += worker.chunks.back().count())
            worker.chunks.emplace_back().addRuns(first, std::min(atOnce, last - first));
    }
    const bool isChunkFetched = mIsSorted && !worker.chunks.empty();
    worker.scratch.resize(isChunkFetched ? worker.chunks.front().count() : pointsPerRun);
    if (mIsSorted)
    {
        worker.positions.resize(pointsPerRun);
        worker.values.resize(pointsPerRun);
        worker.validity.resize(pointsPerRun);
    }
    return worker;
}

template<std::size_t D, typename T>
void Sampler<D, T>::addLatticeChunks(std::size_t first, std::size_t last,
                                     std::vector<Chunk>& chunks) const
{
    const Lattice<D> lattice = latticeOf(*mPositions.planes);
    for (const LatticeBlock& block : lattice.blocksOf(first, last, pointsPerLookup))
    {
        Chunk& chunk = chunks.emplace_back();
        chunk.block = block;
        // Rows that follow one another are as good as one.
        std::size_t begin = lattice.number({block.first[0], block.first[1], block.first[2]});
        std::size_t end = begin;
        for (std::size_t k = block.first[2]; k < block.end[2]; ++k)
            for (std::size_t j = block.first[1]; j < block.end[1]; ++j)
            {
                const std::size_t row = lattice.number({block.first[0], j, k});
                if (row != end)
                {
                    chunk.addRuns(begin, end - begin);
                    begin = row;
                }
                end = row + block.length(0);
            }
        chunk.addRuns(begin, end - begin);
    }
}

template<std::size_t D, typename T>
void Sampler<D, T>::sampleStep(Worker& worker, std::size_t step, Algorithm::Progress& progress,
                               const volatile bool& abortFlag)
{
    std::size_t outside = 0;
    for (Chunk& chunk : worker.chunks)
    {
        outside += sampleChunk(worker, chunk, step, progress, abortFlag);
        if (abortFlag || mFailure.hasHappened())
            return;
    }
    mNumOutside += outside;
    // Nobody then holds steps of a series that the next time does not need.
    worker.evaluator->release();
}

/// Returns how many of the positions are outside.
template<std::size_t D, typename T>
std::size_t Sampler<D, T>::sampleChunk(Worker& worker, Chunk& chunk, std::size_t step,
                                       Algorithm::Progress& progress,
                                       const volatile bool& abortFlag)
{
    if (step == 0 || !mKeepsPlaces)
        prepare(worker, chunk, abortFlag);
    std::size_t outside = 0;
    std::size_t before = 0;
    for (std::size_t number = 0; number < chunk.runs.size(); ++number)
    {
        outside += sampleRun(worker, chunk, number, before, step, abortFlag);
        if (abortFlag || mFailure.hasHappened())
            return 0;
        before += chunk.runs[number].count;
        progress.advance(chunk.runs[number].count);
    }
    if (!mKeepsPlaces)
    {
        chunk.places = nullptr;
        chunk.order = {};
    }
    return outside;
}

/// Finds the positions of a chunk, or their order, before the first of its runs.
template<std::size_t D, typename T>
void Sampler<D, T>::prepare(Worker& worker, Chunk& chunk, const volatile bool& abortFlag) const
{
    if (chunk.block)
        chunk.places =
            worker.evaluator->place(latticeOf(*mPositions.planes).part(*chunk.block), abortFlag);
    if (mIsSorted)
    {
        worker.fetched =
            mPositions.read(chunk.first(), std::span(worker.scratch).first(chunk.count()));
        chunk.order = spatialOrder(worker.fetched);
    }
}

/// Samples a run of a chunk, of which so many positions come `before` those of the run. Returns how
/// many of them are outside.
template<std::size_t D, typename T>
std::size_t Sampler<D, T>::sampleRun(Worker& worker, Chunk& chunk, std::size_t number,
                                     std::size_t before, std::size_t step,
                                     const volatile bool& abortFlag)
{
    const Run& run = chunk.runs[number];
    const double time = mTimes[step];
    const bool hasOrder = !chunk.order.empty();
    const std::size_t start = step * mPositions.count;
    T* const values = hasOrder ? worker.values.data() : mValues.data() + start + run.first;
    std::uint8_t* const validity =
        hasOrder ? worker.validity.data() : mValidity->data() + start + run.first;
    Evaluator& evaluator = *worker.evaluator;
    if (chunk.places != nullptr)
        evaluator.sampleAt(time, *chunk.places, before, run.count, values, validity, abortFlag);
    else if (!mKeepsPlaces)
        evaluator.sample(time, positionsOf(worker, chunk, run, before), values, validity,
                         abortFlag);
    else
    {
        auto& places = chunk.placesOfRuns;
        if (places.size() == number)
            places.push_back(evaluator.place(positionsOf(worker, chunk, run, before)));
        evaluator.sampleAt(time, *places[number], 0, run.count, values, validity, abortFlag);
    }
    for (std::size_t k = 0; k < run.count && hasOrder && !abortFlag; ++k)
    {
        const std::size_t target = start + chunk.first() + chunk.order[before + k];
        mValues[target] = values[k];
        (*mValidity)[target] = validity[k];
    }
    return static_cast<std::size_t>(std::count(validity, validity + run.count, 0));
}

template<std::size_t D, typename T>
auto Sampler<D, T>::positionsOf(Worker& worker, const Chunk& chunk, const Run& run,
                                std::size_t before) const -> std::span<const Position>
{
    if (!mIsSorted)
        return mPositions.read(run.first, std::span(worker.scratch).first(run.count));
    if (chunk.order.empty())
        return worker.fetched.subspan(before, run.count);
    for (std::size_t k = 0; k < run.count; ++k)
        worker.positions[k] = worker.fetched[chunk.order[before + k]];
    return std::span(worker.positions).first(run.count);
}

}
