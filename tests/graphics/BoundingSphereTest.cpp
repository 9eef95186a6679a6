#include <tavrin/graphics/BoundingSphere.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

namespace
{

using namespace tavrin;
using namespace tavrin::graphics;

using Points = std::vector<Tensor<float, 3>>;
using Position = Tensor<double, 3>;

constexpr float infinity = std::numeric_limits<float>::infinity();

Position widened(const Tensor<float, 3>& point)
{
    return Position(point[0], point[1], point[2]);
}

Points randomPoints(std::size_t count, unsigned seed, float offset = 0.0F)
{
    std::mt19937 random(seed);
    std::normal_distribution<float> normal;
    Points points(count);
    for (auto& point : points)
        for (float& part : point)
            part = normal(random) + offset;
    return points;
}

/// Expects a sphere to enclose all points and to be the smallest one: wherever its center is moved,
/// some point that it touches does not get nearer.
void expectSmallest(const Points& points, const BoundingSphere& sphere)
{
    std::vector<Position> touched;
    for (const auto& point : points)
    {
        const Position offset = widened(point) - sphere.center;
        ASSERT_LE(norm(offset), sphere.radius);
        if (norm(offset) >= sphere.radius * (1.0 - 2e-7))
            touched.push_back(offset);
    }
    std::mt19937 random(1);
    std::normal_distribution<double> normal;
    for (int i = 0; i < 200; ++i)
    {
        const Position direction =
            normalized(Position(normal(random), normal(random), normal(random)));
        double least = std::numeric_limits<double>::infinity();
        for (const Position& offset : touched)
            least = std::min(least, dot(offset, direction));
        ASSERT_LE(least, 1e-3 * sphere.radius);
    }
}

TEST(BoundingSphere, IsKnownForSimpleSets)
{
    EXPECT_EQ(computeBoundingSphere(Points{}), BoundingSphere{});
    EXPECT_EQ(computeBoundingSphere({{1.0F, 2.0F, 3.0F}}), (BoundingSphere{{1.0, 2.0, 3.0}, 0.0}));
    EXPECT_EQ(computeBoundingSphere(Points(7, {1.0F, 2.0F, 3.0F})),
              (BoundingSphere{{1.0, 2.0, 3.0}, 0.0}));
    const BoundingSphere pair = computeBoundingSphere({{-1.0F, 0.0F, 0.0F}, {3.0F, 0.0F, 0.0F}});
    EXPECT_EQ(pair, (BoundingSphere{{1.0, 0.0, 0.0}, 2.0}));

    Points line;
    for (int i = 0; i <= 100; ++i)
        line.emplace_back(i % 7 == 0 ? 0 : i, i % 7 == 0 ? 0 : 2 * i, 0);
    EXPECT_NEAR(computeBoundingSphere(line).radius, 50.0 * std::sqrt(5.0), 1e-5);

    // The longest side determines the sphere of an obtuse triangle, all corners that of an equilateral
    // one.
    EXPECT_NEAR(computeBoundingSphere({{0, 0, 0}, {4, 0, 0}, {2, 1, 0}}).radius, 2.0, 1e-6);
    EXPECT_NEAR(computeBoundingSphere({{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}).radius,
                std::sqrt(2.0 / 3.0), 1e-7);
    Points cube;
    for (int i = 0; i < 8; ++i)
        cube.emplace_back(i & 1, i >> 1 & 1, i >> 2 & 1);
    EXPECT_NEAR(computeBoundingSphere(cube).radius, 0.5 * std::numbers::sqrt3, 1e-7);
    expectSmallest(cube, computeBoundingSphere(cube));
}

TEST(BoundingSphere, IsTheSmallestForRandomSets)
{
    for (unsigned seed = 0; seed < 60; ++seed)
    {
        Points points = randomPoints(2 + seed * seed, seed, seed % 3 == 0 ? 1e4F : 0.0F);
        if (seed % 4 == 1)
            for (auto& point : points)
                point[2] = 0.5F;
        if (seed % 4 == 2)
            points.insert(points.end(), points.begin(), points.begin() + 2);
        expectSmallest(points, computeBoundingSphere(points));
    }
}

TEST(BoundingSphere, IsTheSmallestWhereManyPointsAreEquallyFar)
{
    std::mt19937 random(3);
    std::normal_distribution<double> normal;
    Points points;
    for (int i = 0; i < 5000; ++i)
    {
        const Position p = normalized(Position(normal(random), normal(random), normal(random)));
        points.emplace_back(p[0], p[1], p[2]);
    }
    const BoundingSphere sphere = computeBoundingSphere(points);
    EXPECT_NEAR(sphere.radius, 1.0, 1e-6);
    EXPECT_LT(norm(sphere.center), 1e-5);
}

TEST(BoundingSphere, IgnoresWhatIsNotFinite)
{
    const Points finite{{-1.0F, 0.0F, 0.0F}, {1.0F, 0.0F, 0.0F}};
    Points points = finite;
    points.insert(points.begin(), {NAN, 0.0F, 0.0F});
    points.push_back({0.0F, infinity, 0.0F});
    points.push_back({0.0F, 0.0F, -infinity});
    EXPECT_EQ(computeBoundingSphere(points), computeBoundingSphere(finite));
    EXPECT_EQ(computeBoundingSphere({{NAN, NAN, NAN}}), BoundingSphere{});
}

TEST(BoundingSphere, CopesWithExtremeNumbers)
{
    const BoundingSphere huge =
        computeBoundingSphere({{-3e38F, 0.0F, 0.0F}, {3e38F, 0.0F, 0.0F}, {0.0F, 1e38F, 0.0F}});
    EXPECT_NEAR(huge.radius / 3e38, 1.0, 1e-6);
    const BoundingSphere far = computeBoundingSphere({{1e7F, 0, 0}, {1e7F + 2.0F, 0, 0}});
    EXPECT_EQ(far, (BoundingSphere{{1e7 + 1.0, 0.0, 0.0}, 1.0}));
}

TEST(BoundingSphere, TakesAMillionPoints)
{
    const Points points = randomPoints(1'000'000, 5);
    expectSmallest(points, computeBoundingSphere(points));
}

}
