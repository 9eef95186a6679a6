#include <tavrin/base/Suggestion.hpp>

#include <algorithm>
#include <cctype>
#include <vector>

namespace tavrin
{

namespace
{

std::string lowered(std::string text)
{
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// The optimal string alignment distance (Damerau 1964, with at most one edit per swapped pair).
std::size_t distance(const std::string& a, const std::string& b)
{
    std::vector<std::vector<std::size_t>> cost(a.size() + 1,
                                               std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i)
        for (std::size_t j = 0; j <= b.size(); ++j)
        {
            if (i == 0 || j == 0)
            {
                cost[i][j] = i + j;
                continue;
            }
            const std::size_t replaced = cost[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            cost[i][j] = std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, replaced});
            const bool isSwapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
            if (isSwapped)
                cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
        }
    return cost[a.size()][b.size()];
}

/// Longer texts are not typing mistakes, and the cost of comparing grows with the square.
constexpr std::size_t longestWord = 200;

}

std::string nearestTo(const std::string& word, std::span<const std::string> candidates)
{
    std::string nearest;
    if (word.size() > longestWord)
        return nearest;
    std::size_t best = word.size() / 3 + 1;
    for (const std::string& candidate : candidates)
    {
        if (candidate.size() > longestWord)
            continue;
        const std::size_t edits = distance(lowered(word), lowered(candidate));
        if (edits < best)
        {
            best = edits;
            nearest = candidate;
        }
    }
    return nearest;
}

std::string suggestionFor(const std::string& word, std::span<const std::string> candidates)
{
    if (candidates.empty())
        return {};
    const std::string nearest = nearestTo(word, candidates);
    if (!nearest.empty())
        return "; did you mean \"" + nearest + "\"?";
    std::string text = candidates.size() == 1 ? "; there is " : "; there are ";
    for (std::size_t i = 0; i < candidates.size(); ++i)
        text += (i == 0 ? "\"" : ", \"") + candidates[i] + "\"";
    return text;
}

}
