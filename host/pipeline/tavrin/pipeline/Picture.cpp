#include <tavrin/pipeline/Picture.hpp>

#include <tavrin/colormap/ColorMapDataObject.hpp>
#include <tavrin/colormap/NormRange.hpp>
#include <tavrin/function/Function.hpp>
#include <tavrin/value/LexicalCast.hpp>

namespace tavrin::pipeline
{

namespace
{

/// The first input of the class, or null if there is none.
template<typename Class>
std::shared_ptr<const Class> firstOf(const DataObjectBundle::Members& inputs)
{
    for (const auto& object : inputs)
        if (auto typed = std::dynamic_pointer_cast<const Class>(object))
            return typed;
    return nullptr;
}

std::pair<std::size_t, std::size_t> parseSize(const std::string& text)
{
    const auto cross = text.find('x');
    try
    {
        if (cross != std::string::npos)
        {
            const long width = lexicalCast<long>(text.substr(0, cross));
            const long height = lexicalCast<long>(text.substr(cross + 1));
            if (width >= 0 && height >= 0)
                return {static_cast<std::size_t>(width), static_cast<std::size_t>(height)};
        }
    }
    catch (const bad_lexical_cast&)
    {
    }
    throw usage_error("--size: \"" + text + "\" is not of the form WIDTHxHEIGHT, as in 1600x1200");
}

template<typename T>
T parseOption(const std::string& option, const std::string& text)
{
    try
    {
        return lexicalCast<T>(text);
    }
    catch (const bad_lexical_cast& error)
    {
        throw usage_error(option + ": " + error.what());
    }
}

graphics::Box boxOf(const PointSetBase& points)
{
    const auto bounds = points.boundingBox();
    graphics::Box box{.dimension = bounds.getDimensions()};
    for (std::size_t i = 0; i < bounds.getDimensions(); ++i)
    {
        box.lower[i] = bounds[i].first;
        box.upper[i] = bounds[i].second;
    }
    return box;
}

graphics::ColorBar colorBarOf(const std::shared_ptr<const ColorMapDataObject>& map,
                              const FunctionBase* function, std::optional<double> time)
{
    const auto [low, high] = map->scaling();
    graphics::ColorBar bar{.color = [map](double value)
                           { return map->mapValueToColorScaled(value); },
                           .low = low,
                           .high = high};
    if (function == nullptr)
        return bar;
    bar.title = function->name().empty() ? "norm" : "|" + function->name() + "|";
    const auto norms = time ? finiteNormRangeAt(*function, *time) : finiteNormRange(*function);
    if (!norms)
        return bar;
    // A range that was written with a few digits less is not meant to clamp.
    const double tolerance = 1e-6 * (high - low);
    bar.isClampedBelow = norms->low < low - tolerance;
    bar.isClampedAbove = norms->high > high + tolerance;
    return bar;
}

}

graphics::PictureOptions PictureWords::options() const
{
    graphics::PictureOptions options;
    if (size)
        std::tie(options.width, options.height) = parseSize(*size);
    graphics::checkPictureSize(options.width, options.height);
    if (view)
        options.view = graphics::View::fromText(*view);
    if (background)
        options.background = parseOption<Color>("--background", *background);
    options.title = title.value_or("");
    if (fontScale)
        options.fontScale = parseOption<double>("--font-scale", *fontScale);
    graphics::checkFontScale(options.fontScale);
    options.crop = crop;
    return options;
}

graphics::Scene sceneOf(std::shared_ptr<const graphics::Drawable> drawable,
                        const DataObjectBundle::Members& inputs, std::optional<double> time)
{
    graphics::Scene scene;
    scene.drawables.push_back(std::move(drawable));
    const auto function = firstOf<FunctionBase>(inputs);
    const auto points = function != nullptr
                            ? std::dynamic_pointer_cast<const PointSetBase>(function->domain())
                            : firstOf<PointSetBase>(inputs);
    if (points != nullptr && points->numPoints() > 0)
        scene.outline = boxOf(*points);
    if (const auto map = firstOf<ColorMapDataObject>(inputs))
        scene.colorBar = colorBarOf(map, function.get(), time);
    return scene;
}

}
