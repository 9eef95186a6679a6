#pragma once

#include <tavrin/base/DataObject.hpp>
#include <tavrin/base/Exceptions.hpp>
#include <tavrin/base/LexicalCast.hpp>
#include <tavrin/base/TypeList.hpp>
#include <tavrin/domain/Domain.hpp>
#include <tavrin/function/Function.hpp>
#include <tavrin/value/Color.hpp>

#include <functional>
#include <string>
#include <vector>

namespace tavrin
{

/// Whoever wants to know that an input has another value.
class TAVRIN_API InputChangeListener
{
public:
    virtual void inputChanged(const std::string& name) = 0;

    virtual ~InputChangeListener() = default;
};

/// What a front end has to offer for an input.
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

    /// The listener is told after every change of the value. It must outlive the input's changes.
    void setChangeListener(InputChangeListener* listener) { mListener = listener; }

protected:
    void notifyChanged() const;

private:
    InputKind mKind;
    std::string mName;
    std::string mDescription;
    bool mIsVisible = true;
    InputChangeListener* mListener = nullptr;
};

/// An input that can be written as a text.
class TAVRIN_API InputValueBase : public InputBase
{
public:
    using InputBase::InputBase;

    /// Converts the text and sets the value through the validator. Throws `bad_lexical_cast` for a
    /// text that does not convert, and what the validator throws.
    virtual void fromString(const std::string& text) = 0;

    /// The same past the validator.
    virtual void fromStringUnchecked(const std::string& text) = 0;

    virtual std::string toString() const = 0;
    virtual std::string defaultToString() const = 0;
};

/// An input with a value of type T: bool, long, double, std::string or Color.
template<typename T>
class TAVRIN_API InputArithmeticImpl : public InputValueBase
{
public:
    /// Returns the value to be set, corrected if need be; may throw.
    using Validator = std::function<T(const T&)>;

    InputArithmeticImpl(InputKind kind, std::string name, std::string description, T defaultValue)
        : InputValueBase(kind, std::move(name), std::move(description)), mDefault(defaultValue),
          mValue(std::move(defaultValue))
    {
    }

    const T& value() const { return mValue; }

    void setValidator(Validator validator) { mValidator = std::move(validator); }

    /// Sets the value as the validator corrects it. Where that is the current value nothing
    /// happens; else the listener is told.
    void setValue(const T& value) { setUnchecked(mValidator ? mValidator(value) : value); }

    void setUnchecked(T value)
    {
        if (value == mValue)
            return;
        mValue = std::move(value);
        notifyChanged();
    }

    void fromString(const std::string& text) override { setValue(lexicalCast<T>(text)); }
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

/// The sort of data object that an input wants, for front ends that have to make one.
enum class DataSort
{
    Function,
    Domain,
    Other
};

template<typename Data>
constexpr DataSort dataSortOf()
{
    if constexpr (std::is_base_of_v<FunctionBase, Data>)
        return DataSort::Function;
    else if constexpr (std::is_base_of_v<Domain, Data>)
        return DataSort::Domain;
    else
        return DataSort::Other;
}

/// An input for one data object of given classes.
class TAVRIN_API InputDataObject : public InputBase
{
public:
    using Filter = std::function<bool(const DataObject&)>;

    /// The filter that accepts every object.
    static bool ignore(const DataObject&) { return true; }

    InputDataObject(std::string name, std::string description, RTTICollection types, DataSort sort,
                    Filter filter);

    const RTTICollection& types() const { return mTypes; }
    DataSort dataSort() const { return mSort; }

    /// Whether the object is of an accepted class and passes the filter.
    bool accepts(const DataObject& object) const;

    /// The connected object, or null.
    const std::shared_ptr<const DataObject>& dataObject() const { return mObject; }

    /// Connects an object, or disconnects with null. Throws `usage_error` for one that is not
    /// accepted.
    void setDataObject(std::shared_ptr<const DataObject> object);

private:
    RTTICollection mTypes;
    DataSort mSort;
    Filter mFilter;
    std::shared_ptr<const DataObject> mObject;
};

/// An input for several data objects that are handled as one.
class TAVRIN_API InputDataObjectBundle : public InputBase
{
public:
    using Filter = std::function<bool(const DataObjectBundle&)>;

    InputDataObjectBundle(std::string name, std::string description, RTTICollection memberTypes,
                          Filter filter);

    /// The connected bundle, or null.
    const std::shared_ptr<const DataObjectBundle>& bundle() const { return mBundle; }

    /// Connects a bundle, or disconnects with null. Throws `usage_error` for one that the filter
    /// refuses or that has members of other classes.
    void setBundle(std::shared_ptr<const DataObjectBundle> bundle);

private:
    RTTICollection mMemberTypes;
    Filter mFilter;
    std::shared_ptr<const DataObjectBundle> mBundle;
};

}
