#include <tavrin/algorithm/Input.hpp>

#include <tavrin/base/Suggestion.hpp>
#include <tavrin/domain/CellComplex.hpp>
#include <tavrin/function/visit.hpp>

#include <algorithm>
#include <array>

namespace tavrin
{

namespace
{

/// "a 2-D grid or a 3-D grid".
std::string alternatives(const RTTICollection& types)
{
    std::string text;
    for (const std::string& description : types.descriptions())
        text += (text.empty() ? "a " : " or a ") + description;
    return text;
}

/// What was given instead.
std::string descriptionOf(const DataObject& object)
{
    if (const auto* const function = dynamic_cast<const FunctionBase*>(&object))
        return "a function of type " + function->valueTypeName() + " on " +
               function->domainPart().getName();
    const auto* const points = dynamic_cast<const PointSetBase*>(&object);
    if (points == nullptr)
        return "this object";
    std::string kind = "point set";
    visitObject<TypeList<EmbeddedCellComplex<1>, EmbeddedCellComplex<2>, EmbeddedCellComplex<3>>>(
        object,
        [&](const auto& grid) { kind = std::string(nameOf(grid.structuringType())) + " grid"; });
    return "a " + std::to_string(points->dimension()) + "-D " + kind;
}

}

std::string_view nameOf(InputKind kind)
{
    constexpr std::array<std::string_view, 9> names{
        "boolean", "integer", "number", "text", "color", "choice", "label", "data", "bundle"};
    return names.at(static_cast<std::size_t>(kind));
}

InputBase::InputBase(InputKind kind, std::string name, std::string description)
    : mKind(kind), mName(std::move(name)), mDescription(std::move(description))
{
}

void InputBase::notifyChanged() const
{
    if (mListener != nullptr)
        mListener->inputChanged(mName);
}

InputChoices::InputChoices(std::string name, std::string description,
                           std::vector<std::string> choices, std::string defaultChoice)
    : InputArithmeticImpl(InputKind::Choice, std::move(name), std::move(description),
                          std::move(defaultChoice)),
      mChoices(std::move(choices))
{
    if (std::ranges::find(mChoices, value()) == mChoices.end())
        throw logic_error("the default \"" + value() + "\" of \"" + this->name() +
                          "\" is not among its choices");
    setValidator(
        [this](const std::string& text)
        {
            if (std::ranges::find(mChoices, text) == mChoices.end())
                throw usage_error("\"" + text + "\" is not among the choices" +
                                  suggestionFor(text, mChoices));
            return text;
        });
}

InputLabel::InputLabel(std::string name, std::string description, std::string text)
    : InputBase(InputKind::Label, std::move(name), std::move(description)), mText(std::move(text))
{
}

InputDataObject::InputDataObject(std::string name, std::string description, RTTICollection types,
                                 DataSort sort, Filter filter)
    : InputBase(InputKind::Data, std::move(name), std::move(description)), mTypes(std::move(types)),
      mSort(sort), mFilter(std::move(filter))
{
}

bool InputDataObject::accepts(const DataObject& object) const
{
    return mTypes.accepts(object) && mFilter(object);
}

void InputDataObject::setDataObject(std::shared_ptr<const DataObject> object)
{
    if (object != nullptr && !mTypes.accepts(*object))
        throw usage_error("it takes " + alternatives(mTypes) + ", not " + descriptionOf(*object));
    if (object != nullptr && !mFilter(*object))
        throw usage_error("it does not take " + descriptionOf(*object));
    if (object == mObject)
        return;
    mObject = std::move(object);
    notifyChanged();
}

InputDataObjectBundle::InputDataObjectBundle(std::string name, std::string description,
                                             RTTICollection memberTypes, Filter filter)
    : InputBase(InputKind::Bundle, std::move(name), std::move(description)),
      mMemberTypes(std::move(memberTypes)), mFilter(std::move(filter))
{
}

void InputDataObjectBundle::setBundle(std::shared_ptr<const DataObjectBundle> bundle)
{
    const auto isForeign = [&](const auto& member)
    { return member == nullptr || !mMemberTypes.accepts(*member); };
    if (bundle != nullptr && std::ranges::any_of(bundle->members(), isForeign))
        throw usage_error("each member has to be " + alternatives(mMemberTypes));
    if (bundle != nullptr && !mFilter(*bundle))
        throw usage_error("it does not take this object");
    if (bundle == mBundle)
        return;
    mBundle = std::move(bundle);
    notifyChanged();
}

}
