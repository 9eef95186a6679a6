#include <tavrin/io/ArrayReading.hpp>

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/base/Suggestion.hpp>
#include <tavrin/io/TextNumbers.hpp>
#include <tavrin/value/LexicalCast.hpp>

#include <algorithm>
#include <numeric>

namespace tavrin::io
{

namespace
{

using Names = std::vector<std::string>;

constexpr std::size_t planarTuple = 3;

std::string describe(const DataFile::Array& array)
{
    return "\"" + array.name + "\" has " + std::to_string(array.components) +
           (array.components == 1 ? " component" : " components");
}

/// The shape that the array is read as, whatever its components are.
Shape chooseShape(const DataFile::Array& array, const std::optional<Shape>& wanted)
{
    const std::vector<Shape> fitting = shapesFitting(array.components);
    if (fitting.empty())
        throw usage_error(describe(array) +
                          "; only arrays of 1, 2, 3, 4, 6, 9, 16, 242 or 375 components are "
                          "fields, and single components, which ?component= chooses");
    if (!wanted)
        return shapeOf(array.components, array.componentNames).value();
    const bool isPlanar = *wanted == Shape{2} && array.components == planarTuple;
    if (isPlanar || std::ranges::find(fitting, *wanted) != fitting.end())
        return *wanted;
    std::string shapes;
    for (const Shape& shape : fitting)
        shapes += (shapes.empty() ? "" : ", ") + shapeText(shape);
    if (array.components == planarTuple)
        shapes += ", and 2 where the third component is 0 everywhere";
    throw usage_error(describe(array) + ", which does not fit ?shape=" + shapeText(*wanted) +
                      "; shapes that fit: " + shapes);
}

/// The names of the components of a symmetric 3x3 matrix in the order of the array.
Names chooseOrder(const DataFile::Array& array, const std::optional<SymmetricOrder>& wanted)
{
    if (array.components != symmetricTuple)
    {
        if (wanted)
            throw usage_error(describe(array) + "; ?order= is for arrays of 6");
        return {};
    }
    const SymmetricOrder order =
        wanted ? *wanted : parseSymmetricOrder(array.componentNames).value_or(vtkOrder);
    return {order.begin(), order.end()};
}

/// The usual names of the array's components; none where they have none.
Names usualNames(const DataFile::Array& array, const DataReference& reference, const Names& order)
{
    if (!order.empty())
        return order;
    if (const auto shape = reference.shape ? chooseShape(array, reference.shape)
                                           : shapeOf(array.components, array.componentNames);
        shape && shape->size() == 2)
        return componentNamesOf(*shape);
    const Names axes{"x", "y", "z", "w"};
    return array.components > axes.size()
               ? Names{}
               : Names(axes.begin(), axes.begin() + static_cast<std::ptrdiff_t>(array.components));
}

std::optional<std::size_t> findName(const Names& names, const std::string& wanted)
{
    for (const bool ignoresCase : {false, true})
    {
        const auto found = std::ranges::find_if(
            names, [&](const std::string& name)
            { return ignoresCase ? toLower(name) == toLower(wanted) : name == wanted; });
        if (found != names.end())
            return static_cast<std::size_t>(found - names.begin());
    }
    return std::nullopt;
}

ArrayReading readComponent(const DataFile::Array& array, const DataReference& reference,
                           const Names& order)
{
    const std::string& wanted = *reference.component;
    const Names usual = usualNames(array, reference, order);
    auto index = findName(array.componentNames, wanted);
    if (!index)
        index = findName(usual, wanted);
    if (!index && wanted.size() == 2)
        // The matrix is symmetric where only one half of it is stored.
        index = findName(order, {wanted[1], wanted[0]});
    if (!index)
        index = parseIndex(wanted);
    if (!index || *index >= array.components)
    {
        const bool isNamed = !array.componentNames.empty() && !array.componentNames.front().empty();
        const Names& names = isNamed ? array.componentNames : usual;
        throw usage_error("\"" + array.name + "\" has no component \"" + wanted + "\"" +
                          (names.empty()
                               ? "; they are numbered 0 to " + std::to_string(array.components - 1)
                               : suggestionFor(wanted, names)));
    }
    const auto nameIn = [&](const Names& names)
    { return *index < names.size() ? names[*index] : std::string(); };
    std::string name = nameIn(array.componentNames);
    if (name.empty())
        name = nameIn(usual);
    if (name.empty())
        name = std::to_string(*index);
    return {{}, {static_cast<std::uint16_t>(*index)}, array.name + " " + name, false};
}

}

ArrayReading chooseReading(const DataFile::Array& array, const DataReference& reference)
{
    const Names order = chooseOrder(array, reference.order);
    if (reference.component)
        return readComponent(array, reference, order);
    ArrayReading reading{chooseShape(array, reference.shape), {}, array.name, false};
    if (order.empty())
    {
        reading.components.resize(sizeOf(reading.shape));
        std::iota(reading.components.begin(), reading.components.end(), std::uint16_t{0});
        reading.isPlanar = reading.components.size() < array.components;
        return reading;
    }
    for (std::string name : componentNamesOf(reading.shape))
    {
        std::ranges::sort(name);
        const auto found = std::ranges::find(order, name);
        reading.components.push_back(static_cast<std::uint16_t>(found - order.begin()));
    }
    return reading;
}

void requireReadable(const StoredArray& values, const ArrayReading& reading)
{
    if (!reading.isPlanar)
        return;
    std::size_t first = values.tuples;
    visitPrecision(values.precision,
                   [&]<typename Stored>()
                   {
                       const auto* const numbers = values.as<Stored>();
#pragma omp parallel for schedule(static) reduction(min : first) if (values.tuples > worthThreads)
                       for (std::size_t i = 0; i < values.tuples; ++i)
                           if (!(numbers[planarTuple * i + 2] == Stored{0}))
                               first = std::min(first, i);
                       if (first < values.tuples)
                           throw usage_error(
                               "\"" + reading.name +
                               "\" does not fit ?shape=2: its third "
                               "component is not 0 everywhere, value " +
                               std::to_string(first) + " has " +
                               toText(static_cast<double>(numbers[planarTuple * first + 2])));
                   });
}

}
