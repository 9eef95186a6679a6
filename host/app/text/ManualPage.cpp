#include "ManualPage.hpp"

#include "HelpText.hpp"
#include "Layout.hpp"

#include <CLI/CLI.hpp>

namespace tavrin::app
{

namespace
{

/// A text that roff prints literally: not as a request, and with hyphens that can be copied.
std::string escaped(const std::string& text)
{
    std::string roff;
    for (const char c : text)
    {
        if (c == '\\')
            roff += "\\e";
        else if (c == '-')
            roff += "\\-";
        else
            roff += c;
    }
    return roff.starts_with('.') || roff.starts_with('\'') ? "\\&" + roff : roff;
}

std::string heading(const std::string& title)
{
    return ".SH " + title + '\n';
}

std::string subheading(const std::string& title)
{
    return ".SS \"" + escaped(title) + "\"\n";
}

/// A term with its meaning.
std::string entry(const std::string& term, const std::string& meaning)
{
    return ".TP\n.B " + escaped(term) + '\n' + escaped(meaning) + '\n';
}

/// Paragraphs. Lines that begin with a blank are not wrapped.
std::string paragraphs(const std::string& text)
{
    std::string roff = ".PP\n";
    bool isLiteral = false;
    for (const std::string& line : linesOf(text))
    {
        if (line.starts_with(' ') != isLiteral)
            roff += isLiteral ? ".fi\n" : ".nf\n";
        isLiteral = line.starts_with(' ');
        roff += line.empty() ? ".PP\n" : escaped(line) + '\n';
    }
    return roff + (isLiteral ? ".fi\n" : "");
}

std::string optionEntries(const CLI::App& syntax)
{
    std::string roff;
    for (const OptionText& option : optionTexts(syntax))
        roff += entry(joined(option.names, ", ") + (option.value.empty() ? "" : " " + option.value),
                      option.description);
    return roff;
}

std::string commandSection(const CommandDeclaration& command)
{
    const CommandText& text = command.text;
    return subheading("tavrin " + text.name + (text.words.empty() ? "" : " " + text.words)) +
           escaped(text.summary) + ".\n" + (text.details.empty() ? "" : paragraphs(text.details)) +
           optionEntries(command.syntax);
}

std::string algorithmSection(const pipeline::AlgorithmCard& algorithm)
{
    std::string roff = subheading(algorithm.name) + escaped(algorithm.description) + '\n';
    for (const auto& option : algorithm.options)
    {
        std::string meaning = option.help;
        if (!option.choices.empty())
            meaning += " (one of: " + joined(option.choices, "; ") + ")";
        if (!option.defaultValue.empty())
            meaning += " [" + option.defaultValue + "]";
        const pipeline::DataInput* const data = algorithm.dataInput(option);
        if (data != nullptr)
            meaning += " (accepts: " + joined(option.types, "; ") + ")";
        roff +=
            entry(option.name + (data != nullptr ? "=" + data->placeholder
                                                 : " (" + std::string(nameOf(option.kind)) + ")"),
                  meaning);
    }
    for (const auto& output : algorithm.outputs)
        roff += entry("-o " + output.name + "=FILE", output.isGraphics ? "graphics" : "data");
    return roff;
}

}

std::string manualPage(const ProgramDeclaration& program,
                       const std::vector<pipeline::AlgorithmCard>& algorithms)
{
    std::string roff =
        ".TH TAVRIN 1 \"\" \"tavrin " TAVRIN_VERSION "\" \"User Commands\"\n.nh\n.ad l\n" +
        heading("NAME") + "tavrin \\- field analysis from the command line\n" +
        heading("SYNOPSIS") + ".B tavrin\n[\\fIOPTION\\fR]... \\fICOMMAND\\fR ...\n" +
        heading("DESCRIPTION") + escaped(program.syntax.get_description()) + '\n' +
        heading("OPTIONS") + optionEntries(program.syntax) + heading("COMMANDS");
    for (const CommandDeclaration& command : program.commands)
        roff += commandSection(command);
    roff += heading("ALGORITHMS");
    for (const pipeline::AlgorithmCard& algorithm : algorithms)
        roff += algorithmSection(algorithm);
    for (const Topic& topic : helpTopics())
        roff += heading('"' + topic.title + '"') + paragraphs(topic.text);
    roff += heading("EXAMPLES");
    for (const CommandDeclaration& command : program.commands)
        for (const Example& example : command.text.examples)
            roff += entry(example.command, example.meaning);
    return roff;
}

}
