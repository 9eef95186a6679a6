#include "FlatPainter.hpp"

#include "GlyphOrder.hpp"
#include "Program.hpp"
#include "Rim.hpp"
#include "SampleBand.hpp"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <new>

namespace tavrin::graphics::painter
{

namespace
{

using Pixel = SampleBand::Pixel;
using Bytes = std::array<std::uint8_t, 3>;

/// Rows of pixels that one thread draws together.
constexpr std::size_t rowsPerBand = 32;

/// The farthest that a corner of a rim is away from the glyph, in units of the rim's width.
constexpr float longestMiter = 3.0F;
/// Narrower rims cannot be seen; in pixels.
constexpr float leastRim = 0.1F;

double distance(const Canvas::Pixel& a, const Canvas::Pixel& b)
{
    return std::hypot(a[0] - b[0], a[1] - b[1]);
}

/// An arrow or a segment in the picture.
struct FlatGlyph
{
    std::array<Pixel, 7> corners;
    std::uint8_t numCorners;
    Bytes fill;
    Bytes innerRim;
    Bytes outerRim;
    float innerWidth;
    float outerWidth;
    float top;
    float bottom;

    template<std::size_t N>
    FlatGlyph(const std::array<Canvas::Pixel, N>& outline, const Color& color, const Style& style)
        : corners{}, numCorners(N)
    {
        const auto bytesOf = [](const Color& from)
        {
            const auto byte = [](float part) {
                return static_cast<std::uint8_t>(
                    std::lround(std::clamp(part, 0.0F, 1.0F) * 255.0F));
            };
            return Bytes{byte(from.red), byte(from.green), byte(from.blue)};
        };
        std::ranges::transform(
            outline, corners.begin(),
            [](const Canvas::Pixel& corner) {
                return Pixel{static_cast<float>(corner[0]), static_cast<float>(corner[1])};
            });
        const Rim rim = rimFor(color, distance(outline.front(), outline.back()), style);
        fill = bytesOf(color);
        innerRim = bytesOf(rim.innerColor);
        outerRim = bytesOf(rim.outerColor);
        innerWidth = static_cast<float>(rim.innerWidth);
        outerWidth = static_cast<float>(rim.outerWidth);
        const auto [highest, lowest] = std::ranges::minmax(std::span(corners).first(N), {},
                                                           [](const Pixel& p) { return p[1]; });
        const float beyond = longestMiter * std::max(innerWidth, outerWidth);
        top = highest[1] - beyond;
        bottom = lowest[1] + beyond;
    }
};

std::vector<FlatGlyph> glyphsNearToFar(const Scene& scene, const PictureLayout& layout)
{
    const GlyphProjector projector(layout);
    const std::vector<GlyphPlace> places = glyphsFarToNear(scene, layout);
    std::vector<FlatGlyph> glyphs;
    glyphs.reserve(places.size());
    double area = 0.0;
    const auto add = [&](const auto& outline, const Color& color)
    {
        glyphs.emplace_back(outline, color, layout.style());
        area += areaOf(outline);
    };
    for (auto place = places.rbegin(); place != places.rend(); ++place)
    {
        const Drawable& drawable = *scene.drawables[place->drawable];
        if (const auto* const batch = dynamic_cast<const ArrowBatch*>(&drawable))
        {
            const ArrowGlyph& arrow = batch->arrows()[place->index];
            add(projector.flat(arrow), arrow.color);
        }
        else if (const auto* const primitive = dynamic_cast<const Primitive*>(&drawable))
        {
            const Segment segment = segmentAt(*primitive, place->index, layout);
            add(projector.segment(segment), segment.color);
        }
    }
    const auto most =
        mostCoverWithInnerRims * static_cast<double>(layout.width() * layout.height());
    if (area > most)
        for (FlatGlyph& glyph : glyphs)
            glyph.innerWidth = 0.0F;
    return glyphs;
}

/// A convex polygon whose edges are moved outward by a width, and whose corners by at most
/// `longestMiter` times as much.
template<std::size_t N>
std::array<Pixel, N> widened(const std::array<Pixel, N>& corners, float width)
{
    std::array<Pixel, N> normals;
    float area = 0.0F;
    for (std::size_t i = 0; i < N; ++i)
    {
        const Pixel& a = corners[i];
        const Pixel& b = corners[(i + 1) % N];
        area += a[0] * b[1] - a[1] * b[0];
        const float length = std::max(std::hypot(b[0] - a[0], b[1] - a[1]), 1e-6F);
        normals[i] = {(b[1] - a[1]) / length, (a[0] - b[0]) / length};
    }
    const float outward = area > 0.0F ? width : -width;
    std::array<Pixel, N> result = corners;
    for (std::size_t i = 0; i < N; ++i)
    {
        const Pixel& before = normals[(i + N - 1) % N];
        const Pixel& after = normals[i];
        // The sum of two unit vectors, divided by 1 + their product, has a projection of 1 on both.
        const float product = before[0] * after[0] + before[1] * after[1];
        const float shortest = 2.0F / (longestMiter * longestMiter);
        const float factor = outward / std::max(1.0F + product, shortest);
        for (std::size_t k = 0; k < 2; ++k)
            result[i][k] += factor * (before[k] + after[k]);
    }
    return result;
}

/// Calls `visit` with the convex parts of a glyph.
template<typename Visit>
void visitParts(const FlatGlyph& glyph, const Visit& visit)
{
    const auto& corners = glyph.corners;
    if (glyph.numCorners == 4)
    {
        visit(std::array{corners[0], corners[1], corners[2], corners[3]});
        return;
    }
    // The shaft and the head of an arrow; see `ArrowMesh::flatOutline`.
    visit(std::array{corners[0], corners[1], corners[5], corners[6]});
    visit(std::array{corners[2], corners[3], corners[4]});
}

void draw(const FlatGlyph& glyph, SampleBand& band)
{
    visitParts(glyph, [&](const auto& part) { band.fillConvex(part, glyph.fill); });
    if (glyph.innerWidth > leastRim)
        visitParts(glyph, [&](const auto& part)
                   { band.fillConvex(widened(part, glyph.innerWidth), glyph.innerRim); });
}

void drawOuterRim(const FlatGlyph& glyph, SampleBand& band)
{
    if (glyph.outerWidth > leastRim)
        visitParts(glyph, [&](const auto& part)
                   { band.fillConvex(widened(part, glyph.outerWidth), glyph.outerRim); });
}

void drawAll(const std::vector<FlatGlyph>& glyphs, SampleBand& band)
{
    const auto top = static_cast<float>(band.top());
    const auto bottom = static_cast<float>(band.top() + band.numRows());
    for (void (*const drawOne)(const FlatGlyph&, SampleBand&) : {&draw, &drawOuterRim})
        for (const FlatGlyph& glyph : glyphs)
            if (glyph.bottom >= top && glyph.top <= bottom)
                drawOne(glyph, band);
}

bool isOpaque(const Color& color)
{
    // Not a number counts as 0.
    return color.alpha >= 1.0F || !(color.alpha > 0.0F);
}

bool isFlat(const Drawable& drawable)
{
    if (const auto* const batch = dynamic_cast<const ArrowBatch*>(&drawable))
        return std::ranges::all_of(batch->arrows(), [](const ArrowGlyph& arrow)
                                   { return !arrow.tube && isOpaque(arrow.color); });
    const auto* const primitive = dynamic_cast<const Primitive*>(&drawable);
    // Other programs may draw something else.
    return primitive != nullptr && primitive->config().renderBin() == RenderBin::Opaque &&
           isLineProgram(primitive->program()) && hasSegments(*primitive);
}

}

bool isFlat(const Scene& scene)
{
    return std::ranges::all_of(scene.drawables, [](const auto& drawable)
                               { return drawable == nullptr || isFlat(*drawable); });
}

void paintFlat(const Scene& scene, const PictureLayout& layout, Canvas& canvas, WorkMeter& meter)
{
    const std::vector<FlatGlyph> glyphs = glyphsNearToFar(scene, layout);
    const std::size_t width = layout.width();
    const std::size_t height = layout.height();
    const std::size_t numBands = (height + rowsPerBand - 1) / rowsPerBand;
    meter.setNumPasses(numBands);
    std::vector<std::uint8_t> pixels(width * height * 4);
    // No exception may leave the parallel loop.
    std::atomic<bool> isOutOfMemory = false;
#pragma omp parallel for schedule(dynamic)
    for (std::size_t i = 0; i < numBands; ++i)
    {
        const std::size_t top = i * rowsPerBand;
        try
        {
            SampleBand band(width, top, std::min(rowsPerBand, height - top));
            drawAll(glyphs, band);
            band.resolve(pixels.data() + top * width * 4);
        }
        catch (const std::bad_alloc&)
        {
            isOutOfMemory = true;
        }
        meter.advancePass();
    }
    if (isOutOfMemory)
        throw std::bad_alloc();
    canvas.drawPixels({0.0, 0.0, static_cast<double>(width), static_cast<double>(height)}, pixels);
}

}
