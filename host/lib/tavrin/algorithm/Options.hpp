#pragma once

#include <tavrin/algorithm/Input.hpp>
#include <tavrin/base/TypeList.hpp>

#include <unordered_map>
#include <variant>

namespace tavrin
{

namespace detail
{

/// Turns an option's type into its input class: a template argument of `Options::add` and `get`.
template<typename T>
inline constexpr bool isValueOption =
    std::is_same_v<T, bool> || std::is_same_v<T, long> || std::is_same_v<T, double> ||
    std::is_same_v<T, std::string> || std::is_same_v<T, Color>;

template<typename T>
constexpr InputKind inputKindOf()
{
    if constexpr (std::is_same_v<T, bool>)
        return InputKind::Boolean;
    else if constexpr (std::is_same_v<T, long>)
        return InputKind::Integer;
    else if constexpr (std::is_same_v<T, double>)
        return InputKind::Number;
    else if constexpr (std::is_same_v<T, Color>)
        return InputKind::Color;
    else
        return InputKind::Text;
}

template<typename T>
inline constexpr bool isDataOption = DataClass<T>;
template<typename... Types>
inline constexpr bool isDataOption<TypeList<Types...>> = sizeof...(Types) > 0 &&
                                                         (DataClass<Types> && ...);

template<typename T>
inline constexpr bool isOption = isValueOption<T> || isDataOption<T> ||
                                 std::is_same_v<T, InputChoices> || std::is_same_v<T, InputLabel>;
template<typename T>
inline constexpr bool isNoOption = !isOption<T>;

template<typename T>
struct AsTypeListOf
{
    using Type = TypeList<T>;
};
template<typename... Types>
struct AsTypeListOf<TypeList<Types...>>
{
    using Type = TypeList<Types...>;
};
template<typename T>
using AsTypeList = typename AsTypeListOf<T>::Type;

template<typename... Classes>
AcceptedTypes acceptedTypes(TypeList<Classes...>)
{
    return AcceptedTypes::of<Classes...>();
}

template<typename T>
struct OptionResult
{
    using Type = std::conditional_t<isValueOption<T>, T, std::shared_ptr<const T>>;
};

template<typename... Types>
struct OptionResult<TypeList<Types...>>
{
    using Type = std::shared_ptr<const DataObject>;
};

}

/// The options of an algorithm. A derived class declares them in its constructor, in the order in
/// which they are shown; that declaration is all that front ends are made from.
class TAVRIN_API Options : private InputChangeListener
{
public:
    /// Holds the inputs that an `Options` constructor declares.
    class Control;

    enum class Required : bool
    {
        No,
        Yes
    };

    /// Thrown by `get` for a required option without a data object.
    class TAVRIN_API missing_option_error : public runtime_error
    {
    public:
        explicit missing_option_error(const std::string& optionName);
    };

    explicit Options(Control& control) : mControl(control) {}
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;
    ~Options() override;

    /// Called after an option's value changed. May read options and switch their visibility. An
    /// exception refuses the change, which is then undone together with the visibility; only a
    /// `missing_option_error`, which a required option without data causes, leaves it in place.
    virtual void optionChanged(const std::string& name);

    /// The value of an option: T for bool, long, double, std::string (texts and choices) and Color;
    /// `std::shared_ptr<const T>` for a data class T or `DataObjectBundle`; and
    /// `std::shared_ptr<const DataObject>` for `TypeList<...>` of data classes. The pointer is
    /// empty where nothing of the class is connected.
    /// Throws `logic_error` "implementation error: option type mismatch" where no option of that
    /// kind has the name, and `missing_option_error` for a required option without an object.
    template<typename T>
    typename detail::OptionResult<T>::Type get(const std::string& name) const;

    struct DataObjectInput_t
    {};
    struct TypeListInput_t
    {};

    /// A value input: T is bool, long, double, std::string or Color. The input returned takes a
    /// validator:
    ///
    ///     add<double>("Scale", "Length of arrows", 1.0).setValidator(
    ///         [](double scale) { return std::max(scale, 0.0); });
    template<typename T>
        requires detail::isValueOption<T>
    InputArithmeticImpl<T>& add(const std::string& name, const std::string& description,
                                T defaultValue)
    {
        return addInput(std::make_shared<InputArithmeticImpl<T>>(
                            detail::inputKindOf<T>(), name, description, std::move(defaultValue)),
                        Required::No);
    }

    /// A choice among texts. Throws `logic_error` where the default is none of them.
    template<typename T>
        requires std::same_as<T, InputChoices>
    InputChoices& add(const std::string& name, const std::string& description,
                      std::vector<std::string> choices, const std::string& defaultChoice)
    {
        return addInput(
            std::make_shared<InputChoices>(name, description, std::move(choices), defaultChoice),
            Required::No);
    }

    /// A text for the reader.
    template<typename T>
        requires std::same_as<T, InputLabel>
    InputLabel& add(const std::string& name, const std::string& description,
                    const std::string& text)
    {
        return addInput(std::make_shared<InputLabel>(name, description, text), Required::No);
    }

    /// An input for a data object of class T, or of any class of a `TypeList`. Classes that make
    /// their objects from others, such as `Field<3, Vector3>` from functions, accept those too.
    template<typename T>
        requires detail::isDataOption<T>
    InputDataObject& add(const std::string& name, const std::string& description,
                         InputDataObject::Filter filter = {}, Required required = Required::No)
    {
        using Tag = std::conditional_t<isTypeList<T>, TypeListInput_t, DataObjectInput_t>;
        return addImpl<T>(Tag{}, name, description, std::move(filter), required);
    }

    /// Chosen for all other types, to say what is wrong with them.
    template<typename T, typename... Arguments>
        requires detail::isNoOption<T>
    void add(const Arguments&...)
    {
        static_assert(detail::isOption<T>,
                      "the type of an option is bool, long, double, std::string, Color, "
                      "InputChoices, InputLabel, a class of data objects that states its type, or "
                      "a TypeList of such classes");
    }

    template<DataClass T>
    InputDataObject& addImpl(DataObjectInput_t, const std::string& name,
                             const std::string& description, const InputDataObject::Filter& filter,
                             Required required)
    {
        return addDataInput(AcceptedTypes::of<T>(), name, description, filter, required);
    }
    template<typename List>
    InputDataObject& addImpl(TypeListInput_t, const std::string& name,
                             const std::string& description, const InputDataObject::Filter& filter,
                             Required required)
    {
        return addDataInput(detail::acceptedTypes(List{}), name, description, filter, required);
    }

    /// An input for several data objects of class T, or of any class of a `TypeList`.
    template<typename T>
        requires detail::isDataOption<T>
    InputDataObjectBundle& addBundle(const std::string& name, const std::string& description,
                                     InputDataObjectBundle::Filter filter = {},
                                     Required required = Required::No)
    {
        return addInput(std::make_shared<InputDataObjectBundle>(
                            name, description, detail::acceptedTypes(detail::AsTypeList<T>{}),
                            std::move(filter)),
                        required);
    }

    /// Starts a named group of the inputs that follow.
    void addGroup(const std::string& name);

    /// A gap between the inputs before and after it.
    void addSeparator();

    /// Shows or hides an input, which keeps its value. Throws `logic_error` for an unknown name.
    void setVisible(const std::string& name, bool visible);
    void setHidden(const std::string& name, bool hidden) { setVisible(name, !hidden); }

private:
    InputDataObject& addDataInput(AcceptedTypes types, const std::string& name,
                                  const std::string& description, InputDataObject::Filter filter,
                                  Required required)
    {
        return addInput(std::make_shared<InputDataObject>(name, description, std::move(types),
                                                          std::move(filter)),
                        required);
    }

    template<typename Input>
    Input& addInput(std::shared_ptr<Input> input, Required required)
    {
        Input& added = *input;
        declare(std::move(input), required);
        return added;
    }

    void declare(std::shared_ptr<InputBase> input, Required required);
    void inputChanged(const std::string& name) override;

    Control& mControl;
};

class TAVRIN_API Options::Control
{
public:
    /// What stands between inputs.
    struct Group
    {
        std::string name;
    };
    struct Separator
    {};
    using Item = std::variant<std::shared_ptr<InputBase>, Group, Separator>;

    /// Throws `logic_error` for a name that is taken.
    void addInput(std::shared_ptr<InputBase> input, bool required);
    void addGroup(const std::string& name) { mItems.emplace_back(Group{name}); }
    void addSeparator() { mItems.emplace_back(Separator{}); }

    /// The input, or null.
    std::shared_ptr<InputBase> getInput(const std::string& name) const;

    /// Whether an input of that name exists and is required.
    bool isRequired(const std::string& name) const;

    /// The names of the inputs that are shown, in no particular order.
    std::vector<std::string> visibleInputs() const;

    /// Shows the inputs of these names and hides all others.
    void showOnly(const std::vector<std::string>& names);

    /// Inputs, groups and separators in the order of their declaration.
    const std::vector<Item>& items() const { return mItems; }

private:
    struct Entry
    {
        std::shared_ptr<InputBase> input;
        bool required;
    };
    std::unordered_map<std::string, Entry> mInputs;
    std::vector<Item> mItems;
};

namespace detail
{

template<typename T>
std::shared_ptr<const T> castObject(const std::shared_ptr<const DataObject>& object)
{
    return std::dynamic_pointer_cast<const T>(object);
}

template<typename... Types>
std::shared_ptr<const DataObject> castObject(TypeList<Types...>,
                                             const std::shared_ptr<const DataObject>& object)
{
    const bool matches = ((dynamic_cast<const Types*>(object.get()) != nullptr) || ...);
    return matches ? object : nullptr;
}

}

template<typename T>
typename detail::OptionResult<T>::Type Options::get(const std::string& name) const
{
    const auto input = mControl.getInput(name);
    const auto as = [&]<typename Input>() -> const Input&
    {
        const auto* const typed = dynamic_cast<const Input*>(input.get());
        if (typed == nullptr)
            throw logic_error("implementation error: option type mismatch");
        return *typed;
    };
    if constexpr (detail::isValueOption<T>)
        return as.template operator()<InputArithmeticImpl<T>>().value();
    else
    {
        typename detail::OptionResult<T>::Type object;
        if constexpr (std::is_same_v<T, DataObjectBundle>)
            object = as.template operator()<InputDataObjectBundle>().bundle();
        else if constexpr (isTypeList<T>)
            object =
                detail::castObject(T{}, as.template operator()<InputDataObject>().dataObject());
        else
            object = detail::castObject<T>(as.template operator()<InputDataObject>().dataObject());
        if (object == nullptr && mControl.isRequired(name))
            throw missing_option_error(input->name());
        return object;
    }
}

}
