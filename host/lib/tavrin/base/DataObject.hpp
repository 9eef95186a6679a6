#pragma once

#include <tavrin/base/Rtti.hpp>

#include <memory>
#include <vector>

namespace tavrin
{

/// Base of everything that an option or an output carries. Data objects are immutable once
/// published and are passed as `std::shared_ptr<const DataObject>`.
class TAVRIN_API DataObject : public RTTI
{
public:
    static const TypeId<DataObject>& classTypeId() { return typeId<DataObject>("DataObject"); }
};

/// Several data objects handled as one, such as the fields of a multi-block file.
class TAVRIN_API DataObjectBundle : public DataObject
{
public:
    using Members = std::vector<std::shared_ptr<const DataObject>>;

    explicit DataObjectBundle(Members members) : mMembers(std::move(members)) {}

    /// The members in the order in which they were given; none is null.
    const Members& members() const { return mMembers; }

    static const TypeId<DataObjectBundle>& classTypeId()
    {
        return typeId<DataObjectBundle, DataObject>("DataObjectBundle", "bundle");
    }

private:
    Members mMembers;
};

}
