#include "../text/Layout.hpp"
#include "../text/OutputSchemas.hpp"
#include "AllAlgorithms.hpp"
#include "Commands.hpp"

#include <tavrin/pipeline/PipelineSchema.hpp>

#include <CLI/CLI.hpp>

namespace tavrin::app
{

namespace
{

class SchemaCommand final : public Command
{
public:
    explicit SchemaCommand(CLI::App& program)
        : Command(program,
                  {.name = "schema",
                   .words = "[pipeline|" + joined(outputSchemaNames(), "|") + "]",
                   .summary = "Prints a JSON schema of pipelines, or of what the program prints",
                   .details =
                       "Without a name, or for \"pipeline\", the schema describes pipeline files, "
                       "with the options of all algorithms. The other names are " +
                       joined(outputSchemaNames(), ", ") +
                       ": what --json prints for these commands, and what --report writes. "
                       "The JSON carries a formatVersion, which grows when the meaning of a "
                       "part changes or a part is removed.",
                   .examples = {{"tavrin schema", "For the check of pipelines in an editor."},
                                {"tavrin schema report", "For programs that read reports."}}})
    {
    }

    void execute(const Words& words, Session& session) override
    {
        refuseWords(words, 1);
        const bool isPipeline = words.empty() || words.front() == "pipeline";
        session.console.print(
            pipeline::jsonText(isPipeline ? pipeline::pipelineSchema(describeAll(session))
                                          : outputSchema(words.front())));
    }
};

}

std::unique_ptr<Command> makeSchemaCommand(CLI::App& program)
{
    return std::make_unique<SchemaCommand>(program);
}

}
