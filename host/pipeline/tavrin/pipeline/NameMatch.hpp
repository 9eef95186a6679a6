#pragma once

#include <tavrin/base/Export.hpp>

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tavrin::pipeline
{

/// The name that a person means by a text that may be shorter. The first of these rules that any name
/// meets decides; letter case, spaces and punctuation do not count:
/// 1. the text is the name, to the letter;
/// 2. it is the name, or the part of it after the category and a slash;
/// 3. its words are words of the name, in this order: "norm" for "Norm of Field A";
/// 4. its words are beginnings of words of the name, in this order: "hedge" for "Field/Show
///    Hedgehogs";
/// 5. all its letters together are a sequence of such beginnings: "scalc" for "Scalar C".
///
/// Returns nothing if no name meets any rule. Throws `usage_error` with a list if several names meet the
/// rule that decides; `kind` says what the names are, as in "algorithm".
TAVRIN_API std::optional<std::string> matchingName(const std::string& text,
                                                   std::span<const std::string> names,
                                                   const std::string& kind);

/// The names that a text may become when it is typed further: all of them for a text without letters,
/// otherwise those that begin with the text, or else those that meet rule 4, or else rule 5.
TAVRIN_API std::vector<std::string> namesBeginningAs(const std::string& text,
                                                     std::span<const std::string> names);

}
