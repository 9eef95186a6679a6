#include "Application.hpp"

#include "commands/Commands.hpp"
#include "commands/Program.hpp"
#include "commands/Session.hpp"
#include "console/Failure.hpp"
#include "console/ForeignOutput.hpp"
#include "console/Interrupt.hpp"
#include "plugins/ExitGuard.hpp"
#include "plugins/PluginTrial.hpp"
#include "plugins/Plugins.hpp"
#include "run/Threads.hpp"
#include "text/HelpText.hpp"

#include <tavrin/base/Suggestion.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <optional>

namespace tavrin::app
{

namespace
{

/// The values of the options that every command has.
struct GlobalOptions
{
    std::vector<std::string> plugins;
    std::optional<std::string> threads;
    std::string progress = "auto";
    bool isVerbose = false;
    bool isQuiet = false;
    bool wantsVersion = false;
    bool wantsHelp = false;
};

/// Makes the program independent of what its parent process has set: failing to write becomes an
/// error that can be reported instead of a signal, the status of processes that the program starts
/// is kept, and no file is ever opened in place of a closed standard stream.
void prepareProcess()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGCHLD, SIG_DFL);
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(descriptor, F_GETFD) < 0)
            static_cast<void>(open("/dev/null", O_RDWR));
}

void declareProgram(Program& program, GlobalOptions& options)
{
    CLI::App& syntax = program.syntax;
    syntax.description("Analyses fields: simulation or measurement output on grids, in VTK files "
                       "and time series.");
    // Unknown words and options are left to the messages of this program.
    syntax.set_help_flag();
    syntax.allow_extras();
    syntax.fallthrough();
    syntax.require_subcommand(0, 1);
    syntax
        .add_option("--plugin", options.plugins,
                    "loads a plug-in, or all plug-ins in a folder; repeatable")
        ->type_name("PATH")
        ->allow_extra_args(false);
    syntax.add_option("--threads", options.threads, "number of threads")->type_name("N");
    syntax
        .add_option("--progress", options.progress,
                    "shows progress: auto (on a terminal), always or never")
        ->type_name("WHEN");
    syntax.add_flag("-v,--verbose", options.isVerbose,
                    "prints the debug log, and the backtrace of a failed run");
    syntax.add_flag("-q,--quiet", options.isQuiet,
                    "prints only what is asked for: neither progress nor what algorithms print "
                    "besides their report");
    syntax.add_flag("--version", options.wantsVersion, "prints the version");
    syntax.add_flag("-h,--help", options.wantsHelp, "prints help, also on a command");
    program.commands = makeCommands(syntax);
}

[[noreturn]] void refuseOption(const std::string& word, const Program& program,
                               const CLI::App* command)
{
    std::vector<std::string> names;
    for (const CLI::App* const syntax : {command, &program.syntax})
        if (syntax != nullptr)
            for (const OptionText& option : optionTexts(*syntax))
                std::ranges::copy(option.names, std::back_inserter(names));
    const std::string name = word.substr(0, word.find('='));
    const std::string nearest = nearestTo(name, names);
    throw usage_error(
        "unknown option \"" + name + "\"; " +
        (nearest.empty() ? "see \"tavrin --help\"" : "did you mean \"" + nearest + "\"?"));
}

/// Parses the command and its options and returns the words that are left. Everything after "--" is
/// a word.
Command::Words parseCommandLine(int argc, const char* const* argv, Program& program)
{
    std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
    const auto dashes = std::ranges::find(arguments, "--");
    const Command::Words last(dashes == arguments.end() ? dashes : dashes + 1, arguments.end());
    arguments.erase(dashes, arguments.end());
    std::ranges::reverse(arguments);
    try
    {
        program.syntax.parse(std::move(arguments));
    }
    catch (const CLI::ParseError& error)
    {
        throw usage_error(error.what());
    }
    Command::Words words = program.syntax.remaining(true);
    const auto commands = program.syntax.get_subcommands();
    for (const std::string& word : words)
    {
        if (word.size() > 1 && word.starts_with('-'))
            refuseOption(word, program, commands.empty() ? nullptr : commands.front());
        if (commands.empty())
            static_cast<void>(program.command(word));
    }
    std::ranges::copy(last, std::back_inserter(words));
    return words;
}

/// Executes the command line.
void run(int argc, const char* const* argv, Console& console, GlobalOptions& options)
{
    Program program;
    declareProgram(program, options);
    const Command::Words words = parseCommandLine(argc, argv, program);
    const auto chosen = program.syntax.get_subcommands();
    if (options.wantsVersion)
        return console.print("tavrin " TAVRIN_VERSION "\n");
    if (chosen.empty())
        return console.print(helpText(program.declaration()));

    if (options.isQuiet)
        console.discardForeignOutput();
    setThreads(options.threads);
    Session session{.program = program,
                    .console = console,
                    .abortFlag = Interrupt::flag(),
                    .algorithms = RegistrationService<AlgorithmFactory>::getInstance(),
                    .progressMode =
                        options.isQuiet ? ProgressMode::Never : progressModeFrom(options.progress),
                    .isVerbose = options.isVerbose};
    loadPlugins(options.plugins, console, session.abortFlag);
    Command& command = program.command(chosen.front()->get_name());
    if (options.wantsHelp)
        return console.print(command.help(words, session));
    command.execute(words, session);
}

}

int runApplication(int argc, const char* const* argv) noexcept
{
    runTrialIfAsked(argc, argv);
    prepareProcess();
    const ExitGuard guard;
    Interrupt::catchSignals();
    Console console;
    GlobalOptions options;
    try
    {
        const ForeignOutput foreignOutput(console);
        run(argc, argv, console, options);
        console.requireOutput();
        return Done;
    }
    catch (...)
    {
        return reportException(console, options.isVerbose, Interrupt::flag());
    }
}

}
