#include <tavrin/io/Shape.hpp>

#include <tavrin/io/TextNumbers.hpp>

#include <algorithm>

namespace tavrin::io
{

std::size_t sizeOf(const Shape& shape)
{
    std::size_t size = 1;
    for (const std::size_t extent : shape)
        size *= extent;
    return size;
}

std::optional<SymmetricOrder> parseSymmetricOrder(const std::vector<std::string>& names)
{
    SymmetricOrder order;
    if (names.size() != order.size())
        return std::nullopt;
    std::ranges::transform(names, order.begin(),
                           [](const std::string& name)
                           {
                               std::string lower = toLower(name);
                               std::ranges::sort(lower);
                               return lower;
                           });
    return std::ranges::is_permutation(order, vtkOrder) ? std::optional(order) : std::nullopt;
}

std::vector<std::string> componentNamesOf(const Shape& shape)
{
    constexpr std::string_view axes = "xyzw";
    std::vector<std::string> names;
    if (shape == Shape{1})
        names.emplace_back("x");
    if (shape.size() == 2)
        for (std::size_t row = 0; row < shape[0]; ++row)
            for (std::size_t column = 0; column < shape[1]; ++column)
                names.push_back({axes[row], axes[column]});
    return names;
}

std::vector<Shape> shapesFitting(std::size_t components)
{
    std::vector<Shape> shapes;
    visitTypes<ValueTypes>(
        [&]<typename T>()
        {
            const Shape shape = shapeOfType<T>();
            if (sizeOf(shape) == components ||
                (components == symmetricTuple && std::is_same_v<T, Matrix3>))
                shapes.push_back(shape);
            return false;
        });
    return shapes;
}

std::optional<Shape> shapeOf(std::size_t components, const std::vector<std::string>& names)
{
    const std::vector<Shape> shapes = shapesFitting(components);
    if (shapes.empty())
        return std::nullopt;
    for (const Shape& shape : shapes)
        if (const auto expected = componentNamesOf(shape); !expected.empty() && expected == names)
            return shape;
    // Scalars come before vectors, and vectors before matrices.
    return shapes.front();
}

std::string shapeText(const Shape& shape)
{
    if (shape.empty())
        return "scalar";
    std::string text = std::to_string(shape.front());
    if (shape.size() == 2)
        text += "x" + std::to_string(shape.back());
    return text;
}

std::string valueTypeNameOf(const Shape& shape)
{
    std::string name;
    visitShape(shape, [&]<typename T>() { name = valueTypeName<T>(); });
    return name;
}

}
