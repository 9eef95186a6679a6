#include <tavrin/location/ShapeFunctions.hpp>

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace
{

using namespace tavrin;

class ShapeFunctions : public testing::TestWithParam<CellType>
{
protected:
    CellType type() const { return GetParam(); }
    std::size_t numVertices() const { return numVerticesOf(type()); }

    std::vector<double> weightsAt(const Reference& at) const
    {
        std::vector<double> weights(numVertices());
        shapeFunctions(type(), at, weights);
        return weights;
    }

    /// Points in the cell, among them some close to vertex 4, where pyramids have their apex.
    std::vector<Reference> pointsInside()
    {
        std::uniform_real_distribution<double> coordinate(0.0, 1.0);
        std::vector<Reference> points;
        while (points.size() < 50)
        {
            const Reference at{coordinate(mRandom), coordinate(mRandom), coordinate(mRandom)};
            if (distanceOutside(type(), at) <= 0.0)
                points.push_back(at);
        }
        if (linearTypeOf(type()) == CellType::Pyramids)
            points.push_back({1e-12, 2e-12, 1.0 - 4e-12});
        return points;
    }

    std::mt19937 mRandom{7};
};

TEST_P(ShapeFunctions, AreOneAtTheirVertexAndZeroAtOthers)
{
    for (std::size_t vertex = 0; vertex < numVertices(); ++vertex)
    {
        const Reference at = vertexReference(type(), vertex);
        EXPECT_LE(distanceOutside(type(), at), 0.0);
        const auto weights = weightsAt(at);
        for (std::size_t k = 0; k < numVertices(); ++k)
            EXPECT_NEAR(weights[k], k == vertex ? 1.0 : 0.0, 1e-15) << k << " at " << vertex;
    }
}

TEST_P(ShapeFunctions, ReproducePolynomialsOfTheirDegree)
{
    const bool isQuadratic = linearTypeOf(type()) != type();
    const std::size_t dimension = dimensionOf(type());
    const auto polynomial = [&](const Reference& at)
    {
        double value = 1.0;
        for (std::size_t i = 0; i < dimension; ++i)
        {
            value += static_cast<double>(i + 2) * at[i];
            for (std::size_t j = 0; isQuadratic && j <= i; ++j)
                value -= static_cast<double>(3 * i + j + 1) * at[i] * at[j];
        }
        return value;
    };
    for (const Reference& at : pointsInside())
    {
        const auto weights = weightsAt(at);
        double value = 0.0;
        for (std::size_t k = 0; k < numVertices(); ++k)
            value += weights[k] * polynomial(vertexReference(type(), k));
        EXPECT_NEAR(value, polynomial(at), 1e-13);
    }
}

TEST_P(ShapeFunctions, HaveTheDerivativesOfTheirDifferences)
{
    constexpr double step = 1e-6;
    for (const Reference& at : pointsInside())
    {
        if (linearTypeOf(type()) == CellType::Pyramids && at[2] > 0.99)
            continue;
        std::vector<std::array<double, 3>> derivatives(numVertices());
        shapeDerivatives(type(), at, derivatives);
        for (std::size_t axis = 0; axis < dimensionOf(type()); ++axis)
        {
            Reference before = at;
            Reference after = at;
            before[axis] -= step;
            after[axis] += step;
            const auto lower = weightsAt(before);
            const auto upper = weightsAt(after);
            for (std::size_t k = 0; k < numVertices(); ++k)
                EXPECT_NEAR(derivatives[k][axis], (upper[k] - lower[k]) / (2.0 * step), 1e-7);
        }
    }
}

std::vector<CellType> validTypes()
{
    std::vector<CellType> types;
    for (std::size_t i = 0; i < numCellTypes; ++i)
        if (static_cast<CellType>(i) != CellType::Invalid)
            types.push_back(static_cast<CellType>(i));
    return types;
}

INSTANTIATE_TEST_SUITE_P(AllCells, ShapeFunctions, testing::ValuesIn(validTypes()),
                         [](const auto& test)
                         {
                             std::string name(nameOf(test.param));
                             std::erase(name, ' ');
                             return name;
                         });

TEST(VertexNumbers, FollowTheFilesOfQuadraticCells)
{
    const auto at = [](CellType type, std::size_t k) { return vertexReference(type, k); };
    EXPECT_EQ(at(CellType::QuadraticTetrahedron, 6), (Reference{0.0, 0.5, 0.0}));
    EXPECT_EQ(at(CellType::QuadraticHexahedron, 18), (Reference{1.0, 1.0, 0.5}));
    EXPECT_EQ(at(CellType::QuadraticPrism, 13), (Reference{1.0, 0.0, 0.5}));
    EXPECT_EQ(at(CellType::QuadraticPyramid, 11), (Reference{0.5, 0.5, 0.5}));
    EXPECT_EQ(at(CellType::BiquadraticQuad, 8), (Reference{0.5, 0.5, 0.0}));
    EXPECT_EQ(at(CellType::TriquadraticHexahedron, 20), (Reference{0.0, 0.5, 0.5}));
    EXPECT_EQ(at(CellType::TriquadraticHexahedron, 23), (Reference{0.5, 1.0, 0.5}));
    EXPECT_EQ(at(CellType::TriquadraticHexahedron, 25), (Reference{0.5, 0.5, 1.0}));
}

}
