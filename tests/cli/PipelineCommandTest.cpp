#include "CommandLine.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <ostream>

// Tests of pipelines and of loops on the command line, from files to files.

namespace
{

using nlohmann::json;

/// A pipeline in the file p.yaml, the arguments that follow its name, and how the command ends.
struct Case
{
    const char* name;
    const char* pipeline;
    const char* arguments;
    int exitCode;
    const char* standardError;
};

constexpr const char* norm = R"(variables: {file: flow.vtu, d: }
data: {velocity: "${file}#velocity"}
steps:
  - {id: norm, algorithm: Field/Tensor Field Operator, options: {Field A: velocity, Scalar D: "${d}"}}
  - {id: report, algorithm: Field/Info, options: {Field: norm.Field}}
outputs: {norm.Field: "out.vtu#speed"}
)";

const Case cases[] = {
    // clang-format off
    {"Works", norm, "--set d=1 && tavrin info out.vtu | grep -o 'speed  *points  1' >&2", 0, "speed  points  1\n"},
    {"VariableIsNotSet", norm, "", 2, "error: p.yaml:4:95: the variable \"d\" has no value; use --set d=VALUE\n"},
    {"UnknownVariableIsSet", norm, "--set dd=1", 2, "error: --set: the pipeline has no variable \"dd\"; there are \"d\", \"file\"\n"},
    {"NoSetting", norm, "--set d", 2, "error: --set: \"d\" is not of the form VARIABLE=VALUE\n"},
    {"WrongType", norm, "--set d=x", 2, "error: p.yaml:4:95: option \"Scalar D\": \"x\" is not a number\n"},
    {"MissingFile", norm, "--set d=1 --set file=nix.vtu", 3, "error: nix.vtu: no such file\n"},
    {"ReadsWhatItWrites", norm, "--set d=1 --set file=out.vtu", 2, "error: out.vtu: is an input, and would be overwritten\n"},
    {"DryRun", norm, "--set d=1 --dry-run | tail -n 2 >&2", 0, "writes out.vtu\nmemory for data of files and results on their grids: about 1.11 MB\n"},
    {"NoFile", norm, "x", 2, "error: unexpected word \"x\"; the usage is \"tavrin pipeline FILE.yaml\"\n"},

    {"NoYaml", "steps: [", "", 3, "error: p.yaml: is not valid YAML at line 1, column 1: end of sequence flow not found\n"},
    {"AliasBomb", "a: &a [1,1,1,1,1,1,1,1,1,1]\nb: &b [*a,*a,*a,*a,*a,*a,*a,*a,*a,*a]\nc: &c [*b,*b,*b,*b,*b,*b,*b,*b,*b,*b]\nd: &d [*c,*c,*c,*c,*c,*c,*c,*c,*c,*c]\ne: &e [*d,*d,*d,*d,*d,*d,*d,*d,*d,*d]\nf: [*e,*e,*e,*e,*e,*e,*e,*e,*e,*e]\n", "", 2, "error: p.yaml:1:16: the file has too many values, or its aliases expand to too many\n"},
    {"AliasOfItself", "a: &a [*a]\n", "", 2, "error: p.yaml:1:4: the file has too many values, or its aliases expand to too many\n"},
    {"NoMap", "- 1\n", "", 2, "error: p.yaml:1:1: a pipeline must be a map of names to values\n"},
    {"Empty", "", "", 2, "error: p.yaml:1:1: a pipeline needs \"steps\"\n"},
    {"NoSteps", "steps: []\n", "", 2, "error: p.yaml:1:8: a pipeline needs a step\n"},
    {"UnknownKey", "setps: []\n", "", 2, "error: p.yaml:1:1: unknown key \"setps\"; did you mean \"steps\"?\n"},
    {"KeyGivenTwice", "steps: []\nsteps: []\n", "", 2, "error: p.yaml:2:1: \"steps\" is given twice\n"},
    {"StepsOfOneId", "steps:\n  - {id: a, algorithm: Field/Info}\n  - {id: a, algorithm: Field/Info}\n", "", 2, "error: p.yaml:3:10: there are two steps \"a\"\n"},
    {"UnknownAlgorithm", "steps: [{id: a, algorithm: Field/Inof}]\n", "", 2, "error: p.yaml:1:28: unknown algorithm \"Field/Inof\"; did you mean \"Field/Info\"?\n"},
    {"UnknownOption", "steps: [{id: a, algorithm: Field/Info, options: {Feild: flow.vtu}}]\n", "", 2, "error: p.yaml:1:50: unknown option \"Feild\"; did you mean \"Field\"?\n"},
    {"UnknownChoice", "steps: [{id: a, algorithm: Field/Tensor Field Operator, options: {Operator: norm it}}]\n", "", 2, "error: p.yaml:1:77: option \"Operator\": \"norm it\" is not among the choices; there are \"Norm of Field A\", \"Normalized Field A\", \"Trace of Field A\", \"Clip Between C and D\", \"Mask Between C and D\", \"Scale ( A * C )\", \"Linear Combine ( A*C+B*D )\", \"Multiply (A*B)*C\"\n"},
    {"UnknownData", "data: {flow: flow.vtu}\nsteps: [{id: a, algorithm: Field/Info, options: {Field: flwo}}]\n", "", 2, "error: p.yaml:2:57: no data and no output of a step is named \"flwo\"; did you mean \"flow\"?\n"},
    {"UnknownPort", "steps:\n  - {id: a, algorithm: Field/Tensor Field Operator, options: {Field A: flow.vtu}}\n  - {id: b, algorithm: Field/Info, options: {Field: a.Feld}}\n", "", 2, "error: p.yaml:3:53: \"Field/Tensor Field Operator\" has no output \"Feld\"; did you mean \"Field\"?\n"},
    {"OutputThatNothingMakes", "steps: [{id: a, algorithm: Field/Info, options: {Field: flow.vtu}}]\noutputs: {b.Field: out.vtu}\n", "", 2, "error: p.yaml:2:11: \"b.Field\" is not of the form STEP.OUTPUT; there is \"a\"\n"},
    {"Cycle", "steps:\n  - {id: a, algorithm: Field/Tensor Field Operator, options: {Field A: b.Field}}\n  - {id: b, algorithm: Field/Tensor Field Operator, options: {Field A: a.Field}}\n", "", 2, "error: p.yaml:2:5: these steps take results of each other: \"a\", \"b\"\n"},
    {"MissingInput", "steps:\n  - {id: a, algorithm: Trial/Everything}\n  - {id: b, algorithm: Field/Info, options: {Field: flow.vtu}}\n", "", 2, "error: step \"a\": Missing input for mandatory option \"Field\"\n"},
    {"NothingIsPublished", "steps:\n  - {id: a, algorithm: Field/Tensor Field Operator}\n  - {id: b, algorithm: Field/Info, options: {Field: a.Field}}\n", "", 1, "Input Field A was not set.\nerror: step \"a\": \"Field/Tensor Field Operator\" published nothing on \"Field\": Input Field A was not set.\n"},
    {"StepsInAnyOrder", "steps:\n  - {id: b, algorithm: Field/Info, options: {Field: a.Field}}\n  - {id: a, algorithm: Field/Tensor Field Operator, options: {Field A: flow.vtu}}\n", "| grep -c 'minimal norm' >&2", 0, "1\n"},
    {"OpenVariable", "steps: [{id: a, algorithm: Field/Info, options: {Field: \"${x\"}}]\n", "", 2, "error: p.yaml:1:57: \"${\" without \"}\"\n"},
    {"ConstantFunction", "steps:\n  - {id: a, algorithm: Field/Tensor Field Operator, options: {Field A: flow.vtu, Field B: \"@constant:1,0,0\", Operator: Multiply (A*B)*C}}\n  - {id: b, algorithm: Field/Info, options: {Field: a.Field}}\n", "| grep -c 'maximal norm' >&2", 0, "1\n"},

    {"LoopWithoutSeries", "for: each-step\nsteps: [{id: a, algorithm: Field/Info, options: {Field: flow.vtu}}]\n", "", 2, "error: a loop over time steps needs a time series among the inputs\n"},
    {"LoopOverNothing", "for: each step\nsteps: [{id: a, algorithm: Field/Info}]\n", "", 2, "error: p.yaml:1:6: \"for\" is each-step or {VARIABLE: SET}\n"},
    {"LoopOverUnknownVariable", "for: {x: 1}\nsteps: [{id: a, algorithm: Field/Info}]\n", "", 2, "error: p.yaml:1:7: unknown variable \"x\"\n"},
    {"LoopOverVariable", "variables: {c: 1}\nfor: {c: \"1,3\"}\nsteps: [{id: a, algorithm: Field/Tensor Field Operator, options: {Field A: flow.vtu, Operator: Scale ( A * C ), Scalar C: \"${c}\"}}, {id: b, algorithm: Field/Info, options: {Field: a.Field}}]\noutputs: {a.Field: \"scaled_%d.vtu\"}\n", "| grep -c maximal >&2; ls scaled_* >&2", 0, "2\nscaled_0.vtu\nscaled_1.vtu\n"},
    {"LoopOverFilesReadsWhatItWrites", "variables: {n: }\nfor: {n: \"0,1\"}\nsteps: [{id: a, algorithm: Field/Tensor Field Operator, options: {Field A: \"s_${n}.vtu\"}}]\noutputs: {a.Field: \"s_%d.vtu\"}\n", "", 2, "error: s_0.vtu: is an input, and would be overwritten\n"},
    {"LoopOverFilesOverwritesLater", "variables: {n: }\nfor: {n: \"1,2\"}\nsteps: [{id: a, algorithm: Field/Tensor Field Operator, options: {Field A: r_2_1.vtu}}]\noutputs: {a.Field: \"r_${n}_%d.vtu\"}\n", "", 2, "error: r_2_1.vtu: is an input, and would be overwritten\n"},
    {"ReportReplacesThePipeline", norm, "--set d=1 --report p.yaml", 2, "error: p.yaml: is an input, and would be overwritten\n"},
    {"ResultIsLost", "steps:\n  - {id: a, algorithm: Field/Tensor Field Operator, options: {Field A: flow.vtu}}\n", "", 2, "error: p.yaml:2:5: the result of step \"a\" would be lost; no step takes it, and \"outputs\" does not name it\n"},
    {"ArrowsOfData", "steps: [{id: a, algorithm: Field/Tensor Field Operator, options: {Field A: flow.vtu}}]\noutputs: {a.Field: {file: x.vtu, arrows: 10}}\n", "", 2, "error: p.yaml:2:42: \"arrows\" is for graphics; \"Field\" is data\n"},
    {"InputNamedByTime", "steps:\n  - {id: a, algorithm: Field/Info, options: {Field: double_gyre.pvd}}\n  - {id: b, algorithm: Field/Info, options: {Field: \"f_${time}.vti\"}}\nfor: each-step\n", ">log; tail -n 1 log | cut -c 1-8 >&2; exit 3", 3, "error: f_0.vti: no such file\nA tensor\n"},
    // clang-format on
};

void PrintTo(const Case& row, std::ostream* stream)
{
    *stream << row.pipeline << row.arguments;
}

class Pipeline : public testing::TestWithParam<Case>
{};

TEST_P(Pipeline, EndsAsItShould)
{
    const Workshop workshop;
    workshop.write("out.vtu", "an earlier result");
    workshop.write("p.yaml", GetParam().pipeline);
    const Outcome outcome = workshop.run(
        std::string(R"(tavrin --plugin "$PLUGIN" pipeline p.yaml )") + GetParam().arguments);
    EXPECT_EQ(outcome.exitCode, GetParam().exitCode);
    EXPECT_EQ(outcome.standardError, GetParam().standardError);
    EXPECT_EQ(workshop.temporaryFiles(), "");
    if (GetParam().exitCode == 0)
        return;
    EXPECT_EQ(workshop.read("out.vtu"), "an earlier result");
}

INSTANTIATE_TEST_SUITE_P(Cli, Pipeline, testing::ValuesIn(cases),
                         [](const auto& row) { return std::string(row.param.name); });

/// A pipeline gives the files that the same commands give with files between them.
TEST(PipelineCommand, AgreesWithSingleCommands)
{
    const Workshop workshop;
    workshop.write("p.yaml", norm);
    const Outcome pipeline =
        workshop.run("tavrin pipeline p.yaml --set d=1 --report p.json >p.txt");
    EXPECT_EQ(pipeline.exitCode, 0) << pipeline.standardError;
    const Outcome commands = workshop.run(
        "tavrin run tensor 'field a=flow.vtu#velocity' -o speed.vtu#speed && "
        "tavrin run info field=speed.vtu --report i.json >i.txt && cmp out.vtu speed.vtu "
        "&& cmp p.txt i.txt");
    EXPECT_EQ(commands.exitCode, 0) << commands.standardOutput << commands.standardError;
    const json report = json::parse(workshop.read("p.json"));
    EXPECT_EQ(report.at("steps").at(1).at("id"), "report");
    EXPECT_EQ(report.at("steps").at(1).at("options").at("Field"), "norm.Field");
    EXPECT_EQ(report.at("steps").at(1).at("results"),
              json::parse(workshop.read("i.json")).at("results"));
}

/// What every step of a series gives is the same as for the whole series, step by step.
TEST(EachStep, WritesASeriesAndAListOfReports)
{
    const Workshop workshop;
    const Outcome outcome = workshop.run(
        "tavrin run tensor 'field a=double_gyre.pvd' --each-step -o steps.pvd --report steps.json && "
        "tavrin run tensor 'field a=double_gyre.pvd' -o whole.pvd && "
        "for k in 0 7 20; do cmp steps/steps_$(printf %04d $k).vti whole/whole_$(printf %04d $k).vti; "
        "done; tavrin info steps.pvd | grep 'time steps'");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.standardOutput;
    EXPECT_EQ(outcome.standardOutput, "time steps  21 from 0 to 10\n");
    const json report = json::parse(workshop.read("steps.json"));
    ASSERT_EQ(report.size(), 21U);
    EXPECT_EQ(report.at(3).at("time"), 1.5);
    EXPECT_EQ(report.at(3).at("options").at("Field A"), "double_gyre.pvd?time=1.5");
}

/// All frames share the colors and the scale, and finished frames stay if a later one fails.
TEST(EachStep, PaintsFrames)
{
    const Workshop workshop;
    const Outcome outcome = workshop.run(
        "tavrin run hedge field=double_gyre.pvd map=viridis scale=auto --arrows 50 --each-step "
        "--size 100x80 -o frame_%03d.png --report r.json >/dev/null; ls frame_* | wc -l");
    EXPECT_EQ(outcome.standardError, "");
    EXPECT_EQ(outcome.standardOutput, "21\n");
    const json report = json::parse(workshop.read("r.json"));
    for (const json& step : report)
        EXPECT_EQ(step.at("options").at("Scale"), report.front().at("options").at("Scale"));
    EXPECT_NE(report.front().at("options").at("Scale"), "1");

    const Outcome failing = workshop.run(
        "mkdir c; cp -L double_gyre.pvd c/; cp -rL double_gyre c/; rm c/double_gyre/*_0002.vti; "
        "tavrin run hedge field=c/double_gyre.pvd map=gray@0:1 --each-step --size 20x20 "
        "-o f_%d.png >/dev/null; echo $?; ls f_*");
    EXPECT_EQ(failing.standardOutput, "3\nf_0.png\nf_1.png\n");
    EXPECT_EQ(failing.standardError, "error: c/double_gyre.pvd: step 2 at t = 1: "
                                     "double_gyre/double_gyre_0002.vti: no such file\n");
}

TEST(Sweep, RepeatsForEveryValue)
{
    const Workshop workshop;
    const Outcome outcome = workshop.run(
        "tavrin run tensor 'field a=flow.vtu' op=scale --sweep 'scalar c=[1:2#0.5]' -o s_%d.vtu "
        "--report r.json && ls s_*");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.standardError;
    EXPECT_EQ(outcome.standardOutput, "s_0.vtu\ns_1.vtu\ns_2.vtu\n");
    const json report = json::parse(workshop.read("r.json"));
    EXPECT_EQ(report.at(1).at("variables"), json({{"Scalar C", "1.5"}}));
    EXPECT_EQ(report.at(1).at("options").at("Scalar C"), "1.5");
    for (const auto& [arguments, error] :
         {std::pair("--sweep 'scalar c=[1:2]' -o s.vtu",
                    "error: s.vtu: is to be written many times; use a name with a place for the "
                    "number, as in s_%04d.vtu\n"),
          std::pair(
              "--sweep 'scalar c=1,foo,2' -o s_%d.vtu",
              "error: \"1,foo,2\" is not a list of values such as [0:1#0.1] or 1,2,5: \"foo\" is "
              "not a number\n"),
          std::pair("'scalar c=2' --sweep 'scalar c=1' -o s_%d.vtu",
                    "error: option \"Scalar C\" is given twice\n"),
          std::pair("--sweep 'scalar c=1,2' -o s_%d.vtu -o s_%01d.vtu",
                    "error: s_0.vtu: is to be written twice\n"),
          std::pair("--sweep 'scalar c=1,2' -o s_%d.vtu --report s_1.vtu",
                    "error: s_1.vtu: is to be written twice\n"),
          std::pair(
              "--sweep 'scalar c=[-2:1]' -o s_%d.vtu",
              "error: \"[-2:1]\" is not a list of values such as [0:1#0.1] or 1,2,5: values in "
              "brackets must be greater than -1\n"),
          std::pair("-o -.csv --report -", "error: standard output is to be written twice\n"),
          std::pair("-o -", "error: -: standard output takes tables of data, as -.csv\n"),
          std::pair("--sweep 'scalar=1' -o s_%d.vtu",
                    "error: \"scalar\" fits more than one option: \"Scalar C\", \"Scalar D\"\n"),
          std::pair("--sweep 'operator=1' -o s_%d.vtu",
                    "error: --sweep: \"Operator\" is a choice option; a sweep varies a number\n"),
          std::pair("--sweep 'scalar c=1' --each-step -o s_%d.vtu",
                    "error: --each-step and --sweep cannot be combined\n"),
          std::pair("--sweep 'scalar c=1' -o s_%d_%d.vtu",
                    "error: s_%d_%d.vtu: has several places for a number; it takes one, as in "
                    "frame_%04d.png\n")})
        EXPECT_EQ(workshop.run(std::string("tavrin run tensor 'field a=flow.vtu' ") + arguments)
                      .standardError,
                  error);
}

}
