#pragma once

#include <tavrin/function/Function.hpp>
#include <tavrin/io/StoredArray.hpp>
#include <tavrin/value/WrappedValueArray.hpp>

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace tavrin::io
{

/// The number of components of a symmetric 3x3 matrix in a file.
inline constexpr std::size_t symmetricTuple = 6;

/// The names of these components in the order of a file: "xx", "xy", ...
using SymmetricOrder = std::array<std::string, symmetricTuple>;

/// The order in VTK files.
inline const SymmetricOrder vtkOrder{"xx", "yy", "zz", "xy", "yz", "xz"};

/// The order that names such as "XX" or "yx" tell; nothing unless each component is among them once.
std::optional<SymmetricOrder> parseSymmetricOrder(const std::vector<std::string>& names);

/// The extents of a value: none for a scalar, one for a vector, two for a matrix.
using Shape = std::vector<std::size_t>;

/// The names that the components of values of a shape are written with, so that the shape can be
/// recognized when they are read; none for shapes that need no names.
std::vector<std::string> componentNamesOf(const Shape& shape);

/// The shape of values with this number of components. Names as in `componentNamesOf` give the
/// shape that they stand for; other names have no effect. Nothing where no shape fits.
std::optional<Shape> shapeOf(std::size_t components, const std::vector<std::string>& names);

/// All shapes that this number of components can be read as; six make a symmetric 3x3 matrix.
std::vector<Shape> shapesFitting(std::size_t components);

/// The shape as text: "scalar", "3", "2x2".
std::string shapeText(const Shape& shape);

/// The number of components of a value.
std::size_t sizeOf(const Shape& shape);

/// Calls `visitor.operator()<T>()` with the type of values of this shape.
template<typename Visitor>
void visitShape(const Shape& shape, Visitor&& visitor);

/// The name of the type of values of this shape: "3-D Vector".
std::string valueTypeNameOf(const Shape& shape);

template<typename T>
Shape shapeOfType()
{
    Shape shape;
    if constexpr (T::rank > 0)
        for (std::size_t axis = 0; axis < T::rank; ++axis)
            shape.push_back(T::extent(axis));
    return shape;
}

template<typename Visitor>
void visitShape(const Shape& shape, Visitor&& visitor)
{
    visitTypes<ValueTypes>(
        [&]<typename T>()
        {
            if (shapeOfType<T>() != shape)
                return false;
            visitor.template operator()<T>();
            return true;
        });
}

}
