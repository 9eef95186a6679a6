#include <tavrin/io/Collection.hpp>

#include <tavrin/base/LexicalCast.hpp>
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

std::vector<Collection::Step> readPvd(const std::filesystem::path& path)
{
    pugi::xml_document document;
    const pugi::xml_parse_result result = document.load_file(path.c_str());
    if (!result)
        throw Malformed(std::string("not a whole XML file: ") + result.description());
    const pugi::xml_node root = document.child("VTKFile");
    if (std::string_view(root.attribute("type").value()) != "Collection")
        throw Malformed("not a collection of files: its root element is not "
                        "<VTKFile type=\"Collection\">");
    std::vector<Collection::Step> steps;
    for (const pugi::xml_node set : root.child("Collection").children("DataSet"))
    {
        const pugi::xml_attribute time = set.attribute("timestep");
        steps.push_back({time ? parseNumbers(time.value(), 1, "a timestep").front() : 0.0,
                         set.attribute("file").value(),
                         {}});
    }
    return steps;
}

std::vector<Collection::Step> readSeries(const std::filesystem::path& path)
{
    std::ifstream stream(path);
    const auto json = nlohmann::json::parse(stream, nullptr, false);
    if (json.is_discarded())
        throw Malformed("not a whole JSON file");
    const auto files = json.is_object() ? json.find("files") : json.end();
    if (files == json.end() || !files->is_array())
        throw Malformed("not a series of files: it has no list \"files\"");
    std::vector<Collection::Step> steps;
    for (const auto& file : *files)
    {
        const auto name = file.is_object() ? file.find("name") : file.end();
        const auto time = file.is_object() ? file.find("time") : file.end();
        if (name == file.end() || !name->is_string() || time == file.end() || !time->is_number())
            throw Malformed("file " + std::to_string(steps.size()) +
                            " of the series needs a \"name\" and a number \"time\"");
        steps.push_back({time->get<double>(), name->get<std::string>(), {}});
    }
    return steps;
}

}

bool isCollection(const std::filesystem::path& path)
{
    const std::string extension = extensionOf(path);
    return extension == ".pvd" || extension == ".series";
}

Collection readCollection(const std::filesystem::path& path)
{
    Collection collection{extensionOf(path) == ".pvd" ? readPvd(path) : readSeries(path)};
    auto& steps = collection.steps;
    if (steps.empty())
        throw Malformed("lists no files");
    for (Collection::Step& step : steps)
    {
        if (step.name.empty())
            throw Malformed("a step has no file name");
        if (!std::isfinite(step.time))
            throw Malformed("a time is not finite");
        step.path = path.parent_path() / step.name;
        if (isCollection(step.path))
            throw Malformed("lists \"" + step.name + "\", which is a list of files itself");
    }
    std::ranges::stable_sort(steps, {}, &Collection::Step::time);
    const auto repeated = std::ranges::adjacent_find(steps, {}, &Collection::Step::time);
    if (repeated != steps.end())
        throw Malformed("lists several files for t = " + toText(repeated->time) +
                        "; a step must be one file");
    return collection;
}

std::vector<std::filesystem::path> filesOf(const std::filesystem::path& path)
{
    std::vector files{path};
    if (!isCollection(path))
        return files;
    try
    {
        for (Collection::Step& step : readCollection(path).steps)
            files.push_back(std::move(step.path));
    }
    catch (const Malformed&)
    {
        // Whoever loads the list says what is wrong with it.
    }
    return files;
}

}
