#pragma once

#include <tavrin/base/DataObject.hpp>
#include <tavrin/graphics/Picture.hpp>

namespace tavrin::app
{

/// How pictures are to look, in the words of the command line.
struct PictureWords
{
    /// WIDTHxHEIGHT in pixels.
    std::optional<std::string> size;
    /// A color.
    std::optional<std::string> background;
    /// A named view or AZIMUTH,ELEVATION in degrees.
    std::optional<std::string> view;

    bool isEmpty() const { return !size && !background && !view; }

    /// Throws `usage_error` for words that are not of that form, and for an impossible size.
    graphics::PictureOptions options() const;
};

/// A drawable in the box of the first domain among the inputs, with a color bar where a color map
/// is among them.
graphics::Scene sceneOf(std::shared_ptr<const graphics::Drawable> drawable,
                        const DataObjectBundle::Members& inputs);

}
