#include "ScenePainter.hpp"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <new>

namespace
{

using namespace tavrin::graphics;
using process::JobState;
using process::SharedBytes;

/// Makes this process end when its parent ends. It ignores signals that a terminal sends to both
/// processes, because the parent decides what they mean. A crashed driver leaves no core file.
void followParent()
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, SIG_IGN);
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
}

}

/// Reads a job from standard input and writes its result to standard output; both are files in
/// memory that the calling process shares.
int main()
{
    followParent();
    SharedBytes result(dup(STDOUT_FILENO));
    // What a driver prints must not get into the result.
    dup2(STDERR_FILENO, STDOUT_FILENO);
    SharedBytes job(STDIN_FILENO);
    const auto bytes = job.map();
    if (bytes.size() < sizeof(JobState))
        return 2;
    auto& state = *reinterpret_cast<JobState*>(bytes.data());
    try
    {
        const PictureFile picture = painter::paint(process::readJob(bytes), state);
        result.append(std::as_bytes(std::span(picture.bytes)));
        state.width = picture.width;
        state.height = picture.height;
        state.outcome = JobState::Done;
    }
    catch (const std::bad_alloc&)
    {
        state.outcome = JobState::OutOfMemory;
    }
    catch (const std::exception& error)
    {
        const std::string message = error.what();
        result.append(std::as_bytes(std::span(message)));
        state.outcome = JobState::Failed;
    }
    // Skips the exit handlers of graphics drivers, which may hang.
    _exit(0);
}
