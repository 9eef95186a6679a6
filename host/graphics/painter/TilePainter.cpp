#include "TilePainter.hpp"

#include "ArrowPainter.hpp"
#include "OffscreenContext.hpp"
#include "PrimitivePainter.hpp"
#include "RenderTarget.hpp"

#include <algorithm>

namespace tavrin::graphics::painter
{

namespace
{

/// Side of a tile in pixels. Larger pictures are drawn tile by tile, which bounds the memory for
/// their samples.
constexpr std::size_t largestTile = 2048;

/// Paints the drawables of a scene into one tile after the other.
class TilePainter
{
public:
    TilePainter(const Scene& scene, const PictureLayout& layout, WorkMeter& meter)
        : mScene(scene), mLayout(layout), mMeter(meter)
    {
    }

    /// As `Canvas::drawPixels` takes them, on a transparent background.
    std::vector<std::uint8_t> paint(const Frame& tile)
    {
        const bool hasTransparent = mLayout.extent().hasTransparent;
        RenderTarget target(static_cast<GLsizei>(tile.width), static_cast<GLsizei>(tile.height),
                            hasTransparent);
        target.beginOpaque();
        drawScene(target, tile, Pass::OnlyOpaque);
        if (hasTransparent)
        {
            target.beginTransparent();
            drawScene(target, tile, Pass::OnlyTransparent);
        }
        return target.finish();
    }

private:
    void drawScene(RenderTarget& target, const Frame& tile, Pass pass)
    {
        for (const auto& drawable : mScene.drawables)
            if (drawable != nullptr)
                draw(*drawable, target, tile, pass);
    }

    void draw(const Drawable& drawable, RenderTarget& target, const Frame& tile, Pass pass)
    {
        if (const auto* const batch = dynamic_cast<const ArrowBatch*>(&drawable))
            mArrowPainter.paint(*batch, mLayout, target, tile, pass, mMeter);
        else if (const auto* const primitive = dynamic_cast<const Primitive*>(&drawable))
        {
            const bool isOpaque = primitive->config().renderBin() == RenderBin::Opaque;
            if (isOpaque && pass == Pass::OnlyTransparent)
            {
                mMeter.advance(primitive->numVertices());
                return;
            }
            mPrimitivePainter.paint(*primitive, mLayout, tile, isOpaque ? Pass::Everything : pass,
                                    mMeter);
        }
    }

    const Scene& mScene;
    const PictureLayout& mLayout;
    WorkMeter& mMeter;
    ArrowPainter mArrowPainter;
    PrimitivePainter mPrimitivePainter;
};

/// The tiles of a picture, row by row.
std::vector<Frame> tilesOf(std::size_t width, std::size_t height)
{
    std::vector<Frame> tiles;
    for (std::size_t top = 0; top < height; top += largestTile)
        for (std::size_t left = 0; left < width; left += largestTile)
            tiles.push_back({static_cast<double>(left), static_cast<double>(top),
                             static_cast<double>(std::min(largestTile, width - left)),
                             static_cast<double>(std::min(largestTile, height - top))});
    return tiles;
}

}

void paintTiles(const Scene& scene, const PictureLayout& layout, Canvas& canvas, WorkMeter& meter)
{
    const auto tiles = tilesOf(layout.width(), layout.height());
    meter.setNumPasses(tiles.size() * (layout.extent().hasTransparent ? 2 : 1));
    const OffscreenContext context;
    TilePainter painter(scene, layout, meter);
    for (const Frame& tile : tiles)
        canvas.drawPixels(tile, painter.paint(tile));
}

}
