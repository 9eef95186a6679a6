#include "CompleteCommand.hpp"

#include "../console/Console.hpp"
#include "../console/Interrupt.hpp"
#include "../console/Messages.hpp"
#include "../text/CommandText.hpp"
#include "../text/TypedLine.hpp"
#include "Completion.hpp"
#include "Program.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <string_view>

namespace tavrin::app
{

namespace
{

/// Nobody waits longer for a candidate. Slow are huge files, files behind a slow network, and plug-ins
/// that hang.
constexpr unsigned int secondsAtMost = 4;

/// Makes the process silent, and ends it without an error when the time is over.
void prepareProcess(Console& console)
{
    console.discardForeignOutput();
    if (const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC); nowhere >= 0)
        static_cast<void>(dup2(nowhere, STDERR_FILENO));
    std::signal(SIGALRM, [](int) { _exit(0); });
    alarm(secondsAtMost);
}

/// Whether a text begins with what was typed, in any letter case.
bool beginsWith(std::string_view text, std::string_view typed)
{
    return typed.size() <= text.size() && std::equal(typed.begin(), typed.end(), text.begin(),
                                                     [](unsigned char a, unsigned char b) {
                                                         return std::tolower(a) == std::tolower(b);
                                                     });
}

/// Whether the shell would shorten what was typed to the common beginning of the texts, which
/// happens where an abbreviation fits several names.
bool loseTypedText(const std::vector<std::string>& texts, std::string_view typed)
{
    std::string common = texts.empty() ? "" : texts.front();
    for (const std::string& text : texts)
        common.resize(
            static_cast<std::size_t>(std::ranges::mismatch(common, text).in1 - common.begin()));
    return texts.size() > 1 && !common.empty() && !beginsWith(common, typed);
}

std::string bashAnswer(const Candidates& candidates, const TypedWord& typed)
{
    std::vector<std::string> texts;
    std::vector<std::string> plainTexts;
    for (const Candidate& candidate : candidates)
        if (std::string text = typed.replacement(candidate.word, "#"); !text.empty())
        {
            // After an open quote the shell adds the end of the quote.
            texts.push_back(text + (candidate.isWhole && typed.quote == 0 ? " " : ""));
            plainTexts.push_back(candidate.word.substr(typed.kept));
        }
    // The shell closes an open quote after a single candidate, and not if there is another one.
    const bool closesQuote =
        texts.size() == 1 && typed.quote != 0 &&
        std::ranges::none_of(candidates, [](const Candidate& one) { return one.isWhole; });
    if (closesQuote)
        texts.push_back(texts.front() + ' ');
    // A blank has no beginning in common with the others.
    if (loseTypedText(plainTexts, typed.replaced()))
        texts.emplace_back(" ");
    std::string answer;
    for (const std::string& text : texts)
        answer += text + '\n';
    return answer;
}

std::string describedLine(const std::string& text, const Candidate& candidate)
{
    return text + '\t' + oneLine(candidate.description) + '\n';
}

std::string zshAnswer(const Candidates& candidates, const TypedWord& typed)
{
    const std::string end = std::string(typed.quote == 0 ? 0 : 1, typed.quote) + ' ';
    std::vector<std::string> plainTexts;
    std::string answer;
    for (const Candidate& candidate : candidates)
        if (const std::string text = typed.replacement(candidate.word, ""); !text.empty())
        {
            answer += describedLine(candidate.isWhole ? text + end : text, candidate);
            plainTexts.push_back(candidate.word.substr(typed.kept));
        }
    // An empty candidate tells the script to insert nothing.
    return loseTypedText(plainTexts, typed.replaced()) ? answer + "\t\n" : answer;
}

/// This shell quotes the candidates itself.
std::string fishAnswer(const Candidates& candidates)
{
    std::string answer;
    for (const Candidate& candidate : candidates)
        answer += describedLine(candidate.word, candidate);
    return answer;
}

std::string answerFor(const std::vector<std::string>& arguments, const ProgramDeclaration& program,
                      const Session& session)
{
    const auto& shell = arguments.at(0);
    if (shell == "bash")
    {
        const auto line = TypedLine::parse(arguments.at(2), arguments.at(1));
        const std::vector<std::string> words(line.words.begin() + !line.words.empty(),
                                             line.words.end());
        return bashAnswer(Completion(program, session, words).candidatesFor(line.last.plain),
                          line.last);
    }
    const TypedWord typed = TypedLine::parse(arguments.at(1), "").last;
    Completion completion(program, session, {arguments.begin() + 2, arguments.end()});
    const Candidates candidates = completion.candidatesFor(typed.plain);
    return shell == "zsh" ? zshAnswer(candidates, typed) : fishAnswer(candidates);
}

}

bool isCompletion(int argc, const char* const* argv)
{
    return argc > 1 && std::string_view(argv[1]) == "complete";
}

void complete(int argc, const char* const* argv, const Program& program, Console& console)
{
    prepareProcess(console);
    const Session session{.program = program,
                          .console = console,
                          .abortFlag = Interrupt::flag(),
                          .algorithms = RegistrationService<AlgorithmFactory>::getInstance()};
    std::string answer;
    try
    {
        answer = answerFor({argv + 2, argv + argc}, program.declaration(), session);
    }
    catch (...)
    {
        // A line that makes no sense has no candidates.
    }
    console.print(answer);
}

}
