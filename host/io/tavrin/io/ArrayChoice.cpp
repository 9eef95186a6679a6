#include <tavrin/io/ArrayChoice.hpp>

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/base/Suggestion.hpp>

#include <algorithm>

namespace tavrin::io
{

namespace
{

std::string onText(const DataReference& reference)
{
    return reference.on ? " on " + std::string(nameOf(*reference.on)) : "";
}

/// `"a", "b" on cells, "c"`.
std::string enumerate(const std::vector<const DataFile::Array*>& arrays)
{
    std::string text;
    for (const DataFile::Array* const array : arrays)
    {
        const bool isTwice = std::ranges::count(arrays, array->name,
                                                [](const auto* other) { return other->name; }) > 1;
        text += (text.empty() ? "\"" : ", \"") + array->name + "\"" +
                (isTwice ? " on " + std::string(nameOf(array->association)) : "");
    }
    return text;
}

bool isCandidate(const DataFile::Array& array, const DataReference& reference)
{
    return !reference.on || reference.on == array.association;
}

bool isMatch(const DataFile::Array& array, const DataReference& reference)
{
    return isCandidate(array, reference) &&
           (reference.array ? reference.array == array.name : array.name != validityMaskName);
}

}

const DataFile::Array* findValidityMask(const std::vector<DataFile::Array>& arrays,
                                        const DataFile::Array& array)
{
    const auto mask = std::ranges::find_if(arrays,
                                           [&](const DataFile::Array& other)
                                           {
                                               return other.name == validityMaskName &&
                                                      other.association == array.association &&
                                                      other.components == 1;
                                           });
    return mask == arrays.end() || array.name == validityMaskName ? nullptr : &*mask;
}

bool hasArray(const std::vector<DataFile::Array>& arrays, const DataReference& reference)
{
    return std::ranges::any_of(arrays, [&](const DataFile::Array& array)
                               { return isMatch(array, reference); });
}

const DataFile::Array& chooseArray(const std::vector<DataFile::Array>& arrays,
                                   const DataReference& reference)
{
    if (arrays.empty())
        throw usage_error("holds no arrays");
    std::vector<const DataFile::Array*> matches;
    for (const DataFile::Array& array : arrays)
        if (isMatch(array, reference))
            matches.push_back(&array);
    if (matches.size() == 1)
        return *matches.front();
    if (!reference.array && matches.empty())
        throw usage_error("holds no arrays" + onText(reference));
    if (!reference.array)
        throw usage_error("holds several arrays" + onText(reference) +
                          ", choose one with #ARRAY: " + enumerate(matches));
    if (!matches.empty())
        throw usage_error("\"" + *reference.array +
                          "\" is an array on points and one on cells; add ?on=points or ?on=cells");
    std::vector<std::string> names;
    for (const DataFile::Array& array : arrays)
        if (isCandidate(array, reference) && array.name != validityMaskName)
            names.push_back(array.name);
    throw usage_error("no array \"" + *reference.array + "\"" + onText(reference) +
                      suggestionFor(*reference.array, names));
}

}
