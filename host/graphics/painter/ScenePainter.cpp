#include "ScenePainter.hpp"

#include "ArrowPainter.hpp"
#include "ColorBarLayout.hpp"
#include "OffscreenContext.hpp"
#include "PrimitivePainter.hpp"
#include "RenderTarget.hpp"
#include "SceneExtent.hpp"

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/graphics/GraphicsSystem.hpp>

#include <algorithm>

namespace tavrin::graphics::painter
{

namespace
{

/// Side of a tile in pixels. Larger pictures are drawn tile by tile, which bounds the memory for
/// their samples.
constexpr std::size_t largestTile = 2048;

/// The layout of the picture, and everything in it that does not need the graphics system.
struct Composition
{
    SceneExtent extent;
    Style style;
    Canvas canvas;
    std::optional<ColorBarLayout> colorBar;
    Annotation axes;
    std::optional<Camera> camera;

    Composition(const Scene& scene, const PictureOptions& options)
        : extent(scene, options.view),
          style(static_cast<double>(options.width), static_cast<double>(options.height),
                options.background),
          canvas(options.width, options.height, style)
    {
        const auto width = static_cast<double>(options.width);
        const auto height = static_cast<double>(options.height);
        const double margin = 0.03 * std::min(width, height);
        const Frame inner{margin, margin, width - 2.0 * margin, height - 2.0 * margin};
        Frame frame = inner;
        if (style.hasText && scene.colorBar && scene.colorBar->color)
        {
            colorBar.emplace(*scene.colorBar, inner, inner, canvas, style);
            frame.width = colorBar->left() - 1.5 * style.fontSize - frame.left;
        }
        aimAt(frame);
        if (extent.outline && style.hasText)
            fitAxes(frame);
        // Within its room, which is decided by now, the bar follows the scene.
        if (colorBar)
            colorBar.emplace(*scene.colorBar, inner, boundsOfScene(), canvas, style);
    }

private:
    void aimAt(const Frame& frame) { camera.emplace(extent.view, extent.extremes, frame); }

    /// The labels of the axes need room, and their positions depend on the camera.
    void fitAxes(const Frame& available)
    {
        constexpr int numAttempts = 6;
        Frame frame = available;
        for (int i = 0; i < numAttempts; ++i)
        {
            if (i > 0)
            {
                fill(available, frame);
                aimAt(frame);
            }
            axes = layOutAxes(*extent.outline, extent.extremes, extent.placement, *camera, canvas,
                              style);
        }
    }

    /// Moves the sides of the frame so that scene and labels together fill the available room.
    void fill(const Frame& available, Frame& frame) const
    {
        Frame taken = boundsOfScene();
        for (const Label& label : axes.labels)
            taken = united(taken, label.frame());
        // The scene keeps most of the room, even if labels are truncated.
        const double mostX = 0.3 * available.width;
        const double mostY = 0.3 * available.height;
        const auto moved = [](double side, double room, double occupied, double most)
        { return std::clamp(side + room - occupied, room - most, room + most); };
        const double left =
            std::max(moved(frame.left, available.left, taken.left, mostX), available.left);
        const double right = std::min(moved(frame.right(), available.right(), taken.right(), mostX),
                                      available.right());
        const double top =
            std::max(moved(frame.top, available.top, taken.top, mostY), available.top);
        const double bottom = std::min(
            moved(frame.bottom(), available.bottom(), taken.bottom(), mostY), available.bottom());
        frame = {left, top, right - left, bottom - top};
    }

    Frame boundsOfScene() const
    {
        const auto first = camera->project(extent.extremes.front());
        Frame bounds{first[0], first[1], 0.0, 0.0};
        for (const Position& extreme : extent.extremes)
        {
            const auto pixel = camera->project(extreme);
            bounds = united(bounds, {pixel[0], pixel[1], 0.0, 0.0});
        }
        return bounds;
    }

    static Frame united(const Frame& a, const Frame& b)
    {
        const double left = std::min(a.left, b.left);
        const double top = std::min(a.top, b.top);
        return {left, top, std::max(a.right(), b.right()) - left,
                std::max(a.bottom(), b.bottom()) - top};
    }
};

/// The edges of the domain's box in placed coordinates.
std::shared_ptr<Drawable> makeOutline(const Box& box, const Placement& placement,
                                      const Style& style)
{
    std::vector<Tensor<float, 3>> vertices;
    const auto corners = cornersOf(box.lower, box.upper);
    const std::size_t numCorners = std::size_t{1} << box.dimension;
    for (std::size_t axis = 0; axis < box.dimension; ++axis)
        for (std::size_t corner = 0; corner < numCorners; ++corner)
        {
            const std::size_t bit = std::size_t{1} << axis;
            if ((corner & bit) != 0)
                continue;
            for (const std::size_t end : {corner, corner | bit})
            {
                const Position placed = placement(corners[end]);
                vertices.emplace_back(placed[0], placed[1], placed[2]);
            }
        }
    // Paler than the ink, so that glyphs stand out.
    const auto mixed = [](float ink, float background) { return 0.6F * ink + 0.4F * background; };
    const Color color{mixed(style.ink.red, style.background.red),
                      mixed(style.ink.green, style.background.green),
                      mixed(style.ink.blue, style.background.blue), 1.0F};
    std::vector<Color> colors(vertices.size(), color);

    const std::string files = shaderFolder() + "line/noShading/multiColor/";
    PrimitiveConfig config(RenderPrimitives::Lines);
    config.vertexBuffer("in_vertex", GraphicsSystem::makeBuffer(std::move(vertices)))
        .vertexBuffer("in_color", GraphicsSystem::makeBuffer(std::move(colors), ColorChannel::RGBA))
        .uniform("u_lineWidth", static_cast<float>(style.lineWidth));
    return GraphicsSystem::makePrimitive(std::move(config),
                                         GraphicsSystem::makeProgram(files + "vertex.glsl",
                                                                     files + "fragment.glsl",
                                                                     files + "geometry.glsl"));
}

/// Draws the scene, tile by tile.
class TilePainter
{
public:
    TilePainter(const Scene& scene, const Composition& composition, WorkMeter& meter)
        : mScene(scene), mComposition(composition), mMeter(meter)
    {
        if (composition.extent.outline)
            mOutline = makeOutline(*composition.extent.outline, composition.extent.placement,
                                   composition.style);
    }

    std::vector<std::uint8_t> paint(const Frame& tile)
    {
        const SceneExtent& extent = mComposition.extent;
        RenderTarget target(static_cast<GLsizei>(tile.width), static_cast<GLsizei>(tile.height),
                            extent.hasTransparent);
        target.beginOpaque(mComposition.style.background);
        if (mOutline)
        {
            // The edges lie slightly behind glyphs on a side of the box.
            glEnable(GL_POLYGON_OFFSET_FILL);
            glPolygonOffset(1.0F, 256.0F);
            draw(*mOutline, Placement{}, target, tile, Pass::OnlyOpaque);
            glDisable(GL_POLYGON_OFFSET_FILL);
        }
        drawScene(target, tile, Pass::OnlyOpaque);
        if (extent.hasTransparent)
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
                draw(*drawable, mComposition.extent.placement, target, tile, pass);
    }

    void draw(const Drawable& drawable, const Placement& placement, RenderTarget& target,
              const Frame& tile, Pass pass)
    {
        const Camera& camera = *mComposition.camera;
        if (const auto* const batch = dynamic_cast<const ArrowBatch*>(&drawable))
            mArrowPainter.paint(*batch, placement, camera, target, tile, pass, mMeter);
        else if (const auto* const primitive = dynamic_cast<const Primitive*>(&drawable))
        {
            const bool isOpaque = primitive->config().renderBin() == RenderBin::Opaque;
            if (isOpaque && pass == Pass::OnlyTransparent)
            {
                mMeter.advance(primitive->numVertices());
                return;
            }
            mPrimitivePainter.paint(*primitive, placement, camera, tile,
                                    isOpaque ? Pass::Everything : pass, mMeter);
        }
    }

    const Scene& mScene;
    const Composition& mComposition;
    WorkMeter& mMeter;
    std::shared_ptr<Drawable> mOutline;
    ArrowPainter mArrowPainter;
    PrimitivePainter mPrimitivePainter;
};

/// The tiles of a picture, row by row.
std::vector<Frame> tilesOf(const PictureOptions& options)
{
    std::vector<Frame> tiles;
    for (std::size_t top = 0; top < options.height; top += largestTile)
        for (std::size_t left = 0; left < options.width; left += largestTile)
            tiles.push_back({static_cast<double>(left), static_cast<double>(top),
                             static_cast<double>(std::min(largestTile, options.width - left)),
                             static_cast<double>(std::min(largestTile, options.height - top))});
    return tiles;
}

}

Image paint(const Scene& scene, const PictureOptions& options, WorkMeter& meter)
{
    Composition composition(scene, options);
    const auto tiles = tilesOf(options);
    meter.setNumPasses(tiles.size() * (composition.extent.hasTransparent ? 2 : 1));
    {
        const OffscreenContext context;
        TilePainter painter(scene, composition, meter);
        for (const Frame& tile : tiles)
            composition.canvas.setTile(tile, painter.paint(tile));
    }
    for (const Stroke& stroke : composition.axes.strokes)
        composition.canvas.draw(stroke);
    for (const Label& label : composition.axes.labels)
        composition.canvas.draw(label);
    if (composition.colorBar)
        composition.colorBar->draw(composition.canvas);
    return composition.canvas.image();
}

}
