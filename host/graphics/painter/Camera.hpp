#pragma once

#include <tavrin/graphics/Picture.hpp>

#include <algorithm>
#include <array>
#include <span>

namespace tavrin::graphics::painter
{

using Position = Tensor<double, 3>;

/// A rectangle of the picture in pixels, from its upper left corner.
struct Frame
{
    double left = 0.0;
    double top = 0.0;
    double width = 0.0;
    double height = 0.0;

    double right() const { return left + width; }
    double bottom() const { return top + height; }
    double middleX() const { return left + 0.5 * width; }
    double middleY() const { return top + 0.5 * height; }

    /// The smallest frame that contains both frames.
    Frame unitedWith(const Frame& other) const
    {
        const double unitedLeft = std::min(left, other.left);
        const double unitedTop = std::min(top, other.top);
        return {unitedLeft, unitedTop, std::max(right(), other.right()) - unitedLeft,
                std::max(bottom(), other.bottom()) - unitedTop};
    }
    Frame movedBy(double x, double y) const { return {left + x, top + y, width, height}; }
    /// Whether a circle around a pixel intersects the frame.
    bool meetsCircle(const std::array<double, 2>& pixel, double radius) const
    {
        return pixel[0] > left - radius && pixel[0] < right() + radius && pixel[1] > top - radius &&
               pixel[1] < bottom() + radius;
    }
};

/// Maps the user's coordinates to placed coordinates, which are relative to the middle of the scene and
/// in units of its size. Scenes are drawn in placed coordinates, for which single precision suffices.
struct Placement
{
    Position center{};
    double scale = 1.0;

    Position operator()(const Position& position) const { return scale * (position - center); }
};

/// A camera that shows a scene as large as a frame of the picture allows.
class Camera
{
public:
    /// Perpendicular directions of length 1.
    struct Axes
    {
        Position right;
        Position up;
        /// From the middle of the scene toward the eye.
        Position back;

        explicit Axes(const View& view);
    };

    /// `extremes` are placed positions that bound the scene; they span about -1 to 1.
    Camera(const View& view, std::span<const Position> extremes, const Frame& frame);

    const Axes& axes() const { return mAxes; }
    /// Whether the projection is parallel, as it is for a view along a coordinate axis.
    bool isParallel() const { return mIsParallel; }
    /// The position of the eye, or in a parallel projection the direction toward it.
    Position eye() const;
    /// Distances from the eye along the direction of view, between which everything is drawn.
    double nearest() const { return mNearest; }
    double farthest() const { return mFarthest; }

    /// The distance of a position from the eye along the direction of view.
    double distance(const Position& position) const { return depth(turned(position)); }
    /// What the depth buffer holds at a distance: 0 at the nearest, 1 at the farthest.
    double bufferDepth(double distance) const;

    /// The number of pixels per unit of length at a position, and at a distance from the eye.
    double pixelsPerUnit(const Position& position) const;
    double pixelsPerUnitAt(double distance) const
    {
        return mIsParallel ? mPixelsPerUnit : mPixelsPerUnit / distance;
    }
    /// The number of pixels per unit of length where the fourth clip coordinate is 1.
    double pixelsPerUnit() const { return mPixelsPerUnit; }

    /// The pixel of a position: right and down from the upper left corner.
    std::array<double, 2> project(const Position& position) const;

    /// The matrix from placed to clip coordinates of a tile of the picture, column by column.
    std::array<float, 16> viewProjection(const Frame& tile) const;

private:
    /// The coordinates of a placed position along right, up and back.
    Position turned(const Position& position) const;
    double depth(const Position& turnedPosition) const;

    Axes mAxes;
    bool mIsParallel;
    std::array<double, 2> mFrameCenter;
    double mPixelsPerUnit = 1.0;
    /// In turned coordinates.
    Position mEye{};
    double mNearest = 0.0;
    double mFarthest = 0.0;
};

}
