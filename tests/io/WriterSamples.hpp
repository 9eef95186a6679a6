#pragma once

#include <support/TemporaryFolder.hpp>
#include <support/abortFlags.hpp>
#include <support/errorOf.hpp>
#include <support/realData.hpp>
#include <support/smallData.hpp>

#include <tavrin/domain/CurvilinearGrid.hpp>
#include <tavrin/domain/RectilinearGrid.hpp>
#include <tavrin/domain/UnstructuredGrid.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

namespace samples
{

using namespace support;
using namespace tavrin;

/// A folder of its own for each test.
class TemporaryFolderTest : public testing::Test
{
protected:
    const std::filesystem::path& folder() const { return mFolder.path(); }

    std::vector<std::string> listing() const { return mFolder.listing(); }
    std::string contentOf(const std::string& name) const { return mFolder.read(name); }
    void create(const std::string& name, const std::string& content) const
    {
        mFolder.write(name, content);
    }

private:
    TemporaryFolder mFolder;
};

/// Numbers that are easily lost on the way through a file.
inline double awkwardNumber(std::size_t i)
{
    using Limits = std::numeric_limits<double>;
    constexpr std::array special{-0.0,
                                 0.1,
                                 1.0 / 3.0,
                                 Limits::infinity(),
                                 Limits::max(),
                                 -Limits::infinity(),
                                 -Limits::min(),
                                 Limits::quiet_NaN(),
                                 Limits::lowest(),
                                 Limits::denorm_min()};
    return i % 3 == 0 ? special[i / 3 % special.size()] : 1.0 / static_cast<double>(i + 1);
}

template<typename T>
std::vector<T> awkwardValues(std::size_t count)
{
    std::vector<T> values(count);
    std::size_t number = 0;
    for (T& value : values)
        for (double& component : value)
            component = awkwardNumber(number++);
    return values;
}

/// Finite positions, all different, none of them 0.
template<std::size_t D>
std::shared_ptr<const ValueArray<Tensor<double, D>>> scatteredPoints(std::size_t count)
{
    std::vector<Tensor<double, D>> points(count);
    for (std::size_t i = 0; i < count; ++i)
        for (std::size_t axis = 0; axis < D; ++axis)
            points[i][axis] = std::sqrt(static_cast<double>(3 * i + axis + 2)) - 2.0;
    return stored(std::move(points));
}

/// A grid with one cell of each of the types, whose vertices are consecutive points.
template<std::size_t D>
std::shared_ptr<const Domain> oneCellOfEach(const std::vector<CellType>& types)
{
    std::vector<std::int64_t> offsets{0};
    std::vector<std::int64_t> connectivity;
    for (const CellType type : types)
    {
        const auto vertices = static_cast<std::int64_t>(numVerticesOf(type));
        for (std::int64_t k = 0; k < vertices; ++k)
            connectivity.push_back((offsets.back() + 3 * k) % 40);
        offsets.push_back(offsets.back() + vertices);
    }
    return std::make_shared<UnstructuredGrid<D>>(
        scatteredPoints<D>(40),
        CellTable{types, IndexArray(std::move(offsets)), IndexArray(std::move(connectivity))});
}

template<std::size_t D>
std::shared_ptr<const Domain> uniformGrid()
{
    typename UniformGrid<D>::Layout layout;
    for (std::size_t axis = 0; axis < D; ++axis)
    {
        layout.size[axis] = 2 + axis;
        layout.origin[axis] = 1.0 / 3.0 - static_cast<double>(axis);
        layout.spacing[axis] = 0.1 * static_cast<double>(axis + 1);
    }
    return std::make_shared<UniformGrid<D>>(layout);
}

/// Extents that do not start at 0 and axes that are not those of the coordinates.
inline std::shared_ptr<const Domain> orientedGrid()
{
    UniformGrid<3>::Layout layout;
    layout.size = {3, 1, 4};
    layout.origin = {1e-300, -1.0 / 7.0, 1e17 / 3.0};
    layout.spacing = {0.1, -2.0 / 3.0, 1.0 / 7.0};
    layout.firstIndex = {-3, 5, 100};
    const double c = std::sqrt(0.5);
    layout.direction = {c, -c, 0.0, c, c, 0.0, 0.0, 0.0, 1.0};
    return std::make_shared<UniformGrid<3>>(layout);
}

template<std::size_t D>
std::shared_ptr<const Domain> rectilinearGrid()
{
    typename RectilinearGrid<D>::Coordinates coordinates;
    for (std::size_t axis = 0; axis < D; ++axis)
        for (std::size_t i = 0; i < 2 + axis; ++i)
            coordinates[axis].push_back(std::sqrt(static_cast<double>(i + 1)) - 0.5);
    return std::make_shared<RectilinearGrid<D>>(coordinates);
}

template<std::size_t D>
std::shared_ptr<const Domain> curvilinearGrid()
{
    GridSize size{1, 1, 1};
    for (std::size_t axis = 0; axis < D; ++axis)
        size[axis] = 2 + axis;
    return std::make_shared<CurvilinearGrid<D>>(size,
                                                scatteredPoints<D>(size[0] * size[1] * size[2]));
}

template<std::size_t D>
std::shared_ptr<const Domain> pointCloud()
{
    return std::make_shared<PointCloud<D>>(scatteredPoints<D>(5));
}

/// A function without a time of values that are hard to keep.
template<typename T = Scalar>
std::shared_ptr<const Function<T>> awkwardFunction(std::shared_ptr<const Domain> domain,
                                                   const DomainPart& part = PointSetBase::Points,
                                                   std::vector<double> times = {})
{
    const std::size_t count = domain->numElements(part) * std::max<std::size_t>(1, times.size());
    return addData(std::move(domain), part, awkwardValues<T>(count), Precision::Float64,
                   std::move(times), "f");
}

}
