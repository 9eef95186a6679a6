#pragma once

#include "AxisLayout.hpp"

namespace tavrin::graphics::painter
{

/// The color bar at the right side of the picture, with its ticks and its title.
class ColorBarLayout
{
public:
    /// `picture` is the part of the picture inside its margins. The bar is as high as looks well,
    /// but not higher than the scene, which occupies the frame `scene`, unless that is tiny.
    ColorBarLayout(const ColorBar& bar, const Frame& picture, const Frame& scene,
                   const Canvas& canvas, const Style& style);

    /// The left side of the bar, which is the leftmost part.
    double left() const { return mBar.left; }

    void draw(Canvas& canvas) const;

private:
    const ColorBar& mColorBar;
    Frame mBar;
    Annotation mAnnotation;
};

}
