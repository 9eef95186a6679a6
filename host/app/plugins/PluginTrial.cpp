#include "PluginTrial.hpp"

#include <tavrin/io/FileError.hpp>
#include <tavrin/plugin/PluginRegistrationService.hpp>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <thread>
#include <utility>

// A trial succeeds only if the process of the library says so through the pipe. Its exit status does
// not suffice because the library may choose it.

namespace tavrin::app
{

namespace
{

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr const char* trialCommand = "--trial-of-plugin";
constexpr int answerDescriptor = 3;
constexpr auto patience = 20s;
/// The interval at which the abort flag and the state of the process are checked.
constexpr auto checkInterval = 50ms;

constexpr std::string_view accepted = "accepted";
/// The end of an answer. An answer without it is incomplete.
constexpr char endOfAnswer = '\0';

[[noreturn]] void answerAndExit(const std::string& text)
{
    const std::string answer = text + endOfAnswer;
    static_cast<void>(!write(answerDescriptor, answer.data(), answer.size()));
    _exit(0);
}

/// The handler of `std::terminate`: exceptions cannot pass through the system's loader.
[[noreturn]] void answerWithException()
{
    const std::string fault = "its initialization throws an exception";
    const auto exception = std::current_exception();
    if (exception == nullptr)
        std::abort();
    try
    {
        std::rethrow_exception(exception);
    }
    catch (const std::exception& error)
    {
        answerAndExit(fault + ": " + error.what());
    }
    catch (...)
    {
        answerAndExit(fault);
    }
}

/// Loads the library and returns the answer.
std::string answerOfLoading(const std::string& library)
{
    try
    {
        PluginRegistrationService::getInstance().load(library);
        return std::string(accepted);
    }
    catch (const runtime_error& error)
    {
        const std::string text = error.what();
        const std::string prefix = library + ": ";
        return text.starts_with(prefix) ? text.substr(prefix.size()) : text;
    }
}

/// The two ends of a pipe, closed with the object.
struct Pipe
{
    std::array<int, 2> ends{-1, -1};

    Pipe()
    {
        if (pipe2(ends.data(), O_CLOEXEC) != 0)
            throw runtime_error(std::string("no pipe: ") + std::strerror(errno));
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe()
    {
        close(ends[0]);
        closeWriteEnd();
    }

    int readEnd() const { return ends[0]; }
    int writeEnd() const { return ends[1]; }
    void closeWriteEnd()
    {
        if (ends[1] >= 0)
            close(std::exchange(ends[1], -1));
    }
};

/// The process of a trial, which is killed with the object if it still runs.
class TrialProcess
{
public:
    TrialProcess(const std::string& library, int answerEnd)
    {
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, answerEnd, answerDescriptor);
        for (const int descriptor : {STDOUT_FILENO, STDERR_FILENO})
            posix_spawn_file_actions_addopen(&actions, descriptor, "/dev/null", O_WRONLY, 0);
        std::string name = "tavrin";
        std::string command = trialCommand;
        std::string path = library;
        std::array<char*, 4> arguments{name.data(), command.data(), path.data(), nullptr};
        const int error =
            posix_spawn(&mProcess, "/proc/self/exe", &actions, nullptr, arguments.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        if (error != 0)
            throw runtime_error(std::string("no process to try it in: ") + std::strerror(error));
    }
    TrialProcess(const TrialProcess&) = delete;
    TrialProcess& operator=(const TrialProcess&) = delete;
    ~TrialProcess()
    {
        if (hasEnded())
            return;
        kill(mProcess, SIGKILL);
        while (waitpid(mProcess, nullptr, 0) < 0 && errno == EINTR)
        {
        }
    }

    bool hasEnded()
    {
        if (!mHasEnded)
            mHasEnded = waitpid(mProcess, &mStatus, WNOHANG) != 0;
        return mHasEnded;
    }

    /// How the process ended without an answer.
    std::string fault() const
    {
        return WIFSIGNALED(mStatus)
                   ? std::string("its initialization crashes: ") + strsignal(WTERMSIG(mStatus))
                   : "its initialization ends the process";
    }

private:
    pid_t mProcess = -1;
    int mStatus = 0;
    bool mHasEnded = false;
};

bool isReadable(int descriptor)
{
    pollfd request{.fd = descriptor, .events = POLLIN, .revents = 0};
    return poll(&request, 1, static_cast<int>(checkInterval / 1ms)) > 0;
}

/// Appends what can be read. Returns false at the end of the pipe.
bool readMore(int descriptor, std::string& answer)
{
    std::array<char, 4096> bytes;
    const ssize_t count = read(descriptor, bytes.data(), bytes.size());
    if (count > 0)
        answer.append(bytes.data(), static_cast<std::size_t>(count));
    return count > 0;
}

}

std::string faultInTrial(const std::filesystem::path& library, const volatile bool& abortFlag)
try
{
    Pipe pipe;
    TrialProcess process(library.string(), pipe.writeEnd());
    pipe.closeWriteEnd();
    const auto end = Clock::now() + patience;
    std::string answer;
    bool isOpen = true;
    while (!answer.ends_with(endOfAnswer))
    {
        if (abortFlag)
            throw io::Aborted();
        if (Clock::now() > end)
            return "its initialization does not return";
        // A process started by the library may keep the pipe open after the end of the trial.
        const bool hasEnded = process.hasEnded();
        if (isOpen && isReadable(pipe.readEnd()))
            isOpen = readMore(pipe.readEnd(), answer);
        else if (hasEnded)
            return process.fault();
        else if (!isOpen)
            std::this_thread::sleep_for(1ms);
    }
    answer.pop_back();
    return answer == accepted ? "" : answer;
}
catch (const io::Aborted&)
{
    throw;
}
catch (const runtime_error& error)
{
    return error.what();
}

void runTrialIfAsked(int argc, const char* const* argv)
{
    if (argc != 3 || argv[1] != std::string_view(trialCommand))
        return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    std::set_terminate(answerWithException);
    answerAndExit(answerOfLoading(argv[2]));
}

}
