#pragma once

#include <BundleTools/Sets.hpp>
#include <tavrin/base/Exceptions.hpp>

#include <cstring>
#include <iostream>
#include <locale>
#include <sstream>
#include <string>

namespace tavrin
{

/// Turns a text such as `0,0.5,2`, `[0:10#0.5]` or `[0:10]-{3,4}` into ascending numbers, without
/// ever holding all of them: `parse` makes the sets, `valid`, `value` and `next` walk their values.
///
/// A text that begins with a digit is a list of numbers. Any other text consists of lists `{1,2}`,
/// ranges `[start:end#step]` (the end is included, the default step is 1) and the operators `+`
/// (union), `&` (intersection) and `-` (difference), which are applied from left to right. Sets
/// without an operator between them are united. Other characters are skipped. A number that cannot
/// be read is 0, and one that is too large is infinity. Values less than or equal to -1 are left out
/// of the walk.
///
/// Parsing writes a trace to standard output. The time that parsing and walking take is bounded: when
/// all sets together have moved `maximumSteps` times, the walk ends with an error text. A range that
/// never ends, as with a step of zero, is accepted, and its walk is refused only if it goes on until
/// the steps are used up: `[0:1e999]&{1}` is {1}.
///
///     ListParser<double> parser;
///     if (parser.parse("[0:1#0.5]"))
///         for (; parser.valid(); parser.next())
///             use(parser.value()); // 0, 0.5, 1
template<typename T>
class ListParser
{
public:
    using Set = sets::Set<T>;
    using List = sets::List<T>;
    using Range = sets::Range<T>;
    using Union = sets::Union<T>;
    using Intersection = sets::Intersection<T>;
    using Difference = sets::Difference<T>;
    using Stack = std::vector<std::unique_ptr<Set>>;

    /// The syntax as it is shown to users.
    static constexpr const char* grammar = "SETDEF\n"
                                           "SETDEF = SET | SetList | SetRange\n"
                                           "SET = SETDEF { OP SETDEF }\n"
                                           "OP = \"&\" | \"+\" | \"-\"\n"
                                           "NUMLIST = NUM { \",\" NUM }\n"
                                           "\n"
                                           "SetList = { NUMLIST }\n"
                                           "SetRange = \"[\" NUM \":\" NUM [\"#\" NUM ]\"]\"\n"
                                           "NUM = a number\n";

    /// They take about half a second.
    static constexpr std::size_t defaultSteps = 50'000'000;
    /// The maximum depth of nested sets, which bounds the depth of recursion.
    static constexpr std::size_t maximumOperators = 10'000;

    explicit ListParser(std::size_t maximumSteps = defaultSteps)
        : mMaximumSteps(maximumSteps), mSteps(maximumSteps)
    {
    }
    ListParser(const ListParser&) = delete;
    ListParser& operator=(const ListParser&) = delete;

    /// Replaces the sets by those of the text and moves to their first value. Returns false and sets
    /// the error text if the text is wrong or the first value is too many steps away. A wrong operand
    /// of an operator sets the error text, but parsing ends only at the next character that does not
    /// begin a set; if the text ends before, the result is true.
    /// Throws `assertion_failed` for a range without a closing bracket.
    bool parse(const std::string& text);

    bool valid() const { return mValid; }
    T value() const { return mValue; }
    /// Moves to the next greater value of all sets; does nothing without a current value. When the
    /// steps are used up, the walk ends with an error text.
    void next()
    {
        if (mValid)
            step();
    }

    /// One sentence, or empty if there was no error.
    const std::string& errorText() const { return mErrorText; }
    /// The sets in the order in which they were made. Walking moves them.
    const Stack& stack() const { return mStack; }
    /// One sentence about the first range of the text that never ends, or empty.
    const std::string& obstacle() const { return mObstacle; }

    /// These functions read one set at `cursor`, push it onto the stack and leave the cursor on its
    /// last character. For a wrong set they set the error text and return false, with the stack and
    /// the cursor unchanged. They throw `assertion_failed` if the cursor is not on the opening bracket
    /// of such a set, except `parseBasicSet`, which reads both kinds and returns false then.
    bool parseRange(Stack& stack, const char*& cursor, const char* end);
    bool parseList(Stack& stack, const char*& cursor, const char* end);
    bool parseBasicSet(Stack& stack, const char*& cursor, const char* end);

    /// Reads numbers separated by commas, up to the end, as one list. Always returns true. Throws
    /// `assertion_failed` for an empty text.
    bool parseNumbers(Stack& stack, const char*& cursor, const char* end);

    /// The number at the beginning of a null-terminated text. Leading blanks are skipped. The result is
    /// 0 if there is no number, and infinite if the number is too large for T.
    static T getNum(const char* text);

    /// Pushes a list of these values, sorted and without duplicates, onto the stack.
    static void addList(Stack& stack, std::vector<T> values)
    {
        stack.push_back(std::make_unique<List>(std::move(values)));
    }

private:
    static void check(bool holds, const char* what, int line);
    static std::vector<T> numbersIn(const char* begin, const char* end);

    bool parseSets(Stack& stack, const char* begin, const char* end);
    bool parseOperation(Stack& stack, const char*& cursor, const char* end);
    std::unique_ptr<Set> combined(char symbol, std::unique_ptr<Set> a, std::unique_ptr<Set> b);

    void step();
    bool hasStepsLeft();

    /// Sets the error text and returns false.
    bool fail(std::string text)
    {
        mErrorText = std::move(text);
        return false;
    }

    std::size_t mMaximumSteps;
    sets::StepBudget mSteps;
    Stack mStack;
    std::size_t mOperators = 0;
    std::string mErrorText;
    std::string mObstacle;
    T mValue = T(-1);
    bool mValid = false;
};

template<typename T>
bool ListParser<T>::parse(const std::string& text)
{
    mSteps = sets::StepBudget(mMaximumSteps);
    mStack.clear();
    mOperators = 0;
    mErrorText.clear();
    mObstacle.clear();
    mValue = T(-1);
    mValid = false;

    const char* cursor = text.c_str();
    const char* const end = cursor + text.size();
    const bool isPlainList = *cursor >= '0' && *cursor <= '9';
    if (!(isPlainList ? parseNumbers(mStack, cursor, end) : parseSets(mStack, cursor, end)))
        return false;
    step();
    return hasStepsLeft();
}

template<typename T>
bool ListParser<T>::parseSets(Stack& stack, const char* begin, const char* end)
{
    for (const char* cursor = begin; cursor < end;)
    {
        std::cout << "Parsing at position " << cursor - begin << '\n';
        if (parseBasicSet(stack, cursor, end))
        {
            std::cout << cursor - begin << '\n';
            continue;
        }
        if (!mErrorText.empty())
            return false;
        const bool isOperator = *cursor == '-' || *cursor == '&' || *cursor == '+';
        if (isOperator && !parseOperation(stack, cursor, end))
            return false;
        if (cursor < end)
            ++cursor;
    }
    return true;
}

/// Reads an operator and its operand, and combines the two topmost sets. Without an operand these are
/// the two sets before the operator.
template<typename T>
bool ListParser<T>::parseOperation(Stack& stack, const char*& cursor, const char* end)
{
    const char symbol = *cursor++;
    const std::string missing =
        std::string("Binary Operator ") + symbol + " requires previous set.";
    if (stack.empty())
        return fail(missing);
    parseBasicSet(stack, cursor, end);
    if (stack.size() < 2)
        return fail(mErrorText.empty() ? missing : mErrorText);
    if (++mOperators > maximumOperators)
        return fail("More than " + std::to_string(maximumOperators) + " operators.");

    auto second = std::move(stack.back());
    stack.pop_back();
    auto first = std::move(stack.back());
    stack.back() = combined(symbol, std::move(first), std::move(second));
    return hasStepsLeft();
}

template<typename T>
std::unique_ptr<typename ListParser<T>::Set> ListParser<T>::combined(char symbol,
                                                                     std::unique_ptr<Set> a,
                                                                     std::unique_ptr<Set> b)
{
    switch (symbol)
    {
    case '-':
        return std::make_unique<Difference>(std::move(a), std::move(b), mSteps);
    case '&':
        return std::make_unique<Intersection>(std::move(a), std::move(b), mSteps);
    default:
        return std::make_unique<Union>(std::move(a), std::move(b), mSteps);
    }
}

template<typename T>
bool ListParser<T>::parseBasicSet(Stack& stack, const char*& cursor, const char* end)
{
    if (cursor < end && *cursor == '[' && parseRange(stack, cursor, end))
    {
        check(cursor < end && *cursor == ']', "Invalid last character.: start[0] == ']'", 587);
        return true;
    }
    if (cursor < end && *cursor == '{' && parseList(stack, cursor, end))
    {
        check(cursor < end && *cursor == '}', "Invalid last character.: start[0] == '}'", 595);
        return true;
    }
    return false;
}

template<typename T>
bool ListParser<T>::parseRange(Stack& stack, const char*& cursor, const char* end)
{
    check(cursor < end, "Invalid range.: start < end", 460);
    check(*cursor == '[', "Invalid first character.: start[0] == '['", 461);

    const char* const close = std::find(cursor, end, ']');
    const char* const colon = std::find(cursor, close, ':');
    const char* const hash = std::find(cursor, close, '#');
    const T step = hash < close ? getNum(hash + 1) : T(1);
    if (colon == close)
        return fail("expected delimiter \":\" between \"[\" and \"]\".");

    const T first = getNum(cursor + 1);
    const T last = getNum(colon + 1);
    if (last <= first)
        return fail("First number in range must be smaller than the second number.");

    auto range = std::make_unique<Range>(first, last, step);
    if (mObstacle.empty())
        mObstacle = range->obstacle();
    stack.push_back(std::move(range));
    cursor = close;
    std::cout << "added range " << first << " " << last << " " << step << '\n' << cursor << " \n";
    return true;
}

template<typename T>
bool ListParser<T>::parseList(Stack& stack, const char*& cursor, const char* end)
{
    check(cursor < end, "Invalid range!: start < end", 496);
    check(*cursor == '{', "Invalid first character.: start[0] == '{'", 497);

    const char* const close = std::find(cursor, end, '}');
    if (close == end)
        return fail("missing closing bracket \"}\".");
    addList(stack, numbersIn(cursor + 1, close));
    cursor = close;
    return true;
}

template<typename T>
bool ListParser<T>::parseNumbers(Stack& stack, const char*& cursor, const char* end)
{
    check(cursor < end, "Invalid range!: start < end", 536);
    addList(stack, numbersIn(cursor, end));
    cursor = end;
    return true;
}

/// The numbers between commas. Nothing between two commas is skipped.
template<typename T>
std::vector<T> ListParser<T>::numbersIn(const char* begin, const char* end)
{
    std::vector<T> numbers;
    while (begin < end)
    {
        const char* const comma = std::find(begin, end, ',');
        if (begin < comma)
            numbers.push_back(getNum(begin));
        begin = comma < end ? comma + 1 : end;
    }
    return numbers;
}

template<typename T>
T ListParser<T>::getNum(const char* text)
{
    // Copying all of the text for each number would take quadratic time for a long list.
    const std::size_t length = std::strspn(text, " \t\n\v\f\r+-.0123456789eE");
    std::istringstream stream(std::string(text, length));
    stream.imbue(std::locale::classic());
    T number = T(0);
    stream >> number;
    // The stream reads a number that is too large as the largest number, and fails.
    if (stream.fail() && std::abs(number) == std::numeric_limits<T>::max())
        number = std::copysign(std::numeric_limits<T>::infinity(), number);
    std::cout << text << " -> " << number << '\n';
    return number;
}

/// The line identifies the check in error reports. It does not change when the code around it moves.
template<typename T>
void ListParser<T>::check(bool holds, const char* what, int line)
{
    if (!holds)
        throw assertion_failed(what, "BundleTools/ListParser",
                               "toolboxes/future/Field/algos/SampleFieldOnGivenGrid", line);
}

template<typename T>
void ListParser<T>::step()
{
    mValid = false;
    mSteps.take(mStack.size());
    for (const auto& set : mStack)
        while (set->valid() && set->value() <= mValue && mSteps.take())
            set->next();
    if (!hasStepsLeft())
        return;

    T smallest = std::numeric_limits<T>::infinity();
    for (const auto& set : mStack)
        if (set->valid())
        {
            smallest = std::min(smallest, set->value());
            mValid = true;
        }
    if (mValid)
        mValue = smallest;
}

template<typename T>
bool ListParser<T>::hasStepsLeft()
{
    if (!mSteps.isSpent())
        return true;
    if (!mObstacle.empty())
        return fail(mObstacle);
    return fail("Walking the sets takes more than " + std::to_string(mMaximumSteps) + " steps.");
}

}
