#pragma once

#include <tavrin/function/Function.hpp>

namespace tavrin
{

/// The mask of values that are computed from those of two functions with the same number of values:
/// real where both are. Null where all values of both are real.
inline std::shared_ptr<const ValidityMask> bothValid(const FunctionBase& a, const FunctionBase& b)
{
    if (a.validity() == nullptr || b.validity() == nullptr || a.validity() == b.validity())
        return a.validity() != nullptr ? a.validity() : b.validity();
    auto both = std::make_shared<ValidityMask>(a.validity()->size());
    std::ranges::transform(*a.validity(), *b.validity(), both->begin(),
                           [](std::uint8_t inA, std::uint8_t inB) -> std::uint8_t
                           { return inA != 0 && inB != 0 ? 1 : 0; });
    return both;
}

}
