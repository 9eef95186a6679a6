#pragma once

#include <tavrin/io/DataFile.hpp>
#include <tavrin/io/Shape.hpp>

namespace tavrin::io
{

/// How the components of an array are read as the values of a function.
struct ArrayReading
{
    Shape shape;
    /// For each component of a value the component of the array that it is read from.
    std::vector<std::uint16_t> components;
    /// The name of the function: that of the array, followed by that of a single component.
    std::string name;
    /// Whether the array's third component is left out. It has to be 0 everywhere.
    bool isPlanar = false;

    bool operator==(const ArrayReading&) const = default;
};

/// Chooses by the keys `shape`, `component` and `order` of the reference. Six components are a
/// symmetric 3x3 matrix; without `order`, names that the file gives to them decide on their order.
/// Throws `usage_error`, naming what fits.
ArrayReading chooseReading(const DataFile::Array& array, const DataReference& reference);

/// Throws `usage_error` for a planar reading of values that do not lie in the plane.
void requireReadable(const StoredArray& values, const ArrayReading& reading);

/// Wraps the memory of a stored array as values of the shape of the reading, which is that of T.
template<typename T>
std::shared_ptr<const ValueArray<T>> wrapValues(const StoredArray& array,
                                                const ArrayReading& reading)
{
    ComponentMap<T> components{};
    std::ranges::copy(reading.components, components.begin());
    std::shared_ptr<const ValueArray<T>> values;
    visitPrecision(array.precision,
                   [&]<typename Stored>()
                   {
                       values = std::make_shared<const WrappedValueArray<T, Stored>>(
                           array.as<Stored>(), array.tuples, array.components, array.owner,
                           components);
                   });
    return values;
}

}
