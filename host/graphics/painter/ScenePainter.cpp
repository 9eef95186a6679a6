#include "ScenePainter.hpp"

#include "FlatPainter.hpp"
#include "GlyphOrder.hpp"
#include "PngEncoder.hpp"
#include "TilePainter.hpp"
#include "VectorPainter.hpp"

#include <omp.h>

#include <latch>
#include <thread>

namespace tavrin::graphics::painter
{

namespace
{

/// The most glyphs that a scalable picture holds as vectors; viewers take long to show more.
constexpr std::size_t mostVectorGlyphs = 10'000;

/// The given number of threads if they can be started now, otherwise 1. OpenMP would end the process
/// where it cannot start a thread.
int startable(int numThreads)
{
    std::latch end(1);
    std::vector<std::jthread> threads;
    int result = numThreads;
    try
    {
        for (int i = 1; i < numThreads; ++i)
            threads.emplace_back([&] { end.wait(); });
    }
    catch (const std::exception&)
    {
        result = 1;
    }
    end.count_down();
    return result;
}

/// Draws glyphs as pixels.
void paintPixels(const Scene& scene, const PictureLayout& layout, Canvas& canvas, WorkMeter& meter)
{
    if (isFlat(scene))
        paintFlat(scene, layout, canvas, meter);
    else
        paintTiles(scene, layout, canvas, meter);
}

/// Draws glyphs in a scalable picture.
void paintScalable(const Scene& scene, const PictureLayout& layout, Canvas& canvas,
                   WorkMeter& meter)
{
    if (numGlyphs(scene) <= mostVectorGlyphs)
    {
        paintVectors(scene, layout, canvas, meter);
        return;
    }
    Style transparent = layout.style();
    transparent.background = {0.0F, 0.0F, 0.0F, 0.0F};
    Canvas pixels(layout.width(), layout.height(), transparent, std::nullopt);
    paintPixels(scene, layout, pixels, meter);
    canvas.draw(pixels);
}

}

PictureFile paint(const process::Job& job, process::JobState& state)
{
    const auto& [scene, options, format, numThreads] = job;
    omp_set_num_threads(startable(numThreads));
    const PictureLayout layout(scene, options);
    const Style& style = layout.style();
    Canvas canvas(layout.width(), layout.height(), style, format);
    for (const Stroke& edge : layout.outline())
        canvas.draw(edge, style.outline);
    WorkMeter meter(state.painting);
    if (canvas.isScalable())
        paintScalable(scene, layout, canvas, meter);
    else
        paintPixels(scene, layout, canvas, meter);
    for (const Stroke& stroke : layout.axes().strokes)
        canvas.draw(stroke, style.ink);
    for (const Label& label : layout.axes().labels)
        canvas.draw(label);
    if (layout.colorBar())
        layout.colorBar()->draw(canvas, style);
    for (const Label& label : layout.titles())
        canvas.draw(label);

    PictureFile picture{{}, layout.width(), layout.height()};
    if (canvas.isScalable())
        picture.bytes = canvas.finishFile(options.title);
    else if (format == PictureFormat::Png)
        picture.bytes = encodePng(canvas.image(), state.encoding);
    else
        picture.bytes = canvas.image().rgba;
    return picture;
}

}
