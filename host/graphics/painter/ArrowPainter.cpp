#include "ArrowPainter.hpp"

#include "Rim.hpp"
#include "ViewUniforms.hpp"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace tavrin::graphics::painter
{

namespace
{

/// The number of triangles that are collected for one draw call.
constexpr std::size_t trianglesPerDraw = 100'000;
/// Above this number, arrows are drawn with coarser meshes, because each is small or mostly hidden.
constexpr double fewArrows = 1e5;
/// Arrows that cover the tile more often than this are dense, and hidden ones are worth finding.
constexpr double sparseCover = 4.0;
/// The occlusion map is updated whenever the arrows drawn since have covered the tile this often.
constexpr double coverBetweenUpdates = 2.0;
/// A further factor of the coarseness of dense arrows.
constexpr double denseCoarseness = 1.5;
/// A bound on how far an arrow extends beyond its exact outline, because of the least width and length
/// and of rounding to pixels; in pixels.
constexpr double pixelSlack = 3.0;

/// A tube without visible shading is as bright as a shaded one is on average.
constexpr float thinTubeBrightness = 0.8F;

ShaderProgram programFiles()
{
    const std::string folder = shaderFolder() + "arrow/phong/";
    return {folder + "vertex.glsl", folder + "fragment.glsl", {}};
}

bool isFinite(const std::array<float, 3>& position)
{
    return std::ranges::all_of(position, [](float part) { return std::isfinite(part); });
}

/// Not a number counts as 0.
std::uint8_t byteOf(float share)
{
    return static_cast<std::uint8_t>(share > 0.0F ? std::min(share, 1.0F) * 255.0F + 0.5F : 0.0F);
}

void enableAttribute(const Program& program, const char* name, GLint size, GLenum type,
                     std::size_t stride, std::size_t offset)
{
    const GLint location = program.attribute(name);
    if (location < 0)
        return;
    const auto index = static_cast<GLuint>(location);
    glEnableVertexAttribArray(index);
    glVertexAttribPointer(index, size, type, type == GL_UNSIGNED_BYTE ? GL_TRUE : GL_FALSE,
                          static_cast<GLsizei>(stride), reinterpret_cast<const void*>(offset));
}

}

ArrowPainter::Level::Level(double smallest, bool tube, const ArrowMesh& mesh,
                           const Program& program)
    : smallestWidth(smallest), isTube(tube), isFlat(mesh.isFlat),
      numIndices(static_cast<GLsizei>(mesh.indices.size()))
{
    glBindVertexArray(vertexArray.name());
    glBindBuffer(GL_ARRAY_BUFFER, vertices.name());
    glBufferData(GL_ARRAY_BUFFER,
                 static_cast<GLsizeiptr>(mesh.vertices.size() * sizeof(ArrowMesh::Vertex)),
                 mesh.vertices.data(), GL_STATIC_DRAW);
    enableAttribute(program, "in_position", 3, GL_FLOAT, sizeof(ArrowMesh::Vertex),
                    offsetof(ArrowMesh::Vertex, position));
    enableAttribute(program, "in_normal", 3, GL_FLOAT, sizeof(ArrowMesh::Vertex),
                    offsetof(ArrowMesh::Vertex, normal));
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indices.name());
    glBufferData(GL_ELEMENT_ARRAY_BUFFER,
                 static_cast<GLsizeiptr>(mesh.indices.size() * sizeof(mesh.indices.front())),
                 mesh.indices.data(), GL_STATIC_DRAW);
    for (const char* const name : {"in_start", "in_direction", "in_width", "in_color"})
        if (const GLint location = program.attribute(name); location >= 0)
            glVertexAttribDivisor(static_cast<GLuint>(location), 1);
}

ArrowPainter::ArrowPainter() : mProgram(programFiles())
{
    mLevels.emplace_back(0.0, false, ArrowMesh::flat(ArrowMesh::flatHeadRadius), mProgram);
    // A tube that is hardly wider than a pixel.
    mLevels.emplace_back(0.0, true, ArrowMesh::flat(ArrowMesh::tubeHeadRadius), mProgram);
    mLevels.emplace_back(1.2, true, ArrowMesh::tube(8), mProgram);
    mLevels.emplace_back(4.0, true, ArrowMesh::tube(14), mProgram);
    mLevels.emplace_back(10.0, true, ArrowMesh::tube(36), mProgram);
}

ArrowPainter::Level& ArrowPainter::levelFor(const ArrowGlyph& arrow, double widthInPixels)
{
    Level* best = nullptr;
    for (Level& level : mLevels)
        if (level.isTube == arrow.tube &&
            (best == nullptr || mCoarseness * level.smallestWidth <= widthInPixels))
            best = &level;
    return *best;
}

std::optional<ArrowPainter::Candidate> ArrowPainter::candidateFor(const ArrowGlyph& arrow,
                                                                  const Sight& sight)
{
    const auto& [placement, camera, style, tile, pass] = sight;
    const std::uint8_t alpha = byteOf(arrow.color.alpha);
    if (alpha == 0 || (alpha < 255) != (pass == Pass::OnlyTransparent))
        return {};
    const Position start = placement(arrow.start);
    const Position direction = placement.scale * arrow.direction;
    const double width = placement.scale * std::abs(arrow.width);
    const Color color = arrow.tube ? tubeColorFor(arrow.color, style) : arrow.color;
    const Instance instance{
        .start = narrowed(start),
        .direction = narrowed(direction),
        .width = static_cast<float>(width),
        .color = {byteOf(color.red), byteOf(color.green), byteOf(color.blue), alpha}};
    if (!isFinite(instance.start) || !isFinite(instance.direction) ||
        !std::isfinite(instance.width))
        return {};

    const Position end = start + direction;
    const double headRadius =
        width * (arrow.tube ? ArrowMesh::tubeHeadRadius : ArrowMesh::flatHeadRadius);
    // A flat arrow in a parallel view is as far away as its axis.
    const double thickness = !arrow.tube && camera.isParallel() ? 0.0 : headRadius;
    const auto nearestAround = [&eye = sight.camera, thickness](const Position& position)
    { return std::max(eye.distance(position) - thickness, eye.nearest()); };
    const double distanceFrom = nearestAround(start);
    const double distanceTo = nearestAround(end);
    const double pixelsPerUnit = camera.pixelsPerUnitAt(std::min(distanceFrom, distanceTo));
    const OcclusionMap::Strip strip{.from = camera.project(start),
                                    .to = camera.project(end),
                                    .radius = headRadius * pixelsPerUnit + pixelSlack,
                                    .depthFrom = camera.bufferDepth(distanceFrom),
                                    .depthTo = camera.bufferDepth(distanceTo)};
    const double length = std::hypot(strip.to[0] - strip.from[0], strip.to[1] - strip.from[1]);
    const std::array<double, 2> middle{0.5 * (strip.from[0] + strip.to[0]),
                                       0.5 * (strip.from[1] + strip.to[1])};
    if (!tile.meetsCircle(middle, 0.5 * length + strip.radius))
        return {};
    OcclusionMap::Strip shaft = strip;
    OcclusionMap::Strip head = strip;
    const Position neck = start + static_cast<double>(ArrowMesh::neck) * direction;
    shaft.to = head.from = camera.project(neck);
    shaft.depthTo = head.depthFrom = camera.bufferDepth(nearestAround(neck));
    shaft.radius = ArrowMesh::shaftRadius * width * pixelsPerUnit + pixelSlack;
    const double widthInPixels = width * camera.pixelsPerUnit(start + 0.5 * direction);
    return Candidate{.instance = instance,
                     .level = &levelFor(arrow, widthInPixels),
                     .shaft = shaft,
                     .head = head,
                     .area = std::min(length * strip.radius, tile.width * tile.height)};
}

ArrowPainter::Crowd ArrowPainter::crowdOf(const std::vector<ArrowGlyph>& arrows, const Sight& sight)
{
    Crowd crowd;
    std::vector<float> depths;
    double area = 0.0;
    for (std::size_t i = 0; i < arrows.size(); ++i)
        if (const auto candidate = candidateFor(arrows[i], sight))
        {
            crowd.indices.push_back(static_cast<std::uint32_t>(i));
            depths.push_back(static_cast<float>(candidate->depth()));
            area += candidate->area;
        }
    crowd.isDense = area > sparseCover * sight.tile.width * sight.tile.height;
    // The order of transparent arrows makes no difference.
    if (!crowd.isDense || sight.pass == Pass::OnlyTransparent)
        return crowd;
    std::vector<std::uint32_t> order(depths.size());
    std::iota(order.begin(), order.end(), 0U);
    std::ranges::stable_sort(order, {}, [&](std::uint32_t i) { return depths[i]; });
    for (std::uint32_t& i : order)
        i = crowd.indices[i];
    crowd.indices = std::move(order);
    return crowd;
}

void ArrowPainter::collect(const Candidate& candidate)
{
    candidate.level->instances.push_back(candidate.instance);
    mCollectedTriangles += static_cast<std::size_t>(candidate.level->numIndices) / 3;
}

void ArrowPainter::drawCollected()
{
    for (Level& level : mLevels)
    {
        if (level.instances.empty())
            continue;
        mProgram.set("u_isFlat", level.isFlat ? 1.0F : 0.0F);
        mProgram.set("u_brightness", level.isTube ? thinTubeBrightness : 1.0F);
        glBindVertexArray(level.vertexArray.name());
        glBindBuffer(GL_ARRAY_BUFFER, mInstances.name());
        glBufferData(GL_ARRAY_BUFFER,
                     static_cast<GLsizeiptr>(level.instances.size() * sizeof(Instance)),
                     level.instances.data(), GL_STREAM_DRAW);
        enableAttribute(mProgram, "in_start", 3, GL_FLOAT, sizeof(Instance),
                        offsetof(Instance, start));
        enableAttribute(mProgram, "in_direction", 3, GL_FLOAT, sizeof(Instance),
                        offsetof(Instance, direction));
        enableAttribute(mProgram, "in_width", 1, GL_FLOAT, sizeof(Instance),
                        offsetof(Instance, width));
        enableAttribute(mProgram, "in_color", 4, GL_UNSIGNED_BYTE, sizeof(Instance),
                        offsetof(Instance, color));
        glDrawElementsInstanced(GL_TRIANGLES, level.numIndices, GL_UNSIGNED_SHORT, nullptr,
                                static_cast<GLsizei>(level.instances.size()));
        level.instances.clear();
    }
    mCollectedTriangles = 0;
    mInFlight.endPortion();
}

void ArrowPainter::paint(const ArrowBatch& batch, const PictureLayout& layout, RenderTarget& target,
                         const Frame& tile, Pass pass, WorkMeter& meter)
{
    const Camera& camera = layout.camera();
    useFor(mProgram, layout, tile, pass);
    mProgram.set("u_eye", narrowed(camera.eye()));
    mProgram.set("u_right", narrowed(camera.axes().right));
    mProgram.set("u_up", narrowed(camera.axes().up));
    mProgram.set("u_isParallel", camera.isParallel() ? 1.0F : 0.0F);
    mProgram.set("u_pixelsPerUnit", static_cast<float>(camera.pixelsPerUnit()));
    // Only the nearer side of a closed transparent tube counts; flat arrows face the eye anyway.
    glEnable(GL_CULL_FACE);

    const auto& arrows = batch.arrows();
    const Sight sight{layout.extent().placement, camera, layout.style(), tile, pass};
    mCoarseness = std::max(1.0, std::sqrt(static_cast<double>(arrows.size()) / fewArrows));
    const Crowd crowd = crowdOf(arrows, sight);
    if (crowd.isDense)
        mCoarseness *= denseCoarseness;
    meter.advance(arrows.size() - crowd.indices.size());

    OcclusionMap occlusion(tile);
    const double areaBetweenUpdates = coverBetweenUpdates * tile.width * tile.height;
    double collectedArea = 0.0;
    if (crowd.isDense && pass == Pass::OnlyTransparent)
        occlusion.update(target.depths());
    for (const std::uint32_t i : crowd.indices)
    {
        meter.advance(1);
        const auto candidate = candidateFor(arrows[i], sight);
        if (crowd.isDense && occlusion.hides(candidate->head) && occlusion.hides(candidate->shaft))
            continue;
        collect(*candidate);
        collectedArea += candidate->area;
        const bool isUpdateDue = crowd.isDense && collectedArea >= areaBetweenUpdates;
        if (mCollectedTriangles >= trianglesPerDraw || isUpdateDue)
            drawCollected();
        if (isUpdateDue && pass != Pass::OnlyTransparent)
        {
            occlusion.update(target.depths());
            collectedArea = 0.0;
        }
    }
    drawCollected();
    glDisable(GL_CULL_FACE);
}

}
