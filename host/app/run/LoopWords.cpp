#include "LoopWords.hpp"

#include <tavrin/pipeline/NameMatch.hpp>
#include <tavrin/pipeline/OptionAssignment.hpp>

#include <CLI/CLI.hpp>

namespace tavrin::app
{

using pipeline::Loop;

namespace
{

/// A set may contain no "=", so that the last one ends the name.
Loop sweepOf(const std::string& word, const AlgorithmRun& declaration)
{
    const auto equals = word.rfind('=');
    if (equals == std::string::npos)
        throw usage_error("--sweep: \"" + word +
                          "\" is not of the form NAME=SET, as in "
                          "\"Scale=[1:2#0.5]\"");
    const std::string given = word.substr(0, equals);
    const std::string name =
        pipeline::matchingName(given, pipeline::optionNames(declaration.describe()), "option")
            .value_or(given);
    const InputKind kind = declaration.input(name).kind();
    if (kind != InputKind::Number && kind != InputKind::Integer && kind != InputKind::Text)
        throw usage_error("--sweep: \"" + name + "\" is a " + std::string(nameOf(kind)) +
                          " option; a sweep varies a number");
    return {.kind = Loop::Kind::Sweep,
            .variable = name,
            .values = pipeline::sweepValues(word.substr(equals + 1))};
}

}

void LoopWords::declare(CLI::App& syntax)
{
    syntax.add_flag("--each-step", eachStep, "runs once for every time step of the input series");
    syntax.add_option("--sweep", sweep, "runs once for every value of a number option")
        ->type_name("NAME=SET");
}

Loop LoopWords::loop(const AlgorithmRun& declaration) const
{
    if (eachStep && sweep)
        throw usage_error("--each-step and --sweep cannot be combined");
    if (eachStep)
        return {.kind = Loop::Kind::EachStep};
    return sweep ? sweepOf(*sweep, declaration) : Loop{};
}

}
