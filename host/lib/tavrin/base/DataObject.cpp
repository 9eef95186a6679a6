#include <tavrin/base/DataObject.hpp>

namespace tavrin
{

const RTTI_TypeId& DataObject::classTypeId()
{
    static const RTTI_TypeId id = newTypeId("DataObject");
    return id;
}

bool DataObject::isA(const RTTI_TypeId& id) const
{
    return id == classTypeId();
}

const RTTI_TypeId& DataObjectBundle::classTypeId()
{
    static const RTTI_TypeId id = newTypeId("DataObjectBundle");
    return id;
}

bool DataObjectBundle::isA(const RTTI_TypeId& id) const
{
    return id == classTypeId() || DataObject::isA(id);
}

}
