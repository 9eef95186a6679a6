#include "Warnings.hpp"

#include "Console.hpp"

#include <cctype>

namespace tavrin::app
{

namespace
{

/// The text without its file, quoted names and numbers.
std::string kindOf(const std::string& text)
{
    const auto colon = text.find(": ");
    std::string kind;
    bool isQuoted = false;
    for (const char c : colon == std::string::npos ? text : text.substr(colon))
    {
        if (c == '"')
            isQuoted = !isQuoted;
        else if (!isQuoted && std::isdigit(static_cast<unsigned char>(c)) == 0)
            kind += c;
    }
    return kind;
}

}

void Warnings::add(const std::string& text)
{
    const std::scoped_lock lock(mMutex);
    const auto [entry, isNew] = mIndexOfKind.try_emplace(kindOf(text), mKinds.size());
    if (isNew)
        mKinds.push_back({text, 0});
    ++mKinds[entry->second].count;
}

void Warnings::print()
{
    const std::scoped_lock lock(mMutex);
    for (const Kind& kind : mKinds)
        mConsole.message("warning: " + kind.first +
                         (kind.count == 1
                              ? ""
                              : " (and " + std::to_string(kind.count - 1) + " more like this)"));
    mKinds.clear();
    mIndexOfKind.clear();
}

}
