#include <support/abortFlags.hpp>
#include <support/captured.hpp>
#include <support/errorOf.hpp>
#include <support/smallData.hpp>

#include <tavrin/algorithm/AlgorithmRegister.hpp>
#include <tavrin/algorithm/AlgorithmRun.hpp>

#include <gtest/gtest.h>

#include <iomanip>

namespace
{

using namespace support;
using namespace tavrin;

/// Does what an author may do with the means of an algorithm, however unusual.
class TalkingAlgorithm : public VisAlgorithm
{
public:
    struct Options : tavrin::Options
    {
        explicit Options(Control& control) : tavrin::Options(control)
        {
            add<InputChoices>("What", "what to do", {"talk", "overlap", "keep", "throw", "mistake"},
                              "talk");
            add<double>("Scale", "not negative", 1.0)
                .setValidator(
                    [](double scale)
                    {
                        if (scale < 0.0)
                            throw usage_error("it is negative");
                        return scale;
                    });
        }
    };

    using VisAlgorithm::VisAlgorithm;

    void execute(const tavrin::Options& options, const volatile bool&) override
    {
        const auto what = options.get<std::string>("What");
        if (what == "talk")
            talk();
        else if (what == "overlap")
            overlap();
        else if (what == "keep")
            mKept = std::make_unique<Progress>(*this, "kept", 5);
        else if (what == "mistake")
            suggest("Skale", "2");
        else
        {
            infoLog() << "complete\nincomplete";
            throw runtime_error("stopped");
        }
    }

private:
    void talk()
    {
        infoLog() << std::setprecision(3) << std::hex << "one" << std::endl << "two, ";
        debugLog() << "detail\n";
        hint("look");
        infoLog() << 0.123456 << std::endl;
        suggest("Scale", "0.5");
        report("count", std::size_t{3});
        report("point", {{"x", 0.1}, {"values", ReportValue::Numbers{1.0, 2.0}}});
        report("count", std::size_t{4});
    }

    void overlap()
    {
        auto first = std::make_unique<Progress>(*this, "first", 1);
        auto second = std::make_unique<Progress>(*this, "second", 2);
        first.reset();
        second->advance(2);
    }

    std::unique_ptr<Progress> mKept;
};

const AlgorithmRegister<TalkingAlgorithm> talking("Test/Talking", "Uses its means.");

/// Writes down all that it hears.
struct Listener : RunObserver
{
    void opened(const ProgressReport& report) override { heard += "open " + report.title + "; "; }
    void closed(const ProgressReport& report) override
    {
        heard += "close " + report.title + " at " + std::to_string(report.counter.count()) + "; ";
    }
    void infoLine(const std::string& line) override { heard += "info " + line + "; "; }
    void debugLine(const std::string& line) override { heard += "debug " + line + "; "; }
    void hinted(const std::string& text) override { heard += "hint " + text + "; "; }

    std::string heard;
};

class ListeningTest : public testing::Test
{
protected:
    std::string heardOf(const std::string& what)
    {
        Listener listener;
        run.setText("What", what);
        error = errorOf<std::exception>([&] { run.execute(neverAbort, &listener); });
        return listener.heard;
    }

    AlgorithmRun run{RegistrationService<AlgorithmFactory>::getInstance(), "Test/Talking"};
    std::string error;
};

TEST_F(ListeningTest, LinesAreHeardAsSoonAsTheyAreComplete)
{
    EXPECT_EQ(heardOf("talk"), "info one; debug detail; hint look; info two, 0.123; ");
    EXPECT_EQ(run.infoLog(), "one\ntwo, 0.123\n");
    EXPECT_EQ(run.hints(), std::vector<std::string>{"look"});
    EXPECT_EQ(heardOf("throw"), "info complete; info incomplete; ");
    EXPECT_EQ(error, "stopped");
}

TEST_F(ListeningTest, TheFormatOfALogEndsWithTheExecution)
{
    static_cast<void>(heardOf("talk"));
    run.setText("What", "talk");
    run.execute(neverAbort);
    EXPECT_EQ(run.infoLog(), "one\ntwo, 0.123\n");
    EXPECT_EQ(run.hints().size(), 1U);
}

TEST_F(ListeningTest, ReportsKeepTheirNumbersAndTheirOrder)
{
    static_cast<void>(heardOf("talk"));
    EXPECT_EQ(run.results(),
              (ReportValue::Members{
                  {"count", std::size_t{4}},
                  {"point", {{"x", 0.1}, {"values", ReportValue::Numbers{1.0, 2.0}}}}}));
    EXPECT_EQ(run.suggestions(), (std::map<std::string, std::string>{{"Scale", "0.5"}}));
    static_cast<void>(heardOf("mistake"));
    EXPECT_EQ(error, "\"Test/Talking\" has no option \"Skale\"; did you mean \"Scale\"?");
    EXPECT_TRUE(run.results().empty());
}

TEST_F(ListeningTest, ProgressReportsCloseInAnyOrder)
{
    EXPECT_EQ(heardOf("overlap"), "open first; open second; close first at 0; close second at 2; ");
}

TEST_F(ListeningTest, AProgressReportThatIsKeptEndsWithTheExecution)
{
    EXPECT_EQ(heardOf("keep"), "open kept; close kept at 0; ");
    // The one that is kept from before is destroyed now, and nobody hears of it any more.
    EXPECT_EQ(heardOf("keep"), "open kept; close kept at 0; ");
}

TEST_F(ListeningTest, AValidatorMayBeSetWhereTheOptionIsDeclared)
{
    EXPECT_EQ(errorOf<usage_error>([&] { run.setText("Scale", "-1"); }),
              "option \"Scale\": it is negative");
}

TEST(AlgorithmRegister, RefusesNamesThatAreNotOneLine)
{
    for (const std::string name : {"", "Test/Two\nLines", "Test/Bell\a"})
    {
        const std::string reported = standardErrorOf(
            [&] { const AlgorithmRegister<TalkingAlgorithm> other(name, "Never registered."); });
        EXPECT_NE(
            reported.find("the name of an algorithm must be one line of printable characters"),
            std::string::npos)
            << reported;
        EXPECT_EQ(RegistrationService<AlgorithmFactory>::getInstance().find(name), nullptr);
    }
}

}
