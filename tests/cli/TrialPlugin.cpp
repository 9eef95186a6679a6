#include <tavrin/algorithm/AlgorithmRegister.hpp>
#include <tavrin/io/FileError.hpp>

#include <chrono>
#include <fstream>
#include <thread>

// Algorithms that do on purpose what an algorithm may do to the program that runs it.

namespace
{

using namespace tavrin;

struct FieldOutput : DataOutputs
{
    explicit FieldOutput(Control& control) : DataOutputs(control) { add<FunctionBase>("Field"); }
};

void sleepBriefly()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

/// Works until it is told to stop, or in spite of that.
class WaitAlgorithm : public DataAlgorithm
{
public:
    struct Options : tavrin::Options
    {
        explicit Options(Control& control) : tavrin::Options(control)
        {
            add<FunctionBase>("Input", "is published");
            add<bool>("Stubborn", "does not look at the abort flag", false);
            add<double>("Seconds", "how long", 60.0);
        }
    };
    using DataOutputs = FieldOutput;
    using DataAlgorithm::DataAlgorithm;

    void execute(const tavrin::Options& options, const volatile bool& abortFlag) override
    {
        infoLog() << "waiting\n";
        const auto ticks = static_cast<unsigned long>(100.0 * options.get<double>("Seconds"));
        Progress progress(*this, "wait", ticks);
        unsigned long volatile& counter = progress;
        std::ofstream("started") << std::flush;
        for (unsigned long i = 0; i < ticks; ++i)
        {
            if (abortFlag && !options.get<bool>("Stubborn"))
                break;
            sleepBriefly();
            counter = i + 1;
        }
        setResult("Field", options.get<FunctionBase>("Input"));
    }
};

/// Ends with an exception.
class ThrowAlgorithm : public DataAlgorithm
{
public:
    struct Options : tavrin::Options
    {
        explicit Options(Control& control) : tavrin::Options(control)
        {
            add<InputChoices>("What", "the exception",
                              {"runtime_error", "lines", "standard", "memory", "number", "file"},
                              "runtime_error");
        }
    };
    using DataAlgorithm::DataAlgorithm;

    void execute(const tavrin::Options& options, const volatile bool&) override
    {
        infoLog() << "so far so good\n";
        debugLog() << "a detail\nhint: try another\n";
        const auto what = options.get<std::string>("What");
        if (what == "lines")
            throw runtime_error("first\nsecond\x1b[31m\n");
        if (what == "standard")
            throw std::out_of_range("beyond the end");
        if (what == "memory")
            throw std::bad_alloc();
        if (what == "number")
            throw 42;
        if (what == "file")
            throw io::FileError("step7.vtu", "no such file");
        throw runtime_error("the matrix is singular");
    }
};

/// Has an option of every kind and reports what it got.
class EverythingAlgorithm : public DataAlgorithm
{
public:
    struct Options : tavrin::Options
    {
        explicit Options(Control& control) : tavrin::Options(control)
        {
            add<InputLabel>("Note", "", "All kinds\n  of option");
            add<FunctionBase>("Field", "a field", InputDataObject::ignore, Required::Yes);
            add<Domain>("Grid", "a grid");
            addBundle<FunctionBase>(
                "Fields", "several fields", [](const DataObjectBundle&) { return true; },
                Required::No);
            addGroup("Values");
            add<bool>("Flag", "a flag", false);
            add<long>("Number", "a whole number", 3);
            add<double>("Number (real)", "a number", 0.5);
            addSeparator();
            add<std::string>("Text", "a text", "some text");
            add<Color>("Color", "a color", Color{1.0F, 0.0F, 0.0F, 1.0F});
            add<InputChoices>("Choice", "a choice", {"one", "two"}, "one");
            setVisible("Text", false);
        }

        void optionChanged(const std::string& name) override
        {
            if (name == "Flag")
                setVisible("Text", get<bool>("Flag"));
        }
    };
    using DataAlgorithm::DataAlgorithm;

    void execute(const tavrin::Options& options, const volatile bool&) override
    {
        const auto field = options.get<FunctionBase>("Field");
        infoLog() << field->name();
        if (const auto fields = options.get<DataObjectBundle>("Fields"))
            for (const auto& member : fields->members())
                infoLog() << " + " << dynamic_cast<const FunctionBase&>(*member).name();
        infoLog() << "; " << options.get<long>("Number") << ' '
                  << options.get<double>("Number (real)") << ' ' << options.get<std::string>("Text")
                  << ' ' << options.get<std::string>("Choice") << '\n';
        std::cout << "printed\n";
    }
};

const AlgorithmRegister<WaitAlgorithm> wait("Trial/Wait", "Waits");
const AlgorithmRegister<ThrowAlgorithm> throwing("Trial/Throw", "Throws");
const AlgorithmRegister<EverythingAlgorithm> everything("Trial/Everything", "Takes everything");

}
