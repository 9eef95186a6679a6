#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

/// Sets of numbers whose values are walked in ascending order.
namespace tavrin::sets
{

/// How often the sets of a parser may still be moved. The sets of a short text can take longer than
/// anyone waits.
class StepBudget
{
public:
    explicit StepBudget(std::size_t steps) : mLeft(steps) {}

    /// False when fewer are left.
    bool take(std::size_t steps = 1)
    {
        const bool isEnough = steps <= mLeft;
        mLeft = isEnough ? mLeft - steps : 0;
        return isEnough;
    }
    bool isSpent() const { return mLeft == 0; }

private:
    std::size_t mLeft;
};

/// Whether a number is infinite or the largest that there is, as which numbers too large for T are
/// read.
template<typename T>
bool isTooLarge(T number)
{
    return !(std::abs(number) < std::numeric_limits<T>::max());
}

/// Values in ascending order, and a place in them.
template<typename T>
class Set
{
public:
    Set() = default;
    Set(const Set&) = delete;
    Set& operator=(const Set&) = delete;
    virtual ~Set() = default;

    /// Whether there is a current value.
    virtual bool valid() const = 0;
    /// Moves to the following value. Safe to call where there is no current one.
    virtual void next() = 0;
    /// The current value. Without one, a number that only serves comparisons.
    virtual T value() const = 0;
    virtual void print(std::ostream& out) const = 0;
};

/// Given values, sorted and without duplicates.
template<typename T>
class List : public Set<T>
{
public:
    explicit List(std::vector<T> values) : mValues(std::move(values))
    {
        std::ranges::sort(mValues);
        const auto duplicates = std::ranges::unique(mValues);
        mValues.erase(duplicates.begin(), duplicates.end());
    }

    bool valid() const override { return mCursor < mValues.size(); }
    void next() override { mCursor += valid() ? 1 : 0; }
    /// Infinity at the end of the list, so that any other set's value is the smaller one.
    T value() const override
    {
        return valid() ? mValues[mCursor] : std::numeric_limits<T>::infinity();
    }
    void print(std::ostream& out) const override
    {
        out << "LIST{";
        for (std::size_t i = 0; i < mValues.size(); ++i)
            out << (i == 0 ? "" : ",") << mValues[i];
        out << "} ";
    }

private:
    std::vector<T> mValues;
    std::size_t mCursor = 0;
};

/// The numbers that repeated addition of a step reaches, the end included. A step that is not positive
/// never reaches it.
template<typename T>
class Range : public Set<T>
{
public:
    Range(T start, T end, T step) : mCurrent(start), mEnd(end), mStep(step) {}

    bool valid() const override { return mEnd >= mCurrent; }
    void next() override
    {
        if (valid())
            mCurrent += mStep;
    }
    T value() const override { return mCurrent; }
    void print(std::ostream& out) const override
    {
        out << "RANGE[ " << mCurrent << ":" << mEnd << "#" << mStep << " ] ";
    }

    /// Why walking from here would never reach the end, in one sentence, or empty.
    std::string obstacle() const
    {
        if (isTooLarge(mCurrent) || isTooLarge(mEnd) || isTooLarge(mStep))
            return "A number of a range is too large.";
        if (!(mStep > T(0)))
            return "The step of a range must be greater than zero.";
        // Rounding takes away at most half of the gap between neighboring numbers.
        const T largest = std::max(std::abs(mCurrent), std::abs(mEnd));
        const T gap = std::nextafter(largest, std::numeric_limits<T>::infinity()) - largest;
        if (mStep <= gap / 2)
            return "The step of a range is too small to change its values.";
        return {};
    }

private:
    T mCurrent;
    T mEnd;
    T mStep;
};

/// A set made of two. It remembers whether it is valid and its value, since asking all sets below
/// each time would make a walk quadratic in the number of operators.
template<typename T>
class Composite : public Set<T>
{
public:
    bool valid() const override { return mValid; }
    T value() const override { return mValue; }
    void print(std::ostream& out) const override
    {
        out << mName << "( ";
        mA->print(out);
        out << ",";
        mB->print(out);
        out << ") ";
    }

protected:
    Composite(const char* name, std::unique_ptr<Set<T>> a, std::unique_ptr<Set<T>> b,
              StepBudget& steps)
        : mName(name), mA(std::move(a)), mB(std::move(b)), mSteps(steps)
    {
    }

    Set<T>& a() const { return *mA; }
    Set<T>& b() const { return *mB; }
    bool areBothValid() const { return mA->valid() && mB->valid(); }

    /// False where no steps are left: then no loop goes on, and the parser gives up the walk.
    bool advance(Set<T>& operand)
    {
        const bool mayMove = mSteps.take();
        if (mayMove)
            operand.next();
        return mayMove;
    }

    template<typename Condition>
    void advanceWhile(Set<T>& operand, const Condition& condition)
    {
        while (operand.valid() && condition() && advance(operand))
        {
        }
    }

    void remember(bool valid, T value)
    {
        mValid = valid;
        mValue = value;
    }

private:
    const char* mName;
    std::unique_ptr<Set<T>> mA;
    std::unique_ptr<Set<T>> mB;
    StepBudget& mSteps;
    bool mValid = false;
    T mValue = T(0);
};

/// The values of A and of B.
template<typename T>
class Union : public Composite<T>
{
public:
    Union(std::unique_ptr<Set<T>> first, std::unique_ptr<Set<T>> second, StepBudget& steps)
        : Composite<T>("UNION", std::move(first), std::move(second), steps)
    {
        this->remember(a().valid() || b().valid(), smallerValue());
    }

    void next() override
    {
        const T current = this->value();
        this->advanceWhile(a(), [&] { return current == a().value(); });
        this->advanceWhile(b(), [&] { return current == b().value(); });
        if (this->areBothValid())
            this->remember(true, smallerValue());
        else if (a().valid())
            this->remember(true, a().value());
        else if (b().valid())
            this->remember(true, b().value());
        else
            this->remember(false, current);
    }

private:
    using Composite<T>::a;
    using Composite<T>::b;

    T smallerValue() const { return std::min(a().value(), b().value()); }
};

/// The values of A from which on B has caught up with A once. B is not moved again when A then
/// passes it, so a value of A that B lacks may be among them: {1,3,5}&{2,5} has 3 and 5.
template<typename T>
class Intersection : public Composite<T>
{
public:
    Intersection(std::unique_ptr<Set<T>> first, std::unique_ptr<Set<T>> second, StepBudget& steps)
        : Composite<T>("INTERSECTION", std::move(first), std::move(second), steps)
    {
        catchUp();
    }

    void next() override
    {
        const T previous = truncated(this->value());
        this->advance(a());
        this->advanceWhile(a(), [&] { return a().value() == previous; });
        catchUp();
    }

private:
    using Composite<T>::a;
    using Composite<T>::b;

    void catchUp()
    {
        this->advanceWhile(b(), [&] { return a().valid() && b().value() < a().value(); });
        this->advanceWhile(a(), [&] { return a().value() < b().value(); });
        this->remember(this->areBothValid(), a().value());
    }

    /// A number cut off to a 32-bit integer: the nearest one for numbers beyond, 0 for NaN.
    static T truncated(T number)
    {
        using Limits = std::numeric_limits<std::int32_t>;
        if (std::isnan(number))
            return T(0);
        return static_cast<T>(
            static_cast<std::int32_t>(std::clamp(number, T(Limits::min()), T(Limits::max()))));
    }
};

/// The values of A that B lacks.
template<typename T>
class Difference : public Composite<T>
{
public:
    Difference(std::unique_ptr<Set<T>> first, std::unique_ptr<Set<T>> second, StepBudget& steps)
        : Composite<T>("DIFFERENCE", std::move(first), std::move(second), steps)
    {
        skipCommonValues();
    }

    void next() override
    {
        if (a().valid())
            this->advance(a());
        skipCommonValues();
    }

private:
    using Composite<T>::a;
    using Composite<T>::b;

    void skipCommonValues()
    {
        const auto catchUp = [&]
        { this->advanceWhile(b(), [&] { return a().valid() && b().value() < a().value(); }); };
        catchUp();
        while (this->areBothValid() && a().value() == b().value() && this->advance(a()))
            catchUp();
        this->remember(a().valid(), a().value());
    }
};

}
