#pragma once

#include <BundleTools/ListParser.hpp>

#include <iostream>
#include <sstream>

using Parser = tavrin::ListParser<double>;
using Values = std::vector<double>;

/// Sends standard output to a buffer as long as it lives: to nowhere without one.
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

/// All values of a text that has no more than `maximum` of them.
inline Values walked(const std::string& text, std::size_t maximum = 100'000)
{
    Parser parser;
    Values values;
    if (!parseQuietly(parser, text))
        return {-1.0}; // which no walk ever has
    for (; parser.valid() && values.size() < maximum; parser.next())
        values.push_back(parser.value());
    return values;
}
