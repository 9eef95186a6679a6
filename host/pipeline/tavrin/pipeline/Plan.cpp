#include <tavrin/pipeline/Plan.hpp>

#include <tavrin/pipeline/SilentOutput.hpp>
#include <tavrin/pipeline/Words.hpp>

#include <tavrin/value/LexicalCast.hpp>

#include <BundleTools/ListParser.hpp>

#include <algorithm>
#include <cmath>

namespace tavrin::pipeline
{

namespace
{

/// More than anybody can wait for; a range with a tiny step is a mistake.
constexpr std::size_t maximumValues = 1'000'000;

[[noreturn]] void refuseNumber(const std::string& part, const std::string& list)
{
    throw usage_error("\"" + list + "\" is not a list of values such as [0:1#0.1] or 1,2,5: \"" +
                      part + "\" is not a number");
}

/// The numbers of a list such as "1,2,5", ascending. Throws `usage_error` for anything else in it.
std::vector<std::string> listedValues(const std::string& list)
{
    std::vector<double> numbers;
    std::istringstream parts(list + ",");
    for (std::string part; std::getline(parts, part, ',');)
        try
        {
            numbers.push_back(lexicalCast<double>(part));
            if (!std::isfinite(numbers.back()))
                throw bad_lexical_cast(part);
        }
        catch (const bad_lexical_cast&)
        {
            refuseNumber(part, list);
        }
    std::ranges::sort(numbers);
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    std::vector<std::string> values(numbers.size());
    std::ranges::transform(numbers, values.begin(), shortestText);
    return values;
}

/// Whether a number of a set expression is one of those that its values leave out.
bool hasNumberUpToMinusOne(const std::string& expression)
{
    for (auto minus = expression.find('-'); minus != std::string::npos;
         minus = expression.find('-', minus + 1))
    {
        const bool isSign =
            minus > 0 && std::string_view("[{:,").find(expression[minus - 1]) != std::string::npos;
        if (isSign && ListParser<double>::getNum(expression.c_str() + minus) <= -1.0)
            return true;
    }
    return false;
}

}

std::string Iteration::name() const
{
    if (time)
        return "time " + shortestText(*time);
    return variable.empty() ? "" : variable + " " + value;
}

std::size_t parseMaximumArrows(const std::string& text)
{
    try
    {
        if (const long count = lexicalCast<long>(text); count > 0)
            return static_cast<std::size_t>(count);
    }
    catch (const bad_lexical_cast&)
    {
    }
    throw usage_error("\"" + text + "\" is not a number of arrows, which is a whole number from 1");
}

std::vector<std::string> sweepValues(const std::string& expression)
{
    if (expression.find_first_of("[{") == std::string::npos)
        return listedValues(expression);
    const auto refuse = [&](const std::string& cause)
    {
        throw usage_error("\"" + expression +
                          "\" is not a list of values such as [0:1#0.1] or "
                          "1,2,5" +
                          cause);
    };
    if (expression.find_first_not_of("0123456789+-.eE,:#&[]{} ") != std::string::npos)
        refuse("");
    if (hasNumberUpToMinusOne(expression))
        refuse(": values in brackets must be greater than -1");
    const SilentOutput silence;
    ListParser<double> parser;
    std::vector<std::string> values;
    try
    {
        if (expression.empty() || !parser.parse(expression))
            refuse(parser.errorText().empty() ? "" : ": " + parser.errorText());
        for (; parser.valid(); parser.next())
        {
            if (values.size() == maximumValues)
                refuse(": it has more than a million values");
            values.push_back(shortestText(parser.value()));
        }
    }
    catch (const assertion_failed&)
    {
        refuse("");
    }
    if (!parser.errorText().empty())
        refuse(": " + parser.errorText());
    if (values.empty())
        refuse(": it has no values greater than -1");
    return values;
}

}
