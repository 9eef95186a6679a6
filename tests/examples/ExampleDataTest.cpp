#include "examples/ExampleFields.hpp"
#include "examples/Trigonometry.hpp"
#include <examples/ExampleData.hpp>

#include <support/TemporaryFolder.hpp>
#include <support/abortFlags.hpp>

#include <tavrin/domain/StructuredGrid.hpp>
#include <tavrin/domain/UnstructuredGrid.hpp>
#include <tavrin/io/Loader.hpp>

#include <gtest/gtest.h>

#include <bit>
#include <cstdlib>

namespace
{

using namespace support;
using namespace tavrin;
using namespace tavrin::app;
using namespace tavrin::app::examples;

template<typename T>
const Function<T>& typed(const Field& field)
{
    return dynamic_cast<const Function<T>&>(*field);
}

/// The derivative of the values of a step along an axis, by central differences.
template<std::size_t D>
Tensor<double, D> derivative(const Function<Tensor<double, D>>& function, std::size_t step,
                             std::size_t point, std::size_t axis)
{
    const auto& grid = dynamic_cast<const StructuredGrid<D>&>(*function.domain());
    const std::array<std::size_t, 3> strides{1, grid.size()[0], grid.size()[0] * grid.size()[1]};
    const auto values = function.stepValues(step);
    const std::size_t before = point - strides[axis];
    const std::size_t after = point + strides[axis];
    return ((*values)[after] - (*values)[before]) /
           (grid.point(after)[axis] - grid.point(before)[axis]);
}

/// The points that have neighbors on all sides.
template<std::size_t D>
std::vector<std::size_t> innerPoints(const FunctionBase& function)
{
    const auto& grid = dynamic_cast<const StructuredGrid<D>&>(*function.domain());
    std::vector<std::size_t> inner;
    for (std::size_t i = 0; i < grid.numPoints(); ++i)
    {
        const GridSize indices = grid.pointIndices(i);
        bool isInside = true;
        for (std::size_t axis = 0; axis < D; ++axis)
            isInside &= indices[axis] > 0 && indices[axis] + 1 < grid.size()[axis];
        if (isInside)
            inner.push_back(i);
    }
    return inner;
}

TEST(Trigonometry, AgreesWithTheSystemsToTheLastBits)
{
    for (int i = -4000; i <= 4000; ++i)
    {
        const double turns = i / 1003.0;
        EXPECT_NEAR(sine(turns), std::sin(2.0 * std::numbers::pi * turns), 1e-14);
        EXPECT_NEAR(cosine(turns), std::cos(2.0 * std::numbers::pi * turns), 1e-14);
    }
    EXPECT_EQ(sine(0.5), 0.0);
    EXPECT_EQ(cosine(-0.75), 0.0);
    EXPECT_EQ(sine(-2.25), -1.0);
}

TEST(DoubleGyre, IsIncompressibleStaysInItsBoxAndRepeats)
{
    const Field field = makeDoubleGyre();
    const auto& velocity = typed<Vector2>(field);
    ASSERT_EQ(velocity.numTimeSteps(), 21U);
    const auto& grid = dynamic_cast<const StructuredGrid<2>&>(*velocity.domain());
    for (const std::size_t step : {0, 3, 5})
        for (const std::size_t point : innerPoints<2>(velocity))
            EXPECT_NEAR(derivative(velocity, step, point, 0)[0] +
                            derivative(velocity, step, point, 1)[1],
                        0.0, 2e-3);
    for (std::size_t point = 0; point < grid.numPoints(); ++point)
    {
        const auto [i, j, k] = grid.pointIndices(point);
        const Vector2 value = (*velocity.stepValues(3))[point];
        if (i == 0 || i == 100)
        {
            EXPECT_NEAR(value[0], 0.0, 1e-15);
        }
        if (j == 0 || j == 50)
        {
            EXPECT_NEAR(value[1], 0.0, 1e-15);
        }
        EXPECT_EQ((*velocity.stepValues(0))[point], (*velocity.stepValues(20))[point]);
    }
    // At time 0 the gyres turn around the centers of the two squares; at a quarter of the period the
    // line between them has moved to the left.
    EXPECT_NEAR(norm((*velocity.stepValues(0))[25 + 101 * 25]), 0.0, 1e-15);
    EXPECT_LT((*velocity.stepValues(5))[50 + 101 * 25][1], -0.1);
}

TEST(AbcFlow, IsItsOwnCurlAndPeriodic)
{
    const Field field = makeAbcFlow();
    const auto& velocity = typed<Vector3>(field);
    for (const std::size_t point : innerPoints<3>(velocity))
    {
        const Vector3 alongX = derivative(velocity, 0, point, 0);
        const Vector3 alongY = derivative(velocity, 0, point, 1);
        const Vector3 alongZ = derivative(velocity, 0, point, 2);
        const Vector3 curl(alongY[2] - alongZ[1], alongZ[0] - alongX[2], alongX[1] - alongY[0]);
        EXPECT_LT(norm(curl - (*velocity.values())[point]), 0.03);
    }
    for (std::size_t i = 0; i < 33 * 33; ++i)
        EXPECT_EQ((*velocity.values())[i], (*velocity.values())[i + 33 * 33 * 32]);
}

TEST(PlateWithHole, HasAFreeEdgeAndTripleStressBesideTheHole)
{
    const Field field = makePlateWithHole();
    const auto& stress = typed<Matrix3>(field);
    const auto& grid = dynamic_cast<const StructuredGrid<2>&>(*stress.domain());
    double largest = 0.0;
    for (std::size_t point = 0; point < grid.numPoints(); ++point)
    {
        const Matrix3 value = (*stress.values())[point];
        const auto position = grid.point(point);
        if (grid.pointIndices(point)[0] == 0)
        {
            EXPECT_LT(norm(multiply(value, Vector3(position[0], position[1], 0.0))), 1e-14);
        }
        if (grid.pointIndices(point)[0] == 32)
        {
            EXPECT_NEAR(value(0, 0), 1.0, 0.11);
        }
        largest = std::max(largest, norm(value));
    }
    EXPECT_NEAR(largest, 3.0, 1e-14);
    EXPECT_NEAR((*stress.values())[33 * 32](0, 0), 3.0, 1e-14);
    EXPECT_NEAR((*stress.values())[0](1, 1), -1.0, 1e-14);
    EXPECT_EQ(grid.point(0), grid.point(33 * 128));
}

TEST(SphericalVortex, LetsAsMuchOutAsInAndStagnatesAtThePoles)
{
    const Field field = makeSphericalVortex();
    const auto& velocity = typed<Vector3>(field);
    const auto& grid = dynamic_cast<const UnstructuredGrid<3>&>(*velocity.domain());
    ASSERT_EQ(grid.numCells(), 12000U);
    double volume = 0.0;
    double flux = 0.0;
    for (std::size_t cell = 0; cell < grid.numCells(); ++cell)
    {
        std::array<Vector3, 4> corners;
        std::array<Vector3, 4> values;
        for (std::size_t k = 0; k < 4; ++k)
        {
            corners[k] = grid.point(grid.cell(cell).pointIndex(k));
            values[k] = (*velocity.values())[grid.cell(cell).pointIndex(k)];
        }
        const auto cross = [](const Vector3& a, const Vector3& b)
        {
            return Vector3(a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2],
                           a[0] * b[1] - a[1] * b[0]);
        };
        const Vector3 a = corners[1] - corners[0];
        const Vector3 b = corners[2] - corners[0];
        const Vector3 c = corners[3] - corners[0];
        const double cellVolume = dot(cross(a, b), c) / 6.0;
        EXPECT_GT(cellVolume, 1e-4);
        volume += cellVolume;
        // Divergence times volume of the linear interpolant.
        flux += (dot(values[1] - values[0], cross(b, c)) + dot(values[2] - values[0], cross(c, a)) +
                 dot(values[3] - values[0], cross(a, b))) /
                6.0;
    }
    EXPECT_NEAR(volume, 4.0 * std::numbers::pi * 1.6 * 1.6, 1.0);
    EXPECT_NEAR(flux, 0.0, 0.01);
    int poles = 0;
    for (std::size_t point = 0; point < grid.numPoints(); ++point)
    {
        const Vector3 position = grid.point(point);
        if (std::abs(position[1]) + std::abs(position[2]) < 1e-12 &&
            std::abs(std::abs(position[0]) - 1.0) < 1e-12)
        {
            EXPECT_LT(norm((*velocity.values())[point]), 1e-12);
            ++poles;
        }
    }
    EXPECT_EQ(poles, 2);
}

TEST(TwistedBar, TurnsItsCrossSectionsAndFollowsTheEllipse)
{
    const Field field = makeTwistedBar();
    const auto& displacement = typed<Vector3>(field);
    const auto& grid = dynamic_cast<const UnstructuredGrid<3>&>(*displacement.domain());
    int onEllipse = 0;
    for (std::size_t point = 0; point < grid.numPoints(); ++point)
    {
        const Vector3 position = grid.point(point);
        const Vector3 value = (*displacement.values())[point];
        EXPECT_NEAR(value[1] * position[1] + value[2] * position[2], 0.0, 1e-15);
        const double radius = position[1] * position[1] + 4.0 * position[2] * position[2];
        EXPECT_LT(radius, 1.0 + 1e-12);
        onEllipse += radius > 1.0 - 1e-12 ? 1 : 0;
    }
    // 4 x 12 on each of the 21 sections, including the midpoints of the edges.
    EXPECT_EQ(onEllipse, 48 * 21);
}

TEST(ExampleData, HasTheSameBitsEverywhere)
{
    std::uint64_t hash = 14695981039346656037U;
    const auto add = [&](double number)
    { hash = (hash ^ std::bit_cast<std::uint64_t>(number)) * 1099511628211U; };
    const auto addValues = [&]<typename T>(const Function<T>& function)
    {
        for (std::size_t i = 0; i < function.values()->size(); ++i)
            for (const double component : (*function.values())[i])
                add(component);
    };
    addValues(typed<Vector2>(makeDoubleGyre()));
    addValues(typed<Vector3>(makeAbcFlow()));
    addValues(typed<Matrix3>(makePlateWithHole()));
    addValues(typed<Vector3>(makeSphericalVortex()));
    addValues(typed<Vector3>(makeTwistedBar()));
    EXPECT_EQ(hash, 10394473869727904166U);
}

TEST(ExampleData, IsWrittenSmallAndReadWithoutNamingAnArray)
{
    const TemporaryFolder temporary;
    const std::filesystem::path folder = temporary / "new/folder";
    const auto files = writeExamples(folder, ExistingFiles::Refuse, neverAbort);
    EXPECT_EQ(files.size(), 9U);
    io::Loader loader([](const std::string& line) { ADD_FAILURE() << line; }, neverAbort);
    for (const ExampleFile& file : files)
    {
        SCOPED_TRACE(file.name);
        if (file.name.ends_with(".yaml"))
            continue;
        io::DataReference reference;
        reference.file = folder / file.name;
        EXPECT_NE(loader.loadFunction(reference), nullptr);
        EXPECT_NE(loader.loadGrid(reference), nullptr);
    }
    std::uintmax_t bytes = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        bytes += entry.is_regular_file() ? entry.file_size() : 0;
    EXPECT_LT(bytes, 6'000'000U);
}

}
