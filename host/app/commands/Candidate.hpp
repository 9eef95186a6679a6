#pragma once

#include <span>
#include <string>
#include <vector>

namespace tavrin::app
{

/// A text that completes a word of the command line.
struct Candidate
{
    /// The whole word, not quoted.
    std::string word;
    /// One line for people; may be empty.
    std::string description = {};
    /// Whether the word ends here; otherwise more is to be typed, as after "NAME=".
    bool isWhole = true;
};

using Candidates = std::vector<Candidate>;

/// Those of the texts that begin with `typed`.
Candidates beginningWith(const std::string& typed, std::span<const std::string> texts);

/// The candidates with a text in front of each.
Candidates withPrefix(const std::string& prefix, Candidates candidates);

void append(Candidates& candidates, const Candidates& more);

}
