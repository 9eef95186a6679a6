#include <tavrin/pipeline/DataKinds.hpp>

#include <tavrin/pipeline/Words.hpp>

#include <tavrin/colormap/BuiltInColorMaps.hpp>
#include <tavrin/colormap/NormRange.hpp>
#include <tavrin/field/FieldBase.hpp>
#include <tavrin/io/Formats.hpp>

#include <algorithm>

namespace tavrin::pipeline
{

namespace
{

using Object = DataKind::Object;
using Objects = DataKind::Objects;
using Reference = DataKind::Reference;
using IsAccepted = DataKind::IsAccepted;
using io::DataReference;

Reference parseGridReference(const std::string& text)
{
    if (MadeGrid::isMeant(text))
        return MadeGrid::parse(text);
    return DataReference::parse(text);
}

Reference parseFunctionReference(const std::string& text)
{
    if (ConstantFunction::isMeant(text))
        return ConstantFunction::parse(text);
    if (MadeGrid::isMeant(text))
        throw usage_error("\"" + text +
                          "\" is a grid without values; a function is FILE#ARRAY or "
                          "@constant:NUMBERS");
    return DataReference::parse(text);
}

/// The files that are read for a reference of any kind.
std::vector<std::filesystem::path> referencedFiles(const Reference& reference, io::Loader& loader)
{
    if (const auto* const file = std::get_if<DataReference>(&reference))
        return loader.filesOf(*file);
    if (const auto* const grid = std::get_if<MadeGrid>(&reference))
        return grid->files(loader);
    if (const auto* const map = std::get_if<ColorMapReference>(&reference);
        map != nullptr && !map->file.empty())
        return {map->file};
    return {};
}

std::size_t dimensionOf(const DataObject& object)
{
    if (const auto* const bundle = dynamic_cast<const DataObjectBundle*>(&object))
        return dimensionOf(*bundle->members().front());
    const auto* const function = dynamic_cast<const FunctionBase*>(&object);
    const DataObject& domain = function == nullptr ? object : *function->domain();
    return dynamic_cast<const PointSetBase&>(domain).dimension();
}

/// Makes an object. If the option does not take it, its grid gets further coordinates, which are 0, as
/// long as that may help: a line along an axis has one dimension by itself. Returns the object with
/// its own dimension if nothing helps.
Object makeAccepted(const IsAccepted& isAccepted,
                    const std::function<Object(std::optional<std::size_t> dimension)>& make)
{
    Object object = make(std::nullopt);
    if (isAccepted(object))
        return object;
    for (std::size_t dimension = dimensionOf(*object) + 1; dimension <= 3; ++dimension)
        if (Object raised = make(dimension); isAccepted(raised))
            return raised;
    return object;
}

/// Loads an object as `makeAccepted` does, unless the reference states its dimension.
Object loadAccepted(DataReference reference, const IsAccepted& isAccepted,
                    const std::function<Object(const DataReference&)>& load)
{
    if (reference.dimension)
        return load(reference);
    return makeAccepted(isAccepted,
                        [&](std::optional<std::size_t> dimension)
                        {
                            reference.dimension = dimension;
                            return load(reference);
                        });
}

Objects makeGrid(const Reference& reference, const DataSources& sources, InputKind,
                 const IsAccepted& isAccepted)
{
    if (const auto* const grid = std::get_if<MadeGrid>(&reference))
        return {makeAccepted(
            isAccepted, [&](std::optional<std::size_t> dimension)
            { return grid->make(sources.earlier, sources.loader, dimension.value_or(1)); })};
    return {loadAccepted(std::get<DataReference>(reference), isAccepted,
                         [&](const DataReference& known)
                         { return sources.loader.loadGrid(known); })};
}

Objects loadBlocks(const DataReference& reference, io::Loader& loader)
{
    const auto functions = loader.loadFunctions(reference);
    return {functions.begin(), functions.end()};
}

Objects makeFunction(const Reference& reference, const DataSources& sources, InputKind option,
                     const IsAccepted& isAccepted)
{
    if (const auto* const constant = std::get_if<ConstantFunction>(&reference))
        return {constant->make(sources.earlier)};
    const auto& known = std::get<DataReference>(reference);
    if (option == InputKind::Bundle)
        return loadBlocks(known, sources.loader);
    return {loadAccepted(known, isAccepted,
                         [&](const DataReference& raised)
                         { return sources.loader.loadFunction(raised); })};
}

/// The functions that a field is made of; several blocks are one field.
Objects makeField(const Reference& reference, const DataSources& sources, InputKind,
                  const IsAccepted& isAccepted)
{
    const auto load = [&](const DataReference& raised) -> Object
    {
        Objects blocks = loadBlocks(raised, sources.loader);
        return blocks.size() == 1 ? blocks.front()
                                  : std::make_shared<DataObjectBundle>(std::move(blocks));
    };
    if (std::holds_alternative<ConstantFunction>(reference))
        return makeFunction(reference, sources, InputKind::Data, isAccepted);
    const auto& known = std::get<DataReference>(reference);
    return {loadAccepted(known, isAccepted, load)};
}

Reference parseColorMap(const std::string& text)
{
    return ColorMapReference::parse(text);
}

ValueRange rangeFor(const DataSources& sources)
{
    const auto& [range, time] = sources.shown;
    return range ? *range : normsOf(sources.earlier, time).value_or(ValueRange{});
}

/// The map over the range in the reference. Without one it spans the norms of the field shown.
Objects makeColorMap(const Reference& reference, const DataSources& sources, InputKind,
                     const IsAccepted&)
{
    const auto& map = std::get<ColorMapReference>(reference);
    return {map.loadFor(map.range ? *map.range : rangeFor(sources))};
}

bool refersToColorMap(const std::string& text)
{
    const std::string name = text.substr(0, text.find('@'));
    return std::ranges::find(builtInColorMapNames(), name) != builtInColorMapNames().end() ||
           name.substr(0, name.find('#')).ends_with(".json");
}

Reference parseAny(const std::string& text)
{
    if (ConstantFunction::isMeant(text))
        return ConstantFunction::parse(text);
    return refersToColorMap(text) ? parseColorMap(text) : parseGridReference(text);
}

Objects makeAny(const Reference& reference, const DataSources& sources, InputKind option,
                const IsAccepted& isAccepted)
{
    if (std::holds_alternative<ColorMapReference>(reference))
        return makeColorMap(reference, sources, option, isAccepted);
    if (std::holds_alternative<MadeGrid>(reference))
        return makeGrid(reference, sources, option, isAccepted);
    if (std::holds_alternative<ConstantFunction>(reference))
        return makeFunction(reference, sources, option, isAccepted);
    const auto& known = std::get<DataReference>(reference);
    try
    {
        return makeFunction(reference, sources, option, isAccepted);
    }
    catch (const usage_error&)
    {
        if (known.refersToArray() || !sources.loader.inspect(known).arrays.empty())
            throw;
    }
    return makeGrid(reference, sources, option, isAccepted);
}

/// The table. If an option accepts several kinds, the first one that suits a reference is taken.
const std::vector<DataKind>& dataKinds()
{
    static const std::vector<DataKind> kinds{
        {Domain::classTypeId(), "grid", "FILE", {}, parseGridReference, referencedFiles, makeGrid},
        {FunctionBase::classTypeId(),
         "function",
         "FILE#ARRAY",
         {},
         parseFunctionReference,
         referencedFiles,
         makeFunction},
        {FieldBase::classTypeId(),
         "field",
         "FILE#ARRAY",
         {},
         parseFunctionReference,
         referencedFiles,
         makeField},
        {ColorMapDataObject::classTypeId(), "color map", "COLORMAP", builtInColorMapNames(),
         parseColorMap, referencedFiles, makeColorMap},
        {DataObject::classTypeId(), "object", "FILE#ARRAY", {}, parseAny, referencedFiles, makeAny},
    };
    return kinds;
}

/// Whether objects of the kind are made for an option that accepts this class. The class of all data
/// objects has a kind of its own, which is not made for options that accept other classes only.
bool isMadeFor(const DataKind& kind, const RTTI_TypeId& accepted)
{
    return kind.type == DataObject::classTypeId() ? accepted == kind.type
                                                  : accepted.isDerivedFrom(kind.type);
}

/// Whether the reference suits the kind, for an option that accepts several kinds.
bool suits(const DataKind& kind, const std::string& text)
{
    if (ConstantFunction::isMeant(text))
        return kind.type == FunctionBase::classTypeId() || kind.type == FieldBase::classTypeId();
    if (MadeGrid::isMeant(text))
        return kind.type == Domain::classTypeId();
    const bool isColorMap = kind.type == ColorMapDataObject::classTypeId();
    if (isColorMap || refersToColorMap(text))
        return isColorMap && refersToColorMap(text);
    return kind.type != Domain::classTypeId() || !DataReference::parse(text).refersToArray();
}

const RTTICollection& typesOf(const InputBase& input)
{
    const auto* const bundle = dynamic_cast<const InputDataObjectBundle*>(&input);
    return bundle != nullptr ? bundle->memberTypes()
                             : dynamic_cast<const InputDataObject&>(input).types();
}

}

std::optional<ValueRange> normsOf(const Objects& objects, std::optional<double> time)
{
    for (const Object& object : objects)
        if (const auto* const function = dynamic_cast<const FunctionBase*>(object.get()))
            return time ? finiteNormRangeAt(*function, *time) : finiteNormRange(*function);
    return std::nullopt;
}

std::vector<const DataKind*> kindsOf(const InputBase& input)
{
    std::vector<const DataKind*> accepted;
    if (!takesData(input))
        return accepted;
    const auto isAccepted = [&](const DataKind& kind)
    {
        return std::ranges::any_of(typesOf(input).ids(),
                                   [&](const RTTI_TypeId& type) { return isMadeFor(kind, type); });
    };
    for (const DataKind& kind : dataKinds())
        if (isAccepted(kind))
            accepted.push_back(&kind);
    return accepted;
}

std::string placeholderOf(const InputBase& input)
{
    std::vector<std::string> placeholders;
    for (const DataKind* const kind : kindsOf(input))
        if (std::ranges::find(placeholders, kind->placeholder) == placeholders.end())
            placeholders.emplace_back(kind->placeholder);
    std::string text;
    for (const std::string& placeholder : placeholders)
        text += (text.empty() ? "" : " or ") + placeholder;
    return text.empty() && takesData(input) ? "OBJECT" : text;
}

ObjectReference ObjectReference::parse(const std::string& text, const InputBase& input)
{
    const auto kinds = kindsOf(input);
    if (kinds.empty())
        throw usage_error("option \"" + input.name() +
                          "\" takes data that cannot be given by a reference");
    if (kinds.size() == 1)
        return {kinds.front(), kinds.front()->parse(text), text};
    for (const DataKind* const kind : kinds)
        if (suits(*kind, text))
            return {kind, kind->parse(text), text};
    return {kinds.back(), kinds.back()->parse(text), text};
}

std::vector<double> ObjectReference::seriesTimes(io::Loader& loader) const
{
    const auto* const reference = std::get_if<DataReference>(&parsed);
    if (reference == nullptr || reference->time)
        return {};
    auto times = loader.timesOf(*reference);
    return times.size() > 1 || io::isSeries(reference->file) ? times : std::vector<double>{};
}

bool ObjectReference::dependsOnOthers() const
{
    const auto* const grid = std::get_if<MadeGrid>(&parsed);
    return grid != nullptr ? grid->dependsOnOthers()
                           : !std::holds_alternative<DataReference>(parsed);
}

bool ObjectReference::spansShownNorms() const
{
    const auto* const map = std::get_if<ColorMapReference>(&parsed);
    return map != nullptr && !map->range;
}

ObjectReference ObjectReference::restrictedTo(double time) const
{
    ObjectReference restricted = *this;
    std::get<DataReference>(restricted.parsed).time = time;
    restricted.text +=
        (text.find('?') == std::string::npos ? "?time=" : "&time=") + shortestText(time);
    return restricted;
}

}
