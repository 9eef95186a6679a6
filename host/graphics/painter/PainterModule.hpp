#pragma once

#include <tavrin/graphics/Picture.hpp>

namespace tavrin::graphics
{

/// What the library libtavrin-painter.so offers. It alone uses OpenGL and cairo, and is loaded when
/// something is painted for the first time.
struct PainterModule
{
    Image (*paint)(const Scene& scene, const PictureOptions& options,
                   const volatile bool& abortFlag);
    std::vector<std::uint8_t> (*encodePng)(const Image& image);
};

/// The name of the module's function that returns it.
constexpr const char* painterModuleFunction = "tavrinPainterModule";
using PainterModuleFunction = const PainterModule* (*)();

}
