#include "PainterProcess.hpp"

#include "PainterJob.hpp"

#include <tavrin/base/Exceptions.hpp>

#include <dlfcn.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <new>
#include <optional>

namespace tavrin::graphics::process
{

namespace
{

namespace fs = std::filesystem;

/// The time between two checks of the abort flag.
constexpr int pollMilliseconds = 20;

[[noreturn]] void fail(const std::string& cause)
{
    throw runtime_error("the picture cannot be painted: " + cause);
}

/// The program in the folder tavrin beside this library.
fs::path painterProgram()
{
    Dl_info info{};
    const auto* const here = reinterpret_cast<const void*>(&painterProgram);
    if (dladdr(here, &info) == 0 || info.dli_fname == nullptr)
        fail("the folder of the host's libraries is not known");
    return fs::absolute(info.dli_fname).parent_path() / "tavrin" / "tavrin-painter";
}

/// The running program, which is killed when the object is destroyed.
class Child
{
public:
    Child(const SharedBytes& job, const SharedBytes& result, const SharedBytes& complaints)
    {
        const fs::path program = painterProgram();
        posix_spawn_file_actions_t streams;
        posix_spawn_file_actions_init(&streams);
        posix_spawn_file_actions_adddup2(&streams, job.descriptor(), STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&streams, result.descriptor(), STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&streams, complaints.descriptor(), STDERR_FILENO);
        std::string name = program.string();
        char* const arguments[] = {name.data(), nullptr};
        const int error =
            posix_spawn(&mProcess, name.c_str(), &streams, nullptr, arguments, environ);
        posix_spawn_file_actions_destroy(&streams);
        if (error != 0)
            fail(program.string() + ": " + std::strerror(error));
        mDescriptor = static_cast<int>(syscall(SYS_pidfd_open, mProcess, 0));
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child()
    {
        if (!mHasEnded)
        {
            kill(mProcess, SIGKILL);
            waitForEnd();
        }
        if (mDescriptor >= 0)
            close(mDescriptor);
    }

    /// Waits for a moment or until the process ends, and returns whether it has ended.
    bool hasEnded()
    {
        pollfd entry{.fd = mDescriptor, .events = POLLIN, .revents = 0};
        poll(&entry, mDescriptor >= 0 ? 1 : 0, pollMilliseconds);
        const pid_t ended = waitpid(mProcess, &mStatus, WNOHANG);
        // A host that ignores SIGCHLD never learns the status.
        mHasEnded = ended == mProcess || (ended < 0 && errno == ECHILD);
        return mHasEnded;
    }

    /// How the process ended, for a message.
    std::string ending() const
    {
        if (WIFSIGNALED(mStatus))
            return std::string("the graphics driver crashed (") + strsignal(WTERMSIG(mStatus)) +
                   "), perhaps because memory is short";
        return "the painter ended with status " + std::to_string(WEXITSTATUS(mStatus));
    }

private:
    void waitForEnd()
    {
        while (waitpid(mProcess, &mStatus, 0) < 0 && errno == EINTR)
            continue;
        mHasEnded = true;
    }

    pid_t mProcess = -1;
    int mDescriptor = -1;
    int mStatus = 0;
    bool mHasEnded = false;
};

/// Reports one kind of work to an observer, if there is one, from the time it has begun.
class WorkReporter
{
public:
    WorkReporter(std::string title, const Work& work, ProgressObserver* observer)
        : mTitle(std::move(title)), mWork(work), mObserver(observer)
    {
    }
    WorkReporter(const WorkReporter&) = delete;
    WorkReporter& operator=(const WorkReporter&) = delete;
    ~WorkReporter()
    {
        if (mReport)
            mObserver->closed(*mReport);
    }

    void update()
    {
        if (mObserver == nullptr || mWork.total == 0)
            return;
        if (!mReport)
            mObserver->opened(mReport.emplace(ProgressReport{mTitle, mWork.total, true, mCounter}));
        mCounter.advance(mWork.done - mCounter.count());
    }

private:
    std::string mTitle;
    const Work& mWork;
    ProgressObserver* mObserver;
    ProgressCounter mCounter;
    std::optional<ProgressReport> mReport;
};

std::string textOf(SharedBytes& bytes)
{
    const auto text = bytes.map();
    return {reinterpret_cast<const char*>(text.data()), text.size()};
}

}

PictureFile runPainter(SharedBytes& job, const volatile bool& abortFlag, ProgressObserver* observer)
{
    SharedBytes result;
    SharedBytes complaints;
    const auto& state = *reinterpret_cast<const JobState*>(job.map().data());
    if (abortFlag)
        throw runtime_error("aborted");
    WorkReporter painting("painting", state.painting, observer);
    WorkReporter encoding("encoding", state.encoding, observer);
    painting.update();
    Child child(job, result, complaints);
    while (!child.hasEnded())
    {
        if (abortFlag)
            throw runtime_error("aborted");
        painting.update();
        encoding.update();
    }
    painting.update();
    encoding.update();
    switch (static_cast<JobState::Outcome>(state.outcome.load()))
    {
    case JobState::Done:
    {
        const auto bytes = result.map();
        const auto* const first = reinterpret_cast<const std::uint8_t*>(bytes.data());
        return {{first, first + bytes.size()}, state.width, state.height};
    }
    case JobState::Failed:
        throw runtime_error(textOf(result));
    case JobState::OutOfMemory:
        throw std::bad_alloc();
    case JobState::Unfinished:
        break;
    }
    if (abortFlag)
        throw runtime_error("aborted");
    const std::string complaint = textOf(complaints);
    fail(complaint.empty() ? child.ending()
                           : child.ending() + ": " + complaint.substr(0, complaint.find('\n')));
}

}
