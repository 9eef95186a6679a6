#include <tavrin/io/Collection.hpp>

#include <tavrin/value/LexicalCast.hpp>
#include <tavrin/io/DataFile.hpp>
#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/TextNumbers.hpp>

#include <nlohmann/json.hpp>
#include <pugixml.hpp>

#include <cmath>
#include <fstream>

namespace tavrin::io
{

namespace
{

using Part = Collection::Part;
using Step = Collection::Step;

/// One listed file with its time.
struct Entry
{
    double time;
    Part part;
};

pugi::xml_node readRoot(const std::filesystem::path& path, pugi::xml_document& document)
{
    const pugi::xml_parse_result result = document.load_file(path.c_str());
    if (!result)
        throw Malformed(std::string("not a whole XML file: ") + result.description());
    return document.child("VTKFile");
}

std::vector<Entry> readPvd(const std::filesystem::path& path)
{
    pugi::xml_document document;
    const pugi::xml_node root = readRoot(path, document);
    if (std::string_view(root.attribute("type").value()) != "Collection")
        throw Malformed("not a collection of files: its root element is not "
                        "<VTKFile type=\"Collection\">");
    std::vector<Entry> entries;
    for (const pugi::xml_node set : root.child("Collection").children("DataSet"))
    {
        const pugi::xml_attribute time = set.attribute("timestep");
        const std::string group = set.attribute("group").value();
        entries.push_back(
            {time ? parseNumbers(time.value(), 1, "a timestep").front() : 0.0,
             {(group.empty() ? "" : group + "/") + set.attribute("part").as_string("0"),
              set.attribute("file").value(),
              {}}});
    }
    return entries;
}

std::vector<Entry> readSeries(const std::filesystem::path& path)
{
    std::ifstream stream(path);
    const auto json = nlohmann::json::parse(stream, nullptr, false);
    if (json.is_discarded())
        throw Malformed("not a whole JSON file");
    const auto files = json.is_object() ? json.find("files") : json.end();
    if (files == json.end() || !files->is_array())
        throw Malformed("not a series of files: it has no list \"files\"");
    std::vector<Entry> entries;
    for (const auto& file : *files)
    {
        const auto name = file.is_object() ? file.find("name") : file.end();
        const auto time = file.is_object() ? file.find("time") : file.end();
        if (name == file.end() || !name->is_string() || time == file.end() || !time->is_number())
            throw Malformed("file " + std::to_string(entries.size()) +
                            " of the series needs a \"name\" and a number \"time\"");
        entries.push_back({time->get<double>(), {"0", name->get<std::string>(), {}}});
    }
    return entries;
}

/// The entries of a time together, in ascending order of time.
std::vector<Step> stepsOf(std::vector<Entry> entries)
{
    for (const Entry& entry : entries)
    {
        if (entry.part.file.empty())
            throw Malformed("a step has no file name");
        if (!std::isfinite(entry.time))
            throw Malformed("a time is not finite");
    }
    std::ranges::stable_sort(entries, {}, &Entry::time);
    std::vector<Step> steps;
    for (Entry& entry : entries)
    {
        if (steps.empty() || steps.back().time != entry.time)
            steps.push_back({entry.time, {}});
        steps.back().parts.push_back(std::move(entry.part));
    }
    for (const Step& step : steps)
    {
        std::vector<std::string> names;
        std::ranges::transform(step.parts, std::back_inserter(names), &Part::name);
        std::ranges::sort(names);
        if (const auto repeated = std::ranges::adjacent_find(names); repeated != names.end())
            throw Malformed("lists several files for t = " + toText(*step.time) +
                            (names.front() == names.back() ? "" : " and part " + *repeated) +
                            "; a step must be one file, or one for each part");
    }
    return steps;
}

/// Collects the blocks that have a file, with the names of the blocks around them.
class BlockWalker : public pugi::xml_tree_walker
{
public:
    std::vector<Part> blocks;

private:
    bool for_each(pugi::xml_node& node) override // NOLINT(readability-identifier-naming)
    {
        constexpr int deepest = 100;
        if (depth() > deepest)
            throw Malformed("nests its blocks more than " + std::to_string(deepest) + " deep");
        // A block without a file is empty.
        const std::string file = node.attribute("file").value();
        if (std::string_view(node.name()) == "DataSet" && !file.empty())
            blocks.push_back({pathTo(node), file, {}});
        return true;
    }

    std::string pathTo(pugi::xml_node node) const
    {
        std::string path;
        for (int level = depth(); level >= 0; --level, node = node.parent())
            path.insert(0, "/" + nameOf(node));
        return path.substr(1);
    }

    static std::string nameOf(const pugi::xml_node& node)
    {
        std::string name = node.attribute("name").value();
        if (!name.empty())
            return name;
        // What files of the first version have in place of nested blocks.
        if (const pugi::xml_attribute group = node.attribute("group"))
            return std::string(group.value()) + "/" + node.attribute("dataset").value();
        return node.attribute("index").value();
    }
};

std::vector<Part> readBlocks(const std::filesystem::path& path)
{
    pugi::xml_document document;
    const pugi::xml_node root = readRoot(path, document);
    if (std::string_view(root.attribute("type").value()) != "vtkMultiBlockDataSet")
        throw Malformed("not a multi-block file: its root element is not "
                        "<VTKFile type=\"vtkMultiBlockDataSet\">");
    BlockWalker walker;
    root.child("vtkMultiBlockDataSet").traverse(walker);
    if (walker.blocks.empty())
        throw Malformed("lists no blocks with a file");
    return std::move(walker.blocks);
}

}

bool isSeries(const std::filesystem::path& path)
{
    const std::string extension = extensionOf(path);
    return extension == ".pvd" || extension == ".series";
}

bool isMultiBlock(const std::filesystem::path& path)
{
    return extensionOf(path) == ".vtm";
}

bool isCollection(const std::filesystem::path& path)
{
    return isMultiBlock(path) || isSeries(path);
}

Collection readCollection(const std::filesystem::path& path)
{
    Collection collection;
    if (isMultiBlock(path))
        collection.steps.push_back({std::nullopt, readBlocks(path)});
    else
        collection.steps = stepsOf(extensionOf(path) == ".pvd" ? readPvd(path) : readSeries(path));
    if (collection.steps.empty())
        throw Malformed("lists no files");
    for (Step& step : collection.steps)
        for (Part& part : step.parts)
        {
            part.path = path.parent_path() / part.file;
            if (isMultiBlock(path) ? isCollection(part.path) : isSeries(part.path))
                throw Malformed("lists \"" + part.file + "\", which is a list of files itself");
        }
    return collection;
}

std::vector<std::filesystem::path> filesOf(const std::filesystem::path& path)
{
    std::vector files{path};
    if (!isCollection(path))
        return files;
    try
    {
        for (const Step& step : readCollection(path).steps)
            for (const Part& part : step.parts)
                std::ranges::move(filesOf(part.path), std::back_inserter(files));
    }
    catch (const Malformed&)
    {
        // Whoever loads the list says what is wrong with it.
    }
    return files;
}

}
