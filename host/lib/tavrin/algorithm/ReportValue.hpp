#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <memory>
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
    using Content = std::variant<std::uint64_t, double, std::string, Numbers>;

    template<std::unsigned_integral Count>
        requires(!std::same_as<Count, bool>)
    ReportValue(Count count) : mContent(std::uint64_t{count})
    {
    }
    ReportValue(double number) : mContent(number) {}
    ReportValue(std::string text) : mContent(std::move(text)) {}
    ReportValue(Numbers numbers) : mContent(std::move(numbers)) {}
    ReportValue(std::initializer_list<ReportMember> members);

    /// The named values, or null where the value is a number, a text or an array.
    const Members* members() const { return mMembers.get(); }

    /// The number, text or array; of no meaning where there are named values.
    const Content& content() const { return mContent; }

    bool operator==(const ReportValue& other) const;

private:
    Content mContent;
    // Behind a pointer, because the class of the members is not complete here.
    std::shared_ptr<const Members> mMembers;
};

struct ReportMember
{
    std::string name;
    ReportValue value;

    bool operator==(const ReportMember&) const = default;
};

inline ReportValue::ReportValue(std::initializer_list<ReportMember> members)
    : mMembers(std::make_shared<const Members>(members))
{
}

inline bool ReportValue::operator==(const ReportValue& other) const
{
    if (mMembers == nullptr || other.mMembers == nullptr)
        return mMembers == other.mMembers && mContent == other.mContent;
    return *mMembers == *other.mMembers;
}

}
