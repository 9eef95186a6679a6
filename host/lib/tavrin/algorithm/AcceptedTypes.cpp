#include <tavrin/algorithm/AcceptedTypes.hpp>

namespace tavrin
{

AcceptedTypes::Object AcceptedTypes::take(const Object& object) const
{
    if (object == nullptr || mTypes.accepts(*object))
        return object;
    for (const Conversion convert : mConversions)
        if (Object converted = convert(*object))
            return converted;
    return nullptr;
}

}
