#include <tavrin/algorithm/AlgorithmRegister.hpp>
#include <tavrin/domain/elementPosition.hpp>
#include <tavrin/function/NormBounds.hpp>
#include <tavrin/function/visit.hpp>

#include <cmath>
#include <numeric>

namespace
{

using namespace tavrin;

/// The value types that are reported on, in the order in which they are tried.
using ReportedTypes =
    TypeList<Scalar, Vector1, Vector2, Vector3, Vector4, Matrix1, Matrix2, Matrix3, Matrix4>;

/// The values of the first time step of a function that count: all of them, or those that its mask
/// marks as real.
template<typename T>
class CountedValues
{
public:
    /// Counted values that are read together, with the index of each.
    struct Block
    {
        std::array<T, NormBounds::valuesPerBlock> scratch;
        std::array<std::size_t, NormBounds::valuesPerBlock> indices;
        std::span<const T> values;
    };

    explicit CountedValues(const Function<T>& function)
        : mEvaluator(function.makeDiscreteEvaluator())
    {
        if (function.validity() == nullptr)
            return;
        mMask = std::span(*function.validity()).first(mEvaluator.size());
        mNumCounted = mEvaluator.size() - static_cast<std::size_t>(std::ranges::count(mMask, 0));
    }

    const DiscreteFunctionEvaluator<T>& evaluator() const { return mEvaluator; }

    /// The number of values, counted or not.
    std::size_t size() const { return mEvaluator.size(); }
    std::size_t numCounted() const { return mMask.empty() ? size() : mNumCounted; }
    bool counts(std::size_t index) const { return mMask.empty() || mMask[index] != 0; }

    /// The index of the first value that counts; there has to be one.
    std::size_t firstIndex() const
    {
        std::size_t index = 0;
        while (!counts(index))
            ++index;
        return index;
    }

    /// Reads what counts among the values from `first` on, as many as a block holds.
    void read(std::size_t first, Block& block) const
    {
        const std::size_t count = std::min(block.scratch.size(), size() - first);
        block.values = mEvaluator.read(first, std::span(block.scratch).first(count));
        if (mMask.empty())
        {
            std::iota(block.indices.begin(), block.indices.end(), first);
            return;
        }
        std::size_t kept = 0;
        for (std::size_t i = 0; i < count; ++i)
        {
            if (!counts(first + i))
                continue;
            block.indices[kept] = first + i;
            block.scratch[kept++] = block.values[i];
        }
        block.values = std::span(block.scratch).first(kept);
    }

private:
    DiscreteFunctionEvaluator<T> mEvaluator;
    std::span<const std::uint8_t> mMask;
    std::size_t mNumCounted = 0;
};

/// Calls `work` with one block of counted values after the other, until the abort flag is set.
template<typename T, typename Work>
void forBlocks(const CountedValues<T>& values, const volatile bool& abortFlag, const Work& work)
{
    typename CountedValues<T>::Block block;
    for (std::size_t first = 0; first < values.size() && !abortFlag; first += block.scratch.size())
    {
        values.read(first, block);
        work(block);
    }
}

/// The extreme norms of values, and the lowest index at which each occurs.
struct Extremes
{
    NormBounds bounds;
    std::size_t minimumIndex;
    std::size_t maximumIndex;
};

template<typename T>
Extremes findExtremes(const CountedValues<T>& values, ProgressCounter& progress,
                      const volatile bool& abortFlag)
{
    const std::size_t first = values.firstIndex();
    const double firstNorm = norm(values.evaluator().value(first));
    Extremes extremes{{firstNorm, firstNorm}, first, first};
    forBlocks(values, abortFlag,
              [&](const auto& block)
              {
                  NormBounds& bounds = extremes.bounds;
                  const NormBounds before = std::exchange(bounds, bounds.widenedBy(block.values));
                  // A block is searched only if it holds a new extreme.
                  const auto indexOf = [&](double wanted)
                  {
                      const auto found = std::ranges::find(block.values, wanted,
                                                           [](const T& v) { return norm(v); });
                      return block.indices[static_cast<std::size_t>(found - block.values.begin())];
                  };
                  if (bounds.least < before.least)
                      extremes.minimumIndex = indexOf(bounds.least);
                  if (bounds.greatest > before.greatest)
                      extremes.maximumIndex = indexOf(bounds.greatest);
                  progress.advance(block.scratch.size());
              });
    return extremes;
}

/// The bounds of the norms of all counted values.
template<typename T>
NormBounds boundNorms(const CountedValues<T>& values, const volatile bool& abortFlag)
{
    NormBounds bounds;
    forBlocks(values, abortFlag,
              [&](const auto& block) { bounds = bounds.widenedBy(block.values); });
    return bounds;
}

/// The number of values with an infinite component. Values are looked at only where a norm is not
/// finite.
template<typename T>
std::size_t countInfinite(const CountedValues<T>& values, const NormBounds& bounds,
                          const volatile bool& abortFlag)
{
    std::size_t count = 0;
    // The bounds are NaN where the first norm is.
    if (std::isfinite(bounds.greatest) && bounds.notANumber == 0)
        return count;
    const auto isInfinite = [](const T& value)
    { return std::ranges::any_of(value, [](double component) { return std::isinf(component); }); };
    forBlocks(values, abortFlag,
              [&](const auto& block) {
                  count +=
                      static_cast<std::size_t>(std::ranges::count_if(block.values, isInfinite));
              });
    return count;
}

template<typename T>
ReportValue::Numbers componentsOf(const T& value)
{
    return {value.begin(), value.end()};
}

class InfoAlgorithm : public VisAlgorithm
{
public:
    struct Options : tavrin::Options
    {
        explicit Options(Control& control) : tavrin::Options(control)
        {
            add<FunctionBase>("Field",
                              "The field you want information about. It can contain scalars, "
                              "vectors, or matrices in 1, 2, or 3 dimensions");
            add<bool>("Compute grid bounding box",
                      "Compute the bounding box of all grid cells, which may be different to the "
                      "bounding box of the domain.",
                      true);
            add<bool>("Compute min, max, average",
                      "Shall the tensors with minimal, maximal, and average norm be calculated? "
                      "Warning: a tensor with average norm does not necessarily exist",
                      true);
            add<bool>("Compute median",
                      "Shall the median tensor be calculated? Warning: the median is calculated "
                      "component-wise. A tensor with the median value does not necessarily exist",
                      false);
            setHidden("Compute grid bounding box", true);
        }

        void optionChanged(const std::string& name) override
        {
            if (name != "Field")
                return;
            if (const auto field = get<FunctionBase>("Field"))
                setVisible("Compute grid bounding box",
                           field->domain()->isA(PointSetBase::classTypeId()));
        }
    };

    using VisAlgorithm::VisAlgorithm;

    void execute(const tavrin::Options& options, const volatile bool& abortFlag) override;

private:
    /// Thrown in the middle of a selection after the abort flag was set.
    struct Interrupted
    {};

    /// Orders indices by one component of the values that they stand for.
    template<typename Evaluator>
    class IndirectLess
    {
    public:
        IndirectLess(const Evaluator& evaluator, std::size_t component,
                     const volatile bool& abortFlag)
            : mEvaluator(evaluator), mComponent(component), mAbortFlag(abortFlag)
        {
        }

        bool operator()(std::uint64_t a, std::uint64_t b) const
        {
            if (mAbortFlag)
                throw Interrupted();
            return mEvaluator.value(a)[mComponent] < mEvaluator.value(b)[mComponent];
        }

    private:
        const Evaluator& mEvaluator;
        std::size_t mComponent;
        const volatile bool& mAbortFlag;
    };

    void reportBoundingBox(const PointSetBase& points) const;

    template<typename T>
    void exec(const Function<T>& field, bool computeMedian, bool computeExtremes,
              const volatile bool& abortFlag) const;
    template<typename T>
    NormBounds reportExtremes(const Function<T>& field, const CountedValues<T>& values,
                              const volatile bool& abortFlag) const;
    template<typename T>
    void reportMedian(const CountedValues<T>& values, const volatile bool& abortFlag) const;
};

void InfoAlgorithm::execute(const tavrin::Options& options, const volatile bool& abortFlag)
{
    const auto field = options.get<FunctionBase>("Field");
    const bool computeBox = options.get<bool>("Compute grid bounding box");
    const bool computeMedian = options.get<bool>("Compute median");
    const bool computeExtremes = options.get<bool>("Compute min, max, average");
    if (field == nullptr)
    {
        debugLog() << "Input field not set" << std::endl;
        return;
    }

    const auto domain = field->domain();
    const auto* const points = dynamic_cast<const PointSetBase*>(domain.get());
    if (computeBox && points != nullptr)
        reportBoundingBox(*points);

    const bool isKnown = visitFunction<ReportedTypes>(
        *field,
        [&](const auto& function) { exec(function, computeMedian, computeExtremes, abortFlag); });
    if (!isKnown)
        infoLog() << "Unknown field type." << std::endl;
}

void InfoAlgorithm::reportBoundingBox(const PointSetBase& points) const
{
    if (points.numPoints() == 0)
        return;
    const auto box = points.boundingBox();
    ReportValue::Numbers lower;
    ReportValue::Numbers upper;
    for (std::size_t i = 0; i < box.getDimensions(); ++i)
    {
        lower.push_back(box[i].first);
        upper.push_back(box[i].second);
    }
    const auto writeList = [&](const ReportValue::Numbers& bounds)
    {
        for (std::size_t i = 0; i < bounds.size(); ++i)
            infoLog() << (i == 0 ? "" : ", ") << bounds[i];
    };
    infoLog() << "The domain bounding box is spanned by [";
    writeList(lower);
    infoLog() << "] and [";
    writeList(upper);
    infoLog() << "]" << std::endl;
    report("box", {{"minimum", lower}, {"maximum", upper}});
}

template<typename T>
void InfoAlgorithm::exec(const Function<T>& field, bool computeMedian, bool computeExtremes,
                         const volatile bool& abortFlag) const
{
    if (!computeExtremes && !computeMedian)
        return;
    const CountedValues<T> values(field);
    const std::size_t numInvalid = values.size() - values.numCounted();
    if (numInvalid > 0)
        hint(std::to_string(numInvalid) + " of " + std::to_string(values.size()) +
             " values are marked as outside and left out");
    const auto reportCounts = [&](std::size_t notANumber, std::size_t infinite)
    {
        report("counts", {{"values", values.numCounted()},
                          {"invalid", numInvalid},
                          {"notANumber", notANumber},
                          {"infinite", infinite}});
    };
    if (values.numCounted() == 0)
    {
        infoLog() << "Field does not contain any values" << std::endl;
        return reportCounts(0, 0);
    }
    if (field.numTimeSteps() > 1)
        hint("of " + std::to_string(field.numTimeSteps()) +
             " time steps these are the values of the first, at t = " +
             toText(field.timeSteps().front()));
    const NormBounds bounds =
        computeExtremes ? reportExtremes(field, values, abortFlag) : boundNorms(values, abortFlag);
    if (computeMedian)
        reportMedian(values, abortFlag);
    const std::size_t numInfinite = countInfinite(values, bounds, abortFlag);
    const auto share = [&](std::size_t count) {
        return std::to_string(count) + " of " + std::to_string(values.numCounted()) +
               " values are ";
    };
    if (bounds.notANumber > 0)
        hint(share(bounds.notANumber) + "not a number" +
             (!computeExtremes ? ""
              : std::isnan(norm(values.evaluator().value(values.firstIndex())))
                  ? "; the first is one of them, and no norm is less or greater than it"
                  : "; they are neither minimal nor maximal") +
             (computeMedian ? "; the median depends on where they stand" : ""));
    if (numInfinite > 0)
        hint(share(numInfinite) + "infinite");
    reportCounts(bounds.notANumber, numInfinite);
}

/// Returns the bounds of the norms.
template<typename T>
NormBounds InfoAlgorithm::reportExtremes(const Function<T>& field, const CountedValues<T>& values,
                                         const volatile bool& abortFlag) const
{
    Progress progress(*this, "calculating min, max, average", values.size());
    const Extremes extremes = findExtremes(values, progress, abortFlag);
    const auto tell = [&](const char* which, const char* name, std::size_t index)
    {
        const T value = values.evaluator().value(index);
        infoLog() << "A tensor with " << which << " norm has the norm " << norm(value)
                  << ", the value " << value << " at index " << field.indexInFile(index) << " of "
                  << field.domainPart().getName() << std::endl;
        report(name, {{"norm", norm(value)},
                      {"value", componentsOf(value)},
                      {"index", field.indexInFile(index)},
                      {"position", elementPosition(*field.domain(), field.domainPart(), index)}});
    };
    tell("minimal", "minimum", extremes.minimumIndex);
    tell("maximal", "maximum", extremes.maximumIndex);
    return extremes.bounds;
}

template<typename T>
void InfoAlgorithm::reportMedian(const CountedValues<T>& values,
                                 const volatile bool& abortFlag) const
{
    std::vector<std::uint64_t> indices(values.numCounted());
    std::size_t filled = 0;
    for (std::size_t i = 0; i < values.size() && !abortFlag; ++i)
        if (values.counts(i))
            indices[filled++] = i;
    // Once the filling was aborted, the median is that of the list as it is.
    constexpr static volatile bool never = false;
    const volatile bool& stopFlag = filled == indices.size() ? abortFlag : never;
    const Progress progress(*this, "calculating median", indices.size(), true);

    const auto middle = indices.begin() + static_cast<std::ptrdiff_t>(indices.size() / 2);
    const bool hasNext = indices.size() % 2 == 1 && middle + 1 != indices.end();
    const auto& evaluator = values.evaluator();
    T median;
    try
    {
        // Every component starts from the order in which the one before left the list.
        for (std::size_t c = 0; c < T::size; ++c)
        {
            const IndirectLess less(evaluator, c, stopFlag);
            std::nth_element(indices.begin(), middle, indices.end(), less);
            median[c] = evaluator.value(*middle)[c];
            if (!hasNext)
                continue;
            std::nth_element(middle, middle + 1, indices.end(), less);
            median[c] = (median[c] + evaluator.value(middle[1])[c]) * 0.5;
        }
    }
    catch (const Interrupted&)
    {
        return;
    }
    infoLog() << "The median value of the field is " << median << " with norm " << norm(median)
              << std::endl;
    report("median", {{"value", componentsOf(median)}, {"norm", norm(median)}});
}

const AlgorithmRegister<InfoAlgorithm> registration(
    "Field/Info",
    "Returns the domain of the field, its min, max, average, and median values, and their "
    "positions");

}
