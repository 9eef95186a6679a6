#include "LocatorBench.hpp"

#include "RatioReporter.hpp"
#include "VtkThreads.hpp"

#include <tavrin/domain/CurvilinearGrid.hpp>
#include <tavrin/domain/UnstructuredGrid.hpp>
#include <tavrin/location/locatorOf.hpp>
#include <tavrin/value/WrappedValueArray.hpp>

#include <omp.h>
#include <vtkCellTreeLocator.h>
#include <vtkDoubleArray.h>
#include <vtkGenericCell.h>
#include <vtkNew.h>
#include <vtkStaticCellLocator.h>
#include <vtkStructuredGrid.h>
#include <vtkUnstructuredGrid.h>

#include <fmt/format.h>

#include <cmath>
#include <random>

namespace tavrin::bench
{

namespace
{

constexpr std::size_t numQueries = 1000000;

using Points = std::vector<Vector3>;

/// A cube of points, bent and randomly displaced.
Points latticePoints(std::size_t perAxis)
{
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> shake(-0.1, 0.1);
    Points points;
    for (std::size_t i = 0; i < perAxis * perAxis * perAxis; ++i)
    {
        const std::size_t layer = i / (perAxis * perAxis);
        const std::size_t row = i / perAxis % perAxis;
        Vector3 point(static_cast<double>(i % perAxis), static_cast<double>(row),
                      static_cast<double>(layer));
        for (double& coordinate : point)
            coordinate = (coordinate + shake(random)) / static_cast<double>(perAxis - 1);
        points.push_back(point + 0.03 * Vector3(std::sin(6.0 * point[1]), std::sin(6.0 * point[2]),
                                                std::sin(6.0 * point[0])));
    }
    return points;
}

/// One grid for tavrin and VTK.
struct Mesh
{
    std::string name;
    Points points;
    std::shared_ptr<const EmbeddedCellComplex<3>> grid;
    vtkSmartPointer<vtkPointSet> dataSet;
};

vtkSmartPointer<vtkPoints> vtkPointsOf(const Points& points)
{
    vtkNew<vtkDoubleArray> array;
    array->SetNumberOfComponents(3);
    array->SetArray(const_cast<double*>(points.front().begin()),
                    static_cast<vtkIdType>(3 * points.size()), 1);
    auto result = vtkSmartPointer<vtkPoints>::New();
    result->SetData(array);
    return result;
}

std::shared_ptr<const ValueArray<Vector3>> wrapped(const Points& points)
{
    return std::make_shared<WrappedValueArray<Vector3, double>>(points.front().begin(),
                                                                points.size(), 3, nullptr);
}

std::shared_ptr<Mesh> hexahedra()
{
    constexpr std::size_t perAxis = 81;
    auto mesh = std::make_shared<Mesh>();
    mesh->name = "0.5M curvilinear hexahedra";
    mesh->points = latticePoints(perAxis);
    mesh->grid = std::make_shared<CurvilinearGrid<3>>(GridSize{perAxis, perAxis, perAxis},
                                                      wrapped(mesh->points));
    vtkNew<vtkStructuredGrid> grid;
    grid->SetDimensions(perAxis, perAxis, perAxis);
    grid->SetPoints(vtkPointsOf(mesh->points));
    mesh->dataSet = grid;
    return mesh;
}

std::shared_ptr<Mesh> tetrahedra()
{
    constexpr std::size_t perAxis = 45;
    constexpr int pieces[6][4] = {{0, 1, 2, 6}, {0, 2, 3, 6}, {0, 3, 7, 6},
                                  {0, 7, 4, 6}, {0, 4, 5, 6}, {0, 5, 1, 6}};
    auto mesh = std::make_shared<Mesh>();
    mesh->name = "0.5M tetrahedra";
    mesh->points = latticePoints(perAxis);
    const CurvilinearGrid<3> cubes({perAxis, perAxis, perAxis}, wrapped(mesh->points));
    std::vector<std::int64_t> offsets{0};
    std::vector<std::int64_t> connectivity;
    vtkNew<vtkUnstructuredGrid> grid;
    for (std::size_t i = 0; i < cubes.numCells(); ++i)
        for (const auto& piece : pieces)
        {
            vtkIdType vertices[4];
            for (int k = 0; k < 4; ++k)
                vertices[k] = static_cast<vtkIdType>(
                    cubes.cell(i).pointIndex(static_cast<std::size_t>(piece[k])));
            grid->InsertNextCell(VTK_TETRA, 4, vertices);
            connectivity.insert(connectivity.end(), vertices, vertices + 4);
            offsets.push_back(static_cast<std::int64_t>(connectivity.size()));
        }
    grid->SetPoints(vtkPointsOf(mesh->points));
    mesh->dataSet = grid;
    mesh->grid = std::make_shared<UnstructuredGrid<3>>(
        wrapped(mesh->points),
        CellTable{std::vector(offsets.size() - 1, CellType::Tetrahedra),
                  IndexArray(std::move(offsets)), IndexArray(std::move(connectivity))});
    return mesh;
}

/// Positions line after line, or at random. A few lie outside.
Points queryPoints(bool areOrdered)
{
    std::mt19937_64 random(2);
    std::uniform_real_distribution<double> coordinate(0.0, 1.0);
    Points queries;
    for (std::size_t i = 0; i < numQueries; ++i)
    {
        const std::size_t row = i / 100 % 100;
        const std::size_t layer = i / 10000;
        queries.push_back(
            areOrdered ? Vector3(static_cast<double>(i % 100), static_cast<double>(row),
                                 static_cast<double>(layer)) /
                             99.0
                       : Vector3(coordinate(random), coordinate(random), coordinate(random)));
    }
    return queries;
}

void locateAll(const CellLocator<3>& locator, const Points& queries)
{
    double sum = 0.0;
#pragma omp parallel reduction(+ : sum)
    {
        constexpr std::size_t atOnce = 32;
        CellLocator<3>::Hint hint;
        std::array<Location, atOnce> locations;
        std::array<std::uint8_t, atOnce> isInside;
#pragma omp for schedule(static)
        for (std::size_t first = 0; first < queries.size(); first += atOnce)
        {
            const std::size_t count = std::min(atOnce, queries.size() - first);
            locator.locate(std::span(queries).subspan(first, count), locations.data(),
                           isInside.data(), hint);
            for (std::size_t k = 0; k < count; ++k)
                sum += isInside[k] != 0 ? locations[k].weights[0] : 0.0;
        }
    }
    benchmark::DoNotOptimize(sum);
}

void findAll(vtkAbstractCellLocator* locator, const Points& queries)
{
    double sum = 0.0;
#pragma omp parallel reduction(+ : sum)
    {
        vtkNew<vtkGenericCell> cell;
        double weights[8];
        double coordinates[3];
#pragma omp for schedule(static)
        for (std::size_t i = 0; i < queries.size(); ++i)
        {
            double position[3]{queries[i][0], queries[i][1], queries[i][2]};
            if (locator->FindCell(position, 0.0, cell, coordinates, weights) >= 0)
                sum += weights[0];
        }
    }
    benchmark::DoNotOptimize(sum);
}

template<typename Locator>
vtkSmartPointer<Locator> newLocator(const Mesh& mesh)
{
    auto locator = vtkSmartPointer<Locator>::New();
    locator->SetDataSet(mesh.dataSet);
    return locator;
}

template<typename Locator>
void addVtkLocator(
    const std::string& name, const std::shared_ptr<Mesh>& mesh, int threads,
    const std::string& buildRow,
    const std::vector<std::pair<std::string, std::shared_ptr<const Points>>>& queries)
{
    const auto built = newLocator<Locator>(*mesh);
    built->BuildLocator();
    addContender(buildRow, name,
                 [=]
                 {
                     setVtkThreads(threads);
                     newLocator<Locator>(*mesh)->BuildLocator();
                 });
    for (const auto& [row, points] : queries)
        addContender(row, name,
                     [=, points = points]
                     {
                         omp_set_num_threads(threads);
                         findAll(built, *points);
                     });
}

void addRows(const std::shared_ptr<Mesh>& mesh)
{
    const auto& locator = locatorOf(*mesh->grid);
    fmt::print("{}: {:.1f} bytes a cell\n", mesh->name,
               static_cast<double>(locator.memory()) / static_cast<double>(mesh->grid->numCells()));
    const auto ordered = std::make_shared<const Points>(queryPoints(true));
    const auto random = std::make_shared<const Points>(queryPoints(false));
    for (const int threads : {1, 2})
    {
        const auto suffix =
            fmt::format("{}, {} thread{}", mesh->name, threads, threads == 1 ? "" : "s");
        const auto buildRow = "build tree, " + suffix;
        const std::vector<std::pair<std::string, std::shared_ptr<const Points>>> queries{
            {"locate 1M ordered, " + suffix, ordered}, {"locate 1M random, " + suffix, random}};
        addContender(buildRow, "tavrin",
                     [=]
                     {
                         omp_set_num_threads(threads);
                         benchmark::DoNotOptimize(makeLocator(*mesh->grid));
                     });
        for (const auto& [row, points] : queries)
            addContender(row, "tavrin",
                         [=, points = points, &locator]
                         {
                             omp_set_num_threads(threads);
                             locateAll(locator, *points);
                         });
        addVtkLocator<vtkStaticCellLocator>("vtkStaticCellLocator", mesh, threads, buildRow,
                                            queries);
        addVtkLocator<vtkCellTreeLocator>("vtkCellTreeLocator", mesh, threads, buildRow, queries);
    }
}

}

void addLocatorRows()
{
    addRows(tetrahedra());
    addRows(hexahedra());
}

}
