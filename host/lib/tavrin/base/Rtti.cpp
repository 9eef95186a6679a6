#include <tavrin/base/Rtti.hpp>

#include <algorithm>
#include <atomic>

namespace tavrin
{

RTTI_TypeId RTTI::newTypeId(const std::string& name)
{
    static std::atomic<unsigned> count{0};
    return {++count, name};
}

bool RTTICollection::accepts(const RTTI& object) const
{
    return std::ranges::any_of(mIds, [&](const RTTI_TypeId& id) { return object.isA(id); });
}

}
