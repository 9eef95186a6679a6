#pragma once

#include <tavrin/colormap/ColorMap.hpp>
#include <tavrin/function/Function.hpp>

namespace tavrin
{

/// The range of the norms of a function's values at all time steps, for a color map to span. Norms
/// that are not finite and values that the function's mask marks as invalid do not count. Nothing
/// where no value counts, and for values of a type that has no norm. Throws what loading a step of
/// a series throws.
TAVRIN_API std::optional<ValueRange> finiteNormRange(const FunctionBase& function);

/// The same for the values that the function has at a time, interpolated between two steps; those of
/// the first step for a time that it does not have. Loads no other step.
TAVRIN_API std::optional<ValueRange> finiteNormRangeAt(const FunctionBase& function, double time);

}
