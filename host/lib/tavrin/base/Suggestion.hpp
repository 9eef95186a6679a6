#pragma once

#include <tavrin/base/Export.hpp>

#include <span>
#include <string>

namespace tavrin
{

/// The candidate that a mistyped word most likely means: the one that takes the fewest insertions,
/// omissions, replacements and swaps of letters, regardless of case. Empty where every candidate
/// differs in more than a third of the word.
TAVRIN_API std::string nearestTo(const std::string& word, std::span<const std::string> candidates);

/// The end of an error message: "; did you mean "NEAREST"?", or "; there is ..." with all candidates
/// where none is near, or nothing where there are no candidates.
TAVRIN_API std::string suggestionFor(const std::string& word,
                                     std::span<const std::string> candidates);

}
