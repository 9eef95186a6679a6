#include <BundleTools/ListParser.hpp>
#include <BundleTools/WalkLimits.hpp>
#include <tavrin/algorithm/AlgorithmRegister.hpp>
#include <tavrin/base/Memory.hpp>
#include <tavrin/field/FieldSampler.hpp>
#include <tavrin/function/visit.hpp>

#include <iostream>
#include <sstream>

namespace
{

using namespace tavrin;

/// The domains at whose points a field can be sampled.
using GridTypes = TypeList<PointSet<2>, PointSet<3>>;

/// The value types of the fields of dimension D that can be sampled. Each wide vector belongs to one
/// dimension.
template<std::size_t D>
struct Sampled;
template<>
struct Sampled<1>
{
    using Types = TypeList<Scalar, Vector1, Vector2, Vector3, Matrix1, Matrix2, Matrix3>;
};
template<>
struct Sampled<2>
{
    using Types = TypeList<Scalar, Vector1, Vector2, Vector3, Matrix1, Matrix2, Matrix3, Vector242>;
};
template<>
struct Sampled<3>
{
    using Types = TypeList<Scalar, Vector1, Vector2, Vector3, Matrix1, Matrix2, Matrix3, Vector375>;
};

/// "[0, 0] to [2, 1]"
std::string describe(const PointSetBase::BoundingBox& box)
{
    std::ostringstream text;
    const auto list = [&](auto bound)
    {
        for (std::size_t i = 0; i < box.getDimensions(); ++i)
            text << (i == 0 ? "[" : ", ") << box[i].*bound;
    };
    list(&std::pair<double, double>::first);
    text << "] to ";
    list(&std::pair<double, double>::second);
    text << ']';
    return text.str();
}

/// Describes what an object holds, for a user who took it for a field that can be sampled.
std::string describe(const DataObject& object)
{
    if (const auto* const bundle = dynamic_cast<const DataObjectBundle*>(&object))
    {
        std::vector<std::string> kinds;
        for (const auto& member : bundle->members())
            if (const auto kind = describe(*member); std::ranges::find(kinds, kind) == kinds.end())
                kinds.push_back(kind);
        std::string text;
        for (const std::string& kind : kinds)
            text += (text.empty() ? "" : "; ") + kind;
        return text.empty() ? "nothing" : text;
    }
    if (const auto* const field = dynamic_cast<const FieldBase*>(&object))
        return "a field of type " + field->valueTypeName() + " in " +
               std::to_string(field->dimension()) + "-D";
    const auto* const function = dynamic_cast<const FunctionBase*>(&object);
    if (function == nullptr)
        return "no values";
    const std::string values = "values of type " + function->valueTypeName() + " on the " +
                               function->domainPart().getName() + " of ";
    const auto* const points = dynamic_cast<const PointSetBase*>(function->domain().get());
    if (points == nullptr)
        return values + "a domain without positions, which is no field";
    if (dynamic_cast<const CellComplex*>(points) == nullptr)
        return values + "a point cloud without cells, which is no field";
    return values + "a " + std::to_string(points->dimension()) + "-D grid";
}

class SampleFieldOnGivenGridAlgorithm : public DataAlgorithm
{
public:
    struct Options : tavrin::Options
    {
        explicit Options(Control& control) : tavrin::Options(control)
        {
            addBundle<DataObject>("Field", "The field, where from the data comes.",
                                  InputDataObject::ignore, Required::No);
            add<GridTypes>("Grid", "The grid that provides the seed points");
            add<std::string>("Time", "The list of time values where to sample", "0.0");
            add<InputLabel>("Usage", "Usage of the parser", ListParser<double>::grammar);
        }
    };

    struct DataOutputs : tavrin::DataOutputs
    {
        explicit DataOutputs(Control& control) : tavrin::DataOutputs(control)
        {
            add<FunctionBase>("Sampled Field");
        }
    };

    using DataAlgorithm::DataAlgorithm;

    void execute(const tavrin::Options& options, const volatile bool& abortFlag) override;

private:
    std::vector<double> readTimes(const std::string& text, std::size_t maximum) const;

    template<std::size_t G>
    bool sample(std::shared_ptr<const PointSet<G>> grid, const DataObject& field,
                const std::vector<double>& times, const volatile bool& abortFlag);
    template<std::size_t G, std::size_t D, typename T>
    std::shared_ptr<const Function<T>> exec(std::shared_ptr<const PointSet<G>> grid,
                                            const Field<D, T>& field,
                                            const std::vector<double>& times,
                                            const volatile bool& abortFlag);

    void reportSamples(const PointSetBase& grid, const FieldBase& field,
                       const std::vector<double>& times, std::size_t outside);
};

void SampleFieldOnGivenGridAlgorithm::execute(const tavrin::Options& options,
                                              const volatile bool& abortFlag)
{
    const auto grid = options.get<GridTypes>("Grid");
    const auto field = options.get<DataObjectBundle>("Field");
    if (field == nullptr)
        debugLog() << "Input field not set." << std::endl;
    if (grid == nullptr)
        debugLog() << "Input domain not set." << std::endl;
    if (field == nullptr || grid == nullptr)
    {
        debugLog() << "aborting." << std::endl;
        clearResult("Sampled Field");
        return;
    }

    // At least one, so that a grid which is too large is reported as such.
    const std::size_t numPoints = dynamic_cast<const PointSetBase&>(*grid).numPoints();
    const std::size_t maximum = availableMemory() / FieldSampler<3, Scalar>::bytesPerSample /
                                std::max<std::size_t>(1, numPoints);
    const auto times =
        readTimes(options.get<std::string>("Time"), std::max<std::size_t>(1, maximum));
    debugLog() << "Found " << times.size() << " time values." << std::endl;

    const bool isSupported = visitTypes<GridTypes>(
        [&]<typename Grid>()
        {
            auto points = std::dynamic_pointer_cast<const Grid>(grid);
            return points != nullptr && sample(std::move(points), *field, times, abortFlag);
        });
    if (!isSupported)
    {
        hint("the field given is " + describe(*field) +
             "; sampled are scalars, vectors of 1 to 3 components and matrices up to 3x3 on grids "
             "with cells");
        throw logic_error("unsupported field type occurred.");
    }
}

/// The time values of a set expression; none, after a message to the user, where it does not parse.
std::vector<double> SampleFieldOnGivenGridAlgorithm::readTimes(const std::string& text,
                                                               std::size_t maximum) const
{
    ListParser<double> parser;
    parser.parse(text);
    if (parser.stack().empty())
        std::cout << "EMPTY" << std::endl;
    else
        parser.stack().front()->print(std::cout);

    auto [times, errorText] = collectValues(parser, maximum);
    if (!errorText.empty())
    {
        infoLog() << "ListParser encountered an error: \"" << errorText << "\"." << std::endl;
        hint("\"Time\" is no list of numbers: " + errorText);
    }
    else if (times.empty())
        hint("the time list has no values above -1, so nothing is sampled");
    return std::move(times);
}

/// Samples the field on the grid if it is of a supported type. Returns whether it is.
template<std::size_t G>
bool SampleFieldOnGivenGridAlgorithm::sample(std::shared_ptr<const PointSet<G>> grid,
                                             const DataObject& field,
                                             const std::vector<double>& times,
                                             const volatile bool& abortFlag)
{
    const auto withDimension = [&]<std::size_t D>()
    {
        return visitTypes<typename Sampled<D>::Types>(
            [&]<typename T>()
            {
                const auto typed = Field<D, T>::applyTo(field);
                if (typed == nullptr)
                    return false;
                if (times.empty())
                    clearResult("Sampled Field");
                else
                    setResult("Sampled Field", exec<G, D, T>(grid, *typed, times, abortFlag));
                return true;
            });
    };
    return withDimension.template operator()<1>() || withDimension.template operator()<2>() ||
           withDimension.template operator()<3>();
}

/// The samples, or null after an abort.
template<std::size_t G, std::size_t D, typename T>
std::shared_ptr<const Function<T>> SampleFieldOnGivenGridAlgorithm::exec(
    std::shared_ptr<const PointSet<G>> grid, const Field<D, T>& field,
    const std::vector<double>& times, const volatile bool& abortFlag)
{
    const std::size_t n = grid->numPoints();
    requireMemoryForSamples(n, times.size(), FieldSampler<D, T>::bytesPerSample);
    announceResult("Sampled Field", *grid, times.size());
    std::size_t outside = 0;
    LargeVector<T> values;
    const auto validity = std::make_shared<ValidityMask>();
    {
        Progress progress(*this, "computing", n * times.size(), true);
        FieldSampler<D, T> sampler(field, positionsOf<D>(*grid), times.size());
        values = LargeVector<T>(n * times.size());
        *validity = ValidityMask(values.size());
        for (std::size_t k = 0; k < times.size() && !abortFlag; ++k)
            outside +=
                sampler.valuesAt(times[k], std::span(values).subspan(k * n, n),
                                 std::span(*validity).subspan(k * n, n), progress, abortFlag);
    }
    if (abortFlag)
        return nullptr;
    reportSamples(*grid, field, times, outside);
    return addData(std::move(grid), PointSetBase::Points, std::move(values), Precision::Float64,
                   times, field.name(), validity);
}

void SampleFieldOnGivenGridAlgorithm::reportSamples(const PointSetBase& grid,
                                                    const FieldBase& field,
                                                    const std::vector<double>& times,
                                                    std::size_t outside)
{
    const std::size_t total = grid.numPoints() * times.size();
    report("samples", {{"total", total}, {"outside", outside}});

    const TimeRange range = field.timeRange();
    const auto late = static_cast<std::size_t>(
        std::ranges::count_if(times, [&](double time) { return !range.contains(time); }));
    const std::size_t inRange = grid.numPoints() * (times.size() - late);
    debugLog() << outside - (total - inRange) << " of " << inRange
               << " samples lie outside the domain of the field." << std::endl
               << late << " of " << times.size() << " times lie outside the range of the field."
               << std::endl;
    if (outside == 0)
        return;
    if (outside < total)
        hint(std::to_string(outside) + " of " + std::to_string(total) +
             " samples are outside of the field; they are 0 and marked as not valid" +
             (late == 0 ? ""
                        : "; " + std::to_string(late) + " of " + std::to_string(times.size()) +
                              " times are outside of its range, " + toText(range.first) + " to " +
                              toText(range.last)));
    else if (late == times.size())
        hint("all samples are 0, since no time lies in the range of the field, " +
             toText(range.first) + " to " + toText(range.last));
    else
        hint("all samples are 0, since no point lies in the domain of the field: the field spans " +
             describe(field.boundingBox()) + ", the grid " + describe(grid.boundingBox()));
}

const AlgorithmRegister<SampleFieldOnGivenGridAlgorithm> registration(
    "Field/Sample Field on Given Grid", "Sample a field on a given grid.");

}
