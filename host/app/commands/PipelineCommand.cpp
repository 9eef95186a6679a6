#include "Commands.hpp"
#include "PlanExecution.hpp"

#include <tavrin/pipeline/PipelineFile.hpp>

#include <CLI/CLI.hpp>

namespace tavrin::app
{

namespace
{

using namespace pipeline;

class PipelineCommand final : public Command
{
public:
    explicit PipelineCommand(CLI::App& program)
        : Command(
              program,
              {.name = "pipeline",
               .words = "FILE.yaml",
               .summary = "Runs several algorithms, one on the results of another",
               .details =
                   "The file is YAML or JSON. \"steps\" is a list of {id, algorithm, options}: a data "
                   "option takes the name of data, STEP.OUTPUT for the result of a step, or a "
                   "reference as in \"run\". \"data\" names references, and \"outputs\" names the file "
                   "for STEP.OUTPUT, or {file, size, background, view, title, font-scale, crop, "
                   "arrows} for a picture. ${name} stands for a variable of \"variables\", which "
                   "gives defaults. \"for\" repeats everything: each-step for every time step of the "
                   "series among the inputs, {VARIABLE: SET} for the values of a set. Names of "
                   "algorithms, options and outputs are written in full. Relative paths start in the "
                   "current folder. \"tavrin schema\" prints a JSON schema for editors.\n\n"
                   "The whole file is checked before anything runs. Results pass from step to step in "
                   "memory and are released when no later step needs them. As for \"run\", files "
                   "appear when everything is complete, those of a single repetition when it is "
                   "complete.\n\n"
                   "--report writes an object with formatVersion and steps, a list of what \"run\" "
                   "reports, with an id each; with \"for\" it is a list of such objects, with time or "
                   "variables {name: value} each.",
               .examples = {
                   {"tavrin pipeline von_mises.yaml --set stress=plate_with_hole.vts "
                    "--set array=stress",
                    "The von Mises equivalent of a stress, by a pipeline of \"tavrin "
                    "examples\"."},
                   {"tavrin pipeline difference.yaml --set a=flow.vtu --set b=abc_flow.vti "
                    "--dry-run",
                    "What another pipeline would do."}}})
    {
        syntax()
            .add_option("--set", mSettings, "sets a variable; repeatable")
            ->type_name("VARIABLE=VALUE")
            ->allow_extra_args(false);
        syntax().add_flag(
            "--dry-run", mIsDryRun,
            "prints what would be done, with an estimate of memory, and does nothing");
        syntax()
            .add_option("--report", mReportFile,
                        "writes a report of a successful run as JSON; - is standard output")
            ->type_name("FILE.json");
    }

    void execute(const Words& words, Session& session) override
    {
        PipelineFile file(onlyWord(words), session.algorithms);
        for (const std::string& setting : mSettings)
        {
            const auto equals = setting.find('=');
            if (equals == std::string::npos)
                throw usage_error("--set: \"" + setting + "\" is not of the form VARIABLE=VALUE");
            file.set(setting.substr(0, equals), setting.substr(equals + 1));
        }
        const auto makePlan = [&](const Iteration& iteration) { return file.plan(iteration); };
        if (mIsDryRun)
            previewPlan(makePlan, file.loop(), session);
        else
            executePlan(makePlan, file.loop(), mReportFile, session, {onlyWord(words)});
    }

private:
    std::vector<std::string> mSettings;
    bool mIsDryRun = false;
    std::optional<std::string> mReportFile;
};

}

std::unique_ptr<Command> makePipelineCommand(CLI::App& program)
{
    return std::make_unique<PipelineCommand>(program);
}

}
