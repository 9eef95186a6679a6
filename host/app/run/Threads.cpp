#include "Threads.hpp"

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/value/LexicalCast.hpp>

#include <omp.h>

#include <algorithm>
#include <latch>
#include <system_error>
#include <thread>
#include <vector>

namespace tavrin::app
{

namespace
{

/// Systems commonly do not let one process start more threads.
constexpr long mostThreads = 1024;

long parsedThreads(const std::string& text)
{
    try
    {
        return lexicalCast<long>(text);
    }
    catch (const bad_lexical_cast&)
    {
        return 0;
    }
}

/// Runs `count` threads at the same time for a moment. Throws `std::system_error` if that fails.
void tryThreads(int count)
{
    std::latch end(1);
    std::vector<std::jthread> threads;
    try
    {
        for (int i = 0; i < count; ++i)
            threads.emplace_back([&] { end.wait(); });
    }
    catch (...)
    {
        end.count_down();
        throw;
    }
    end.count_down();
}

}

void setThreads(const std::optional<std::string>& text)
{
    const long threads =
        text ? parsedThreads(*text) : std::min<long>(omp_get_max_threads(), mostThreads);
    if (threads < 1 || threads > mostThreads)
        throw usage_error("--threads: \"" + *text + "\" is not a whole number from 1 to " +
                          std::to_string(mostThreads));
    omp_set_num_threads(static_cast<int>(threads));
}

void startThreads()
{
    const int threads = omp_get_max_threads();
    try
    {
        tryThreads(threads - 1);
    }
    catch (const std::system_error& error)
    {
        throw runtime_error(std::to_string(threads) + " threads cannot be started: " +
                            error.code().message() + "; use --threads with a smaller number");
    }
#pragma omp parallel
    {
    }
}

}
