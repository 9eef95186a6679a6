#include "PainterModule.hpp"

#include "PngEncoder.hpp"
#include "ScenePainter.hpp"

extern "C" TAVRIN_API const tavrin::graphics::PainterModule* tavrinPainterModule()
{
    using namespace tavrin::graphics;
    static constexpr PainterModule module{&painter::paint, &painter::encodePng};
    return &module;
}
