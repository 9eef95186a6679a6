#pragma once

#include <tavrin/graphics/BoundingSphere.hpp>

namespace tavrin::graphics
{

/// The description of an object to be painted. It consists of plain numbers and depends neither on
/// a display nor on a graphics library. Immutable.
class TAVRIN_API Drawable
{
public:
    virtual ~Drawable();

    /// Encloses the object, apart from the width of lines, which is in pixels. At the origin with
    /// radius 0 for an empty object.
    virtual BoundingSphere boundingSphere() const = 0;

protected:
    Drawable() = default;
    Drawable(const Drawable&) = default;
    Drawable& operator=(const Drawable&) = default;
};

}
