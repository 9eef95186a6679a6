#include "Program.hpp"

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/base/Suggestion.hpp>

namespace tavrin::app
{

Command& Program::command(const std::string& name) const
{
    std::vector<std::string> names;
    for (const auto& command : commands)
    {
        if (command->text().name == name)
            return *command;
        names.push_back(command->text().name);
    }
    throw usage_error("unknown command \"" + name + "\"" + suggestionFor(name, names));
}

}
