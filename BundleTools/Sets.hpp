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

/// The number of moves that the sets of a parser have left. A short text can describe sets that take
/// hours to walk.
class StepBudget
{
public:
    explicit StepBudget(std::size_t steps) : mLeft(steps) {}

    /// Takes some of the steps. Returns false, and takes all, when fewer are left.
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

/// Values in ascending order, and a position in them.
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
    /// Moves to the following value; does nothing without a current value.
    virtual void next() = 0;
    /// The current value. At the end, a number that is compared with others but is not in the set.
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
    /// At the end infinity, so that the value of any other set is smaller.
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

/// The numbers from a start to an end, which is included, by repeated addition of a step. A step that
/// is not positive never reaches the end.
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

    /// Why a walk from the current value never reaches the end, in one sentence, or empty.
    std::string obstacle() const
    {
        if (!(mStep > T(0)))
            return "The step of a range must be greater than zero.";
        if (std::isinf(mCurrent) || std::isinf(mEnd))
            return "A range with an infinite start or end never ends.";
        // Adding a step rounds to the nearest number, at most half of the gap between numbers away.
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

/// A set made of two. It remembers whether it is valid and its value: asking its operands each time
/// would make a walk quadratic in the number of operators.
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
    StepBudget& steps() const { return mSteps; }

    /// Returns false when no steps are left. Then all loops end, and the parser gives up the walk.
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

/// The values of A at which B has caught up with A, and then A with B. This happens once per value: B
/// does not move again when A passes it, so values of A that B lacks may be among them:
/// {1,3,5}&{2,5} has 3 and 5.
///
/// The intersection ends with either operand. When B ends first, A still has to catch up with the
/// value that B ended on: a union made of this set compares with the value that A ends on, and
/// `print` shows it. Since A may have billions of values left and nobody may ask for the last one,
/// A catches up only when asked.
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
        if (!this->valid())
            return;
        const T previous = truncated(this->value());
        this->advance(a());
        this->advanceWhile(a(), [&] { return a().value() == previous; });
        catchUp();
    }

    T value() const override
    {
        if (this->valid())
            return Composite<T>::value();
        moveToEnd(this->steps());
        return a().value();
    }

    void print(std::ostream& out) const override
    {
        // Showing a set takes no steps from the walk of others.
        StepBudget steps = this->steps();
        if (!this->valid())
            moveToEnd(steps);
        Composite<T>::print(out);
    }

private:
    using Composite<T>::a;
    using Composite<T>::b;

    void catchUp()
    {
        this->advanceWhile(b(), [&] { return a().valid() && b().value() < a().value(); });
        if (b().valid())
            this->advanceWhile(a(), [&] { return a().value() < b().value(); });
        const bool isValid = this->areBothValid();
        this->remember(isValid, isValid ? a().value() : T(0));
    }

    void moveToEnd(StepBudget& steps) const
    {
        while (a().valid() && a().value() < b().value() && steps.take())
            a().next();
    }

    /// A number truncated to a 32-bit integer: the nearest one for numbers out of range, 0 for NaN.
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

    T value() const override { return this->valid() ? Composite<T>::value() : a().value(); }

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
        this->remember(a().valid(), a().valid() ? a().value() : T(0));
    }
};

}
