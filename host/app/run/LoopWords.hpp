#pragma once

#include <tavrin/algorithm/AlgorithmRun.hpp>
#include <tavrin/pipeline/Plan.hpp>

#include <optional>

// NOLINTNEXTLINE(readability-identifier-naming): named by the library
namespace CLI
{
class App;
}

namespace tavrin::app
{

/// How often a run is repeated, as given on the command line.
struct LoopWords
{
    bool eachStep = false;
    /// NAME=SET.
    std::optional<std::string> sweep = std::nullopt;

    /// Adds the options to a command.
    void declare(CLI::App& syntax);

    /// Parses the words. Throws `usage_error` if both are given, for an unknown option, one that takes
    /// no number, and a malformed set.
    pipeline::Loop loop(const AlgorithmRun& declaration) const;
};

}
