#include "../text/Layout.hpp"
#include "Commands.hpp"
#include "Session.hpp"
#include <tavrin/pipeline/Json.hpp>

#include <CLI/CLI.hpp>

#include <algorithm>

namespace tavrin::app
{

using pipeline::Json;
using pipeline::jsonText;

namespace
{

using Row = std::vector<std::string>;

class ListCommand final : public Command
{
public:
    explicit ListCommand(CLI::App& program)
        : Command(
              program,
              {.name = "list",
               .words = "",
               .summary = "Lists the algorithms",
               .details = "The JSON is an object with formatVersion and algorithms, an array of "
                          "{name, description}, sorted by name.",
               .examples = {{"tavrin list", "The algorithms of all plug-ins that are loaded."}}})
    {
        syntax().add_flag("--json", mWantsJson, "prints JSON");
    }

    void execute(const Words& words, Session& session) override
    {
        refuseWords(words);
        std::vector<Row> rows;
        for (const auto& [name, factory] : session.algorithms.factories())
            rows.push_back({name, factory->getDescription()});
        std::ranges::sort(rows);
        session.console.print(mWantsJson ? jsonText(toJson(rows))
                                         : alignedColumns(rows, 0, LastColumn::Unwrapped));
    }

private:
    static Json toJson(const std::vector<Row>& rows)
    {
        Json list = Json::array();
        for (const Row& row : rows)
            list.push_back({{"name", row[0]}, {"description", row[1]}});
        return {{"formatVersion", 1}, {"algorithms", std::move(list)}};
    }

    bool mWantsJson = false;
};

}

std::unique_ptr<Command> makeListCommand(CLI::App& program)
{
    return std::make_unique<ListCommand>(program);
}

}
