#include <tavrin/algorithm/AlgorithmRegister.hpp>
#include <tavrin/field/Field.hpp>
#include <tavrin/io/FileError.hpp>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <thread>

// Algorithms that do deliberately what an algorithm may do to the program that runs it.

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

/// Works until the abort flag is set, or ignores the flag.
class WaitAlgorithm : public DataAlgorithm
{
public:
    struct Options : tavrin::Options
    {
        explicit Options(Control& control) : tavrin::Options(control)
        {
            add<FunctionBase>("Input", "is published");
            add<bool>("Stubborn", "ignores the abort flag", false);
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
        debugLog() << "a detail\n";
        hint("try another");
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

/// Has an option of every kind and logs the values.
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

/// Has data options of all kinds and names what is connected to them.
class KindsAlgorithm : public DataAlgorithm
{
public:
    struct Options : tavrin::Options
    {
        explicit Options(Control& control) : tavrin::Options(control)
        {
            add<Field<3, Vector3>>("Flow", "a field");
            add<TypeList<PointSet<3>, Function<Scalar>>>("Mixed", "a grid or a function");
            add<DataObject>("Anything", "any object");
            addBundle<FunctionBase>("Pair", "exactly two functions",
                                    [](const DataObjectBundle& pair)
                                    { return pair.members().size() == 2; });
            addBundle<DataObject>("Things", "any objects");
            add<double>("Scale", "a number", 1.0);
        }

        /// A value may be set only after the data is connected.
        void optionChanged(const std::string& name) override
        {
            if (name == "Scale" && get<DataObjectBundle>("Pair") == nullptr)
                throw usage_error("needs a pair");
        }
    };
    using DataAlgorithm::DataAlgorithm;

    void execute(const tavrin::Options& options, const volatile bool&) override
    {
        if (const auto flow = options.get<Field<3, Vector3>>("Flow"))
            infoLog() << "Flow: " << flow->name() << '\n';
        tell("Mixed", options.get<TypeList<PointSet<3>, Function<Scalar>>>("Mixed"));
        tell("Anything", options.get<DataObject>("Anything"));
        for (const char* const name : {"Pair", "Things"})
            if (const auto bundle = options.get<DataObjectBundle>(name))
                for (const auto& member : bundle->members())
                    tell(name, member);
    }

private:
    void tell(const std::string& option, const std::shared_ptr<const DataObject>& object) const
    {
        if (object == nullptr)
            return;
        const auto* const function = dynamic_cast<const FunctionBase*>(object.get());
        infoLog() << option << ": "
                  << (function != nullptr                  ? "function " + function->name()
                      : object->isA(Domain::classTypeId()) ? "grid"
                                                           : "other")
                  << '\n';
    }
};

/// Prints parts of lines by itself, between lines of its logs.
class PrintAlgorithm : public DataAlgorithm
{
public:
    using Options = tavrin::Options;
    using DataAlgorithm::DataAlgorithm;

    void execute(const tavrin::Options&, const volatile bool&) override
    {
        infoLog() << "first\n";
        std::cout << "printed " << 1;
        std::printf(" and %d", 2);
        infoLog() << "second\nthi";
        std::cerr << "part of an error";
        debugLog() << "detail\n";
        std::cout << "printed " << 3;
        infoLog() << "rd\n";
        std::fputs("complete\n", stderr);
        hint("a hint");
    }
};

/// Reports values of every form.
class ReportAlgorithm : public DataAlgorithm
{
public:
    struct Options : tavrin::Options
    {
        explicit Options(Control& control) : tavrin::Options(control)
        {
            add<double>("Scale", "a number", 1.0);
        }
    };
    using DataAlgorithm::DataAlgorithm;

    void execute(const tavrin::Options&, const volatile bool&) override
    {
        infoLog() << "done\n";
        report("count", std::size_t{3});
        report("third", 1.0 / 3.0);
        report("box", {{"lower", ReportValue::Numbers{0.0, 1.0}}, {"name", std::string("b")}});
        report("samples", {{"total", std::size_t{5}}, {"outside", std::size_t{2}}});
        hint("look at it");
        suggest("Scale", "0.25");
    }
};

/// Logs, and then crashes the process or waits for the abort flag.
class LastWordsAlgorithm : public DataAlgorithm
{
public:
    struct Options : tavrin::Options
    {
        explicit Options(Control& control) : tavrin::Options(control)
        {
            add<bool>("Crash", "ends the process", false);
        }
    };
    using DataAlgorithm::DataAlgorithm;

    void execute(const tavrin::Options& options, const volatile bool& abortFlag) override
    {
        infoLog() << "last words\n";
        if (options.get<bool>("Crash"))
            std::abort();
        std::ofstream("started") << std::flush;
        while (!abortFlag)
            sleepBriefly();
    }
};

const AlgorithmRegister<WaitAlgorithm> wait("Trial/Wait", "Waits");
const AlgorithmRegister<ThrowAlgorithm> throwing("Trial/Throw", "Throws");
const AlgorithmRegister<EverythingAlgorithm> everything("Trial/Everything", "Takes everything");
const AlgorithmRegister<KindsAlgorithm> kinds("Trial/Kinds", "Takes data of all kinds");
const AlgorithmRegister<PrintAlgorithm> print("Trial/Print", "Prints parts of lines");
const AlgorithmRegister<ReportAlgorithm> reporting("Trial/Report", "Reports values");
const AlgorithmRegister<LastWordsAlgorithm> lastWords("Trial/LastWords", "Logs before it ends");

}
