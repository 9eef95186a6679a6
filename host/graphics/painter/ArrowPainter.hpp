#pragma once

#include "ArrowMesh.hpp"
#include "GlObjects.hpp"
#include "InFlight.hpp"
#include "OcclusionMap.hpp"
#include "PictureLayout.hpp"
#include "Program.hpp"
#include "RenderTarget.hpp"
#include "WorkMeter.hpp"

#include <tavrin/graphics/ArrowBatch.hpp>

#include <array>
#include <optional>

namespace tavrin::graphics::painter
{

/// Draws arrows as instances of a few meshes, with coarser meshes for arrows that are thin in the
/// picture.
///
/// Where arrows cover the picture many times, they are drawn from the nearest to the farthest, and
/// arrows that are hidden by then are left out. Otherwise a scene of many long arrows would take as
/// long as filling the picture thousands of times.
class ArrowPainter
{
public:
    ArrowPainter();

    /// Draws the opaque or the transparent arrows of a batch into the tile of `target`. Arrows that
    /// are not finite are left out.
    void paint(const ArrowBatch& batch, const PictureLayout& layout, RenderTarget& target,
               const Frame& tile, Pass pass, WorkMeter& meter);

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
        /// The least width in pixels of the arrows that are drawn with this mesh; see `mCoarseness`.
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

    /// What an arrow's place in a tile depends on.
    struct Sight
    {
        const Placement& placement;
        const Camera& camera;
        const Style& style;
        const Frame& tile;
        Pass pass;
    };

    /// An arrow that lies in the tile.
    struct Candidate
    {
        Instance instance;
        Level* level;
        OcclusionMap::Strip shaft;
        OcclusionMap::Strip head;
        /// The pixels of the tile that the arrow covers, at most.
        double area;

        /// What the depth buffer holds where the arrow is nearest.
        double depth() const { return std::min(shaft.depthFrom, head.depthTo); }
    };

    struct Crowd
    {
        /// The indices of the arrows that lie in the tile.
        std::vector<std::uint32_t> indices;
        /// Whether many arrows hide one another. The indices are then sorted by distance, nearest first.
        bool isDense = false;
    };

    Level& levelFor(const ArrowGlyph& arrow, double widthInPixels);
    std::optional<Candidate> candidateFor(const ArrowGlyph& arrow, const Sight& sight);
    Crowd crowdOf(const std::vector<ArrowGlyph>& arrows, const Sight& sight);
    void collect(const Candidate& candidate);
    void drawCollected();

    /// Factor of the least widths of all levels; above 1 for many arrows.
    double mCoarseness = 1.0;
    Program mProgram;
    Buffer mInstances;
    std::vector<Level> mLevels;
    std::size_t mCollectedTriangles = 0;
    InFlight mInFlight;
};

}
