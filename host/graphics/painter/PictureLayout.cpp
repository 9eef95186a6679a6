#include "PictureLayout.hpp"

#include <algorithm>
#include <cmath>

namespace tavrin::graphics::painter
{

namespace
{

/// The size of the title's font relative to that of all other texts.
constexpr double titleScale = 1.3;
/// Distances in units of the font size: between the scene and its color bar, between two titles, and
/// between the titles and what is below them.
constexpr double barGap = 1.5;
constexpr double lineGap = 0.7;
constexpr double titleGap = 1.2;
/// The least part of the picture that is left to the scene and its axes.
constexpr double leastShareOfPicture = 0.25;
/// The least part of the room for a scene and its axes that is left to the scene.
constexpr double leastShareOfScene = 0.4;

double heightOf(const std::vector<Label>& titles, double fontSize)
{
    double height = 0.0;
    for (const Label& title : titles)
        height += title.height + (height > 0.0 ? lineGap : titleGap) * fontSize;
    return height;
}

/// The number of pixels that hold a length.
std::size_t wholePixels(double length)
{
    return static_cast<std::size_t>(std::max(std::ceil(length), 1.0));
}

}

PictureLayout::PictureLayout(const Scene& scene, const PictureOptions& options)
    : mExtent(scene, options.view),
      mStyle(static_cast<double>(options.width), static_cast<double>(options.height),
             options.background, options.fontScale),
      mMeter(mStyle), mWidth(options.width), mHeight(options.height)
{
    const auto width = static_cast<double>(options.width);
    const auto height = static_cast<double>(options.height);
    const double margin = 0.03 * std::min(width, height);
    const Frame inner{margin, margin, width - 2.0 * margin, height - 2.0 * margin};
    Frame room = inner;
    if (mStyle.hasText)
        addTitles(options.title, scene.timeLabel, inner.width);
    room.top += heightOf(mTitles, mStyle.fontSize);
    room.height = inner.bottom() - room.top;
    const bool hasColorBar = mStyle.hasText && scene.colorBar && scene.colorBar->color;
    if (hasColorBar)
    {
        // A bar of the greatest height has the widest numbers.
        const ColorBarLayout widest(*scene.colorBar, 0.0, room, room.height, mMeter);
        room.width -= widest.frame().width + barGap * mStyle.fontSize;
    }
    room.width = std::max(room.width, leastShareOfPicture * inner.width);
    room.height = std::max(room.height, leastShareOfPicture * inner.height);
    fitScene(room);
    if (hasColorBar)
        addColorBar(*scene.colorBar, room.height);
    const Frame group =
        mColorBar ? frameWithAxes().unitedWith(mColorBar->frame()) : frameWithAxes();
    placeTitles(group);

    const Frame content = contentFrame();
    if (options.crop)
    {
        const double border = std::max(margin, 0.5 * mStyle.fontSize);
        mWidth = wholePixels(content.width + 2.0 * border);
        mHeight = wholePixels(content.height + 2.0 * border);
        moveBy(std::round(border - content.left), std::round(border - content.top));
    }
    else
        moveBy(std::round(inner.middleX() - content.middleX()),
               std::round(inner.middleY() - content.middleY()));
    if (mExtent.outline)
        mOutline = layOutOutline(*mExtent.outline, mExtent.placement, *mCamera);
}

void PictureLayout::addTitles(const std::string& title, const std::string& timeLabel,
                              double mostWidth)
{
    if (!title.empty())
        mTitles.push_back(mMeter.label(title, false, titleScale, mostWidth));
    if (!timeLabel.empty())
        mTitles.push_back(mMeter.label(timeLabel, false, 1.0, mostWidth));
}

void PictureLayout::aimAt(const Frame& frame)
{
    mSceneRoom = frame;
    mCamera.emplace(mExtent.view, mExtent.extremes, frame);
}

void PictureLayout::fitScene(const Frame& room)
{
    aimAt(room);
    if (!mExtent.outline || !mStyle.hasText)
        return;
    // The axes depend on the camera, and the camera on the room that the axes leave.
    constexpr int numAttempts = 6;
    for (int i = 0; i < numAttempts; ++i)
    {
        mAxes = layOutAxes(*mExtent.outline, mExtent.extremes, mExtent.placement, *mCamera, mMeter);
        if (i == numAttempts - 1)
            break;
        const Frame scene = sceneFrame();
        const Frame all = frameWithAxes();
        const double mostX = (1.0 - leastShareOfScene) * room.width;
        const double mostY = (1.0 - leastShareOfScene) * room.height;
        const double left = std::min(scene.left - all.left, 0.5 * mostX);
        const double right = std::min(all.right() - scene.right(), 0.5 * mostX);
        const double top = std::min(scene.top - all.top, 0.5 * mostY);
        const double bottom = std::min(all.bottom() - scene.bottom(), 0.5 * mostY);
        aimAt({room.left + left, room.top + top, room.width - left - right,
               room.height - top - bottom});
    }
}

Frame PictureLayout::sceneFrame() const
{
    const auto first = mCamera->project(mExtent.extremes.front());
    Frame frame{first[0], first[1], 0.0, 0.0};
    for (const Position& extreme : mExtent.extremes)
    {
        const auto pixel = mCamera->project(extreme);
        frame = frame.unitedWith({pixel[0], pixel[1], 0.0, 0.0});
    }
    return frame;
}

Frame PictureLayout::frameWithAxes() const
{
    Frame frame = sceneFrame();
    for (const Label& label : mAxes.labels)
        frame = frame.unitedWith(label.frame());
    return frame;
}

void PictureLayout::addColorBar(const ColorBar& bar, double mostHeight)
{
    mColorBar.emplace(bar, frameWithAxes().right() + barGap * mStyle.fontSize, sceneFrame(),
                      mostHeight, mMeter);
}

void PictureLayout::placeTitles(const Frame& group)
{
    double top = group.top - heightOf(mTitles, mStyle.fontSize);
    for (Label& title : mTitles)
    {
        title.x = group.middleX();
        title.y = top + 0.5 * title.height;
        top += title.height + lineGap * mStyle.fontSize;
    }
}

Frame PictureLayout::contentFrame() const
{
    Frame frame = frameWithAxes();
    if (mColorBar)
        frame = frame.unitedWith(mColorBar->frame());
    for (const Label& title : mTitles)
        frame = frame.unitedWith(title.frame());
    return frame;
}

void PictureLayout::moveBy(double x, double y)
{
    aimAt(mSceneRoom.movedBy(x, y));
    mAxes.moveBy(x, y);
    if (mColorBar)
        mColorBar->moveBy(x, y);
    for (Label& title : mTitles)
    {
        title.x += x;
        title.y += y;
    }
}

}
