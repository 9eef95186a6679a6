#pragma once

#include <BundleTools/ListParser.hpp>

namespace tavrin
{

/// The values of a walk, or one sentence that says why they are refused.
template<typename T>
struct CollectedValues
{
    std::vector<T> values;
    std::string errorText;
};

/// Walks a parser from where it stands to the end. All values or none: refused are a parser with an
/// error text (which is passed on), a range whose end is never reached (its step is not positive, or
/// lost in rounding, or a number too large for T), values too large for T, more than `maximum`
/// values, and a walk of more steps than the parser allows. Never holds more than `maximum` values.
template<typename T>
CollectedValues<T> collectValues(ListParser<T>& parser, std::size_t maximum)
{
    if (!parser.errorText().empty())
        return {{}, parser.errorText()};
    if (!parser.obstacle().empty())
        return {{}, parser.obstacle()};

    std::vector<T> values;
    for (; parser.valid(); parser.next())
    {
        if (values.size() == maximum)
            return {{}, "The sets have more than " + std::to_string(maximum) + " values."};
        if (sets::isTooLarge(parser.value()))
            return {{}, "A number of a list is too large."};
        values.push_back(parser.value());
    }
    if (!parser.errorText().empty())
        return {{}, parser.errorText()};
    return {std::move(values), {}};
}

}
