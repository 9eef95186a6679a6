#include <tavrin/plugin/TrialLoad.hpp>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>

namespace tavrin
{

namespace
{

constexpr unsigned patienceInSeconds = 20;
constexpr int exceptionStatus = 101;

[[noreturn]] void loadAndExit(const std::filesystem::path& library)
{
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    for (const int signal : {SIGABRT, SIGALRM, SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGTERM})
        std::signal(signal, SIG_DFL);
    alarm(patienceInSeconds);
    // The declaration of dlopen promises that it does not throw, which is not so.
    void* (*const volatile load)(const char*, int) = dlopen;
    try
    {
        // Why the loader refuses a library is asked again, and answered, in the calling process.
        load(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    }
    catch (...)
    {
        _exit(exceptionStatus);
    }
    _exit(0);
}

}

std::string faultOfTrialLoad(const std::filesystem::path& library)
{
    const pid_t child = fork();
    if (child == 0)
        loadAndExit(library);
    int status = 0;
    while (child > 0 && waitpid(child, &status, 0) < 0 && errno == EINTR)
    {
    }
    if (child > 0 && WIFSIGNALED(status))
        return WTERMSIG(status) == SIGALRM
                   ? "its initialization does not end"
                   : std::string("its initialization crashes: ") + strsignal(WTERMSIG(status));
    if (child > 0 && WEXITSTATUS(status) == exceptionStatus)
        return "its initialization throws an exception";
    if (child > 0 && WEXITSTATUS(status) != 0)
        return "its initialization ends the process";
    return {};
}

}
