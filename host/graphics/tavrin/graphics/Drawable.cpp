#include <tavrin/graphics/Drawable.hpp>

namespace tavrin::graphics
{

Drawable::~Drawable() = default;

}
