#include <support/abortFlags.hpp>
#include <support/captured.hpp>
#include <support/errorOf.hpp>
#include <support/smallData.hpp>

#include <tavrin/algorithm/AlgorithmRegister.hpp>
#include <tavrin/algorithm/AlgorithmRun.hpp>

#include <gtest/gtest.h>

namespace
{

using namespace support;
using namespace tavrin;

/// Publishes its input on "Out" as often as it is executed, and writes to both logs.
class EchoAlgorithm : public DataAlgorithm
{
public:
    struct Options : tavrin::Options
    {
        explicit Options(Control& control) : tavrin::Options(control)
        {
            add<PointSetBase>("Grid", "what is published");
            addBundle<DataObject>(
                "Bundle", "ignored",
                [](const DataObjectBundle& b) { return b.members().size() < 3; }, Required::No);
            addGroup("More");
            add<double>("Number", "a number", 1.0);
            add<InputChoices>("Mode", "what to do", {"publish", "withdraw", "misuse"}, "publish");
        }
    };

    struct DataOutputs : tavrin::DataOutputs
    {
        explicit DataOutputs(Control& control) : tavrin::DataOutputs(control)
        {
            add<PointSetBase>("Out");
        }
    };

    using DataAlgorithm::DataAlgorithm;

    void execute(const tavrin::Options& options, const volatile bool& abortFlag) override
    {
        const auto mode = options.get<std::string>("Mode");
        if (mode == "withdraw")
            return clearResult("Out");
        if (mode == "misuse")
            return setResult("Elsewhere", nullptr);
        Progress progress(*this, "echoing", 10);
        for (int i = 0; i < 10 && !abortFlag; ++i)
            progress.advance();
        infoLog() << "number " << options.get<double>("Number") << std::endl;
        debugLog() << "done" << std::endl;
        setResult("Out", options.get<PointSetBase>("Grid"));
    }
};

RegistrationService<AlgorithmFactory>& registry()
{
    return RegistrationService<AlgorithmFactory>::getInstance();
}

const AlgorithmRegister<EchoAlgorithm> echo("Test/Echo", "Publishes what it is given.");

TEST(AlgorithmRun, SetsExecutesAndCollects)
{
    AlgorithmRun run(registry(), "Test/Echo");
    const auto line = lineOf(2);
    run.connect("Grid", line);
    run.setText("Number", "2.5");
    EXPECT_EQ(run.result("Out"), nullptr);
    run.execute(neverAbort);
    EXPECT_EQ(run.result("Out"), line);
    EXPECT_EQ(run.infoLog(), "number 2.5\n");
    EXPECT_EQ(run.debugLog(), "done\n");
    // Logs are those of the last execution, results stay until they are withdrawn.
    run.execute(neverAbort);
    EXPECT_EQ(run.infoLog(), "number 2.5\n");
    run.setText("Mode", "withdraw");
    run.execute(neverAbort);
    EXPECT_EQ(run.result("Out"), nullptr);
    EXPECT_EQ(run.infoLog(), "");
}

TEST(AlgorithmRun, ReportsProgressAndPassesTheAbortFlag)
{
    struct Observer : RunObserver
    {
        void opened(const ProgressReport& report) override
        {
            log += report.title + ' ' + std::to_string(report.total);
        }
        void closed(const ProgressReport& report) override
        {
            log += " closed at " + std::to_string(report.counter.count());
        }
        std::string log;
    };
    AlgorithmRun run(registry(), "Test/Echo");
    Observer observer;
    run.execute(neverAbort, &observer);
    EXPECT_EQ(observer.log, "echoing 10 closed at 10");
    Observer aborted;
    run.execute(alreadyAborted, &aborted);
    EXPECT_EQ(aborted.log, "echoing 10 closed at 0");
}

TEST(AlgorithmRun, SaysWhatWasAskedWrongly)
{
    EXPECT_EQ(errorOf<usage_error>([] { AlgorithmRun(registry(), "Test/Ecko"); }),
              "unknown algorithm \"Test/Ecko\"; did you mean \"Test/Echo\"?");
    AlgorithmRun run(registry(), "Test/Echo");
    EXPECT_EQ(errorOf<usage_error>([&] { run.setText("Numbr", "1"); }),
              "\"Test/Echo\" has no option \"Numbr\"; did you mean \"Number\"?");
    EXPECT_EQ(errorOf<usage_error>([&] { run.setText("Number", "abc"); }),
              "option \"Number\": \"abc\" is not a number");
    EXPECT_EQ(
        errorOf<usage_error>([&] { run.setText("Mode", "dance"); }),
        "option \"Mode\": \"dance\" is not among the choices; there are \"publish\", \"withdraw\", "
        "\"misuse\"");
    EXPECT_EQ(errorOf<usage_error>([&] { run.setText("Grid", "x"); }),
              "option \"Grid\" takes no text; it is a data option");
    EXPECT_EQ(errorOf<usage_error>([&] { run.connect("Number", lineOf(2)); }),
              "option \"Number\" takes no data; it is a number option");
    EXPECT_EQ(errorOf<usage_error>([&] { run.result("Outt"); }),
              "\"Test/Echo\" has no data output \"Outt\"; did you mean \"Out\"?");
    const auto bundle = std::make_shared<DataObjectBundle>(
        DataObjectBundle::Members{lineOf(2), lineOf(2), lineOf(2)});
    EXPECT_EQ(errorOf<usage_error>([&] { run.connect("Grid", bundle); }),
              "option \"Grid\": it takes a grid or point set, not a bundle of 3 objects");
    EXPECT_EQ(errorOf<usage_error>([&] { run.connect("Bundle", bundle); }),
              "option \"Bundle\": it does not take a bundle of 3 objects");
    run.connect("Bundle", lineOf(2));
    run.setText("Mode", "misuse");
    EXPECT_THROW(run.execute(neverAbort), logic_error);
}

TEST(AlgorithmRun, DescribesTheDeclarationAsData)
{
    AlgorithmRun run(registry(), "Test/Echo");
    run.setText("Number", "4");
    run.connect("Grid", lineOf(2));
    const auto description = run.describe();
    EXPECT_EQ(description.name, "Test/Echo");
    EXPECT_EQ(description.type, AlgorithmFactory::Data);
    ASSERT_EQ(description.options.size(), 4U);
    EXPECT_TRUE(description.options[0].isConnected);
    EXPECT_EQ(description.options[0].types, std::vector<std::string>{"grid or point set"});
    EXPECT_EQ(description.options[2].group, "More");
    EXPECT_EQ(description.options[2].defaultValue, "1");
    EXPECT_EQ(description.options[2].value, "4");
    EXPECT_EQ(description.options[3].choices.size(), 3U);
    ASSERT_EQ(description.outputs.size(), 1U);
    EXPECT_FALSE(description.outputs[0].isGraphics);
}

TEST(AlgorithmRegister, ReportsADuplicateAndKeepsTheFirst)
{
    const auto first = registry().find("Test/Echo");
    const auto registerAgain = []
    { const AlgorithmRegister<EchoAlgorithm> second("Test/Echo", "Another."); };
    EXPECT_EQ(standardErrorOf(registerAgain), "error: registration of algorithm Test/Echo failed.\n"
                                              "algorithm \"Test/Echo\" already registered.\n");
    EXPECT_EQ(registry().find("Test/Echo"), first);
    EXPECT_EQ(first->getDescription(), "Publishes what it is given.");
    EXPECT_FALSE(first->isShown());
}

}
