#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tavrin
{

struct ReportMember;

/// What an algorithm reports to programs: a number at full precision, a text, an array of numbers,
/// or named values.
///
///     report("samples", {{"total", total}, {"outside", outside}});
class ReportValue
{
public:
    using Numbers = std::vector<double>;
    using Members = std::vector<ReportMember>;
    using Content = std::variant<std::uint64_t, double, std::string, Numbers, Members>;

    template<std::unsigned_integral Count>
        requires(!std::same_as<Count, bool>)
    ReportValue(Count count) : mContent(std::uint64_t{count})
    {
    }
    ReportValue(double number) : mContent(number) {}
    ReportValue(std::string text) : mContent(std::move(text)) {}
    ReportValue(Numbers numbers) : mContent(std::move(numbers)) {}
    ReportValue(std::initializer_list<ReportMember> members);

    const Content& content() const { return mContent; }

    bool operator==(const ReportValue&) const = default;

private:
    Content mContent;
};

struct ReportMember
{
    std::string name;
    ReportValue value;

    bool operator==(const ReportMember&) const = default;
};

inline ReportValue::ReportValue(std::initializer_list<ReportMember> members)
    : mContent(Members(members))
{
}

}
