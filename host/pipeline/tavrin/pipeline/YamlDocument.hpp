#pragma once

#include <tavrin/base/Exceptions.hpp>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace tavrin::pipeline
{

/// The place of a part of a file, for messages: "FILE:LINE:COLUMN".
struct FilePlace
{
    std::string file;
    /// From 1.
    std::size_t line = 1;
    std::size_t column = 1;

    /// Throws `usage_error` "FILE:LINE:COLUMN: MESSAGE".
    [[noreturn]] void refuse(const std::string& message) const;
};

/// A part of a YAML file: a text, a list, or a map in the order of the file.
struct TAVRIN_API YamlNode
{
    enum class Kind
    {
        /// A value that is left out, or written as "~" or "null".
        Nothing,
        Text,
        List,
        Map
    };
    /// The key is a text; it is a node for the sake of its place.
    using Entry = std::pair<YamlNode, YamlNode>;

    Kind kind = Kind::Nothing;
    FilePlace place = {};
    std::string text = {};
    std::vector<YamlNode> items = {};
    std::vector<Entry> entries = {};

    /// The text. Anything else is refused; `what` says what the node is, as in "the id of a step".
    const std::string& textOf(const std::string& what) const;

    /// The items of a list, none for a value that is left out. Anything else is refused.
    const std::vector<YamlNode>& itemsOf(const std::string& what) const;

    /// The entries of a map, none for a value that is left out. Anything else is refused.
    const std::vector<Entry>& entriesOf(const std::string& what) const;

    /// The value of a key, or null.
    const YamlNode* find(const std::string& key) const;

    /// The value of a key. A map without it is refused; `what` says what the map is.
    const YamlNode& required(const std::string& key, const std::string& what) const;

    /// Refuses anything but a map that has no other keys than these.
    void requireKeys(const std::vector<std::string>& known, const std::string& what) const;

    /// Refuses a text that is not among those known, with the most similar one; `category` says what they
    /// are, as in "option".
    void requireAmong(const std::vector<std::string>& known, const std::string& category) const;
};

/// Does a piece of work; a `usage_error` that it throws gets the place.
template<typename Work>
auto at(const FilePlace& place, const Work& work)
{
    try
    {
        return work();
    }
    catch (const usage_error& error)
    {
        place.refuse(error.what());
    }
}

/// Reads a YAML or JSON file of one document. Throws `io::FileError` for a file that cannot be read
/// or is not YAML, with line and column, and `usage_error` for one whose aliases expand to an
/// unreasonable size, for keys that are not texts, and for a key that is given twice.
TAVRIN_API YamlNode readYaml(const std::filesystem::path& file);

}
