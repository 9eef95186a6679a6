#pragma once

#include "GlyphProjector.hpp"

#include <cstdint>

namespace tavrin::graphics::painter
{

/// An arrow or a segment of a scene, and what decides about the order of drawing.
struct GlyphPlace
{
    /// Of the middle from the eye, and the length, both in placed units.
    float distance;
    float length;
    /// The drawable, and the arrow or segment in it.
    std::uint32_t drawable;
    std::uint32_t index;
};

/// The glyphs of a scene, from the farthest to the nearest; of glyphs that are equally far away, the
/// shorter ones come later, so that they are not hidden. Leaves out glyphs that are not finite or
/// fully transparent, and primitives that are no segments.
std::vector<GlyphPlace> glyphsFarToNear(const Scene& scene, const PictureLayout& layout);

/// Whether a primitive consists of segments with positions and colors.
bool hasSegments(const Primitive& primitive);

/// A segment of such a primitive.
Segment segmentAt(const Primitive& primitive, std::size_t index, const PictureLayout& layout);

/// The number of arrows and segments of a scene.
std::size_t numGlyphs(const Scene& scene);

}
