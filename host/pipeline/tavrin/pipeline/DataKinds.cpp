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

Reference parseFileReference(const std::string& text)
{
    return DataReference::parse(text);
}

std::vector<std::filesystem::path> dataFiles(const Reference& reference, io::Loader& loader)
{
    return loader.filesOf(std::get<DataReference>(reference));
}

std::size_t dimensionOf(const DataObject& object)
{
    if (const auto* const bundle = dynamic_cast<const DataObjectBundle*>(&object))
        return dimensionOf(*bundle->members().front());
    const auto* const function = dynamic_cast<const FunctionBase*>(&object);
    const DataObject& domain = function == nullptr ? object : *function->domain();
    return dynamic_cast<const PointSetBase&>(domain).dimension();
}

/// Loads an object. If the option does not take it, its grid gets further coordinates, which are 0,
/// as long as that may help: a line along an axis has one dimension by itself. Returns the object
/// with its own dimension if nothing helps.
Object loadAccepted(DataReference reference, const IsAccepted& isAccepted,
                    const std::function<Object(const DataReference&)>& load)
{
    Object object = load(reference);
    if (reference.dimension || isAccepted(object))
        return object;
    for (std::size_t dimension = dimensionOf(*object) + 1; dimension <= 3; ++dimension)
    {
        reference.dimension = dimension;
        if (Object raised = load(reference); isAccepted(raised))
            return raised;
    }
    return object;
}

Objects makeGrid(const Reference& reference, const DataSources& sources, InputKind,
                 const IsAccepted& isAccepted)
{
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
    const auto& known = std::get<DataReference>(reference);
    return {loadAccepted(known, isAccepted, load)};
}

Reference parseColorMap(const std::string& text)
{
    return ColorMapReference::parse(text);
}

std::vector<std::filesystem::path> colorMapFiles(const Reference& reference, io::Loader&)
{
    const auto& file = std::get<ColorMapReference>(reference).file;
    return file.empty() ? std::vector<std::filesystem::path>{} : std::vector{file};
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
    return refersToColorMap(text) ? parseColorMap(text) : parseFileReference(text);
}

std::vector<std::filesystem::path> anyFiles(const Reference& reference, io::Loader& loader)
{
    return std::holds_alternative<ColorMapReference>(reference) ? colorMapFiles(reference, loader)
                                                                : dataFiles(reference, loader);
}

Objects makeAny(const Reference& reference, const DataSources& sources, InputKind option,
                const IsAccepted& isAccepted)
{
    if (std::holds_alternative<ColorMapReference>(reference))
        return makeColorMap(reference, sources, option, isAccepted);
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
        {Domain::classTypeId(), "grid", "FILE", {}, false, parseFileReference, dataFiles, makeGrid},
        {FunctionBase::classTypeId(),
         "function",
         "FILE#ARRAY",
         {},
         false,
         parseFileReference,
         dataFiles,
         makeFunction},
        {FieldBase::classTypeId(),
         "field",
         "FILE#ARRAY",
         {},
         false,
         parseFileReference,
         dataFiles,
         makeField},
        {ColorMapDataObject::classTypeId(), "color map", "COLORMAP", builtInColorMapNames(), true,
         parseColorMap, colorMapFiles, makeColorMap},
        {DataObject::classTypeId(), "object", "FILE#ARRAY", {}, false, parseAny, anyFiles, makeAny},
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
bool suits(const DataKind& kind, const std::string& text, const DataReference& reference)
{
    const bool isColorMap = kind.type == ColorMapDataObject::classTypeId();
    if (isColorMap || refersToColorMap(text))
        return isColorMap && refersToColorMap(text);
    return kind.type != Domain::classTypeId() || !reference.refersToArray();
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
    const auto reference = DataReference::parse(text);
    for (const DataKind* const kind : kinds)
        if (suits(*kind, text, reference))
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
