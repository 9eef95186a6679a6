#include "CommandBench.hpp"
#include "HedgehogBench.hpp"
#include "InfoBench.hpp"
#include "LocatorBench.hpp"
#include "OperatorBench.hpp"
#include "RatioReporter.hpp"
#include "SampleBench.hpp"

#include <tavrin/plugin/PluginRegistrationService.hpp>

#include <string>
#include <vector>

int main(int argc, char** argv)
{
    auto& plugins = tavrin::PluginRegistrationService::getInstance();
    plugins.load(plugins.pluginFolder() / "libflaimiob.so");

    tavrin::bench::addOperatorRows();
    tavrin::bench::addHedgehogRows();
    tavrin::bench::addInfoRows();
    tavrin::bench::addLocatorRows();
    tavrin::bench::addSampleRows();
    tavrin::bench::addCommandRows();

    std::vector<char*> arguments(argv, argv + argc);
    std::string interleave = "--benchmark_enable_random_interleaving=true";
    arguments.insert(arguments.begin() + 1, interleave.data());
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 2;
    tavrin::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
}
