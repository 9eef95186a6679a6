#include <tavrin/value/WrappedValueArray.hpp>

#include <tavrin/base/Processors.hpp>

namespace tavrin
{

TAVRIN_FOR_SEVERAL_PROCESSORS void detail::convertToDouble(const float* source, std::size_t count,
                                                           double* target)
{
    for (std::size_t i = 0; i < count; ++i)
        target[i] = static_cast<double>(source[i]);
}

}
