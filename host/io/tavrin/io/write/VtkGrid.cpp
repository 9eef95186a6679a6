#include <tavrin/io/write/VtkGrid.hpp>

#include <tavrin/domain/RectilinearGrid.hpp>
#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/domain/UnstructuredGrid.hpp>
#include <tavrin/function/visit.hpp>
#include <tavrin/io/FileError.hpp>
#include <tavrin/io/VtkCellTypes.hpp>

#include <vtkCellArray.h>
#include <vtkImageData.h>
#include <vtkPolyData.h>
#include <vtkRectilinearGrid.h>
#include <vtkStructuredGrid.h>
#include <vtkTypeInt32Array.h>
#include <vtkTypeInt64Array.h>
#include <vtkUnsignedCharArray.h>
#include <vtkUnstructuredGrid.h>

#include <array>
#include <limits>

namespace tavrin::io
{

namespace
{

constexpr std::size_t elementsPerBlock = 4096;

/// Calls `work(first, count)` for successive blocks of the indices 0 ... size - 1. Throws `Aborted`.
template<typename Work>
void inBlocks(std::size_t size, const volatile bool& abortFlag, const Work& work)
{
    for (std::size_t first = 0; first < size; first += elementsPerBlock)
    {
        if (abortFlag)
            throw Aborted();
        work(first, std::min(elementsPerBlock, size - first));
    }
}

int toInt(long number)
{
    if (number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max())
        throw runtime_error("the index " + std::to_string(number) +
                            " along an axis is too large for a VTK file");
    return static_cast<int>(number);
}

/// First and last index along each axis.
std::array<int, 6> extentOf(const GridSize& size, const std::array<long, 3>& first)
{
    std::array<int, 6> extent{};
    for (std::size_t axis = 0; axis < size.size(); ++axis)
    {
        extent[2 * axis] = toInt(first[axis]);
        extent[2 * axis + 1] = toInt(first[axis] + static_cast<long>(size[axis]) - 1);
    }
    return extent;
}

template<std::size_t D>
VtkView<vtkDataSet> makeImage(const UniformGrid<D>& grid)
{
    std::array<long, 3> firstIndex{};
    std::array<double, 3> origin{};
    std::array<double, 3> spacing{1.0, 1.0, 1.0};
    Tensor<double, 3, 3> direction = unitMatrix<3>();
    const auto& layout = grid.layout();
    for (std::size_t i = 0; i < D; ++i)
    {
        firstIndex[i] = layout.firstIndex[i];
        origin[i] = layout.origin[i];
        spacing[i] = layout.spacing[i];
        for (std::size_t j = 0; j < D; ++j)
            direction(i, j) = layout.direction(i, j);
    }
    auto image = vtkSmartPointer<vtkImageData>::New();
    image->SetExtent(extentOf(grid.size(), firstIndex).data());
    image->SetOrigin(origin.data());
    image->SetSpacing(spacing.data());
    image->SetDirectionMatrix(direction.begin());
    return {image, {}};
}

template<std::size_t D>
VtkView<vtkDataSet> makeRectilinear(const RectilinearGrid<D>& grid)
{
    std::array<vtkSmartPointer<vtkDoubleArray>, 3> axes;
    constexpr std::array names{"x", "y", "z"};
    for (std::size_t axis = 0; axis < axes.size(); ++axis)
    {
        axes[axis] = vtkSmartPointer<vtkDoubleArray>::New();
        axes[axis]->SetName(names[axis]);
        if (axis >= D)
            axes[axis]->InsertNextValue(0.0);
        else
            for (const double coordinate : grid.coordinates()[axis])
                axes[axis]->InsertNextValue(coordinate);
    }
    auto result = vtkSmartPointer<vtkRectilinearGrid>::New();
    result->SetExtent(extentOf(grid.size(), {}).data());
    result->SetXCoordinates(axes[0]);
    result->SetYCoordinates(axes[1]);
    result->SetZCoordinates(axes[2]);
    return {result, {}};
}

/// The points with three coordinates; missing coordinates are 0.
template<std::size_t D>
VtkView<vtkDoubleArray> makePositions(const PointSet<D>& set, const volatile bool& abortFlag)
{
    using Point = Tensor<double, D>;
    const auto read = [&](std::span<Vector3> scratch) -> std::span<const Vector3>
    {
        if constexpr (D == 3)
            return set.points(0, scratch);
        std::vector<Point> block(elementsPerBlock);
        inBlocks(scratch.size(), abortFlag,
                 [&](std::size_t first, std::size_t count)
                 {
                     std::size_t target = first;
                     for (const Point& point : set.points(first, std::span(block).first(count)))
                         std::ranges::copy(point, (scratch[target++] = Vector3{}).begin());
                 });
        return scratch;
    };
    return viewNumbers<Vector3>(set.numPoints(), read, "Points");
}

/// A VTK array over indices in memory.
template<typename Array>
vtkSmartPointer<Array> viewIndices(const void* indices, std::size_t count)
{
    using Index = typename Array::ValueType;
    auto array = vtkSmartPointer<Array>::New();
    array->SetArray(static_cast<Index*>(const_cast<void*>(indices)), static_cast<vtkIdType>(count),
                    1);
    return array;
}

/// Cells collected one by one.
struct CellList
{
    vtkSmartPointer<vtkTypeInt64Array> offsets = vtkSmartPointer<vtkTypeInt64Array>::New();
    vtkSmartPointer<vtkTypeInt64Array> connectivity = vtkSmartPointer<vtkTypeInt64Array>::New();

    CellList() { offsets->InsertNextValue(0); }

    void add(const Cell& cell)
    {
        for (const std::size_t point : cell.pointIndices())
            connectivity->InsertNextValue(static_cast<vtkTypeInt64>(point));
        offsets->InsertNextValue(connectivity->GetNumberOfValues());
    }

    vtkSmartPointer<vtkCellArray> toVtk() const
    {
        auto cells = vtkSmartPointer<vtkCellArray>::New();
        cells->SetData(offsets, connectivity);
        return cells;
    }
};

/// The cells of a table in their own memory; null where VTK needs them in another form.
vtkSmartPointer<vtkCellArray> viewCells(const CellTable& table)
{
    const auto view = [&]<typename Array, typename Index>() -> vtkSmartPointer<vtkCellArray>
    {
        using Indices = std::span<const Index>;
        const auto* const offsets = std::get_if<Indices>(&table.offsets.storage());
        const auto* const connectivity = std::get_if<Indices>(&table.connectivity.storage());
        const bool isUsable = offsets != nullptr && connectivity != nullptr && !offsets->empty() &&
                              offsets->front() == 0 &&
                              static_cast<std::size_t>(offsets->back()) == connectivity->size();
        if (!isUsable)
            return nullptr;
        auto cells = vtkSmartPointer<vtkCellArray>::New();
        cells->SetData(viewIndices<Array>(offsets->data(), offsets->size()).Get(),
                       viewIndices<Array>(connectivity->data(), connectivity->size()).Get());
        return cells;
    };
    const auto narrow = view.operator()<vtkTypeInt32Array, std::int32_t>();
    return narrow != nullptr ? narrow : view.operator()<vtkTypeInt64Array, std::int64_t>();
}

vtkSmartPointer<vtkCellArray> collectCells(const CellComplex& complex,
                                           const volatile bool& abortFlag)
{
    CellList list;
    inBlocks(complex.numCells(), abortFlag,
             [&](std::size_t first, std::size_t count)
             {
                 for (std::size_t index = first; index < first + count; ++index)
                     list.add(complex.cell(index));
             });
    return list.toVtk();
}

vtkSmartPointer<vtkUnsignedCharArray> makeCellTypes(const CellComplex& complex)
{
    const std::size_t count = complex.numCells();
    auto types = vtkSmartPointer<vtkUnsignedCharArray>::New();
    types->SetNumberOfValues(static_cast<vtkIdType>(count));
    for (std::size_t index = 0; index < count; ++index)
        types->SetValue(static_cast<vtkIdType>(index),
                        static_cast<unsigned char>(vtkTypeOf(complex.cellType(index))));
    return types;
}

template<std::size_t D>
vtkSmartPointer<vtkPointSet> makeCells(const PointSet<D>& set, const volatile bool& abortFlag)
{
    auto grid = vtkSmartPointer<vtkUnstructuredGrid>::New();
    const auto* const complex = dynamic_cast<const CellComplex*>(&set);
    if (complex == nullptr)
        return grid;
    const auto* const unstructured = dynamic_cast<const UnstructuredGrid<D>*>(&set);
    vtkSmartPointer<vtkCellArray> cells;
    if (unstructured != nullptr)
        cells = viewCells(unstructured->cells());
    if (cells == nullptr)
        cells = collectCells(*complex, abortFlag);
    grid->SetCells(makeCellTypes(*complex), cells);
    return grid;
}

vtkSmartPointer<vtkPointSet> makePolyLists(const Domain& domain, const volatile bool& abortFlag)
{
    auto data = vtkSmartPointer<vtkPolyData>::New();
    const auto* const complex = dynamic_cast<const CellComplex*>(&domain);
    if (complex == nullptr)
        return data;
    std::array<CellList, 3> byDimension;
    inBlocks(
        complex->numCells(), abortFlag,
        [&](std::size_t first, std::size_t count)
        {
            for (std::size_t index = first; index < first + count; ++index)
                byDimension.at(dimensionOf(complex->cellType(index))).add(complex->cell(index));
        });
    data->SetVerts(byDimension[0].toVtk());
    data->SetLines(byDimension[1].toVtk());
    data->SetPolys(byDimension[2].toVtk());
    return data;
}

/// Gives the data set the points of the domain.
template<std::size_t D>
VtkView<vtkDataSet> withPoints(const vtkSmartPointer<vtkPointSet>& dataSet, const PointSet<D>& set,
                               const volatile bool& abortFlag)
{
    auto positions = makePositions(set, abortFlag);
    auto points = vtkSmartPointer<vtkPoints>::New();
    points->SetData(positions.object);
    dataSet->SetPoints(points);
    return {dataSet, std::move(positions.memory)};
}

/// Calls `make(set)` with the domain as a point set of its dimension, and returns the result.
template<typename Make>
VtkView<vtkDataSet> makeFrom(const Domain& domain, const Make& make)
{
    VtkView<vtkDataSet> result;
    visitObject<TypeList<PointSet<1>, PointSet<2>, PointSet<3>>>(domain, [&](const auto& set)
                                                                 { result = make(set); });
    return result;
}

}

VtkView<vtkDataSet> makeImageData(const Domain& domain)
{
    return makeFrom(domain, []<std::size_t D>(const PointSet<D>& set)
                    { return makeImage(dynamic_cast<const UniformGrid<D>&>(set)); });
}

VtkView<vtkDataSet> makeRectilinearGrid(const Domain& domain)
{
    return makeFrom(domain, []<std::size_t D>(const PointSet<D>& set)
                    { return makeRectilinear(dynamic_cast<const RectilinearGrid<D>&>(set)); });
}

VtkView<vtkDataSet> makeStructuredGrid(const Domain& domain, const volatile bool& abortFlag)
{
    return makeFrom(domain,
                    [&]<std::size_t D>(const PointSet<D>& set)
                    {
                        auto grid = vtkSmartPointer<vtkStructuredGrid>::New();
                        const GridSize size = dynamic_cast<const StructuredGrid<D>&>(set).size();
                        grid->SetExtent(extentOf(size, {}).data());
                        return withPoints(grid, set, abortFlag);
                    });
}

VtkView<vtkDataSet> makeUnstructuredGrid(const Domain& domain, const volatile bool& abortFlag)
{
    return makeFrom(domain, [&](const auto& set)
                    { return withPoints(makeCells(set, abortFlag), set, abortFlag); });
}

VtkView<vtkDataSet> makePolyData(const Domain& domain, const volatile bool& abortFlag)
{
    return makeFrom(domain, [&](const auto& set)
                    { return withPoints(makePolyLists(set, abortFlag), set, abortFlag); });
}

}
