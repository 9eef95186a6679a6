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

/// "1 object", "2 objects".
std::string numbered(std::size_t count)
{
    return std::to_string(count) + (count == 1 ? " object" : " objects");
}

/// "a function of type 3-D Vector on Points", for messages about objects that are not accepted.
std::string descriptionOf(const DataObject& object)
{
    if (const auto* const function = dynamic_cast<const FunctionBase*>(&object))
        return "a function of type " + function->valueTypeName() + " on " +
               function->domainPart().getName();
    if (const auto* const bundle = dynamic_cast<const DataObjectBundle*>(&object))
        return "a bundle of " + numbered(bundle->members().size());
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

InputDataObject::InputDataObject(std::string name, std::string description, AcceptedTypes types,
                                 Filter filter)
    : InputBase(InputKind::Data, std::move(name), std::move(description)), mTypes(std::move(types)),
      mFilter(std::move(filter))
{
}

bool InputDataObject::accepts(const std::shared_ptr<const DataObject>& object) const
{
    const auto taken = mTypes.take(object);
    return taken != nullptr && (!mFilter || mFilter(*taken));
}

void InputDataObject::setDataObject(const std::shared_ptr<const DataObject>& object)
{
    auto taken = mTypes.take(object);
    if (object != nullptr && taken == nullptr)
        throw usage_error("it takes " + alternatives(types()) + ", not " + descriptionOf(*object));
    if (taken != nullptr && mFilter && !mFilter(*taken))
        throw usage_error("it does not take " + descriptionOf(*object));
    if (taken != mObject)
        change(mObject, std::move(taken));
}

InputDataObjectBundle::InputDataObjectBundle(std::string name, std::string description,
                                             AcceptedTypes memberTypes, Filter filter)
    : InputBase(InputKind::Bundle, std::move(name), std::move(description)),
      mMemberTypes(std::move(memberTypes)), mFilter(std::move(filter))
{
}

void InputDataObjectBundle::setBundle(const std::shared_ptr<const DataObjectBundle>& bundle)
{
    std::shared_ptr<const DataObjectBundle> taken;
    if (bundle != nullptr)
    {
        DataObjectBundle::Members members;
        for (const auto& member : bundle->members())
        {
            members.push_back(mMemberTypes.take(member));
            if (members.back() == nullptr)
                throw usage_error("each member has to be " + alternatives(memberTypes()) +
                                  (member == nullptr ? "" : ", not " + descriptionOf(*member)));
        }
        taken = members == bundle->members()
                    ? bundle
                    : std::make_shared<const DataObjectBundle>(std::move(members));
    }
    if (taken != nullptr && mFilter && !mFilter(*taken))
        throw usage_error("it does not take a bundle of " + numbered(taken->members().size()));
    if (taken != mBundle)
        change(mBundle, std::move(taken));
}

}
