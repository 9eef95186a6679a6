#include "GlyphOrder.hpp"

#include <algorithm>
#include <cmath>

namespace tavrin::graphics::painter
{

namespace
{

bool isFinite(const Position& position)
{
    return std::ranges::all_of(position, [](double part) { return std::isfinite(part); });
}

/// Calls the visitor with start, end and index of each visible glyph, in placed coordinates.
template<typename Visitor>
void visitGlyphs(const Drawable& drawable, const PictureLayout& layout, Visitor visitor)
{
    if (const auto* const batch = dynamic_cast<const ArrowBatch*>(&drawable))
    {
        const Placement& placement = layout.extent().placement;
        for (std::size_t i = 0; i < batch->arrows().size(); ++i)
        {
            const ArrowGlyph& arrow = batch->arrows()[i];
            if (std::isfinite(arrow.width) && arrow.color.alpha > 0.0F)
                visitor(placement(arrow.start), placement(arrow.start + arrow.direction), i);
        }
    }
    else if (const auto* const primitive = dynamic_cast<const Primitive*>(&drawable);
             primitive != nullptr && hasSegments(*primitive))
        for (std::size_t i = 0; i < primitive->numVertices() / 2; ++i)
        {
            const Segment segment = segmentAt(*primitive, i, layout);
            if (segment.color.alpha > 0.0F)
                visitor(segment.start, segment.end, i);
        }
}

}

std::vector<GlyphPlace> glyphsFarToNear(const Scene& scene, const PictureLayout& layout)
{
    // In a flat field, distances differ by rounding only.
    constexpr double sameDistance = 1e-6;
    std::vector<GlyphPlace> glyphs;
    for (std::size_t k = 0; k < scene.drawables.size(); ++k)
        if (scene.drawables[k] != nullptr)
            visitGlyphs(*scene.drawables[k], layout,
                        [&](const Position& start, const Position& end, std::size_t index)
                        {
                            if (!isFinite(start) || !isFinite(end))
                                return;
                            const double distance =
                                layout.camera().distance(0.5 * start + 0.5 * end);
                            glyphs.push_back(
                                {static_cast<float>(std::round(distance / sameDistance)),
                                 static_cast<float>(norm(end - start)),
                                 static_cast<std::uint32_t>(k), static_cast<std::uint32_t>(index)});
                        });
    std::ranges::stable_sort(glyphs, std::ranges::greater{},
                             [](const GlyphPlace& glyph)
                             { return std::pair(glyph.distance, glyph.length); });
    return glyphs;
}

bool hasSegments(const Primitive& primitive)
{
    const VertexBuffer* const positions = primitive.findBuffer("in_vertex");
    const VertexBuffer* const colors = primitive.findBuffer("in_color");
    return positions != nullptr && positions->numComponents() == 3 && colors != nullptr &&
           colors->numComponents() == 4;
}

Segment segmentAt(const Primitive& primitive, std::size_t index, const PictureLayout& layout)
{
    float width = 1.0F;
    for (const auto& [name, value] : primitive.config().uniforms())
        if (name == "u_lineWidth")
            width = value;
    const auto placed = [&](std::size_t vertex)
    {
        const auto parts = primitive.findBuffer("in_vertex")->values().subspan(3 * vertex, 3);
        return layout.extent().placement(Position(parts[0], parts[1], parts[2]));
    };
    const auto color = primitive.findBuffer("in_color")->values().subspan(8 * index, 4);
    return {.start = placed(2 * index),
            .end = placed(2 * index + 1),
            .width = std::max(width * layout.style().unit, 1.0),
            .color = {color[0], color[1], color[2], color[3]}};
}

std::size_t numGlyphs(const Scene& scene)
{
    std::size_t count = 0;
    for (const auto& drawable : scene.drawables)
        if (const auto* const batch = dynamic_cast<const ArrowBatch*>(drawable.get()))
            count += batch->arrows().size();
        else if (const auto* const primitive = dynamic_cast<const Primitive*>(drawable.get()))
            count += primitive->numVertices() / 2;
    return count;
}

}
