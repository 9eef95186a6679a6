#include <tavrin/io/DataReference.hpp>

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/base/Suggestion.hpp>
#include <tavrin/io/Shape.hpp>
#include <tavrin/io/XmlText.hpp>
#include <tavrin/value/LexicalCast.hpp>

#include <algorithm>
#include <cmath>
#include <set>
#include <span>

namespace tavrin::io
{

namespace
{

/// The position at which the file name ends.
std::size_t endOfFile(const std::string& text)
{
    for (std::size_t end = text.size(); end > 0; end = text.find_last_of("#?", end - 1))
    {
        if (end == std::string::npos)
            break;
        std::error_code error;
        if (std::filesystem::exists(text.substr(0, end), error))
            return end;
    }
    return std::min(text.find_first_of("#?"), text.size());
}

/// Throws the error for a value that a key does not take. `rule` says which ones it takes.
[[noreturn]] void refuse(const std::string& key, const std::string& value, const std::string& rule,
                         std::span<const std::string> choices = {})
{
    const std::string nearest = nearestTo(value, choices);
    throw usage_error("?" + key + "=" + value + ": " + key + " is " + rule +
                      (nearest.empty() ? "" : "; did you mean \"" + nearest + "\"?"));
}

std::string joined(const std::vector<std::string>& texts, const std::string& separator = ", ")
{
    std::string text;
    for (const std::string& one : texts)
        text += (text.empty() ? "" : separator) + one;
    return text;
}

Association parseAssociation(const std::string& value)
{
    for (const Association association : {Association::Points, Association::Cells})
        if (value == nameOf(association))
            return association;
    refuse("on", value, "points or cells", std::array<std::string, 2>{"points", "cells"});
}

/// The shapes of all values that a function may have.
std::vector<Shape> knownShapes()
{
    std::vector<Shape> shapes;
    visitTypes<ValueTypes>(
        [&]<typename T>()
        {
            shapes.push_back(shapeOfType<T>());
            return false;
        });
    return shapes;
}

std::vector<std::string> shapeTexts()
{
    std::vector<std::string> texts;
    std::ranges::transform(knownShapes(), std::back_inserter(texts), shapeText);
    return texts;
}

Shape parseShape(const std::string& value)
{
    const auto known = shapeTexts();
    const auto found = std::ranges::find(known, value);
    if (found == known.end())
        refuse("shape", value, "one of " + joined(known), known);
    return knownShapes().at(static_cast<std::size_t>(found - known.begin()));
}

SymmetricOrder parseOrder(const std::string& value)
{
    if (value == "voigt")
        return {"xx", "yy", "zz", "yz", "xz", "xy"};
    std::vector<std::string> names;
    for (std::size_t first = 0; first <= value.size();)
    {
        const std::size_t comma = std::min(value.find(',', first), value.size());
        names.push_back(value.substr(first, comma - first));
        first = comma + 1;
    }
    if (const auto order = parseSymmetricOrder(names))
        return *order;
    const std::array<std::string, 2> choices{"voigt",
                                             joined({vtkOrder.begin(), vtkOrder.end()}, ",")};
    refuse("order", value,
           "voigt, which is xx,yy,zz,yz,xz,xy, or these names in another order, such as " +
               choices.back(),
           choices);
}

std::size_t parseDimension(const std::string& value)
{
    if (value != "1" && value != "2" && value != "3")
        refuse("dimension", value, "1, 2 or 3");
    return static_cast<std::size_t>(value.front() - '0');
}

double parseNumber(const std::string& key, const std::string& value, const std::string& rule,
                   bool (*isValid)(double))
{
    try
    {
        if (const auto number = lexicalCast<double>(value); isValid(number))
            return number;
    }
    catch (const bad_lexical_cast&)
    {
        // The same refusal as for a number that is not valid.
    }
    refuse(key, value, rule);
}

std::string parseName(const std::string& key, const std::string& value, const std::string& rule)
{
    if (value.empty())
        refuse(key, value, rule);
    return toUtf8(value);
}

struct Key : ReferenceKey
{
    void (*read)(const std::string& value, DataReference& reference);
};

const std::vector<Key>& keys()
{
    static const std::vector<Key> all{
        {{"on", {"points", "cells"}},
         [](const std::string& value, DataReference& reference)
         { reference.on = parseAssociation(value); }},
        {{"shape", shapeTexts()},
         [](const std::string& value, DataReference& reference)
         { reference.shape = parseShape(value); }},
        {{"component", {}},
         [](const std::string& value, DataReference& reference)
         {
             reference.component =
                 parseName("component", value, "the name of a component, or a number from 0");
         }},
        {{"order", {"voigt", joined({vtkOrder.begin(), vtkOrder.end()}, ",")}},
         [](const std::string& value, DataReference& reference)
         { reference.order = parseOrder(value); }},
        {{"dimension", {"1", "2", "3"}},
         [](const std::string& value, DataReference& reference)
         { reference.dimension = parseDimension(value); }},
        {{"time", {}},
         [](const std::string& value, DataReference& reference)
         {
             reference.time = parseNumber("time", value, "a number",
                                          [](double number) { return std::isfinite(number); });
         }},
        {{"block", {}},
         [](const std::string& value, DataReference& reference) {
             reference.block = parseName("block", value, "the name of a block, or a number from 0");
         }},
        {{"reach", {}},
         [](const std::string& value, DataReference& reference)
         {
             reference.reach =
                 parseNumber("reach", value, "a distance, 0 or more",
                             [](double number) { return number >= 0.0 && std::isfinite(number); });
         }},
    };
    return all;
}

void parseKey(const std::string& text, std::set<std::string>& known, DataReference& reference)
{
    const std::size_t equals = text.find('=');
    const std::string name = text.substr(0, equals);
    const std::string value = equals == std::string::npos ? "" : text.substr(equals + 1);
    const auto key = std::ranges::find(keys(), name, &Key::name);
    if (key == keys().end())
    {
        std::vector<std::string> names;
        std::ranges::transform(keys(), std::back_inserter(names), &Key::name);
        throw usage_error("unknown key \"" + name + "\" in a data reference" +
                          suggestionFor(name, names));
    }
    if (!known.insert(name).second)
        throw usage_error("the key \"" + name + "\" appears twice in a data reference");
    key->read(value, reference);
}

}

const std::vector<ReferenceKey>& referenceKeys()
{
    static const std::vector<ReferenceKey> all(keys().begin(), keys().end());
    return all;
}

std::string_view nameOf(Association association)
{
    return association == Association::Points ? "points" : "cells";
}

DataReference DataReference::parse(const std::string& text)
{
    const std::size_t end = endOfFile(text);
    if (end == 0)
        throw usage_error("\"" + text +
                          "\" names no file; a data reference is "
                          "FILE#ARRAY?key=value&key=value");
    DataReference reference;
    reference.file = text.substr(0, end);
    std::string rest = text.substr(end);
    if (const std::size_t question = rest.rfind('?'); question != std::string::npos)
    {
        std::set<std::string> known;
        for (std::size_t first = question + 1; first < rest.size();)
        {
            const std::size_t last = std::min(rest.find('&', first), rest.size());
            parseKey(rest.substr(first, last - first), known, reference);
            first = last + 1;
        }
        rest.resize(question);
    }
    if (rest.size() > 1)
        reference.array = toUtf8(rest.substr(1));
    return reference;
}

}
