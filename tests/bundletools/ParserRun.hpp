#pragma once

#include <BundleTools/ListParser.hpp>

#include <iostream>
#include <limits>
#include <sstream>

using Parser = tavrin::ListParser<double>;
using Values = std::vector<double>;

inline constexpr double infinity = std::numeric_limits<double>::infinity();

/// Redirects standard output during its life, by default to nowhere.
class RedirectedOutput
{
public:
    explicit RedirectedOutput(std::streambuf* buffer = nullptr) : mPrevious(std::cout.rdbuf(buffer))
    {
    }
    ~RedirectedOutput() { std::cout.rdbuf(mPrevious); }
    RedirectedOutput(const RedirectedOutput&) = delete;
    RedirectedOutput& operator=(const RedirectedOutput&) = delete;

private:
    std::streambuf* mPrevious;
};

inline bool parseQuietly(Parser& parser, const std::string& text)
{
    const RedirectedOutput output;
    return parser.parse(text);
}

/// The first values of a text, at most `maximum`.
inline Values walked(const std::string& text, std::size_t maximum = 100'000)
{
    Parser parser;
    Values values;
    if (!parseQuietly(parser, text))
        return {-1.0}; // a value that no walk has
    for (; parser.valid() && values.size() < maximum; parser.next())
        values.push_back(parser.value());
    return values;
}
