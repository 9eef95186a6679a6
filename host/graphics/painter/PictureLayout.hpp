#pragma once

#include "ColorBarLayout.hpp"
#include "SceneExtent.hpp"

namespace tavrin::graphics::painter
{

/// The size of a picture and the places of everything in it, the same for every format. The scene,
/// its axes, its color bar and its titles are one group, which is in the middle of the picture.
class PictureLayout
{
public:
    /// `scene` must outlive the layout. Throws what `SceneExtent` throws.
    PictureLayout(const Scene& scene, const PictureOptions& options);

    /// Pixels.
    std::size_t width() const { return mWidth; }
    std::size_t height() const { return mHeight; }
    const Style& style() const { return mStyle; }
    const SceneExtent& extent() const { return mExtent; }
    const Camera& camera() const { return *mCamera; }
    const std::vector<Stroke>& outline() const { return mOutline; }
    const Annotation& axes() const { return mAxes; }
    const std::optional<ColorBarLayout>& colorBar() const { return mColorBar; }
    const std::vector<Label>& titles() const { return mTitles; }

private:
    void addTitles(const std::string& title, const std::string& timeLabel, double mostWidth);
    void fitScene(const Frame& room);
    void aimAt(const Frame& frame);
    /// The part of the picture that the scene occupies, without and with its axes.
    Frame sceneFrame() const;
    Frame frameWithAxes() const;
    void addColorBar(const ColorBar& bar, double mostHeight);
    void placeTitles(const Frame& group);
    Frame contentFrame() const;
    void moveBy(double x, double y);

    SceneExtent mExtent;
    Style mStyle;
    TextMeter mMeter;
    std::size_t mWidth;
    std::size_t mHeight;
    /// The part of the picture in which the scene is shown as large as possible.
    Frame mSceneRoom;
    std::optional<Camera> mCamera;
    std::vector<Stroke> mOutline;
    Annotation mAxes;
    std::optional<ColorBarLayout> mColorBar;
    std::vector<Label> mTitles;
};

}
