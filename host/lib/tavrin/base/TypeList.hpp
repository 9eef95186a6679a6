#pragma once

#include <cstddef>
#include <type_traits>

namespace tavrin
{

/// A list of types, visited with `visitTypes` or given as a whole in a declaration.
template<typename... Types>
struct TypeList
{
    static constexpr std::size_t size = sizeof...(Types);
};

namespace detail
{

template<typename Visitor, typename... Types>
bool visitTypes(TypeList<Types...>, Visitor&& visitor)
{
    return (visitor.template operator()<Types>() || ...);
}

template<typename Type, typename... Types>
consteval bool contains(TypeList<Types...>)
{
    return (std::is_same_v<Type, Types> || ...);
}

}

/// Calls `visitor.operator()<T>()` for the types of `List` in order, until one call returns true.
/// Returns whether one did.
template<typename List, typename Visitor>
bool visitTypes(Visitor&& visitor)
{
    return detail::visitTypes(List{}, visitor);
}

template<typename T>
inline constexpr bool isTypeList = false;
template<typename... Types>
inline constexpr bool isTypeList<TypeList<Types...>> = true;

/// Whether `Type` is one of the types of `List`.
template<typename Type, typename List>
inline constexpr bool containsType = detail::contains<Type>(List{});

}
