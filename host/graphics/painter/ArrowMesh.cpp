#include "ArrowMesh.hpp"

#include <numbers>

namespace tavrin::graphics::painter
{

namespace
{

class Builder
{
public:
    explicit Builder(bool isFlat) { mMesh.isFlat = isFlat; }

    std::uint16_t vertex(float x, float y, float z, Tensor<float, 3> normal)
    {
        mMesh.vertices.push_back({{x, y, z}, normal});
        return static_cast<std::uint16_t>(mMesh.vertices.size() - 1);
    }

    /// Counterclockwise as seen from outside.
    void triangle(unsigned a, unsigned b, unsigned c)
    {
        for (const unsigned vertex : {a, b, c})
            mMesh.indices.push_back(static_cast<std::uint16_t>(vertex));
    }

    ArrowMesh take() { return std::move(mMesh); }

private:
    ArrowMesh mMesh;
};

}

ArrowMesh ArrowMesh::flat(float headRadius)
{
    Builder builder(true);
    const Tensor<float, 3> normal(0.0F, 1.0F, 0.0F);
    for (const auto& corner : flatOutline(headRadius))
        builder.vertex(corner[0], 0.0F, corner[1], normal);
    builder.triangle(0, 1, 5);
    builder.triangle(0, 5, 6);
    builder.triangle(2, 3, 4);
    return builder.take();
}

ArrowMesh ArrowMesh::tube(unsigned numSides)
{
    Builder builder(false);
    // Turned by half a side, so that a face and not an edge faces the eye.
    const auto direction = [&](float side)
    {
        const float angle =
            (side + 0.5F) * 2.0F * std::numbers::pi_v<float> / static_cast<float>(numSides);
        return Tensor<float, 2>(std::cos(angle), std::sin(angle));
    };
    // Adds one vertex per side, whose normals have a radial and an axial part. Returns the first.
    const auto ring = [&](float radius, float z, float radial, float along, float turn = 0.0F)
    {
        std::uint16_t first = 0;
        for (unsigned i = 0; i < numSides; ++i)
        {
            const auto outwards = direction(static_cast<float>(i) + turn);
            const auto vertex = builder.vertex(radius * outwards[0], radius * outwards[1], z,
                                               {radial * outwards[0], radial * outwards[1], along});
            first = i == 0 ? vertex : first;
        }
        return first;
    };

    const auto tail = ring(shaftRadius, 0.0F, 1.0F, 0.0F);
    const auto top = ring(shaftRadius, neck, 1.0F, 0.0F);
    const auto cap = ring(shaftRadius, 0.0F, 0.0F, -1.0F);
    const auto base = ring(tubeHeadRadius, neck, 0.0F, -1.0F);
    const float headLength = 1.0F - neck;
    const auto rim = ring(tubeHeadRadius, neck, headLength, tubeHeadRadius);
    const auto tips = ring(0.0F, 1.0F, headLength, tubeHeadRadius, 0.5F);
    const auto capMiddle = builder.vertex(0.0F, 0.0F, 0.0F, {0.0F, 0.0F, -1.0F});
    const auto baseMiddle = builder.vertex(0.0F, 0.0F, neck, {0.0F, 0.0F, -1.0F});

    for (unsigned i = 0; i < numSides; ++i)
    {
        const unsigned next = (i + 1) % numSides;
        builder.triangle(tail + i, tail + next, top + next);
        builder.triangle(tail + i, top + next, top + i);
        builder.triangle(capMiddle, cap + next, cap + i);
        builder.triangle(baseMiddle, base + next, base + i);
        builder.triangle(rim + i, rim + next, tips + i);
    }
    return builder.take();
}

}
