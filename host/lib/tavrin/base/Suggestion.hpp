#pragma once

#include <tavrin/base/Export.hpp>

#include <span>
#include <string>

namespace tavrin
{

/// The candidate that a mistyped word most likely means: the one with the fewest letters inserted,
/// left out, replaced or swapped, upper and lower case being equal. Empty where none is near
/// (more than a third of the word differs).
TAVRIN_API std::string nearestTo(const std::string& word, std::span<const std::string> candidates);

/// For the end of an error text: "; did you mean "NEAREST"?", or where none is near
/// "; there is ..." with all candidates, or nothing where there are none.
TAVRIN_API std::string suggestionFor(const std::string& word,
                                     std::span<const std::string> candidates);

}
