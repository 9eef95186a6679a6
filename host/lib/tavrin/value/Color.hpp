#pragma once

namespace tavrin
{

/// A color with opacity; the four components lie in 0 to 1.
struct Color
{
    float red = 0.0F;
    float green = 0.0F;
    float blue = 0.0F;
    float alpha = 1.0F;

    bool operator==(const Color&) const = default;
};

}
