#pragma once

#include <tavrin/pipeline/ObjectPool.hpp>
#include <tavrin/pipeline/Plan.hpp>

namespace tavrin::pipeline
{

/// Sets the options of a run from text, with data from files and from earlier steps.
class TAVRIN_API RunInputs
{
public:
    using Object = std::shared_ptr<const DataObject>;
    using Members = DataObjectBundle::Members;
    /// The result of an earlier step.
    using FindResult = std::function<Object(const StepOutput& source)>;

    RunInputs(AlgorithmRun& run, ObjectPool& pool, FindResult findResult = {})
        : mRun(run), mPool(pool), mFindResult(std::move(findResult))
    {
    }

    /// Loads and connects all data, a bundle as a whole, and then sets the values in the order given;
    /// a value of `auto` stays at its default. An empty reference to a bundle drops the members given
    /// before it. A color map without a range spans the norms of the first function, wherever that
    /// is given: those at the time that the number option "Time" names if there is one, unless
    /// `range` replaces them. Throws what `AlgorithmRun` and `DataKind::make` throw.
    void apply(const Step& step, const std::optional<ValueRange>& range = std::nullopt);

    /// The objects that were made, in this order: color maps come last. Functions have all their
    /// values, even if fewer are shown.
    const Members& objects() const { return mObjects; }

    /// The time that is shown of the first function with several time steps; nothing without one.
    std::optional<double> timeOfSeries(const Step& step) const;

    /// The norms that a color map without a range spans; nothing without a function with finite
    /// norms.
    std::optional<ValueRange> shownNorms(const Step& step) const;

private:
    std::optional<double> shownTime(const Step& step) const;
    std::vector<Members> loadData(const Step& step, const ShownNorms& shown);
    Members objectsOf(const OptionAssignment& assignment, const ShownNorms& shown);
    void connectData(const Step& step, const std::vector<Members>& loaded);
    void connect(const std::string& option, const Members& members);

    AlgorithmRun& mRun;
    ObjectPool& mPool;
    FindResult mFindResult;
    Members mObjects;
};

}
