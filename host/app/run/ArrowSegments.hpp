#pragma once

#include <tavrin/function/Function.hpp>
#include <tavrin/graphics/Drawable.hpp>

namespace tavrin::app
{

/// The arrows or lines of a drawable as a grid of line segments, for use in other programs: the
/// functions "vector" (from the start of a segment to its end) and "color" (red, green, blue, alpha
/// in 0..1), with one value per segment, in the order of the arrows. What is not finite is left out,
/// as it is in a picture. Throws `usage_error` for a drawable that has no segments by its kind.
std::vector<std::shared_ptr<const FunctionBase>> arrowSegments(const graphics::Drawable& drawable);

}
