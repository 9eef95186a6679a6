#pragma once

#include <tavrin/function/Function.hpp>
#include <tavrin/graphics/Drawable.hpp>

namespace tavrin::pipeline
{

/// The arrows or lines of a drawable as a grid of line segments, for use in other programs: the
/// functions "vector" (from the start of a segment to its end) and "color" (red, green, blue, alpha
/// in 0..1), with one value per segment, in the order of the arrows. Segments that are not finite are
/// left out, as they are in a picture. Throws `usage_error` for a drawable of another kind.
TAVRIN_API std::vector<std::shared_ptr<const FunctionBase>> arrowSegments(
    const graphics::Drawable& drawable);

}
