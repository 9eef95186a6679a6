#pragma once

#include <tavrin/base/Export.hpp>

#include <string>
#include <utility>
#include <vector>

namespace tavrin
{

/// The identity of a class at run time. Two ids are equal when they come from one `newTypeId` call.
class TAVRIN_API RTTI_TypeId
{
public:
    /// The class's name for messages; classes made from one template may share it.
    const std::string& name() const { return mName; }

    bool operator==(const RTTI_TypeId& other) const { return mNumber == other.mNumber; }

private:
    friend class RTTI;
    RTTI_TypeId(unsigned number, std::string name) : mNumber(number), mName(std::move(name)) {}

    unsigned mNumber;
    std::string mName;
};

/// Base of all classes that answer "is this object a ...?" by type id.
///
/// A class takes part by offering a static `classTypeId()`, which makes its id on first use, and by
/// overriding `isA` to accept its own id and those of its bases.
class TAVRIN_API RTTI
{
public:
    virtual ~RTTI() = default;

    /// Whether the object is of the class with this id, or of one derived from it.
    virtual bool isA(const RTTI_TypeId& id) const = 0;

    /// A new id, different from all others.
    static RTTI_TypeId newTypeId(const std::string& name);

protected:
    RTTI() = default;
    RTTI(const RTTI&) = default;
    RTTI& operator=(const RTTI&) = default;
};

/// The classes that an input or an output port accepts.
class TAVRIN_API RTTICollection
{
public:
    template<typename... Classes>
    static RTTICollection of()
    {
        RTTICollection collection;
        (collection.mIds.push_back(Classes::classTypeId()), ...);
        (collection.mDescriptions.push_back(describe<Classes>()), ...);
        return collection;
    }

    const std::vector<RTTI_TypeId>& ids() const { return mIds; }

    /// What a person calls objects of each class: what its static `typeDescription()` says, where
    /// there is one, and else its name.
    const std::vector<std::string>& descriptions() const { return mDescriptions; }

    /// Whether the object is of one of the classes.
    bool accepts(const RTTI& object) const;

private:
    template<typename Class>
    static std::string describe()
    {
        if constexpr (requires { Class::typeDescription(); })
            return Class::typeDescription();
        else
            return Class::classTypeId().name();
    }

    std::vector<RTTI_TypeId> mIds;
    std::vector<std::string> mDescriptions;
};

}
