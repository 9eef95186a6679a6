#include <BundleTools/ListParser.hpp>
#include <tavrin/algorithm/AlgorithmRegister.hpp>
#include <tavrin/colormap/ColorMapDataObject.hpp>
#include <tavrin/function/Function.hpp>
#include <tavrin/graphics/ObjectRenderer.hpp>

namespace
{

using namespace tavrin;

/// Tells how many values a function has.
class CountAlgorithm : public VisAlgorithm
{
public:
    struct Options : tavrin::Options
    {
        explicit Options(Control& control) : tavrin::Options(control)
        {
            add<FunctionBase>("Field", "the function to look at");
        }
    };
    using VisAlgorithm::VisAlgorithm;

    void execute(const tavrin::Options& options, const volatile bool&) override
    {
        infoLog() << options.get<FunctionBase>("Field")->valuesPerStep() << " values" << std::endl;
    }
};

const AlgorithmRegister<CountAlgorithm> registration("Trial/Count", "Counts values.");

}
