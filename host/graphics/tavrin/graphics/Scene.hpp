#pragma once

#include <tavrin/graphics/Drawable.hpp>
#include <tavrin/value/Color.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavrin::graphics
{

/// The domain whose outline is drawn, with an axis for each of its dimensions. A box with a corner
/// that is not finite is not drawn.
struct Box
{
    Tensor<double, 3> lower{};
    Tensor<double, 3> upper{};
    /// 1, 2 or 3; the corners agree in the components beyond.
    std::size_t dimension = 3;
};

/// What the colors of a scene mean.
struct ColorBar
{
    /// The color of a value between `low` and `high`.
    std::function<Color(double)> color;
    double low = 0.0;
    double high = 1.0;
    /// UTF-8; what is too long for the picture is cut.
    std::string title;
};

/// What is painted. All parts may be missing.
struct Scene
{
    std::vector<std::shared_ptr<const Drawable>> drawables = {};
    std::optional<Box> outline = std::nullopt;
    std::optional<ColorBar> colorBar = std::nullopt;
};

}
