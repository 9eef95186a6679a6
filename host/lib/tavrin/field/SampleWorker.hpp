#pragma once

#include <tavrin/base/ProgressCounter.hpp>
#include <tavrin/base/TeamFailure.hpp>
#include <tavrin/field/BatchEvaluator.hpp>
#include <tavrin/field/ChunkReader.hpp>
#include <tavrin/field/Field.hpp>

#include <algorithm>

namespace tavrin
{

/// How the positions of a sampler are worked through.
struct SamplePlan
{
    /// Whether positions are prepared as parts of a lattice.
    bool isLattice;
    /// Whether positions are evaluated in spatial order.
    bool isSorting;
    /// Whether what was prepared is kept for the next time.
    bool isKeeping;
};

/// The arrays of all samples at one time, and what the workers share: progress, and the reasons to end
/// the work early.
template<Value T>
struct SampleStep
{
    double time;
    T* values;
    std::uint8_t* isValid;
    ProgressCounter& progress;
    const volatile bool& abortFlag;
    const TeamFailure& failure;

    bool isAborted() const { return abortFlag || failure.hasHappened(); }
};

/// The share of one thread in the positions of a `FieldSampler`.
template<std::size_t D, Value T>
class SampleWorker
{
public:
    using Position = Tensor<double, D>;

    /// For the positions first ... last - 1. The field and the positions must outlive it.
    SampleWorker(const Field<D, T>& field, const SamplePositions<D>& positions,
                 const SamplePlan& plan, std::size_t first, std::size_t last)
        : mPositions(positions), mPlan(plan), mEvaluator(field.makeBatchEvaluator()),
          mReader(positions, plan.isSorting)
    {
        if (plan.isLattice)
            addChunks(latticeChunks(latticeOf(*positions.planes), first, last, positionsPerLookup));
        else
            addChunks(consecutiveChunks(first, last,
                                        plan.isSorting ? positionsPerSorting : last - first));
    }

    /// Samples all its positions. Returns the number of those without a value, or 0 after an abort.
    std::size_t sample(const SampleStep<T>& step)
    {
        std::size_t numOutside = 0;
        for (Chunk& chunk : mChunks)
        {
            numOutside += sampleChunk(chunk, step);
            if (step.isAborted())
                return 0;
        }
        // No worker then holds steps of a series that the next time does not need.
        mEvaluator->release();
        return numOutside;
    }

private:
    /// Positions of a lattice that are prepared together: a cube of about 50 positions along each
    /// edge, so that few cells lie on its boundary and are looked at again by the next chunk, whose
    /// cells and reference points take 3.5 MB, a share of the outer cache.
    static constexpr std::size_t positionsPerLookup = std::size_t{1} << 17;

    /// Scattered positions that are fetched and sorted together: enough for neighbors among them to
    /// share what they read of a large grid, in 6 MB of positions and 3 MB for sorting.
    static constexpr std::size_t positionsPerSorting = std::size_t{1} << 18;

    /// A run that is kept for the next time: prepared, or its positions where that saves nothing.
    struct KeptRun
    {
        std::unique_ptr<PreparedPositions> prepared;
        std::vector<Position> positions;
    };

    struct Chunk : SampleChunk
    {
        explicit Chunk(SampleChunk chunk) : SampleChunk(std::move(chunk)) {}

        bool isPrepared = false;
        /// All positions of the chunk, where they are prepared together.
        std::unique_ptr<PreparedPositions> prepared;
        std::vector<KeptRun> keptRuns;
        ChunkOrder order;
    };

    void addChunks(std::vector<SampleChunk> chunks)
    {
        for (SampleChunk& chunk : chunks)
            mChunks.emplace_back(std::move(chunk));
    }

    /// Returns the number of positions without a value.
    std::size_t sampleChunk(Chunk& chunk, const SampleStep<T>& step)
    {
        if (!chunk.isPrepared)
            prepare(chunk, step.abortFlag);
        std::size_t numOutside = 0;
        std::size_t before = 0;
        for (std::size_t number = 0; number < chunk.runs.size() && !step.isAborted(); ++number)
        {
            numOutside += sampleRun(chunk, number, before, step);
            before += chunk.runs[number].count;
            step.progress.advance(chunk.runs[number].count);
        }
        if (!mPlan.isKeeping)
        {
            chunk.isPrepared = false;
            chunk.prepared = nullptr;
            chunk.order = {};
        }
        return numOutside;
    }

    void prepare(Chunk& chunk, const volatile bool& abortFlag)
    {
        if (chunk.block)
            chunk.prepared =
                mEvaluator->prepare(latticeOf(*mPositions.planes).part(*chunk.block), abortFlag);
        chunk.order = mReader.open(chunk);
        chunk.isPrepared = true;
    }

    /// `before` is the number of positions in the runs of the chunk before this one. Returns the
    /// number of positions without a value.
    std::size_t sampleRun(Chunk& chunk, std::size_t number, std::size_t before,
                          const SampleStep<T>& step)
    {
        const SampleRun& run = chunk.runs[number];
        if (chunk.order.empty())
        {
            evaluateRun(chunk, number, before, step, step.values + run.first,
                        step.isValid + run.first);
            return numZeros(step.isValid + run.first, run.count);
        }
        mValues.resize(positionsPerRun);
        mValidity.resize(positionsPerRun);
        evaluateRun(chunk, number, before, step, mValues.data(), mValidity.data());
        for (std::size_t k = 0; k < run.count && !step.abortFlag; ++k)
        {
            const std::size_t target = chunk.first() + chunk.order[before + k];
            step.values[target] = mValues[k];
            step.isValid[target] = mValidity[k];
        }
        return numZeros(mValidity.data(), run.count);
    }

    /// Writes the values of a run in the order of the chunk.
    void evaluateRun(Chunk& chunk, std::size_t number, std::size_t before,
                     const SampleStep<T>& step, T* values, std::uint8_t* isValid)
    {
        const SampleRun& run = chunk.runs[number];
        if (chunk.prepared != nullptr)
            mEvaluator->evaluate(step.time, *chunk.prepared, before, run.count, values, isValid,
                                 step.abortFlag);
        else if (!mPlan.isKeeping)
            mEvaluator->evaluate(step.time, mReader.read(run, before, chunk.order), values, isValid,
                                 step.abortFlag);
        else
        {
            if (chunk.keptRuns.size() == number)
                chunk.keptRuns.push_back(kept(mReader.read(run, before, chunk.order)));
            const KeptRun& known = chunk.keptRuns[number];
            if (known.prepared != nullptr)
                mEvaluator->evaluate(step.time, *known.prepared, 0, run.count, values, isValid,
                                     step.abortFlag);
            else
                mEvaluator->evaluate(step.time, known.positions, values, isValid, step.abortFlag);
        }
    }

    KeptRun kept(std::span<const Position> positions)
    {
        KeptRun run{mEvaluator->prepare(positions), {}};
        if (run.prepared == nullptr)
            run.positions.assign(positions.begin(), positions.end());
        return run;
    }

    static std::size_t numZeros(const std::uint8_t* marks, std::size_t count)
    {
        return static_cast<std::size_t>(std::count(marks, marks + count, 0));
    }

    const SamplePositions<D>& mPositions;
    SamplePlan mPlan;
    std::unique_ptr<BatchEvaluator<D, T>> mEvaluator;
    ChunkReader<D> mReader;
    std::vector<Chunk> mChunks;

    /// A run in the order of its chunk.
    std::vector<T> mValues;
    std::vector<std::uint8_t> mValidity;
};

}
