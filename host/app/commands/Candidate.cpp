#include "Candidate.hpp"

namespace tavrin::app
{

Candidates beginningWith(const std::string& typed, std::span<const std::string> texts)
{
    Candidates candidates;
    for (const std::string& text : texts)
        if (text.starts_with(typed))
            candidates.push_back({text});
    return candidates;
}

Candidates withPrefix(const std::string& prefix, Candidates candidates)
{
    for (Candidate& candidate : candidates)
        candidate.word.insert(0, prefix);
    return candidates;
}

void append(Candidates& candidates, const Candidates& more)
{
    candidates.insert(candidates.end(), more.begin(), more.end());
}

}
