#include <tavrin/pipeline/YamlDocument.hpp>

#include <tavrin/base/Suggestion.hpp>
#include <tavrin/io/FileError.hpp>

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace tavrin::pipeline
{

namespace
{

/// Limits that no pipeline written by a person comes near. A few aliases of aliases can stand for
/// more values than fit into memory.
constexpr std::size_t maximumNodes = 100'000;
constexpr std::size_t maximumDepth = 50;
constexpr std::uintmax_t maximumBytes = 16U << 20U;

/// Makes a tree of nodes with places from what the YAML library has parsed.
class Conversion
{
public:
    explicit Conversion(std::string file) : mFile(std::move(file)) {}

    YamlNode node(const YAML::Node& source, std::size_t depth = 0)
    {
        YamlNode node{.place = placeOf(source)};
        if (++mNumNodes > maximumNodes || depth > maximumDepth)
            node.place.refuse("the file has too many values, or its aliases expand to too many");
        switch (source.Type())
        {
        case YAML::NodeType::Undefined:
        case YAML::NodeType::Null:
            break;
        case YAML::NodeType::Scalar:
            node.kind = YamlNode::Kind::Text;
            node.text = source.Scalar();
            break;
        case YAML::NodeType::Sequence:
            node.kind = YamlNode::Kind::List;
            for (const auto& item : source)
                node.items.push_back(this->node(item, depth + 1));
            break;
        case YAML::NodeType::Map:
            node.kind = YamlNode::Kind::Map;
            for (const auto& entry : source)
                addEntry(node, entry.first, entry.second, depth + 1);
            break;
        }
        return node;
    }

private:
    FilePlace placeOf(const YAML::Node& source) const
    {
        const YAML::Mark mark = source.Mark();
        if (mark.is_null())
            return {mFile};
        return {mFile, static_cast<std::size_t>(mark.line) + 1,
                static_cast<std::size_t>(mark.column) + 1};
    }

    void addEntry(YamlNode& map, const YAML::Node& key, const YAML::Node& value, std::size_t depth)
    {
        YamlNode name = node(key, depth);
        static_cast<void>(name.textOf("a key"));
        if (map.find(name.text) != nullptr)
            name.place.refuse("\"" + name.text + "\" is given twice");
        map.entries.emplace_back(std::move(name), node(value, depth));
    }

    std::string mFile;
    std::size_t mNumNodes = 0;
};

std::string contentOf(const std::filesystem::path& file)
{
    std::error_code error;
    if (!std::filesystem::exists(file, error))
        throw io::FileError(file, "no such file");
    if (std::filesystem::is_directory(file, error))
        throw io::FileError(file, "is a folder");
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw io::FileError(file, "cannot be read");
    std::string content(maximumBytes + 1, '\0');
    stream.read(content.data(), static_cast<std::streamsize>(content.size()));
    content.resize(static_cast<std::size_t>(stream.gcount()));
    if (content.size() > maximumBytes)
        throw io::FileError(file, "is too large for a pipeline");
    return content;
}

}

void FilePlace::refuse(const std::string& message) const
{
    throw usage_error(file + ":" + std::to_string(line) + ":" + std::to_string(column) + ": " +
                      message);
}

const std::string& YamlNode::textOf(const std::string& what) const
{
    if (kind != Kind::Text)
        place.refuse(what + " must be a text or number");
    return text;
}

const std::vector<YamlNode>& YamlNode::itemsOf(const std::string& what) const
{
    if (kind != Kind::List && kind != Kind::Nothing)
        place.refuse(what + " must be a list");
    return items;
}

const std::vector<YamlNode::Entry>& YamlNode::entriesOf(const std::string& what) const
{
    if (kind != Kind::Map && kind != Kind::Nothing)
        place.refuse(what + " must be a map of names to values");
    return entries;
}

const YamlNode* YamlNode::find(const std::string& key) const
{
    for (const auto& [name, value] : entries)
        if (name.text == key)
            return &value;
    return nullptr;
}

const YamlNode& YamlNode::required(const std::string& key, const std::string& what) const
{
    const YamlNode* const value = find(key);
    if (value == nullptr || value->kind == Kind::Nothing)
        place.refuse(what + " needs \"" + key + "\"");
    return *value;
}

void YamlNode::requireKeys(const std::vector<std::string>& known, const std::string& what) const
{
    for (const auto& [key, value] : entriesOf(what))
        key.requireAmong(known, "key");
}

void YamlNode::requireAmong(const std::vector<std::string>& known,
                            const std::string& category) const
{
    if (std::ranges::find(known, text) == known.end())
        place.refuse("unknown " + category + " \"" + text + "\"" + suggestionFor(text, known));
}

YamlNode readYaml(const std::filesystem::path& file)
{
    const std::string content = contentOf(file);
    try
    {
        return Conversion(file.string()).node(YAML::Load(content));
    }
    catch (const YAML::Exception& error)
    {
        const std::string place = error.mark.is_null()
                                      ? ""
                                      : " at line " + std::to_string(error.mark.line + 1) +
                                            ", column " + std::to_string(error.mark.column + 1);
        throw io::FileError(file, "is not valid YAML" + place + ": " + error.msg);
    }
}

}
