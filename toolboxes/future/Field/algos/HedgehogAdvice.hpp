#pragma once

#include <tavrin/value/Tensor.hpp>

#include <cstddef>
#include <string>

/// Advice to the user on the option "Scale".
struct ScaleAdvice
{
    /// The "Scale" with which arrows are about as long as samples are apart, with two significant
    /// digits; empty where a length is not known.
    std::string suggestion;
    /// Why to use it; empty for arrows that are in proportion.
    std::string hint;
};

/// `arrowLength` is the length that nearly all arrows stay below with the current `scale`.
ScaleAdvice adviseOnScale(double arrowLength, double scale, double neighborDistance);

/// A hint that lines, whose ends are in single precision, are too far from the origin to keep their
/// directions; empty where they keep them.
std::string hintOnPrecision(double lineLength, double farthestPosition);

/// A hint that the arrow at `position` extends so far that a picture of all arrows shows the others tiny.
/// `extent` is the size of the box that holds nearly all arrows, and `reach` the distance from that box
/// to the far end of the arrow. Empty unless `reach` is much larger than `extent`.
std::string hintOnOutlier(double extent, double reach, const tavrin::Tensor<double, 3>& position);

/// A hint that a field has no values at a time, and that those of the first time are shown.
std::string hintOnTime(double time, double firstTime, double lastTime);

/// A hint that some values are marked as outside of their field; empty for none.
std::string hintOnInvalid(std::size_t numInvalid, std::size_t numValues);

/// A hint that some arrows cannot be drawn; empty for none.
std::string hintOnNotFinite(std::size_t numNotFinite, std::size_t numArrows);
