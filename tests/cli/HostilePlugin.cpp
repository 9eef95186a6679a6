#include <tavrin/algorithm/AlgorithmRegister.hpp>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string_view>
#include <thread>

// A plug-in that harms the program: while it is loaded, in a way that the environment variable
// HOSTILITY selects, and when its algorithms are declared or executed.

namespace
{

using namespace tavrin;

/// Runs while the library is loaded.
struct Initialization
{
    Initialization()
    {
        const char* const variable = std::getenv("HOSTILITY");
        const std::string_view hostility = variable != nullptr ? variable : "";
        if (hostility == "exit")
            std::exit(0);
        if (hostility == "crash")
            std::raise(SIGSEGV);
        if (hostility == "throw")
            throw runtime_error("no license\nfound");
        while (hostility == "hang")
            std::this_thread::sleep_for(std::chrono::seconds(1));
    }
} const initialization;

class ExitAlgorithm : public DataAlgorithm
{
public:
    using Options = tavrin::Options;
    using DataAlgorithm::DataAlgorithm;

    void execute(const tavrin::Options&, const volatile bool&) override { std::exit(0); }
};

class UndeclarableAlgorithm : public DataAlgorithm
{
public:
    struct Options : tavrin::Options
    {
        explicit Options(Control& control) : tavrin::Options(control)
        {
            throw runtime_error("out of order");
        }
    };
    using DataAlgorithm::DataAlgorithm;

    void execute(const tavrin::Options&, const volatile bool&) override {}
};

/// Throws a number, not an exception object, when it is declared.
class UnspeakableAlgorithm : public UndeclarableAlgorithm
{
public:
    struct Options : tavrin::Options
    {
        explicit Options(Control& control) : tavrin::Options(control) { throw 42; }
    };
    using UndeclarableAlgorithm::UndeclarableAlgorithm;
};

const AlgorithmRegister<ExitAlgorithm> exiting("Hostile/Exit", "Ends the process");
const AlgorithmRegister<UndeclarableAlgorithm> undeclarable("Hostile/Undeclarable", "Throws");
const AlgorithmRegister<UnspeakableAlgorithm> unspeakable("Hostile/Unspeakable", "Throws a number");

}
