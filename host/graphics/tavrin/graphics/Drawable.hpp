#pragma once

#include <tavrin/graphics/BoundingSphere.hpp>

namespace tavrin::graphics
{

/// Something to be painted, as a description: it can be read as numbers, and nothing of it depends
/// on a display or a graphics library. Immutable once made.
class TAVRIN_API Drawable
{
public:
    virtual ~Drawable();

    /// Encloses all that is drawn, but for the width of lines, which is in pixels. Radius 0 at the
    /// origin where nothing is.
    virtual BoundingSphere boundingSphere() const = 0;

protected:
    Drawable() = default;
    Drawable(const Drawable&) = default;
    Drawable& operator=(const Drawable&) = default;
};

}
