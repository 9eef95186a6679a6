#include <tavrin/io/DataReference.hpp>

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/base/Suggestion.hpp>
#include <tavrin/io/Shape.hpp>
#include <tavrin/io/XmlText.hpp>
#include <tavrin/value/LexicalCast.hpp>

#include <array>

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

Association parseAssociation(const std::string& value)
{
    for (const Association association : {Association::Points, Association::Cells})
        if (value == nameOf(association))
            return association;
    throw usage_error("?on=" + value + ": on is points or cells");
}

Shape parseShape(const std::string& value)
{
    std::string known;
    Shape shape;
    const bool isKnown = visitTypes<ValueTypes>(
        [&]<typename T>()
        {
            shape = shapeOfType<T>();
            known += (known.empty() ? "" : ", ") + shapeText(shape);
            return shapeText(shape) == value;
        });
    if (!isKnown)
        throw usage_error("?shape=" + value + ": shape is one of " + known);
    return shape;
}

std::size_t parseDimension(const std::string& value)
{
    if (value != "1" && value != "2" && value != "3")
        throw usage_error("?dimension=" + value + ": dimension is 1, 2 or 3");
    return static_cast<std::size_t>(value.front() - '0');
}

double parseTime(const std::string& value)
{
    try
    {
        return lexicalCast<double>(value);
    }
    catch (const bad_lexical_cast&)
    {
        throw usage_error("?time=" + value + ": time is a number");
    }
}

void parseKey(const std::string& text, DataReference& reference)
{
    const std::size_t equals = text.find('=');
    const std::string key = text.substr(0, equals);
    const std::string value = equals == std::string::npos ? "" : text.substr(equals + 1);
    if (key == "on")
        reference.on = parseAssociation(value);
    else if (key == "shape")
        reference.shape = parseShape(value);
    else if (key == "dimension")
        reference.dimension = parseDimension(value);
    else if (key == "time")
        reference.time = parseTime(value);
    else
    {
        static const std::array<std::string, 4> keys{"on", "shape", "dimension", "time"};
        throw usage_error("unknown key \"" + key + "\" in a data reference" +
                          suggestionFor(key, keys));
    }
}

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
        for (std::size_t first = question + 1; first < rest.size();)
        {
            const std::size_t last = std::min(rest.find('&', first), rest.size());
            parseKey(rest.substr(first, last - first), reference);
            first = last + 1;
        }
        rest.resize(question);
    }
    if (rest.size() > 1)
        reference.array = toUtf8(rest.substr(1));
    return reference;
}

}
