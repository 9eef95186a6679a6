#include "PainterJob.hpp"

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/graphics/ArrowBatch.hpp>
#include <tavrin/graphics/Primitive.hpp>

#include <omp.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string>
#include <type_traits>

namespace tavrin::graphics::process
{

namespace
{

enum class DrawableKind
{
    Nothing,
    Arrows,
    Primitive
};

/// The number of samples in which the color function of a color bar is sent. Bars usually have fewer
/// rows of pixels.
constexpr std::size_t numBarColors = 4096;

/// Every item begins at a multiple of this number of bytes, so that arrays can be used in place.
constexpr std::size_t alignment = 16;

template<typename T>
concept Plain = std::is_trivially_copyable_v<T> && alignof(T) <= alignment;

class JobWriter
{
public:
    JobWriter(SharedBytes& bytes, const volatile bool& abortFlag)
        : mBytes(bytes), mAbortFlag(abortFlag)
    {
    }

    template<typename T>
    void add(const T& value)
    {
        static_assert(std::is_standard_layout_v<T> && alignof(T) <= alignment);
        addBytes(std::as_bytes(std::span(&value, 1)));
    }

    template<Plain T>
    void addArray(std::span<const T> values)
    {
        add(values.size());
        addBytes(std::as_bytes(values));
    }

    void addText(const std::string& text) { addArray(std::span<const char>(text)); }

private:
    void addBytes(std::span<const std::byte> bytes)
    {
        static constexpr std::array<std::byte, alignment> padding{};
        const std::size_t numPadding = (alignment - bytes.size() % alignment) % alignment;
        while (!bytes.empty())
        {
            if (mAbortFlag)
                throw runtime_error("aborted");
            const auto portion = bytes.first(std::min(bytes.size(), bytesBetweenAbortChecks));
            mBytes.append(portion);
            bytes = bytes.subspan(portion.size());
        }
        mBytes.append(std::span(padding).first(numPadding));
    }

    static constexpr std::size_t bytesBetweenAbortChecks = std::size_t{1} << 25;

    SharedBytes& mBytes;
    const volatile bool& mAbortFlag;
};

/// Reads the items in the order in which they were added.
class JobReader
{
public:
    explicit JobReader(std::span<const std::byte> bytes) : mBytes(bytes)
    {
        takeBytes(sizeof(JobState));
    }

    template<Plain T>
    T take()
    {
        T value;
        std::memcpy(&value, takeBytes(sizeof(T)).data(), sizeof(T));
        return value;
    }

    template<Plain T>
    std::span<const T> takeArray()
    {
        const auto size = take<std::size_t>();
        return {reinterpret_cast<const T*>(takeBytes(size * sizeof(T)).data()), size};
    }

    std::string takeText()
    {
        const auto characters = takeArray<char>();
        return {characters.begin(), characters.end()};
    }

private:
    std::span<const std::byte> takeBytes(std::size_t size)
    {
        const auto taken = mBytes.first(size);
        mBytes = mBytes.subspan((size + alignment - 1) / alignment * alignment);
        return taken;
    }

    std::span<const std::byte> mBytes;
};

template<Plain T>
void addOptional(JobWriter& writer, const std::optional<T>& value)
{
    writer.add(value.has_value());
    if (value)
        writer.add(*value);
}

template<Plain T>
std::optional<T> takeOptional(JobReader& reader)
{
    return reader.take<bool>() ? std::optional(reader.take<T>()) : std::nullopt;
}

void addPrimitive(JobWriter& writer, const Primitive& primitive)
{
    const PrimitiveConfig& config = primitive.config();
    writer.add(config.primitives());
    writer.add(config.renderBin());
    writer.add(config.uniforms().size());
    for (const auto& [name, value] : config.uniforms())
    {
        writer.addText(name);
        writer.add(value);
    }
    writer.add(config.vertexBuffers().size());
    for (const auto& [name, buffer] : config.vertexBuffers())
    {
        writer.addText(name);
        writer.add(buffer->numComponents());
        writer.addArray(buffer->values());
    }
    const ShaderProgram& program = primitive.program();
    for (const auto* const file : {&program.vertex, &program.fragment, &program.geometry})
        writer.addText(file->string());
}

std::shared_ptr<const Drawable> takePrimitive(JobReader& reader)
{
    PrimitiveConfig config(reader.take<RenderPrimitives>());
    config.renderBin(reader.take<RenderBin>());
    for (auto left = reader.take<std::size_t>(); left > 0; --left)
    {
        const std::string name = reader.takeText();
        config.uniform(name, reader.take<float>());
    }
    for (auto left = reader.take<std::size_t>(); left > 0; --left)
    {
        const std::string name = reader.takeText();
        const auto numComponents = reader.take<std::size_t>();
        config.vertexBuffer(name, std::make_shared<VertexBuffer>(nullptr, reader.takeArray<float>(),
                                                                 numComponents));
    }
    ShaderProgram program;
    for (auto* const file : {&program.vertex, &program.fragment, &program.geometry})
        *file = reader.takeText();
    return std::make_shared<const Primitive>(std::move(config),
                                             std::make_shared<const ShaderProgram>(program));
}

void addDrawable(JobWriter& writer, const Drawable* drawable)
{
    if (drawable == nullptr)
        writer.add(DrawableKind::Nothing);
    else if (const auto* const batch = dynamic_cast<const ArrowBatch*>(drawable))
    {
        writer.add(DrawableKind::Arrows);
        writer.add(batch->shading());
        writer.addArray(std::span(batch->arrows()));
    }
    else if (const auto* const primitive = dynamic_cast<const Primitive*>(drawable))
    {
        writer.add(DrawableKind::Primitive);
        addPrimitive(writer, *primitive);
    }
    else
        throw logic_error("the painter does not know this kind of drawable");
}

std::shared_ptr<const Drawable> takeDrawable(JobReader& reader)
{
    switch (reader.take<DrawableKind>())
    {
    case DrawableKind::Nothing:
        break;
    case DrawableKind::Arrows:
    {
        const auto shading = reader.take<ShadingType>();
        const auto arrows = reader.takeArray<ArrowGlyph>();
        return std::make_shared<const ArrowBatch>(std::vector(arrows.begin(), arrows.end()),
                                                  shading);
    }
    case DrawableKind::Primitive:
        return takePrimitive(reader);
    }
    return nullptr;
}

void addColorBar(JobWriter& writer, const ColorBar& bar)
{
    writer.add(bar.low);
    writer.add(bar.high);
    writer.addText(bar.title);
    writer.add(bar.isClampedBelow);
    writer.add(bar.isClampedAbove);
    const double beyond = bar.high > bar.low ? bar.high - bar.low : 1.0;
    writer.add(bar.color(bar.low - beyond));
    writer.add(bar.color(bar.high + beyond));
    std::vector<Color> colors;
    for (std::size_t i = 0; i < numBarColors; ++i)
    {
        const double share = (static_cast<double>(i) + 0.5) / numBarColors;
        colors.push_back(bar.color(bar.low + share * (bar.high - bar.low)));
    }
    writer.addArray(std::span<const Color>(colors));
}

ColorBar takeColorBar(JobReader& reader)
{
    ColorBar bar;
    bar.low = reader.take<double>();
    bar.high = reader.take<double>();
    bar.title = reader.takeText();
    bar.isClampedBelow = reader.take<bool>();
    bar.isClampedAbove = reader.take<bool>();
    const auto below = reader.take<Color>();
    const auto above = reader.take<Color>();
    const auto colors = reader.takeArray<Color>();
    bar.color = [colors = std::vector(colors.begin(), colors.end()), low = bar.low, high = bar.high,
                 below, above](double value)
    {
        if (value < low)
            return below;
        if (value > high)
            return above;
        const double share = (value - low) / (high - low);
        const auto count = static_cast<double>(colors.size());
        // A range of one value or without finite limits has one color.
        const double index = share > 0.0 ? std::min(share * count, count - 1.0) : 0.0;
        return colors[static_cast<std::size_t>(index)];
    };
    return bar;
}

/// The number of elements of a scene.
std::size_t numElements(const Scene& scene)
{
    std::size_t count = 0;
    for (const auto& drawable : scene.drawables)
        if (const auto* const batch = dynamic_cast<const ArrowBatch*>(drawable.get()))
            count += batch->arrows().size();
        else if (const auto* const primitive = dynamic_cast<const Primitive*>(drawable.get()))
            count += primitive->numVertices();
    return count;
}

}

void writeJob(SharedBytes& bytes, const Scene& scene, const PictureOptions& options,
              std::optional<PictureFormat> format, const volatile bool& abortFlag)
{
    JobWriter writer(bytes, abortFlag);
    writer.add(JobState{.painting = {.total = numElements(scene)}});
    addOptional(writer, format);
    writer.add(omp_get_max_threads());
    writer.add(options.width);
    writer.add(options.height);
    writer.add(options.background);
    addOptional(writer, options.view);
    writer.addText(options.title);
    writer.add(options.fontScale);
    writer.add(options.crop);
    addOptional(writer, scene.outline);
    const bool hasColorBar = scene.colorBar && scene.colorBar->color;
    writer.add(hasColorBar);
    if (hasColorBar)
        addColorBar(writer, *scene.colorBar);
    writer.addText(scene.timeLabel);
    writer.add(scene.drawables.size());
    for (const auto& drawable : scene.drawables)
        addDrawable(writer, drawable.get());
}

Job readJob(std::span<const std::byte> bytes)
{
    JobReader reader(bytes);
    Job job;
    job.format = takeOptional<PictureFormat>(reader);
    job.numThreads = reader.take<int>();
    job.options.width = reader.take<std::size_t>();
    job.options.height = reader.take<std::size_t>();
    job.options.background = reader.take<Color>();
    job.options.view = takeOptional<View>(reader);
    job.options.title = reader.takeText();
    job.options.fontScale = reader.take<double>();
    job.options.crop = reader.take<bool>();
    job.scene.outline = takeOptional<Box>(reader);
    if (reader.take<bool>())
        job.scene.colorBar = takeColorBar(reader);
    job.scene.timeLabel = reader.takeText();
    for (auto left = reader.take<std::size_t>(); left > 0; --left)
        job.scene.drawables.push_back(takeDrawable(reader));
    return job;
}

}
