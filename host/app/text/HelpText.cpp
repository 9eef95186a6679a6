#include "HelpText.hpp"

#include "Layout.hpp"

#include <tavrin/io/Formats.hpp>

#include <CLI/CLI.hpp>

#include <algorithm>

namespace tavrin::app
{

namespace
{

/// Paragraphs with wrapped lines. Lines that begin with a blank are not wrapped.
std::string paragraphs(const std::string& text)
{
    std::string page;
    for (const std::string& line : linesOf(text))
        page += (line.starts_with(' ') ? line : wrapped(line, 0)) + '\n';
    return page;
}

std::string optionTable(const CLI::App& syntax)
{
    std::vector<std::vector<std::string>> rows;
    for (const OptionText& option : optionTexts(syntax))
        rows.push_back(
            {joined(option.names, ", ") + (option.value.empty() ? "" : " " + option.value),
             option.description});
    return alignedColumns(rows, 2);
}

/// The extensions of the formats that are read and hold such content: ".pvd and .series".
std::string readableExtensions(io::FileContent content)
{
    std::vector<std::string> extensions;
    for (const io::FileFormat& format : io::fileFormats())
        if (format.isRead() && format.content == content)
            extensions.emplace_back(format.extension);
    return io::enumerate(extensions, "and");
}

std::string exampleTable(const std::vector<Example>& examples)
{
    std::string table;
    for (const Example& example : examples)
        table += "  " + example.command + "\n      " + wrapped(example.meaning, 6) + '\n';
    return table;
}

}

std::vector<OptionText> optionTexts(const CLI::App& syntax)
{
    std::vector<OptionText> texts;
    for (const CLI::Option* const option : syntax.get_options())
    {
        const bool isFlag = option->get_items_expected_max() == 0;
        OptionText text{{}, isFlag ? "" : option->get_type_name(), option->get_description()};
        for (const std::string& name : option->get_snames())
            text.names.push_back("-" + name);
        for (const std::string& name : option->get_lnames())
            text.names.push_back("--" + name);
        texts.push_back(std::move(text));
    }
    return texts;
}

const std::vector<Topic>& helpTopics()
{
    static const std::vector<Topic> topics{
        {"Data references",
         "Data in a file is FILE#ARRAY?key=value&key=value. #ARRAY may be left out if the file has "
         "one array. A grid is FILE alone; for an option that takes both grids and functions, FILE "
         "alone is the grid. The keys:\n"
         "  on=points|cells     selects the array if points and cells have one of that name\n"
         "  shape=scalar|3|2x2  reads the components of an array as this shape; 2 reads planar\n"
         "                      vectors, whose third component is 0\n"
         "  component=x|0       only this component, by name or number from 0\n"
         "  order=voigt         the order of the six components of a symmetric matrix;\n"
         "                      xx,yy,zz,xy,yz,xz by default\n"
         "  dimension=1|2|3     the number of coordinates of the grid's points\n"
         "  time=T              only this step of a time series\n"
         "  block=NAME|0        only this block of a multi-block file\n"
         "  reach=DISTANCE      positions this near to a surface or line take its nearest value\n"
         "Files are read that hold grids (" +
             readableExtensions(io::FileContent::Grid) + "), time series (" +
             readableExtensions(io::FileContent::TimeSteps) + ") or several blocks (" +
             readableExtensions(io::FileContent::Blocks) +
             "), which may be steps of a series. An option for several fields takes all blocks as "
             "one field.\n"},
        {"Data without a file",
         "  @line:0,0,0:1,0,0:100  100 points between two positions, for a grid\n"
         "  @box:50x25             a uniform grid over the bounds of the other data\n"
         "  @box:50x25x10:FILE     the same over the bounds of a file\n"
         "  @box:9x9:0,0:1,1       the same between two corners\n"
         "  @points:FILE.csv       the points of a file\n"
         "  @constant:1,0,0        the same value everywhere, on the grid of the other data\n"},
        {"Color maps and colors",
         "A COLORMAP is viridis, plasma, coolwarm, gray or another built-in name, or a JSON file as "
         "desktop tools export it. It spans the norms of the field unless @LOW:HIGH follows. A "
         "color is #rrggbb, #rrggbbaa, or r,g,b[,a] in 0..1.\n"},
        {"Exit codes",
         "  0    done\n"
         "  1    the run failed\n"
         "  2    wrong usage: an unknown algorithm, option or choice, or a bad value\n"
         "  3    a file could not be read or written\n"
         "  130  interrupted; a second Ctrl-C kills\n"},
        {"Environment",
         "  TAVRIN_PLUGIN_PATH  plug-ins to load, files or folders separated by ':'\n"
         "  OMP_NUM_THREADS     number of threads unless --threads is given\n"},
    };
    return topics;
}

std::string helpText(const ProgramDeclaration& program)
{
    std::string page = "Usage: tavrin [OPTION]... COMMAND ...\n\n" +
                       program.syntax.get_description() + "\n\nCommands:\n";
    std::vector<std::vector<std::string>> rows;
    std::ranges::transform(program.commands, std::back_inserter(rows),
                           [](const CommandDeclaration& command) {
                               return std::vector{command.text.name, command.text.summary};
                           });
    page += alignedColumns(rows, 2);
    page += "\nOptions of every command:\n" + optionTable(program.syntax);
    for (const Topic& topic : helpTopics())
        page += "\n" + topic.title + ":\n" + paragraphs(topic.text);
    page += "\nExamples:\n";
    for (const CommandDeclaration& command : program.commands)
        if (!command.text.examples.empty())
            page += exampleTable({command.text.examples.front()});
    return page + "\n\"tavrin COMMAND --help\" tells more about a command.\n";
}

std::string helpText(const CommandDeclaration& command)
{
    const CommandText& text = command.text;
    const std::string options = optionTable(command.syntax);
    std::string page = "Usage: tavrin " + text.name + (text.words.empty() ? "" : " " + text.words) +
                       (options.empty() ? "" : " [OPTION]...") + "\n\n" + text.summary + ".\n";
    if (!text.details.empty())
        page += '\n' + paragraphs(text.details);
    if (!options.empty())
        page += "\nOptions:\n" + options;
    if (!text.examples.empty())
        page += "\nExamples:\n" + exampleTable(text.examples);
    return page + "\nOptions of every command: see \"tavrin --help\".\n";
}

}
