#include <tavrin/pipeline/NameMatch.hpp>

#include <tavrin/base/Exceptions.hpp>

#include <algorithm>
#include <cctype>
#include <string_view>
#include <vector>

namespace tavrin::pipeline
{

namespace
{

using Words = std::vector<std::string>;

/// The words of a text in lower case: the longest parts that consist of ASCII letters, digits and
/// bytes of other characters.
Words wordsOf(std::string_view text)
{
    Words words;
    bool isInWord = false;
    for (const char c : text)
    {
        const auto byte = static_cast<unsigned char>(c);
        const bool isPart = byte >= 0x80 || std::isalnum(byte) != 0;
        if (isPart && !isInWord)
            words.emplace_back();
        if (isPart)
            words.back() += static_cast<char>(std::tolower(byte));
        isInWord = isPart;
    }
    return words;
}

std::string together(const Words& words)
{
    std::string text;
    for (const std::string& word : words)
        text += word;
    return text;
}

/// A name, and what the rules compare.
struct Candidate
{
    explicit Candidate(const std::string& fullName)
        : name(fullName), words(wordsOf(fullName)), letters(together(words)),
          lettersAfterCategory(together(wordsOf(fullName.substr(fullName.rfind('/') + 1))))
    {
    }

    std::string name;
    Words words;
    std::string letters;
    std::string lettersAfterCategory;
};

/// Whether each of the words fits one of the name, in order.
template<typename Fits>
bool isSubsequence(const Words& words, const Words& name, const Fits& fits)
{
    auto next = name.begin();
    for (const std::string& word : words)
    {
        next = std::find_if(next, name.end(),
                            [&](const std::string& whole) { return fits(whole, word); });
        if (next == name.end())
            return false;
        ++next;
    }
    return true;
}

bool isBeginning(const std::string& whole, const std::string& word)
{
    return whole.starts_with(word);
}

/// Whether the letters can be divided into beginnings of words of the name, in order.
bool areBeginnings(std::string_view letters, std::span<const std::string> name)
{
    // reachable[n]: the first n letters are beginnings of the words so far.
    std::vector<char> reachable(letters.size() + 1, 0);
    reachable[0] = 1;
    for (const std::string& word : name)
        for (std::size_t from = letters.size(); from-- > 0;)
            for (std::size_t n = 1;
                 reachable[from] != 0 && n <= word.size() && from + n <= letters.size() &&
                 letters[from + n - 1] == word[n - 1];
                 ++n)
                reachable[from + n] = 1;
    return reachable.back() != 0;
}

Words namesThat(const auto& meetsRule, const std::vector<Candidate>& candidates)
{
    Words found;
    for (const Candidate& candidate : candidates)
        if (meetsRule(candidate))
            found.push_back(candidate.name);
    return found;
}

[[noreturn]] void refuseAmbiguous(const std::string& text, const Words& names,
                                  const std::string& kind)
{
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "\"" : ", \"") + name + '"';
    throw usage_error("\"" + text + "\" fits more than one " + kind + ": " + list);
}

}

std::optional<std::string> matchingName(const std::string& text, std::span<const std::string> names,
                                        const std::string& kind)
{
    if (std::ranges::find(names, text) != names.end())
        return text;
    const Words words = wordsOf(text);
    const std::string letters = together(words);
    if (letters.empty())
        return std::nullopt;

    const std::vector<Candidate> candidates(names.begin(), names.end());
    const auto isWhole = [](const std::string& whole, const std::string& word)
    { return whole == word; };
    const auto isName = [&](const Candidate& candidate)
    { return candidate.letters == letters || candidate.lettersAfterCategory == letters; };
    const auto hasWords = [&](const Candidate& candidate)
    { return isSubsequence(words, candidate.words, isWhole); };
    const auto hasBeginnings = [&](const Candidate& candidate)
    { return isSubsequence(words, candidate.words, isBeginning); };
    const auto hasLetters = [&](const Candidate& candidate)
    { return areBeginnings(letters, candidate.words); };

    for (const auto& found :
         {namesThat(isName, candidates), namesThat(hasWords, candidates),
          namesThat(hasBeginnings, candidates), namesThat(hasLetters, candidates)})
    {
        if (found.size() > 1)
            refuseAmbiguous(text, found, kind);
        if (!found.empty())
            return found.front();
    }
    return std::nullopt;
}

std::vector<std::string> namesBeginningAs(const std::string& text,
                                          std::span<const std::string> names)
{
    const std::vector<Candidate> candidates(names.begin(), names.end());
    Words found = namesThat(
        [&](const Candidate& candidate) { return candidate.name.starts_with(text); }, candidates);
    const Words words = wordsOf(text);
    const std::string letters = together(words);
    if (found.empty() && letters.empty())
        return {names.begin(), names.end()};
    if (found.empty())
        found = namesThat([&](const Candidate& candidate)
                          { return isSubsequence(words, candidate.words, isBeginning); },
                          candidates);
    if (found.empty())
        found = namesThat([&](const Candidate& candidate)
                          { return areBeginnings(letters, candidate.words); },
                          candidates);
    return found;
}

}
