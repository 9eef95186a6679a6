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
        if (command->name() == name)
            return *command;
        names.push_back(command->name());
    }
    throw usage_error("unknown command \"" + name + "\"" + suggestionFor(name, names));
}

ProgramDeclaration Program::declaration() const
{
    ProgramDeclaration declaration{syntax, {}};
    for (const auto& command : commands)
        declaration.commands.push_back(command->declaration());
    return declaration;
}

}
