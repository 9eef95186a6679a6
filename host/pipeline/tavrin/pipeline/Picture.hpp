#pragma once

#include <tavrin/base/DataObject.hpp>
#include <tavrin/graphics/Picture.hpp>

namespace tavrin::pipeline
{

/// The appearance of pictures, as given on the command line.
struct TAVRIN_API PictureWords
{
    /// WIDTHxHEIGHT in pixels.
    std::optional<std::string> size;
    /// A color.
    std::optional<std::string> background;
    /// A named view or AZIMUTH,ELEVATION in degrees.
    std::optional<std::string> view;
    /// Shown above the scene.
    std::optional<std::string> title;
    /// A factor of the size of texts.
    std::optional<std::string> fontScale;
    bool crop = false;

    bool isEmpty() const { return !size && !background && !view && !title && !fontScale && !crop; }

    /// Parses the words. Throws `usage_error` for a malformed word and for an impossible size.
    graphics::PictureOptions options() const;
};

/// A scene with the drawable, the bounding box of the first domain among the inputs, and a color bar
/// if a color map is among them. The bar has the name of the first function, and its ends are pointed
/// where that has values beyond the map's range, at `time` if it has several time steps. Throws what
/// loading a step of a series throws.
TAVRIN_API graphics::Scene sceneOf(std::shared_ptr<const graphics::Drawable> drawable,
                                   const DataObjectBundle::Members& inputs,
                                   std::optional<double> time = std::nullopt);

}
