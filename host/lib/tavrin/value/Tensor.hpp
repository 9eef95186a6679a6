#pragma once

#include <tavrin/base/Export.hpp>
#include <tavrin/base/TypeList.hpp>

#include <array>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <ostream>
#include <type_traits>

namespace tavrin
{

/// A value of fixed shape: a scalar (no extents), a vector (one) or a matrix (two).
///
/// Components lie in row-major (storage) order; component (i, j) of an n x n matrix is at i * n + j.
/// `Tensor t;` leaves the components undefined, `Tensor t{};` makes them zero.
template<typename Component, std::size_t... Extents>
class TAVRIN_API Tensor
{
public:
    using ComponentType = Component;

    static constexpr std::size_t rank = sizeof...(Extents);
    static constexpr std::size_t size = (std::size_t{1} * ... * Extents);

    /// The number of components along an axis below `rank`.
    static constexpr std::size_t extent(std::size_t axis)
        requires(rank > 0)
    {
        return std::array{Extents...}[axis];
    }

    constexpr Tensor() = default;

    /// All components, in storage order.
    template<std::convertible_to<Component>... Values>
        requires(sizeof...(Values) == size && size > 0)
    constexpr Tensor(Values... values) : mComponents{static_cast<Component>(values)...}
    {
    }

    constexpr Component& operator[](std::size_t i) { return mComponents[i]; }
    constexpr const Component& operator[](std::size_t i) const { return mComponents[i]; }

    /// Component (row, column) of a matrix.
    constexpr Component& operator()(std::size_t row, std::size_t column)
        requires(rank == 2)
    {
        return mComponents[row * extent(1) + column];
    }
    constexpr const Component& operator()(std::size_t row, std::size_t column) const
        requires(rank == 2)
    {
        return mComponents[row * extent(1) + column];
    }

    constexpr auto begin() { return mComponents.begin(); }
    constexpr auto end() { return mComponents.end(); }
    constexpr auto begin() const { return mComponents.begin(); }
    constexpr auto end() const { return mComponents.end(); }

    constexpr Tensor& operator+=(const Tensor& other)
    {
        for (std::size_t i = 0; i < size; ++i)
            mComponents[i] += other[i];
        return *this;
    }
    constexpr Tensor& operator-=(const Tensor& other)
    {
        for (std::size_t i = 0; i < size; ++i)
            mComponents[i] -= other[i];
        return *this;
    }
    constexpr Tensor& operator*=(Component factor)
    {
        for (Component& component : mComponents)
            component *= factor;
        return *this;
    }
    constexpr Tensor& operator/=(Component divisor)
    {
        for (Component& component : mComponents)
            component /= divisor;
        return *this;
    }

    friend constexpr Tensor operator+(Tensor a, const Tensor& b) { return a += b; }
    friend constexpr Tensor operator-(Tensor a, const Tensor& b) { return a -= b; }
    friend constexpr Tensor operator-(Tensor a)
    {
        for (Component& component : a)
            component = -component;
        return a;
    }
    friend constexpr Tensor operator*(Tensor a, Component factor) { return a *= factor; }
    friend constexpr Tensor operator*(Component factor, Tensor a) { return a *= factor; }
    friend constexpr Tensor operator/(Tensor a, Component divisor) { return a /= divisor; }

    constexpr bool operator==(const Tensor&) const = default;

private:
    std::array<Component, size> mComponents;
};

using Scalar = Tensor<double>;
using Vector1 = Tensor<double, 1>;
using Vector2 = Tensor<double, 2>;
using Vector3 = Tensor<double, 3>;
using Vector4 = Tensor<double, 4>;
using Matrix1 = Tensor<double, 1, 1>;
using Matrix2 = Tensor<double, 2, 2>;
using Matrix3 = Tensor<double, 3, 3>;
using Matrix4 = Tensor<double, 4, 4>;
using Vector242 = Tensor<double, 242>;
using Vector375 = Tensor<double, 375>;

/// The value types of fields, and of functions that are read and written. Functions in memory may have
/// values of other shapes.
using ValueTypes = TypeList<Scalar, Vector1, Vector2, Vector3, Vector4, Matrix1, Matrix2, Matrix3,
                            Matrix4, Vector242, Vector375>;

/// One of `ValueTypes`.
template<typename T>
concept Value = containsType<T, ValueTypes>;

template<typename Component, std::size_t... Extents>
constexpr Component dot(const Tensor<Component, Extents...>& a,
                        const Tensor<Component, Extents...>& b)
{
    Component sum{0};
    for (std::size_t i = 0; i < Tensor<Component, Extents...>::size; ++i)
        sum += a[i] * b[i];
    return sum;
}

template<typename Component>
constexpr Tensor<Component, 3> cross(const Tensor<Component, 3>& a, const Tensor<Component, 3>& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// The square root of the sum of the squares of all components, summed in storage order: the
/// absolute value of a scalar, the Euclidean length of a vector, the Frobenius norm of a matrix.
template<typename Component, std::size_t... Extents>
Component norm(const Tensor<Component, Extents...>& value)
{
    if constexpr (sizeof...(Extents) == 0)
        return std::abs(value[0]);
    else
        return std::sqrt(dot(value, value));
}

/// The value divided by its norm; a value with norm 0 is returned unchanged.
template<typename Component, std::size_t... Extents>
Tensor<Component, Extents...> normalized(const Tensor<Component, Extents...>& value)
{
    const Component length = norm(value);
    return length == Component{0} ? value : value / length;
}

/// The sum of the diagonal of a square matrix.
template<typename Component, std::size_t N>
constexpr Component trace(const Tensor<Component, N, N>& matrix)
{
    Component sum{0};
    for (std::size_t i = 0; i < N; ++i)
        sum += matrix(i, i);
    return sum;
}

/// The matrix product: r(i, j) = sum over k of a(i, k) b(k, j).
template<typename Component, std::size_t N>
constexpr Tensor<Component, N, N> multiply(const Tensor<Component, N, N>& a,
                                           const Tensor<Component, N, N>& b)
{
    Tensor<Component, N, N> result{};
    for (std::size_t i = 0; i < N; ++i)
        for (std::size_t k = 0; k < N; ++k)
            for (std::size_t j = 0; j < N; ++j)
                result(i, j) += a(i, k) * b(k, j);
    return result;
}

/// The matrix applied to a vector: r(i) = sum over k of a(i, k) b(k).
template<typename Component, std::size_t N>
constexpr Tensor<Component, N> multiply(const Tensor<Component, N, N>& a,
                                        const Tensor<Component, N>& b)
{
    Tensor<Component, N> result{};
    for (std::size_t i = 0; i < N; ++i)
        for (std::size_t k = 0; k < N; ++k)
            result[i] += a(i, k) * b[k];
    return result;
}

/// "[", the components in storage order separated by ", ", and "]"; matrices print flat.
template<typename Component, std::size_t... Extents>
std::ostream& operator<<(std::ostream& stream, const Tensor<Component, Extents...>& value)
{
    const char* separator = "[";
    for (const Component& component : value)
    {
        stream << separator << component;
        separator = ", ";
    }
    return stream << ']';
}

}
