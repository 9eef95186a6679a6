#pragma once

#include <BundleTools/ListParser.hpp>

namespace tavrin
{

/// The values of a walk, or one sentence that says why it was refused.
template<typename T>
struct CollectedValues
{
    std::vector<T> values;
    std::string errorText;
};

/// Walks a parser from its current value to the end. Gives all values or none: a parser with an error
/// text (which is passed on), more than `maximum` values and a walk of more steps than the parser
/// allows are refused. Where a range of the text never ends, the refusal says why. Never holds more
/// than `maximum` values.
template<typename T>
CollectedValues<T> collectValues(ListParser<T>& parser, std::size_t maximum)
{
    if (!parser.errorText().empty())
        return {{}, parser.errorText()};

    std::vector<T> values;
    for (; parser.valid(); parser.next())
    {
        if (values.size() < maximum)
            values.push_back(parser.value());
        else if (!parser.obstacle().empty())
            return {{}, parser.obstacle()};
        else
            return {{}, "The sets have more than " + std::to_string(maximum) + " values."};
    }
    if (!parser.errorText().empty())
        return {{}, parser.errorText()};
    return {std::move(values), {}};
}

}
