#pragma once

#include <tavrin/algorithm/AcceptedTypes.hpp>
#include <tavrin/base/Exceptions.hpp>
#include <tavrin/value/Color.hpp>
#include <tavrin/value/LexicalCast.hpp>

#include <functional>
#include <string>
#include <vector>

namespace tavrin
{

/// Is told when an input gets another value.
class TAVRIN_API InputChangeListener
{
public:
    /// Called with the new value in place. An exception refuses the change, which is then undone.
    virtual void inputChanged(const std::string& name) = 0;

    virtual ~InputChangeListener() = default;
};

/// The kinds of option, as a front end presents them.
enum class InputKind
{
    Boolean,
    Integer,
    Number,
    Text,
    Color,
    Choice,
    Label,
    Data,
    Bundle
};

/// "boolean", "number", ...
TAVRIN_API std::string_view nameOf(InputKind kind);

/// One option of an algorithm.
class TAVRIN_API InputBase
{
public:
    InputBase(InputKind kind, std::string name, std::string description);
    InputBase(const InputBase&) = delete;
    InputBase& operator=(const InputBase&) = delete;
    virtual ~InputBase() = default;

    InputKind kind() const { return mKind; }
    const std::string& name() const { return mName; }
    const std::string& description() const { return mDescription; }

    bool isVisible() const { return mIsVisible; }
    void setVisible(bool visible) { mIsVisible = visible; }

    /// The listener hears of every change of the value and must outlive the input's changes.
    void setChangeListener(InputChangeListener* listener) { mListener = listener; }

protected:
    /// Replaces the current value and tells the listener. Where the listener refuses the change by
    /// an exception, the old value is restored and the exception passes through.
    template<typename Value>
    void change(Value& current, Value next) const
    {
        Value old = std::exchange(current, std::move(next));
        try
        {
            if (mListener != nullptr)
                mListener->inputChanged(mName);
        }
        catch (...)
        {
            current = std::move(old);
            throw;
        }
    }

private:
    InputKind mKind;
    std::string mName;
    std::string mDescription;
    bool mIsVisible = true;
    InputChangeListener* mListener = nullptr;
};

/// An input whose value can be written as a text.
class TAVRIN_API InputValueBase : public InputBase
{
public:
    using InputBase::InputBase;

    /// Converts the text and sets the value through the validator. Throws `bad_lexical_cast` for a
    /// text that does not convert, and what the validator throws.
    virtual void fromString(const std::string& text) = 0;

    /// Checks a text without setting anything. Throws as `fromString`.
    virtual void check(const std::string& text) const = 0;

    /// Converts the text and sets the value without asking the validator.
    virtual void fromStringUnchecked(const std::string& text) = 0;

    virtual std::string toString() const = 0;
    virtual std::string defaultToString() const = 0;
};

/// An input with a value of type T: bool, long, double, std::string or Color.
template<typename T>
class TAVRIN_API InputArithmeticImpl : public InputValueBase
{
public:
    /// Returns the value to be set, corrected if need be, or throws to refuse it. None by default.
    using Validator = std::function<T(const T&)>;

    InputArithmeticImpl(InputKind kind, std::string name, std::string description, T defaultValue)
        : InputValueBase(kind, std::move(name), std::move(description)), mDefault(defaultValue),
          mValue(std::move(defaultValue))
    {
    }

    const T& value() const { return mValue; }

    void setValidator(Validator validator) { mValidator = std::move(validator); }

    /// Sets the value that the validator returns. Nothing happens where that is the current one.
    void setValue(const T& value) { setUnchecked(mValidator ? mValidator(value) : value); }

    void setUnchecked(T value)
    {
        if (value != mValue)
            change(mValue, std::move(value));
    }

    void fromString(const std::string& text) override { setValue(lexicalCast<T>(text)); }
    void check(const std::string& text) const override
    {
        const T value = lexicalCast<T>(text);
        if (mValidator)
            static_cast<void>(mValidator(value));
    }
    void fromStringUnchecked(const std::string& text) override
    {
        setUnchecked(lexicalCast<T>(text));
    }
    std::string toString() const override { return toText(mValue); }
    std::string defaultToString() const override { return toText(mDefault); }

private:
    T mDefault;
    T mValue;
    Validator mValidator;
};

/// One of several texts. The validator refuses all others with a `usage_error` that lists them.
class TAVRIN_API InputChoices : public InputArithmeticImpl<std::string>
{
public:
    /// Throws `logic_error` where the default is not among the choices.
    InputChoices(std::string name, std::string description, std::vector<std::string> choices,
                 std::string defaultChoice);

    const std::vector<std::string>& choices() const { return mChoices; }

private:
    std::vector<std::string> mChoices;
};

/// A text for the reader, without a value.
class TAVRIN_API InputLabel : public InputBase
{
public:
    InputLabel(std::string name, std::string description, std::string text);

    const std::string& text() const { return mText; }

private:
    std::string mText;
};

/// An input for one data object of one of several classes.
class TAVRIN_API InputDataObject : public InputBase
{
public:
    /// Whether an object that is of an accepted class is wanted. An empty filter wants every one.
    using Filter = std::function<bool(const DataObject&)>;

    /// The filter that accepts every object.
    static bool ignore(const DataObject&) { return true; }

    InputDataObject(std::string name, std::string description, AcceptedTypes types, Filter filter);

    /// The classes of object that are accepted.
    const RTTICollection& types() const { return mTypes.types(); }

    /// Whether `setDataObject` would take the object.
    bool accepts(const std::shared_ptr<const DataObject>& object) const;

    /// The connected object, of one of the accepted classes, or null.
    const std::shared_ptr<const DataObject>& dataObject() const { return mObject; }

    /// Connects an object, converted to an accepted class where that is possible, or disconnects
    /// with null. Throws `usage_error` for an object that is not accepted.
    void setDataObject(const std::shared_ptr<const DataObject>& object);

private:
    AcceptedTypes mTypes;
    Filter mFilter;
    std::shared_ptr<const DataObject> mObject;
};

/// An input for several data objects that are handled as one.
class TAVRIN_API InputDataObjectBundle : public InputBase
{
public:
    /// Whether a bundle of accepted members is wanted. An empty filter wants every one.
    using Filter = std::function<bool(const DataObjectBundle&)>;

    InputDataObjectBundle(std::string name, std::string description, AcceptedTypes memberTypes,
                          Filter filter);

    /// The classes of object that are accepted as members.
    const RTTICollection& memberTypes() const { return mMemberTypes.types(); }

    /// The connected bundle, or null.
    const std::shared_ptr<const DataObjectBundle>& bundle() const { return mBundle; }

    /// Connects a bundle whole, its members converted to accepted classes where that is possible,
    /// or disconnects with null. Throws `usage_error` for a bundle that the filter refuses or that
    /// has members of other classes.
    void setBundle(const std::shared_ptr<const DataObjectBundle>& bundle);

private:
    AcceptedTypes mMemberTypes;
    Filter mFilter;
    std::shared_ptr<const DataObjectBundle> mBundle;
};

}
