#include <tavrin/algorithm/AlgorithmRegister.hpp>
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
    /// Orders indices by one component of the values that they stand for.
    template<typename Evaluator>
    class IndirectLess
    {
    public:
        IndirectLess(const Evaluator& evaluator, std::size_t component)
            : mEvaluator(evaluator), mComponent(component)
        {
        }

        bool operator()(std::uint64_t a, std::uint64_t b) const
        {
            return mEvaluator.value(a)[mComponent] < mEvaluator.value(b)[mComponent];
        }

    private:
        const Evaluator& mEvaluator;
        std::size_t mComponent;
    };

    void reportBoundingBox(const PointSetBase& points) const;

    template<typename T>
    void exec(const Function<T>& field, bool computeMedian, bool computeExtremes,
              const volatile bool& abortFlag) const;
    template<typename T>
    void reportExtremes(const Function<T>& field, const volatile bool& abortFlag) const;
    template<typename T>
    void reportMedian(const Function<T>& field, const volatile bool& abortFlag) const;
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
    const auto box = points.boundingBox();
    const auto list = [&](auto bound)
    {
        for (std::size_t i = 0; i < box.getDimensions(); ++i)
            infoLog() << (i == 0 ? "" : ", ") << box[i].*bound;
    };
    infoLog() << "The domain bounding box is spanned by [";
    list(&std::pair<double, double>::first);
    infoLog() << "] and [";
    list(&std::pair<double, double>::second);
    infoLog() << "]" << std::endl;
}

template<typename T>
void InfoAlgorithm::exec(const Function<T>& field, bool computeMedian, bool computeExtremes,
                         const volatile bool& abortFlag) const
{
    if ((computeExtremes || computeMedian) && field.valuesPerStep() == 0)
    {
        infoLog() << "Field does not contain any values" << std::endl;
        return;
    }
    if (field.numTimeSteps() > 1)
        debugLog() << "hint: of " << field.numTimeSteps()
                   << " time steps these are the values of the first, at t = "
                   << field.timeSteps().front() << std::endl;
    if (computeExtremes)
        reportExtremes(field, abortFlag);
    if (computeMedian)
        reportMedian(field, abortFlag);
}

template<typename T>
void InfoAlgorithm::reportExtremes(const Function<T>& field, const volatile bool& abortFlag) const
{
    const auto evaluator = field.makeDiscreteEvaluator();
    const std::size_t count = evaluator.size();
    Progress progress(*this, "calculating min, max, average", count);

    const double firstNorm = norm(evaluator.value(0));
    NormBounds bounds{firstNorm, firstNorm};
    std::size_t minIndex = 0;
    std::size_t maxIndex = 0;
    std::array<T, NormBounds::valuesPerBlock> scratch;
    for (std::size_t first = 0; first < count && !abortFlag; first += scratch.size())
    {
        const auto values = evaluator.read(
            first, std::span(scratch).first(std::min(scratch.size(), count - first)));
        const NormBounds before = std::exchange(bounds, bounds.widenedBy(values));
        // A block is searched only if it holds a new extreme; the first such value is taken.
        const auto indexOf = [&](double wanted)
        {
            const auto found =
                std::ranges::find(values, wanted, [](const T& v) { return norm(v); });
            return first + static_cast<std::size_t>(found - values.begin());
        };
        if (bounds.least < before.least)
            minIndex = indexOf(bounds.least);
        if (bounds.greatest > before.greatest)
            maxIndex = indexOf(bounds.greatest);
        progress.advance(values.size());
    }

    const auto report = [&](const char* which, std::size_t index)
    {
        const T value = evaluator.value(index);
        infoLog() << "A tensor with " << which << " norm has the norm " << norm(value)
                  << ", the value " << value << " at index " << index << " of "
                  << field.domainPart().getName() << std::endl;
    };
    report("minimal", minIndex);
    report("maximal", maxIndex);
    if (bounds.notANumber > 0)
        debugLog() << "hint: " << bounds.notANumber << " of " << count
                   << " values are not a number; "
                   << (std::isnan(firstNorm)
                           ? "the first is one of them, and nothing compares with it"
                           : "they are neither minimal nor maximal")
                   << ", and the median means little" << std::endl;
}

template<typename T>
void InfoAlgorithm::reportMedian(const Function<T>& field, const volatile bool& abortFlag) const
{
    const auto evaluator = field.makeDiscreteEvaluator();
    std::vector<std::uint64_t> indices(evaluator.size());
    for (std::size_t i = 0; i < indices.size() && !abortFlag; ++i)
        indices[i] = i;
    const Progress progress(*this, "calculating median", indices.size(), false);

    const auto middle = indices.begin() + static_cast<std::ptrdiff_t>(indices.size() / 2);
    const bool hasNext = indices.size() % 2 == 1 && middle + 1 != indices.end();
    T median;
    // The list is not put back in order in between: each component starts where the last one ended.
    for (std::size_t c = 0; c < T::size; ++c)
    {
        const IndirectLess less(evaluator, c);
        std::nth_element(indices.begin(), middle, indices.end(), less);
        median[c] = evaluator.value(*middle)[c];
        if (!hasNext)
            continue;
        std::nth_element(middle, middle + 1, indices.end(), less);
        median[c] = (median[c] + evaluator.value(middle[1])[c]) * 0.5;
    }
    infoLog() << "The median value of the field is " << median << " with norm " << norm(median)
              << std::endl;
}

const AlgorithmRegister<InfoAlgorithm> registration(
    "Field/Info",
    "Returns the domain of the field, its min, max, average, and median values, and their "
    "positions");

}
