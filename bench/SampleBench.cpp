#include "SampleBench.hpp"

#include "RatioReporter.hpp"
#include "VtkThreads.hpp"

#include <tavrin/algorithm/AlgorithmRun.hpp>
#include <tavrin/domain/CurvilinearGrid.hpp>
#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/domain/UnstructuredGrid.hpp>
#include <tavrin/function/Function.hpp>
#include <tavrin/value/WrappedValueArray.hpp>

#include <omp.h>
#include <vtkCellArray.h>
#include <vtkCellLocatorStrategy.h>
#include <vtkCellTreeLocator.h>
#include <vtkClosestPointStrategy.h>
#include <vtkDoubleArray.h>
#include <vtkImageData.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPolyData.h>
#include <vtkProbeFilter.h>
#include <vtkStaticCellLocator.h>
#include <vtkStructuredGrid.h>
#include <vtkTypeInt64Array.h>
#include <vtkUnstructuredGrid.h>

#include <fmt/format.h>

#include <cmath>
#include <iostream>
#include <random>

namespace tavrin::bench
{

namespace
{

using Points = std::vector<Vector3>;

/// Ordered probes per axis.
constexpr std::size_t probesPerAxis = 100;
constexpr std::size_t numProbes = probesPerAxis * probesPerAxis * probesPerAxis;

/// Tuples of three numbers as an array of VTK.
vtkNew<vtkDoubleArray> viewed(const Points& tuples, const char* name)
{
    vtkNew<vtkDoubleArray> array;
    array->SetName(name);
    array->SetNumberOfComponents(3);
    array->SetArray(const_cast<double*>(tuples.front().begin()),
                    static_cast<vtkIdType>(3 * tuples.size()), 1);
    return array;
}

/// The points of a grid in the unit cube, bent, and displaced at random by a fraction of their distance.
Points distortedPoints(std::size_t perAxis, double share)
{
    Points points;
    std::mt19937_64 random(1);
    const double spacing = 1.0 / static_cast<double>(perAxis - 1);
    std::uniform_real_distribution<double> shake(-share * spacing, share * spacing);
    for (std::size_t k = 0; k < perAxis; ++k)
        for (std::size_t j = 0; j < perAxis; ++j)
            for (std::size_t i = 0; i < perAxis; ++i)
            {
                const Vector3 point = Vector3(static_cast<double>(i), static_cast<double>(j),
                                              static_cast<double>(k)) *
                                      spacing;
                points.push_back(point + Vector3(0.03 * std::sin(6.0 * point[1]) + shake(random),
                                                 0.03 * std::sin(6.0 * point[2]) + shake(random),
                                                 0.03 * std::sin(6.0 * point[0]) + shake(random)));
            }
    return points;
}

Points valuesAt(const Points& points)
{
    Points values;
    for (const Vector3& point : points)
        values.emplace_back(std::sin(9.0 * point[0]), std::cos(7.0 * point[1]), point[2]);
    return values;
}

/// A field that tavrin and VTK sample.
struct Source
{
    std::string name;
    Points points;
    Points values;
    std::vector<std::int64_t> offsets{0};
    std::vector<std::int64_t> connectivity;
    vtkSmartPointer<vtkDataSet> dataSet;
    std::shared_ptr<const Domain> grid;
    std::shared_ptr<const FunctionBase> field;

    std::shared_ptr<const ValueArray<Vector3>> wrapped(const Points& tuples) const
    {
        return std::make_shared<WrappedValueArray<Vector3, double>>(tuples.front().begin(),
                                                                    tuples.size(), 3, nullptr);
    }

    void finish()
    {
        dataSet->GetPointData()->AddArray(viewed(values, "v"));
        field = std::make_shared<Function<Vector3>>(grid, PointSetBase::Points, wrapped(values),
                                                    std::vector<double>{}, "v");
    }
};

std::shared_ptr<Source> uniformSource()
{
    constexpr std::size_t perAxis = 64;
    constexpr double spacing = 1.0 / static_cast<double>(perAxis - 1);
    auto source = std::make_shared<Source>();
    source->name = "a 64^3 uniform grid";
    source->grid = std::make_shared<UniformGrid<3>>(UniformGrid<3>::Layout{
        .size = {perAxis, perAxis, perAxis}, .spacing = {spacing, spacing, spacing}});
    const auto& grid = dynamic_cast<const PointSet<3>&>(*source->grid);
    for (std::size_t i = 0; i < grid.numPoints(); ++i)
        source->points.push_back(grid.point(i));
    source->values = valuesAt(source->points);
    const auto image = vtkSmartPointer<vtkImageData>::New();
    image->SetDimensions(perAxis, perAxis, perAxis);
    image->SetSpacing(spacing, spacing, spacing);
    source->dataSet = image;
    source->finish();
    return source;
}

std::shared_ptr<Source> curvilinearSource()
{
    constexpr std::size_t perAxis = 81;
    auto source = std::make_shared<Source>();
    source->name = "0.5M curvilinear hexahedra";
    source->points = distortedPoints(perAxis, 0.1);
    source->values = valuesAt(source->points);
    source->grid = std::make_shared<CurvilinearGrid<3>>(GridSize{perAxis, perAxis, perAxis},
                                                        source->wrapped(source->points));
    const auto grid = vtkSmartPointer<vtkStructuredGrid>::New();
    grid->SetDimensions(perAxis, perAxis, perAxis);
    vtkNew<vtkPoints> points;
    points->SetData(viewed(source->points, "points"));
    grid->SetPoints(points);
    source->dataSet = grid;
    source->finish();
    return source;
}

std::shared_ptr<Source> tetrahedralSource()
{
    constexpr std::size_t perAxis = 45;
    auto source = std::make_shared<Source>();
    source->name = "0.5M tetrahedra";
    source->points = distortedPoints(perAxis, 0.15);
    source->values = valuesAt(source->points);
    const CurvilinearGrid<3> cubes({perAxis, perAxis, perAxis}, source->wrapped(source->points));
    constexpr int pieces[6][4] = {{0, 1, 2, 6}, {0, 2, 3, 6}, {0, 3, 7, 6},
                                  {0, 7, 4, 6}, {0, 4, 5, 6}, {0, 5, 1, 6}};
    for (std::size_t cube = 0; cube < cubes.numCells(); ++cube)
        for (const auto& piece : pieces)
        {
            for (const int corner : piece)
                source->connectivity.push_back(static_cast<std::int64_t>(
                    cubes.cell(cube).pointIndex(static_cast<std::size_t>(corner))));
            source->offsets.push_back(static_cast<std::int64_t>(source->connectivity.size()));
        }
    source->grid = std::make_shared<UnstructuredGrid<3>>(
        source->wrapped(source->points),
        CellTable{std::vector(source->offsets.size() - 1, CellType::Tetrahedra),
                  IndexArray(source->offsets), IndexArray(source->connectivity)});
    const auto view = [](std::vector<std::int64_t>& indices)
    {
        vtkNew<vtkTypeInt64Array> array;
        array->SetArray(reinterpret_cast<vtkTypeInt64*>(indices.data()),
                        static_cast<vtkIdType>(indices.size()), 1);
        return array;
    };
    vtkNew<vtkCellArray> cells;
    cells->SetData(view(source->offsets), view(source->connectivity));
    const auto grid = vtkSmartPointer<vtkUnstructuredGrid>::New();
    vtkNew<vtkPoints> points;
    points->SetData(viewed(source->points, "points"));
    grid->SetPoints(points);
    grid->SetCells(VTK_TETRA, cells);
    source->dataSet = grid;
    source->finish();
    return source;
}

/// The positions at which tavrin and VTK sample. A few lie outside.
struct Probes
{
    std::string name;
    Points points;
    vtkSmartPointer<vtkDataSet> dataSet;
    std::shared_ptr<const Domain> grid;
};

std::shared_ptr<Probes> orderedProbes()
{
    constexpr double spacing = 1.01 / static_cast<double>(probesPerAxis - 1);
    auto probes = std::make_shared<Probes>();
    probes->name = "ordered";
    probes->grid = std::make_shared<UniformGrid<3>>(
        UniformGrid<3>::Layout{.size = {probesPerAxis, probesPerAxis, probesPerAxis},
                               .spacing = {spacing, spacing, spacing}});
    const auto image = vtkSmartPointer<vtkImageData>::New();
    image->SetDimensions(probesPerAxis, probesPerAxis, probesPerAxis);
    image->SetSpacing(spacing, spacing, spacing);
    probes->dataSet = image;
    return probes;
}

/// Probes that are a set of points.
std::shared_ptr<Probes> pointProbes(const std::string& name, Points points)
{
    auto probes = std::make_shared<Probes>();
    probes->name = name;
    probes->points = std::move(points);
    probes->grid =
        std::make_shared<PointCloud<3>>(std::make_shared<WrappedValueArray<Vector3, double>>(
            probes->points.front().begin(), numProbes, 3, nullptr));
    const auto cloud = vtkSmartPointer<vtkPolyData>::New();
    vtkNew<vtkPoints> cloudPoints;
    cloudPoints->SetData(viewed(probes->points, "points"));
    cloud->SetPoints(cloudPoints);
    probes->dataSet = cloud;
    return probes;
}

std::shared_ptr<Probes> randomProbes()
{
    Points points;
    std::mt19937_64 random(2);
    std::uniform_real_distribution<double> coordinate(0.0, 1.01);
    for (std::size_t i = 0; i < numProbes; ++i)
    {
        Vector3 point;
        for (double& x : point)
            x = coordinate(random);
        points.push_back(point);
    }
    return pointProbes("random", std::move(points));
}

/// The same positions as the ordered probes. For those, an image, VTK iterates over cells; for points it
/// needs a locator.
std::shared_ptr<Probes> orderedPointProbes(const Probes& ordered)
{
    const auto& grid = dynamic_cast<const PointSet<3>&>(*ordered.grid);
    Points points(numProbes);
    for (std::size_t i = 0; i < numProbes; ++i)
        points[i] = grid.point(i);
    return pointProbes("ordered points", std::move(points));
}

/// Discards what the parser of time values prints.
class SilentOutput
{
public:
    SilentOutput() : mBuffer(std::cout.rdbuf(nullptr)) {}
    SilentOutput(const SilentOutput&) = delete;
    SilentOutput& operator=(const SilentOutput&) = delete;
    ~SilentOutput()
    {
        std::cout.rdbuf(mBuffer);
        std::cout.clear();
    }

private:
    std::streambuf* mBuffer;
};

void sample(const Source& source, const Probes& probes)
{
    const SilentOutput silent;
    AlgorithmRun run(RegistrationService<AlgorithmFactory>::getInstance(),
                     "Field/Sample Field on Given Grid");
    run.connect("Field", source.field);
    run.connect("Grid", probes.grid);
    const volatile bool abortFlag = false;
    run.execute(abortFlag);
    benchmark::DoNotOptimize(run.result("Sampled Field"));
}

/// The filter with a strategy for finding cells, whose search structure it keeps.
vtkSmartPointer<vtkProbeFilter> makeFilter(const Source& source, const Probes& probes,
                                           vtkFindCellStrategy* strategy)
{
    auto filter = vtkSmartPointer<vtkProbeFilter>::New();
    filter->SetInputData(probes.dataSet);
    filter->SetSourceData(source.dataSet);
    filter->SetFindCellStrategy(strategy);
    return filter;
}

template<typename Locator>
vtkSmartPointer<vtkFindCellStrategy> strategyWith(vtkDataSet* dataSet)
{
    vtkNew<Locator> locator;
    locator->SetDataSet(dataSet);
    locator->BuildLocator();
    const auto strategy = vtkSmartPointer<vtkCellLocatorStrategy>::New();
    strategy->SetCellLocator(locator);
    return strategy;
}

void addRow(const std::shared_ptr<Source>& source, const std::shared_ptr<Probes>& probes)
{
    for (const int threads : {1, 2})
    {
        const auto row = fmt::format("sample {}, {}, {} thread{}", source->name, probes->name,
                                     threads, threads == 1 ? "" : "s");
        addContender(row, "tavrin",
                     [=]
                     {
                         omp_set_num_threads(threads);
                         sample(*source, *probes);
                     });
        const auto addPeer = [&](const std::string& name, vtkFindCellStrategy* strategy)
        {
            const auto filter = makeFilter(*source, *probes, strategy);
            addContender(row, name,
                         [source, probes, threads, filter]
                         {
                             setVtkThreads(threads);
                             filter->Modified();
                             filter->Update();
                         });
        };
        if (vtkImageData::SafeDownCast(source->dataSet) != nullptr)
        {
            addPeer("vtkProbeFilter", nullptr);
            continue;
        }
        addPeer("vtkProbeFilter, static locator",
                strategyWith<vtkStaticCellLocator>(source->dataSet));
        addPeer("cell tree", strategyWith<vtkCellTreeLocator>(source->dataSet));
        addPeer("closest point", vtkNew<vtkClosestPointStrategy>());
    }
}

}

void addSampleRows()
{
    const auto ordered = orderedProbes();
    const auto random = randomProbes();
    const auto curvilinear = curvilinearSource();
    for (const auto& source : {uniformSource(), tetrahedralSource(), curvilinear})
        for (const auto& probes : {ordered, random})
            addRow(source, probes);
    addRow(curvilinear, orderedPointProbes(*ordered));
}

}
