#include "Camera.hpp"

#include <algorithm>
#include <limits>
#include <numbers>

namespace tavrin::graphics::painter
{

namespace
{

/// Tangent of half the opening angle along the shorter side of the frame, which is 24 degrees.
const double opening = std::tan(12.0 * std::numbers::pi / 180.0);
/// The least extent that a scene is taken to have, so that its magnification is finite.
constexpr double smallestExtent = 1e-2;

/// Cosine and sine of an angle in degrees; exact for quarter turns.
std::array<double, 2> cosineAndSine(double degrees)
{
    const double turn = std::remainder(degrees, 360.0);
    if (turn == 0.0)
        return {1.0, 0.0};
    if (std::abs(turn) == 90.0)
        return {0.0, std::copysign(1.0, turn)};
    if (std::abs(turn) == 180.0)
        return {-1.0, 0.0};
    const double radians = turn * std::numbers::pi / 180.0;
    return {std::cos(radians), std::sin(radians)};
}

/// The largest value of `a * x + b * z` over turned positions with the coordinate x along an axis.
double support(std::span<const Position> positions, std::size_t axis, double a, double b)
{
    double largest = -std::numeric_limits<double>::infinity();
    for (const Position& position : positions)
        largest = std::max(largest, a * position[axis] + b * position[2]);
    return largest;
}

}

Camera::Axes::Axes(const View& view)
{
    const auto [cosAzimuth, sinAzimuth] = cosineAndSine(view.azimuth);
    const auto [cosElevation, sinElevation] = cosineAndSine(view.elevation);
    back = Position(cosElevation * cosAzimuth, cosElevation * sinAzimuth, sinElevation);
    right = Position(-sinAzimuth, cosAzimuth, 0.0);
    up = cross(back, right);
}

Camera::Camera(const View& view, std::span<const Position> extremes, const Frame& frame)
    : mAxes(view), mIsParallel(std::ranges::any_of(mAxes.back, [](double part)
                                                   { return std::abs(part) == 1.0; })),
      mFrameCenter{frame.left + 0.5 * frame.width, frame.top + 0.5 * frame.height}
{
    std::vector<Position> turnedExtremes;
    for (const Position& extreme : extremes)
        turnedExtremes.push_back(turned(extreme));
    const double nearestBack = support(turnedExtremes, 2, 0.0, 1.0);
    const double farthestBack = -support(turnedExtremes, 2, 0.0, -1.0);

    if (mIsParallel)
    {
        mPixelsPerUnit = std::numeric_limits<double>::infinity();
        for (const std::size_t axis : {0U, 1U})
        {
            const double upper = support(turnedExtremes, axis, 1.0, 0.0);
            const double lower = -support(turnedExtremes, axis, -1.0, 0.0);
            const double pixels = axis == 0 ? frame.width : frame.height;
            mPixelsPerUnit =
                std::min(mPixelsPerUnit, pixels / std::max(upper - lower, smallestExtent));
            mEye[axis] = 0.5 * (lower + upper);
        }
        mEye[2] = nearestBack + 2.0;
    }
    else
    {
        mPixelsPerUnit = 0.5 * std::min(frame.width, frame.height) / opening;
        for (const std::size_t axis : {0U, 1U})
        {
            // The planes through the eye and two opposite sides of the frame just touch the scene.
            const double pixels = axis == 0 ? frame.width : frame.height;
            const double slope = 0.5 * pixels / mPixelsPerUnit;
            const double upper = support(turnedExtremes, axis, 1.0, slope);
            const double lower = support(turnedExtremes, axis, -1.0, slope);
            const double distance = std::max(upper + lower, smallestExtent) / (2.0 * slope);
            mEye[2] = axis == 0 ? distance : std::max(mEye[2], distance);
            mEye[axis] = 0.5 * (upper - lower);
        }
        mEye[2] = std::max(mEye[2], nearestBack + smallestExtent);
    }

    // Thick glyphs extend beyond the extremes.
    const double slack = 0.5 + 0.5 * (nearestBack - farthestBack);
    mNearest = std::max(mEye[2] - nearestBack - slack, 0.1 * (mEye[2] - nearestBack));
    mFarthest = mEye[2] - farthestBack + slack;
}

Position Camera::turned(const Position& position) const
{
    return {dot(mAxes.right, position), dot(mAxes.up, position), dot(mAxes.back, position)};
}

double Camera::depth(const Position& turnedPosition) const
{
    return mEye[2] - turnedPosition[2];
}

Position Camera::eye() const
{
    return mIsParallel ? mAxes.back
                       : mEye[0] * mAxes.right + mEye[1] * mAxes.up + mEye[2] * mAxes.back;
}

double Camera::pixelsPerUnit(const Position& position) const
{
    return mIsParallel ? mPixelsPerUnit : mPixelsPerUnit / depth(turned(position));
}

double Camera::bufferDepth(double distance) const
{
    const double share = (distance - mNearest) / (mFarthest - mNearest);
    return mIsParallel ? share : share * mFarthest / distance;
}

std::array<double, 2> Camera::project(const Position& position) const
{
    const Position offset = turned(position) - mEye;
    const double pixels = mIsParallel ? mPixelsPerUnit : mPixelsPerUnit / -offset[2];
    return {mFrameCenter[0] + pixels * offset[0], mFrameCenter[1] - pixels * offset[1]};
}

std::array<float, 16> Camera::viewProjection(const Frame& tile) const
{
    // Each clip coordinate is a row . (right, up, depth, 1) of the position relative to the eye.
    const double scaleX = 2.0 * mPixelsPerUnit / tile.width;
    const double scaleY = 2.0 * mPixelsPerUnit / tile.height;
    const double shiftX = 2.0 * (mFrameCenter[0] - tile.left) / tile.width - 1.0;
    const double shiftY = 1.0 - 2.0 * (mFrameCenter[1] - tile.top) / tile.height;
    const double range = mFarthest - mNearest;
    const double sum = mFarthest + mNearest;
    using Row = std::array<double, 4>;
    const std::array<Row, 4> rows =
        mIsParallel ? std::array{Row{scaleX, 0.0, 0.0, shiftX}, Row{0.0, scaleY, 0.0, shiftY},
                                 Row{0.0, 0.0, 2.0 / range, -sum / range}, Row{0.0, 0.0, 0.0, 1.0}}
                    : std::array{Row{scaleX, 0.0, shiftX, 0.0}, Row{0.0, scaleY, shiftY, 0.0},
                                 Row{0.0, 0.0, sum / range, -2.0 * mFarthest * mNearest / range},
                                 Row{0.0, 0.0, 1.0, 0.0}};

    std::array<float, 16> columns{};
    for (std::size_t row = 0; row < 4; ++row)
    {
        for (std::size_t column = 0; column < 3; ++column)
            columns[column * 4 + row] = static_cast<float>(rows[row][0] * mAxes.right[column] +
                                                           rows[row][1] * mAxes.up[column] -
                                                           rows[row][2] * mAxes.back[column]);
        columns[12 + row] = static_cast<float>(-rows[row][0] * mEye[0] - rows[row][1] * mEye[1] +
                                               rows[row][2] * mEye[2] + rows[row][3]);
    }
    return columns;
}

}
