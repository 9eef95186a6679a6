#include <tavrin/value/Precision.hpp>

#include <array>

namespace tavrin
{

std::string_view nameOf(Precision precision)
{
    constexpr std::array<std::string_view, 10> names{"int8",    "int16",  "int32",  "int64",
                                                     "uint8",   "uint16", "uint32", "uint64",
                                                     "float32", "float64"};
    return names.at(static_cast<std::size_t>(precision));
}

}
