#pragma once

#include "AxisLayout.hpp"

namespace tavrin::graphics::painter
{

/// The color bar beside the scene, with its ticks and its title.
class ColorBarLayout
{
public:
    /// The bar begins at `left`, in the middle of the height of `scene`. It is at most as high as the
    /// scene, unless that is tiny, and its title at most `mostHeight` pixels long.
    ColorBarLayout(const ColorBar& bar, double left, const Frame& scene, double mostHeight,
                   const TextMeter& meter);

    /// Everything that is drawn.
    Frame frame() const;

    /// The rectangle of the range of values, without pointed ends.
    const Frame& bar() const { return mBar; }
    const Annotation& annotation() const { return mAnnotation; }

    void moveBy(double x, double y);

    void draw(Canvas& canvas, const Style& style) const;

private:
    /// The bar, with its pointed ends if there are any, counterclockwise from the lower left.
    std::vector<Canvas::Pixel> outline() const;

    const ColorBar& mColorBar;
    Frame mBar;
    /// The height of a pointed end.
    double mPoint;
    Annotation mAnnotation;
};

}
