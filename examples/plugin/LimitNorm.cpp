// A plug-in with one algorithm. The file is the whole of it: nothing about the algorithm is declared anywhere else.

#include <tavrin/algorithm/AlgorithmRegister.hpp>
#include <tavrin/function/mapValues.hpp>
#include <tavrin/function/visit.hpp>

// Names of a plug-in stay out of the way of other plug-ins in an unnamed namespace.
namespace
{

using namespace tavrin;

/// The value types that the algorithm accepts. Tensors of all shapes have the same operators and
/// functions, such as norm(), so that one template serves all of them.
using SupportedTypes = TypeList<Scalar, Vector2, Vector3, Vector4, Matrix2, Matrix3, Matrix4>;

/// The formula. It is a free function, which can be understood and tested by itself.
/// Returns the value itself if its norm is not greater than the limit.
template<typename T>
T shortened(const T& value, double limit)
{
    const double length = norm(value);
    return length > limit ? value * (limit / length) : value;
}

template<typename T>
std::size_t numLonger(const ValueArray<T>& values, double limit)
{
    std::size_t count = 0;
    for (std::size_t i = 0; i < values.size(); ++i)
        count += norm(values[i]) > limit ? 1 : 0;
    return count;
}

/// A DataAlgorithm publishes data; a VisAlgorithm shows graphics.
class LimitNormAlgorithm : public DataAlgorithm
{
public:
    /// The declaration of the options, in the order in which they are shown. The command line, its
    /// help and completion and the JSON description are all made from it.
    struct Options : tavrin::Options
    {
        explicit Options(Control& control) : tavrin::Options(control)
        {
            // Data: a function, which is an array of values on the points or cells of a grid.
            add<FunctionBase>("Field", "The field whose values are limited", {}, Required::Yes);
            // A number, with a default. The validator may correct what the user enters.
            add<double>("Limit", "The largest norm that a value may have", 1.0)
                .setValidator([](double limit) { return std::max(limit, 0.0); });
            // One of several texts, with a default.
            add<InputChoices>("Action", "What happens to longer values", {"shorten", "set to zero"},
                              "shorten");
            // True or false.
            add<bool>("Count", "Report the number of longer values", false);
        }
    };

    /// The declaration of the results.
    struct DataOutputs : tavrin::DataOutputs
    {
        explicit DataOutputs(Control& control) : tavrin::DataOutputs(control)
        {
            add<FunctionBase>("Limited Field");
        }
    };

    using DataAlgorithm::DataAlgorithm;

    /// Reads the options, computes and publishes. Another thread may set `abortFlag`; the work then
    /// has to end soon, without a result.
    void execute(const tavrin::Options& options, const volatile bool& abortFlag) override
    {
        const auto field = options.get<FunctionBase>("Field");
        const auto limit = options.get<double>("Limit");
        const bool isShortened = options.get<std::string>("Action") == "shorten";
        const auto isCounted = options.get<bool>("Count");

        // Calls the lambda with the function as the class that it is, and says whether it is one of them.
        const bool isSupported = visitFunction<SupportedTypes>(
            *field,
            [&]<typename T>(const Function<T>& function)
            {
                // The values of all time steps, one step after the other.
                const auto values = function.values();
                Progress progress(*this, "limiting", values->size());
                // Runs on all threads, counts the progress and checks the abort flag.
                auto limited = mapValues<T>(
                    *values,
                    [=](const T& value)
                    {
                        if (isShortened)
                            return shortened(value, limit);
                        return norm(value) > limit ? T{} : value;
                    },
                    progress, abortFlag);
                if (abortFlag)
                    return;

                setResult("Limited Field",
                          addData(function.domain(), function.domainPart(), std::move(limited),
                                  Precision::Float64, function.timeSteps(),
                                  "Limited " + function.name(), function.validity()));
                if (isCounted)
                    reportCount(numLonger(*values, limit), values->size());
            });
        if (!isSupported)
            throw runtime_error("fields with values of type " + field->valueTypeName() +
                                " cannot be limited");
    }

private:
    void reportCount(std::size_t numLonger, std::size_t total)
    {
        // For people, and for programs (tavrin run --report FILE).
        infoLog() << numLonger << " of " << total << " values are longer" << std::endl;
        report("longer values", numLonger);
        if (numLonger == total && total > 0)
            hint("all values are longer than the limit; it may have another unit than the field");
    }
};

// Makes the algorithm known when the plug-in is loaded. The text before the slash is its category.
const AlgorithmRegister<LimitNormAlgorithm> registration(
    "Example/Limit Norm", "Limits the norm of the values of a field.");

}
