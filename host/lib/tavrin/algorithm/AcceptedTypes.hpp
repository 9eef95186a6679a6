#pragma once

#include <tavrin/base/DataObject.hpp>

#include <concepts>
#include <memory>

namespace tavrin
{

/// A class of data objects that an option may be declared for.
template<typename T>
concept DataClass = std::derived_from<T, DataObject> && StatesItsType<T>;

/// A data class that makes its own objects from others: a `Field` from functions, for example.
template<typename T>
concept MadeFromOthers = requires(const DataObject& object) {
    {
        T::applyTo(object)
    } -> std::convertible_to<std::shared_ptr<const T>>;
};

/// The classes of data object that an input accepts, and how an object is taken as one of them.
class TAVRIN_API AcceptedTypes
{
public:
    using Object = std::shared_ptr<const DataObject>;

    template<DataClass... Classes>
    static AcceptedTypes of()
    {
        AcceptedTypes accepted;
        accepted.mTypes = RTTICollection::of<Classes...>();
        (accepted.addConversion<Classes>(), ...);
        return accepted;
    }

    const RTTICollection& types() const { return mTypes; }

    /// The object itself where it is of one of the classes; otherwise what the first class that can
    /// makes of it; null where none can.
    Object take(const Object& object) const;

private:
    using Conversion = Object (*)(const DataObject&);

    template<typename Class>
    void addConversion()
    {
        if constexpr (MadeFromOthers<Class>)
            mConversions.push_back([](const DataObject& object) -> Object
                                   { return Class::applyTo(object); });
    }

    RTTICollection mTypes;
    std::vector<Conversion> mConversions;
};

}
