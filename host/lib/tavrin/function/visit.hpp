#pragma once

#include <tavrin/function/Function.hpp>

#include <functional>

namespace tavrin
{

/// Calls `visitor(const T&)` with the object as the first class of `List` that it belongs to. Returns
/// whether there was one; the caller decides what it means if not.
template<typename List, typename Visitor>
bool visitObject(const DataObject& object, Visitor&& visitor)
{
    return visitTypes<List>(
        [&]<typename Class>()
        {
            const auto* const typed = dynamic_cast<const Class*>(&object);
            if (typed != nullptr)
                visitor(*typed);
            return typed != nullptr;
        });
}

/// Calls `visitor(const Function<T>&)` for the value type T of `List` that the function has.
/// Returns whether there was one.
template<typename List, typename Visitor>
bool visitFunction(const FunctionBase& function, Visitor&& visitor)
{
    return visitTypes<List>(
        [&]<typename T>()
        {
            const auto* const typed = dynamic_cast<const Function<T>*>(&function);
            if (typed != nullptr)
                visitor(*typed);
            return typed != nullptr;
        });
}

/// An input filter: accepts a function whose domain is of one of the classes of `List` and whose
/// values live on `part`; `Domain::any` accepts every part.
template<typename List>
std::function<bool(const DataObject&)> definedOn(const DomainPart& part)
{
    return [part](const DataObject& object)
    {
        const auto* const function = dynamic_cast<const FunctionBase*>(&object);
        return function != nullptr && (part == Domain::any || part == function->domainPart()) &&
               visitObject<List>(*function->domain(), [](const auto&) {});
    };
}

}
