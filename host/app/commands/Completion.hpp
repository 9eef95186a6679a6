#pragma once

#include "Candidate.hpp"
#include "Session.hpp"

#include <map>
#include <optional>

namespace tavrin::pipeline
{
struct AlgorithmCard;
struct DataInput;
}

namespace tavrin::app
{

struct CommandDeclaration;
struct OptionText;
struct ProgramDeclaration;

/// Finds what completes a word of a command line of the program: commands, options, algorithms, the
/// names and values of their options, outputs, files and what they hold. Algorithms and options on the
/// line may be abbreviated. Plug-ins are loaded, also those on the line, only if an algorithm is needed.
class Completion
{
public:
    /// `words` are the complete words between the name of the program and the word to complete.
    Completion(const ProgramDeclaration& program, const Session& session,
               const std::vector<std::string>& words);

    /// What completes a word of which `typed` is the beginning, in the order in which to show it,
    /// without repetitions. Throws if an algorithm on the line is not known.
    Candidates candidatesFor(const std::string& typed);

private:
    void read(const std::string& word);
    std::optional<OptionText> optionNamed(const std::string& name) const;
    std::vector<OptionText> options() const;

    Candidates candidates(const std::string& typed);
    Candidates optionCandidates(const std::string& typed) const;
    Candidates commandCandidates(const std::string& typed) const;
    Candidates wordCandidates(const std::string& typed);
    Candidates valueCandidates(const OptionText& option, const std::string& typed);
    Candidates algorithmCandidates(const std::string& typed);
    Candidates assignmentCandidates(const std::string& typed);
    Candidates dataCandidates(const pipeline::DataInput& input, const std::string& typed) const;
    Candidates outputCandidates(const std::string& typed);
    Candidates sweepCandidates(const std::string& typed);
    Candidates settingCandidates(const std::string& typed) const;

    void loadPluginsOnce();
    pipeline::AlgorithmCard algorithm();

    const ProgramDeclaration& mProgram;
    const Session& mSession;
    /// What has been read of the line: null before the command.
    const CommandDeclaration* mCommand = nullptr;
    /// The words after the command that are neither options nor their values.
    std::vector<std::string> mWords;
    std::vector<std::string> mPlugins;
    /// The option whose value comes next.
    std::optional<std::string> mAwaiting;
    bool mIsAfterDashes = false;
    bool mHasPlugins = false;
};

}
