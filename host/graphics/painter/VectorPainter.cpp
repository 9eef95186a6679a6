#include "VectorPainter.hpp"

#include "GlyphOrder.hpp"
#include "Rim.hpp"

#include <cmath>

namespace tavrin::graphics::painter
{

namespace
{

using Pixel = Canvas::Pixel;

Color dimmed(const Color& color, float brightness)
{
    return {color.red * brightness, color.green * brightness, color.blue * brightness, color.alpha};
}

class VectorPainter
{
public:
    VectorPainter(const Scene& scene, const PictureLayout& layout, Canvas& canvas)
        : mScene(scene), mLayout(layout), mStyle(layout.style()), mCanvas(canvas),
          mProjector(layout)
    {
    }

    void paint(WorkMeter& meter)
    {
        const auto glyphs = glyphsFarToNear(mScene, mLayout);
        double area = 0.0;
        for (const GlyphPlace& glyph : glyphs)
            visitFlat(glyph,
                      [&](const auto& corners, const Color& color)
                      {
                          drawOuterRim(corners, color);
                          area += areaOf(corners);
                      });
        mHasInnerRims = area <= mostCoverWithInnerRims *
                                    static_cast<double>(mLayout.width() * mLayout.height());
        for (const GlyphPlace& glyph : glyphs)
        {
            const bool isFlat = visitFlat(glyph, [&](const auto& corners, const Color& color)
                                          { draw(corners, color); });
            if (!isFlat)
                drawTube(*arrowAt(glyph));
            meter.advance(arrowAt(glyph) != nullptr ? 1 : 2);
        }
    }

private:
    /// Null for a segment.
    const ArrowGlyph* arrowAt(const GlyphPlace& glyph) const
    {
        const auto* const batch =
            dynamic_cast<const ArrowBatch*>(mScene.drawables[glyph.drawable].get());
        return batch == nullptr ? nullptr : &batch->arrows()[glyph.index];
    }

    /// Calls `visit(corners, color)` for a flat arrow or a segment; returns false for a tube.
    template<typename Visit>
    bool visitFlat(const GlyphPlace& glyph, const Visit& visit) const
    {
        const ArrowGlyph* const arrow = arrowAt(glyph);
        if (arrow == nullptr)
        {
            const auto& primitive =
                dynamic_cast<const Primitive&>(*mScene.drawables[glyph.drawable]);
            const Segment segment = segmentAt(primitive, glyph.index, mLayout);
            visit(mProjector.segment(segment), segment.color);
        }
        else if (!arrow->tube)
            visit(mProjector.flat(*arrow), arrow->color);
        return arrow == nullptr || !arrow->tube;
    }

    Rim rimOf(std::span<const Pixel> corners, const Color& color) const
    {
        const Pixel& first = corners.front();
        const Pixel& last = corners.back();
        return rimFor(color, std::hypot(first[0] - last[0], first[1] - last[1]), mStyle);
    }

    void drawOuterRim(std::span<const Pixel> corners, const Color& color)
    {
        const Rim rim = rimOf(corners, color);
        if (rim.outerWidth > 0.0)
            mCanvas.outlinePolygon(corners, rim.outerColor, 2.0 * rim.outerWidth);
    }

    void draw(std::span<const Pixel> corners, const Color& color)
    {
        // The fill covers the inner half of the line.
        const Rim rim = rimOf(corners, color);
        if (mHasInnerRims)
            mCanvas.outlinePolygon(corners, rim.innerColor, 2.0 * rim.innerWidth);
        mCanvas.fillPolygon(corners, color);
    }

    void drawTube(const ArrowGlyph& arrow)
    {
        // A dark line separates tubes that overlap.
        constexpr float rimBrightness = 0.55F;
        const Color color = tubeColorFor(arrow.color, mStyle);
        const Color rim = dimmed(color, rimBrightness);
        for (const auto& part : mProjector.tube(arrow))
        {
            mCanvas.outlinePolygon(part.corners, rim, 0.8 * mStyle.unit);
            mCanvas.fillPolygon(part.corners, dimmed(color, part.brightness));
        }
    }

    const Scene& mScene;
    const PictureLayout& mLayout;
    const Style& mStyle;
    Canvas& mCanvas;
    GlyphProjector mProjector;
    bool mHasInnerRims = true;
};

}

void paintVectors(const Scene& scene, const PictureLayout& layout, Canvas& canvas, WorkMeter& meter)
{
    VectorPainter(scene, layout, canvas).paint(meter);
}

}
