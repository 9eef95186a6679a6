#include <tavrin/io/series/ListFiles.hpp>

#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/TextNumbers.hpp>

#include <nlohmann/json.hpp>
#include <pugixml.hpp>

#include <fstream>

namespace tavrin::io
{

namespace
{

/// Reads a VTK XML file and returns its root element, which must be of the type.
pugi::xml_node readRoot(const std::filesystem::path& path, const std::string& type,
                        const std::string& what, pugi::xml_document& document)
{
    const pugi::xml_parse_result result = document.load_file(path.c_str());
    if (!result)
        throw Malformed(std::string("not a whole XML file: ") + result.description());
    const pugi::xml_node root = document.child("VTKFile");
    if (root.attribute("type").value() != type)
        throw Malformed("not a " + what + ": its root element is not <VTKFile type=\"" + type +
                        "\">");
    return root;
}

/// Collects the blocks that have a file, with the names of the blocks around them.
class BlockWalker : public pugi::xml_tree_walker
{
public:
    std::vector<ListedFile> blocks;

private:
    bool for_each(pugi::xml_node& node) override // NOLINT(readability-identifier-naming)
    {
        constexpr int maximumDepth = 100;
        if (depth() > maximumDepth)
            throw Malformed("nests its blocks more than " + std::to_string(maximumDepth) + " deep");
        // A block without a file is empty.
        const std::string file = node.attribute("file").value();
        if (std::string_view(node.name()) == "DataSet" && !file.empty())
            blocks.push_back({0.0, pathTo(node), file});
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
        // Files of the first version have groups instead of nested blocks.
        if (const pugi::xml_attribute group = node.attribute("group"))
            return std::string(group.value()) + "/" + node.attribute("dataset").value();
        return node.attribute("index").value();
    }
};

}

std::vector<ListedFile> readPvdList(const std::filesystem::path& path)
{
    pugi::xml_document document;
    const pugi::xml_node root = readRoot(path, "Collection", "collection of files", document);
    std::vector<ListedFile> files;
    for (const pugi::xml_node set : root.child("Collection").children("DataSet"))
    {
        const pugi::xml_attribute time = set.attribute("timestep");
        const std::string group = set.attribute("group").value();
        files.push_back({time ? parseNumbers(time.value(), 1, "a timestep").front() : 0.0,
                         (group.empty() ? "" : group + "/") + set.attribute("part").as_string("0"),
                         set.attribute("file").value()});
    }
    return files;
}

std::vector<ListedFile> readJsonList(const std::filesystem::path& path)
{
    std::ifstream stream(path);
    const auto json = nlohmann::json::parse(stream, nullptr, false);
    if (json.is_discarded())
        throw Malformed("not a whole JSON file");
    const auto entries = json.is_object() ? json.find("files") : json.end();
    if (entries == json.end() || !entries->is_array())
        throw Malformed("not a series of files: it has no list \"files\"");
    std::vector<ListedFile> files;
    for (const auto& entry : *entries)
    {
        const auto name = entry.is_object() ? entry.find("name") : entry.end();
        const auto time = entry.is_object() ? entry.find("time") : entry.end();
        if (name == entry.end() || !name->is_string() || time == entry.end() || !time->is_number())
            throw Malformed("file " + std::to_string(files.size()) +
                            " of the series needs a \"name\" and a number \"time\"");
        files.push_back({time->get<double>(), "0", name->get<std::string>()});
    }
    return files;
}

std::vector<ListedFile> readMultiBlockList(const std::filesystem::path& path)
{
    pugi::xml_document document;
    const pugi::xml_node root =
        readRoot(path, "vtkMultiBlockDataSet", "multi-block file", document);
    BlockWalker walker;
    root.child("vtkMultiBlockDataSet").traverse(walker);
    if (walker.blocks.empty())
        throw Malformed("lists no blocks with a file");
    return std::move(walker.blocks);
}

}
