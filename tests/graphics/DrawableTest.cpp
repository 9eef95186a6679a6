#include <support/errorOf.hpp>

#include <tavrin/graphics/ObjectRenderer.hpp>

#include <tavrin/base/Exceptions.hpp>

#include <gtest/gtest.h>

#include <cmath>

namespace
{

using namespace support;
using namespace tavrin;
using namespace tavrin::graphics;

TEST(ObjectRenderer, KeepsArrowsInDoublePrecisionAndInOrder)
{
    ObjectRenderer renderer(GraphicsSystem::mInstance, static_cast<ShadingType>(2));
    renderer.reserve(ObjectType::TubeArrow, 2);
    const Color red{1.0F, 0.0F, 0.0F, 0.5F};
    renderer.addArrow({1e7 + 0.1, 0.0, 0.0}, {0.0, 2.0, 0.0}, 0.1, red, true)
        .addArrow({0.0, 0.0, NAN}, {1.0, 0.0, 0.0}, 0.2, Color{}, false);
    const auto drawable = renderer.commit();
    const auto* const batch = dynamic_cast<const ArrowBatch*>(drawable.get());
    ASSERT_NE(batch, nullptr);
    ASSERT_EQ(batch->arrows().size(), 2U);
    EXPECT_EQ(batch->arrows()[0].start, Vector3(1e7 + 0.1, 0.0, 0.0));
    EXPECT_EQ(batch->arrows()[0].direction, Vector3(0.0, 2.0, 0.0));
    EXPECT_EQ(batch->arrows()[0].width, 0.1);
    EXPECT_EQ(batch->arrows()[0].color, red);
    EXPECT_TRUE(batch->arrows()[0].tube);
    EXPECT_FALSE(batch->arrows()[1].tube);
    EXPECT_EQ(batch->shading(), ShadingType::Phong);
    EXPECT_EQ(batch->boundingSphere(), (BoundingSphere{{1e7 + 0.1, 1.0, 0.0}, 1.0}));

    const auto empty = renderer.commit();
    EXPECT_TRUE(dynamic_cast<const ArrowBatch&>(*empty).arrows().empty());
    EXPECT_EQ(empty->boundingSphere(), BoundingSphere{});
}

TEST(ObjectRenderer, RefusesUnknownObjects)
{
    ObjectRenderer renderer(GraphicsSystem::mInstance, ShadingType::Phong);
    EXPECT_EQ(errorOf<logic_error>([&] { renderer.reserve(static_cast<ObjectType>(3), 1); }),
              "object type 3 is not known; use 4 (arrow) or 5 (tube arrow)");
}

TEST(Primitive, IsWhatItsConfigurationSays)
{
    const std::vector<Tensor<float, 3>> vertices{{0.0F, 1.0F, 2.0F}, {3.0F, 4.0F, 5.0F}};
    const BoundingSphere sphere = computeBoundingSphere(vertices);
    const auto drawable = GraphicsSystem::makePrimitive(
        PrimitiveConfig(static_cast<RenderPrimitives>(3))
            .renderBin(static_cast<RenderBin>(1))
            .vertexBuffer("in_vertex", GraphicsSystem::makeBuffer(vertices))
            .vertexBuffer("in_color",
                          GraphicsSystem::makeBuffer({Color{0.1F, 0.2F, 0.3F, 0.4F}, Color{}},
                                                     ColorChannel::RGBA))
            .uniform("u_lineWidth", 2.5F)
            .boundingSphere(sphere),
        GraphicsSystem::makeProgram("v.glsl", "f.glsl", "g.glsl"));
    const auto& primitive = dynamic_cast<const Primitive&>(*drawable);
    EXPECT_EQ(primitive.config().renderBin(), RenderBin::Transparent);
    EXPECT_EQ(primitive.config().primitives(), RenderPrimitives::Lines);
    EXPECT_EQ(primitive.config().uniforms(), (PrimitiveConfig::Uniforms{{"u_lineWidth", 2.5F}}));
    EXPECT_EQ(primitive.program().vertex, "v.glsl");
    EXPECT_EQ(primitive.program().fragment, "f.glsl");
    EXPECT_EQ(primitive.program().geometry, "g.glsl");
    EXPECT_EQ(drawable->boundingSphere(), sphere);
    EXPECT_EQ(primitive.numVertices(), 2U);
    const VertexBuffer* const positions = primitive.findBuffer("in_vertex");
    ASSERT_NE(positions, nullptr);
    EXPECT_EQ(positions->numComponents(), 3U);
    EXPECT_EQ(std::vector(positions->values().begin(), positions->values().end()),
              (std::vector{0.0F, 1.0F, 2.0F, 3.0F, 4.0F, 5.0F}));
    const VertexBuffer* const colors = primitive.findBuffer("in_color");
    ASSERT_NE(colors, nullptr);
    EXPECT_EQ(std::vector(colors->values().begin(), colors->values().end()),
              (std::vector{0.1F, 0.2F, 0.3F, 0.4F, 0.0F, 0.0F, 0.0F, 1.0F}));
    EXPECT_EQ(primitive.findBuffer("in_normal"), nullptr);
}

TEST(Primitive, RefusesWhatDoesNotFit)
{
    const auto program = GraphicsSystem::makeProgram("v", "f", "g");
    const auto make = [](PrimitiveConfig config, std::shared_ptr<const ShaderProgram> files)
    { return errorOf<logic_error>([&] { GraphicsSystem::makePrimitive(config, files); }); };
    PrimitiveConfig config(RenderPrimitives::Lines);
    EXPECT_EQ(make(config, nullptr), "a primitive needs a shader program");
    config.vertexBuffer("in_vertex", GraphicsSystem::makeBuffer(std::vector<Tensor<float, 3>>(4)))
        .vertexBuffer("in_color",
                      GraphicsSystem::makeBuffer(std::vector<Color>(3), ColorChannel::RGBA));
    EXPECT_EQ(make(config, program),
              "the vertex buffer \"in_color\" has 3 vertices and \"in_vertex\" has 4");
    EXPECT_EQ(make(PrimitiveConfig(RenderPrimitives::Lines).vertexBuffer("a", nullptr), program),
              "the vertex buffer \"a\" is missing");
    EXPECT_EQ(
        errorOf<logic_error>([] { GraphicsSystem::makeBuffer({}, static_cast<ColorChannel>(3)); }),
        "color layout 3 is not known; use 4 (RGBA)");
}

}
