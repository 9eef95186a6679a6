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

/// The bounds of a domain, whose outline is drawn with an axis for each dimension. A box with a
/// corner that is not finite is not drawn.
struct Box
{
    Tensor<double, 3> lower{};
    Tensor<double, 3> upper{};
    /// 1, 2 or 3; the remaining components of both corners are equal.
    std::size_t dimension = 3;
};

/// The legend for the colors of a scene.
struct ColorBar
{
    /// Returns the color of a finite value, which may be outside of `low` ... `high`.
    std::function<Color(double)> color;
    double low = 0.0;
    double high = 1.0;
    /// UTF-8; truncated if it is too long for the picture.
    std::string title = {};
    /// Whether the scene shows values below `low` or above `high`. That end of the bar is pointed and
    /// has their color.
    bool isClampedBelow = false;
    bool isClampedAbove = false;
};

/// The content of a picture. Every part is optional.
struct Scene
{
    std::vector<std::shared_ptr<const Drawable>> drawables = {};
    std::optional<Box> outline = std::nullopt;
    std::optional<ColorBar> colorBar = std::nullopt;
    /// The time that the scene shows; see `PictureOptions::title`.
    std::string timeLabel = {};
};

}
