#include <tavrin/field/FieldBase.hpp>

namespace tavrin
{

const RTTI_TypeId& FieldBase::classTypeId()
{
    static const RTTI_TypeId id = newTypeId("FieldBase");
    return id;
}

bool FieldBase::isA(const RTTI_TypeId& id) const
{
    return id == classTypeId() || DataObject::isA(id);
}

}
