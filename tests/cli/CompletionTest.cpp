#include "CommandLine.hpp"

#include <gtest/gtest.h>

#include <sstream>

// Tests of what the TAB key offers in the shells.

namespace
{

/// The lines of a text, each ended by "|" so that blanks at its end can be seen.
std::string marked(const std::string& text)
{
    std::istringstream stream(text);
    std::string lines;
    for (std::string line; std::getline(stream, line);)
        lines += line + '|';
    return lines;
}

std::string shellQuoted(const std::string& text)
{
    std::string word = "'";
    for (const char c : text)
        word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return word + "'";
}

/// The answer of a command that must succeed in silence, even if standard error is not redirected.
std::string answerOf(const Workshop& workshop, const std::string& command)
{
    const Outcome outcome = workshop.run(command);
    EXPECT_EQ(outcome.exitCode, 0) << command;
    EXPECT_EQ(outcome.standardError, "") << command;
    return marked(outcome.standardOutput);
}

bool hasShell(const Workshop& workshop, const std::string& shell)
{
    return workshop.run(shell + " --version").exitCode == 0;
}

struct Case
{
    /// The line up to the cursor.
    const char* line;
    const char* offers;
};

const std::string trial = "export TAVRIN_PLUGIN_PATH=\"$PLUGIN\"\n";

TEST(Completion, OffersWhatComesNextInBash)
{
    const Case cases[] = {
        {"tavrin in", "info |"},
        {"tavrin compl", "completion |"},
        {"tavrin --th", "--threads |"},
        {"tavrin --progress a", "auto |always |"},
        {"tavrin --progress=a", "auto |always |"},
        {"tavrin run --rep", "--report |"},
        {"tavrin completion ", "bash |zsh |fish |"},
        {"tavrin run Trial/E", "Trial/Everything |"},
        {"tavrin run every", "Trial/Everything |"},
        {R"(tavrin run "Field/Tensor F)", "Field/Tensor Field Operator|"},
        {R"(tavrin run Field/Tensor\ F)", R"(Field/Tensor\ Field\ Operator |)"},
        {"tavrin run --threads 2 Trial/Everything Nu", R"(Number=|Number\ \(real\)=|)"},
        {R"(tavrin run Trial/Everything "Number ()", "Number (real)=|Number (real)= |"},
        {"tavrin run hedge colorm", R"(Color\ Map=|)"},
        {"tavrin run Trial/Everything Choice=", "one |two |"},
        {"tavrin run Trial/Everything Flag=t", "true |"},
        {R"(tavrin run Trial/Everything "Choice=t)", "Choice=two|"},
        {"tavrin run Trial/Everything choi=t", "two |"},
        {"tavrin run Trial/Everything Field=flo", "flow.vtu |"},
        {R"(tavrin run 'Field/Show Hedgehogs' "Color Map=pl)", "Color Map=plasma|"},
        {R"(tavrin run tens "Operator"=normof)", R"(Norm\ of\ Field\ A |)"},
        {"tavrin run Trial/Wait -o F", "Field=|"},
        {"tavrin run Trial/Wait -o Field=flo", "flow.vtu |"},
        {"tavrin info double", "double_gyre.pvd |double_gyre/|"},
        {"tavrin info wonder", R"(wonder\ \(1\).vtu |)"},
        {"tavrin info 'wonder (", "wonder (1).vtu|"},
        // The blank keeps the shell from replacing the "o" by the beginning that both have.
        {"tavrin run fieldo", "Field/Sample\\ Field\\ on\\ Given\\ Grid |"
                              "Field/Tensor\\ Field\\ Operator | |"},
        {"tavrin run nothing x", ""},
    };
    const Workshop workshop;
    if (!hasShell(workshop, "bash"))
        GTEST_SKIP() << "bash is not installed";
    workshop.write("wonder (1).vtu", workshop.read("flow.vtu"));
    workshop.run("tavrin completion bash >tavrin.bash");
    for (const Case& row : cases)
    {
        workshop.write("try.bash",
                       "source tavrin.bash\nCOMP_WORDBREAKS=$' \\t\\n\"\\'@><=;|&(:'\nCOMP_LINE=" +
                           shellQuoted(row.line) +
                           "\nCOMP_POINT=${#COMP_LINE}\n_tavrin tavrin\n"
                           "for one in \"${COMPREPLY[@]}\"; do printf '%s\\n' \"$one\"; done\n");
        EXPECT_EQ(answerOf(workshop, trial + "bash try.bash"), row.offers) << row.line;
    }
}

TEST(Completion, OffersWhatFilesHold)
{
    const Case cases[] = {
        {"Field=flow.vtu", "Field=flow.vtu|Field=flow.vtu#velocity|"},
        {"Field=flow.vtu#v", "Field=flow.vtu#velocity|"},
        {"Field=flow.vtu#x", ""},
        {"Field=flow.vtu?on", "Field=flow.vtu?on=|"},
        {"Field=flow.vtu#velocity?on=", "Field=flow.vtu#velocity?on=points|"
                                        "Field=flow.vtu#velocity?on=cells|"},
        {"Field=flow.vtu#velocity?on=points&o", "Field=flow.vtu#velocity?on=points&order=|"},
        {"Field=double_gyre.pvd?time=0",
         "Field=double_gyre.pvd?time=0|Field=double_gyre.pvd?time=0.5|"},
        {"Field=damaged.vtu#", ""},
        {"Field=missing.vtu#", ""},
        {"Grid=flow.vtu", "Grid=flow.vtu|"},
        {"Grid=@p", "Grid=@points:|"},
        {"Grid=@points:flo", "Grid=@points:flow.vtu|"},
        {"Field=dam", "Field=damaged.vtu|"},
        {"Field=not", ""},
    };
    const Workshop workshop;
    workshop.write("damaged.vtu", "<VTKFile type=\"UnstructuredGrid\"><");
    workshop.write("notes.txt", "not data");
    for (const Case& row : cases)
        EXPECT_EQ(answerOf(workshop, trial + "tavrin complete fish " + shellQuoted(row.line) +
                                         " run every | cut -f1"),
                  row.offers)
            << row.line;
}

TEST(Completion, OffersVariablesOfPipelines)
{
    const Workshop workshop;
    workshop.write("trial.yaml", "variables: {first: , second: 2}\nsteps: []\n");
    const std::string complete = "tavrin complete fish ";
    EXPECT_EQ(answerOf(workshop, complete + "tr pipeline"), "trial.yaml\t|");
    EXPECT_EQ(answerOf(workshop, complete + "'' pipeline trial.yaml --set"),
              "first=\t|second=\tdefault: 2|");
    EXPECT_EQ(answerOf(workshop, complete + "first=fl pipeline trial.yaml --set"),
              "first=flow.vtu\t|");
    EXPECT_EQ(answerOf(workshop, complete + "'' pipeline missing.yaml --set"), "");
}

/// The words of the plug-in option load plug-ins; what goes wrong with them disturbs nothing.
TEST(Completion, LoadsThePluginsOfTheLine)
{
    const Workshop workshop;
    const std::string complete = "tavrin complete fish ";
    EXPECT_EQ(answerOf(workshop, complete + "Trial/Ev run"), "");
    EXPECT_EQ(answerOf(workshop, complete + "Trial/Ev --plugin \"$PLUGIN\" run | cut -f1"),
              "Trial/Everything|");
    EXPECT_EQ(answerOf(workshop, complete + "Field/I --plugin=missing.so --plugin \"$HOSTILE\" run"
                                            " | cut -f1"),
              "Field/Info|");
    EXPECT_EQ(answerOf(workshop, "tavrin complete"), "");
    EXPECT_EQ(answerOf(workshop, "tavrin complete bash"), "");
    EXPECT_EQ(workshop.run("tavrin --help | grep '^  complete '").standardOutput, "");
}

TEST(Completion, DescribesCandidatesInZsh)
{
    const Case cases[] = {
        {"Field/Sh run", "Field/Show\\ Hedgehogs \tShow hedgehogs.|"},
        {"colorm run hedge", "Color\\ Map=\tColor transfer function|"},
        {"'\"Color Map=pl' run hedge", "Color Map=plasma\" \t|"},
        {R"('Color\ Map=pl' run hedge)", "Color\\ Map=plasma \t|"},
        {"'Field=flow.vtu#' run hedge", "Field=flow.vtu\\#velocity \t3-D Vector on points|"},
        {"fieldo run", "Field/Sample\\ Field\\ on\\ Given\\ Grid \tSample a field on a given grid.|"
                       "Field/Tensor\\ Field\\ Operator \tSimple mathematical operations on one or "
                       "two tensor fields.|\t|"},
        {"'Field=~/fl' run hedge", "Field=~/flow.vtu \t|"},
    };
    const Workshop workshop;
    for (const Case& row : cases)
        EXPECT_EQ(answerOf(workshop, "HOME=$PWD tavrin complete zsh " + std::string(row.line)),
                  row.offers)
            << row.line;
}

TEST(Completion, WorksInZsh)
{
    const Workshop workshop;
    if (!hasShell(workshop, "zsh"))
        GTEST_SKIP() << "zsh is not installed";
    workshop.run("tavrin completion zsh >tavrin.zsh");
    // Outside of the line editor, its functions are replaced by ones that print.
    workshop.write("try.zsh",
                   "compdef() { }\ncompadd() { print -rl -- $candidates $descriptions }\n"
                   "source ./tavrin.zsh\n"
                   "words=(tavrin run 'hedge' 'Color\\ M') CURRENT=4 PREFIX='Color\\ M'\n"
                   "_tavrin\n");
    EXPECT_EQ(answerOf(workshop, "zsh -f try.zsh"),
              "Color\\ Map=|Color\\ Map=  -- Color transfer function|");
}

TEST(Completion, WorksInFish)
{
    const Workshop workshop;
    if (!hasShell(workshop, "fish"))
        GTEST_SKIP() << "fish is not installed";
    workshop.run("tavrin completion fish >tavrin.fish");
    const std::string complete = "HOME=$PWD fish --no-config -c 'source tavrin.fish; complete -C ";
    EXPECT_EQ(answerOf(workshop, complete + "\"tavrin run hedge map\"'"),
              "Color Map=\tColor transfer function|");
    EXPECT_EQ(answerOf(workshop, complete + R"("tavrin run hedge \"Color Map=pl"')"),
              "Color Map=plasma|");
    EXPECT_EQ(answerOf(workshop, complete + "\"tavrin run hedge Field=flow.vtu#\"'"),
              "Field=flow.vtu#velocity\t3-D Vector on points|");
}

}
