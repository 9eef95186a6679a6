#pragma once

#include <tavrin/base/Export.hpp>

#include <concepts>
#include <string>
#include <type_traits>
#include <typeindex>
#include <typeinfo>
#include <utility>
#include <vector>

namespace tavrin
{

class RTTI;

/// The identity of a class at run time, for code that does not know the class when it is compiled.
/// Ids of one class are equal, wherever they were made.
class TAVRIN_API RTTI_TypeId
{
public:
    /// The class's name. Instances of one template may share it.
    const std::string& name() const { return mName; }

    /// What a person calls an object of the class, without an article: "2-D grid or point set".
    const std::string& description() const { return mDescription; }

    /// Whether the object is of this class or of one derived from it.
    bool matches(const RTTI& object) const { return mMatches(object); }

    /// Whether every object of this class is one of `base` as well; true for a class and itself.
    bool isDerivedFrom(const RTTI_TypeId& base) const;

    bool operator==(const RTTI_TypeId& other) const { return mIndex == other.mIndex; }

protected:
    friend class RTTI;
    using Match = bool (*)(const RTTI&);

    RTTI_TypeId(std::type_index index, Match match, std::vector<RTTI_TypeId> bases,
                std::string name, std::string description);

private:
    std::type_index mIndex;
    Match mMatches;
    std::vector<RTTI_TypeId> mBases;
    std::string mName;
    std::string mDescription;
};

/// The id of `Class`, in a type that tells the compiler which class it is of.
template<typename Class>
class TypeId : public RTTI_TypeId
{
private:
    friend class RTTI;
    using RTTI_TypeId::RTTI_TypeId;
};

/// A class that states its own type, instead of inheriting the statement of a base.
template<typename Class>
concept StatesItsType = std::same_as<decltype(Class::classTypeId()), const TypeId<Class>&>;

/// Base of all classes whose objects know at run time what they are.
///
/// A class states its type in one line, with its name and the direct bases that state theirs:
///
///     static const TypeId<Mesh>& classTypeId() { return typeId<Mesh, Domain>("Mesh"); }
///
/// Using a class that does not where a type is wanted, as in `Options::add`, does not compile. The
/// language's dynamic casts decide what an object is, so that they and `isA` always agree.
class TAVRIN_API RTTI
{
public:
    virtual ~RTTI() = default;

    /// Whether the object is of the class with this id, or of one derived from it.
    bool isA(const RTTI_TypeId& id) const { return id.matches(*this); }

    /// Makes an id. Where the class has no better description, its name is the description.
    template<typename Class, typename... Bases>
    static TypeId<Class> newTypeId(const std::string& name, const std::string& description = {})
    {
        static_assert((std::is_base_of_v<Bases, Class> && ...));
        return TypeId<Class>(
            typeid(Class),
            [](const RTTI& object) { return dynamic_cast<const Class*>(&object) != nullptr; },
            std::vector<RTTI_TypeId>{Bases::classTypeId()...}, name,
            description.empty() ? name : description);
    }

protected:
    RTTI() = default;
    RTTI(const RTTI&) = default;
    RTTI& operator=(const RTTI&) = default;

    /// The id of a class, made on the first call.
    template<typename Class, typename... Bases>
    static const TypeId<Class>& typeId(const std::string& name, const std::string& description = {})
    {
        static const TypeId<Class> id = newTypeId<Class, Bases...>(name, description);
        return id;
    }
};

/// The classes that an input or an output port accepts.
class TAVRIN_API RTTICollection
{
public:
    template<StatesItsType... Classes>
    static RTTICollection of()
    {
        RTTICollection collection;
        (collection.mIds.push_back(Classes::classTypeId()), ...);
        return collection;
    }

    const std::vector<RTTI_TypeId>& ids() const { return mIds; }

    /// What a person calls objects of each class.
    std::vector<std::string> descriptions() const;

    /// Whether the object is of one of the classes.
    bool accepts(const RTTI& object) const;

private:
    std::vector<RTTI_TypeId> mIds;
};

}
