#include <console/Console.hpp>
#include <console/Messages.hpp>
#include <console/ProgressBar.hpp>
#include <console/Warnings.hpp>
#include <text/Layout.hpp>

#include <gtest/gtest.h>

// Tests of texts that commands print only on a terminal or only in unusual cases.

namespace
{

using namespace tavrin::app;

TEST(Progress, TellsShareRateAndTimeLeft)
{
    EXPECT_EQ(progressText({"Norm", 450, 1000, 9.0}), "Norm 45 %, 50 /s, 11 s left");
    EXPECT_EQ(progressText({"Norm", 3000000, 100000000, 1.0}), "Norm 3 %, 3 M/s, 33 s left");
    EXPECT_EQ(progressText({"Norm", 1, 1000, 10.0}), "Norm 0 %, 0.1 /s, 2:46 h left");
    EXPECT_EQ(progressText({"Norm", 0, 1000, 0.0}), "Norm 0 %, 0 /s");
    EXPECT_EQ(progressText({"Norm", 1000, 1000, 2.0}), "Norm 100 %, 500 /s");
    EXPECT_EQ(progressText({"Norm", 1200, 1000, 2.0}), "Norm 100 %, 600 /s");
    EXPECT_EQ(progressText({"Norm", 5, 0, 2.0}), "Norm 5 done, 2.5 /s");
}

TEST(Progress, FitsTheTerminal)
{
    const ProgressState state{"Norm", 500, 1000, 10.0};
    EXPECT_EQ(progressBar(state, 80), "Norm [############............] 50 %, 50 /s, 10 s left");
    EXPECT_EQ(progressBar(state, 40), "Norm 50 %, 50 /s, 10 s left");
    EXPECT_EQ(progressBar(state, 9), "Norm 50 %");
}

TEST(Layout, AlignsCharactersNotBytes)
{
    EXPECT_EQ(alignedColumns({{"gr\xc3\xb6\xc3\x9f"
                               "e",
                               "size"},
                              {"x", "y"}},
                             1),
              " gr\xc3\xb6\xc3\x9f"
              "e  size\n x      y\n");
}

TEST(Layout, WrapsBetweenWords)
{
    const std::string word(40, 'a');
    EXPECT_EQ(wrapped(word + ' ' + word + ' ' + word, 2), word + ' ' + word + "\n  " + word);
    const std::string longWord(200, 'b');
    EXPECT_EQ(wrapped(longWord + " c", 2), longWord + "\n  c");
}

TEST(Layout, QuotesForTheShell)
{
    EXPECT_EQ(shellWord("Field=flow.vtu#velocity"), "Field=flow.vtu#velocity");
    EXPECT_EQ(shellWord("Field A=f.vtu"), "\"Field A=f.vtu\"");
    EXPECT_EQ(shellWord("a\"$b`\\"), "\"a\\\"\\$b\\`\\\\\"");
    EXPECT_EQ(shellWord("a?b"), "\"a?b\"");
    EXPECT_EQ(shellWord(""), "\"\"");
}

TEST(Messages, FitOnOneLine)
{
    EXPECT_EQ(oneLine("first\nsecond\x1b[1m\r\n"), "first second [1m");
}

TEST(Messages, ShortenNamesInTheMiddle)
{
    const std::string name = std::string(500, 'a') + std::string(500, 'b');
    const std::string brief = std::string(98, 'a') + "..." + std::string(98, 'b');
    EXPECT_EQ(boundedMessage(name + ": no array \"x y" + name + "\"; there is \"p\""),
              brief.substr(0, 198) + ": no array \"x y" + std::string(95, 'a') + "..." +
                  std::string(98, 'b') + "\"; there is \"p\"");
    const std::string prose = "word after word, none of them long, but two hundred and more "
                              "characters in all: this is left as it is, since it is the names in "
                              "a message that grow without bound, not the sentence around them; "
                              "there is \"one\"";
    EXPECT_EQ(boundedMessage(prose), prose);
}

TEST(Messages, AreBounded)
{
    std::string list;
    for (int i = 0; i < 1000; ++i)
        list += "\"name\", ";
    EXPECT_EQ(boundedMessage(list).size(), 2003U);
}

/// A name is never shortened in the middle of a UTF-8 character.
TEST(Messages, KeepCharactersWhole)
{
    std::string name = "x";
    for (int i = 0; i < 200; ++i)
        name += "\xc3\xb6";
    const std::string brief = shortened(name);
    EXPECT_EQ(brief.find("..."), 97U);
    EXPECT_EQ(brief.substr(100, 2), "\xc3\xb6");
}

}
