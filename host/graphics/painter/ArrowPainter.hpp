#pragma once

#include "ArrowMesh.hpp"
#include "Camera.hpp"
#include "GlObjects.hpp"
#include "InFlight.hpp"
#include "Program.hpp"

#include <tavrin/graphics/ArrowBatch.hpp>

#include <array>

namespace tavrin::graphics::painter
{

/// Draws arrows as instances of a few meshes, coarser ones where an arrow is thin in the picture.
class ArrowPainter
{
public:
    ArrowPainter();

    /// Draws the opaque arrows or the transparent ones into the current framebuffer. What is not
    /// finite is left out. Throws `runtime_error` "aborted" soon after `abortFlag` is set.
    void paint(const ArrowBatch& batch, const Placement& placement, const Camera& camera,
               const Frame& tile, Pass pass, const volatile bool& abortFlag);

private:
    struct Instance
    {
        std::array<float, 3> start;
        std::array<float, 3> direction;
        float width;
        std::array<std::uint8_t, 4> color;
    };

    /// A mesh on the graphics system, and the instances of it that are drawn next.
    struct Level
    {
        /// The arrows of this level are at least so wide, in pixels; wider where there are many.
        double smallestWidth;
        bool isTube;
        bool isFlat;
        GLsizei numIndices;
        Buffer vertices;
        Buffer indices;
        VertexArray vertexArray;
        std::vector<Instance> instances;

        Level(double smallestWidth, bool isTube, const ArrowMesh& mesh, const Program& program);
    };

    Level& levelFor(const ArrowGlyph& arrow, double widthInPixels);
    void collect(const ArrowGlyph& arrow, const Placement& placement, const Camera& camera,
                 const Frame& tile, Pass pass);
    void drawCollected();

    /// What the widths of the levels are multiplied by.
    double mCoarseness = 1.0;
    Program mProgram;
    Buffer mInstances;
    std::vector<Level> mLevels;
    std::size_t mCollectedTriangles = 0;
    InFlight mInFlight;
};

}
