#include <tavrin/io/write/VtkWriters.hpp>

#include <tavrin/function/visit.hpp>
#include <tavrin/io/ArrayChoice.hpp>
#include <tavrin/io/Shape.hpp>
#include <tavrin/io/XmlText.hpp>
#include <tavrin/io/write/VtkFileWriter.hpp>
#include <tavrin/io/write/VtkGrid.hpp>

#include <vtkCellData.h>
#include <vtkFieldData.h>
#include <vtkInformation.h>
#include <vtkInformationDoubleVectorKey.h>
#include <vtkInformationVector.h>
#include <vtkPointData.h>
#include <vtkUnsignedCharArray.h>

namespace tavrin::io
{

namespace
{

using ArrayView = VtkView<vtkDoubleArray>;

/// Makes VTK write 0 and not -0 as the bound of values that have both. It takes the one that a thread of
/// its own sees first, which differs from run to run.
void unifyZeroBounds(vtkDataArray& array)
{
    if (array.GetNumberOfComponents() != 1)
        return;
    // Makes VTK store the range, which it takes from there when it writes.
    std::array<double, 2> range;
    array.GetRange(range.data(), 0);
    for (double& bound : range)
        bound += 0.0;
    vtkInformation& stored =
        *array.GetInformation()->Get(vtkAbstractArray::PER_COMPONENT())->GetInformationObject(0);
    stored.Set(vtkDataArray::COMPONENT_RANGE(), range.data(), 2);
}

template<Value T>
ArrayView viewStep(const Function<T>& function, const std::string& name, std::size_t step)
{
    const auto values = function.stepValues(step);
    const auto read = [&](std::span<T> scratch) { return values->read(0, scratch); };
    ArrayView view = viewNumbers<T>(values->size(), read, name);
    view.memory.push_back(values);
    const auto components = componentNamesOf(shapeOfType<T>());
    for (std::size_t i = 0; i < components.size(); ++i)
        view.object->SetComponentName(static_cast<vtkIdType>(i), components[i].c_str());
    unifyZeroBounds(*view.object);
    return view;
}

/// The validity marks of one step's values; null where all values are valid.
vtkSmartPointer<vtkUnsignedCharArray> viewValidity(const FunctionBase& function, std::size_t step)
{
    if (function.validity() == nullptr)
        return nullptr;
    auto array = vtkSmartPointer<vtkUnsignedCharArray>::New();
    array->SetName(std::string(validityMaskName).c_str());
    const std::size_t count = function.valuesPerStep();
    // VTK's interface takes no constant memory, but its writers do not change it.
    auto* const marks = const_cast<unsigned char*>(function.validity()->data());
    array->SetArray(marks + step * count, static_cast<vtkIdType>(count), 1);
    return array;
}

/// Makes the array the one that other programs show first.
template<Value T>
void activate(vtkDataSetAttributes& attributes, const std::string& name)
{
    if constexpr (T::rank == 0)
        attributes.SetActiveScalars(name.c_str());
    else if constexpr (std::is_same_v<T, Vector3>)
        attributes.SetActiveVectors(name.c_str());
    else if constexpr (std::is_same_v<T, Matrix3>)
        attributes.SetActiveTensors(name.c_str());
}

class VtkStepWriter final : public StepWriter
{
public:
    explicit VtkStepWriter(VtkView<vtkDataSet> grid) : mGrid(std::move(grid)) {}

    void write(std::span<const NamedFunction> functions, std::size_t step,
               std::ostream& stream) override
    {
        vtkDataSet& dataSet = *mGrid.object;
        std::vector<ArrayView> arrays;
        for (const auto& [function, name] : functions)
        {
            arrays.push_back(addValues(function, name, step));
            if (!function.timeSteps().empty())
                setTime(function.timeSteps()[step]);
        }
        if (!writeVtkFile(dataSet, stream))
            stream.setstate(std::ios_base::badbit);
        dataSet.GetPointData()->Initialize();
        dataSet.GetCellData()->Initialize();
    }

private:
    ArrayView addValues(const FunctionBase& function, const std::string& name, std::size_t step)
    {
        vtkDataSet& dataSet = *mGrid.object;
        vtkDataSetAttributes& attributes =
            function.domainType() == DomainType::PointBased
                ? static_cast<vtkDataSetAttributes&>(*dataSet.GetPointData())
                : static_cast<vtkDataSetAttributes&>(*dataSet.GetCellData());
        // VTK's writers put names into the file without escaping them.
        const std::string escaped = escapeXml(name);
        ArrayView view;
        visitFunction<ValueTypes>(function,
                                  [&]<typename T>(const Function<T>& typed)
                                  {
                                      view = viewStep(typed, escaped, step);
                                      attributes.AddArray(view.object);
                                      activate<T>(attributes, escaped);
                                  });
        // A function that is itself a mask keeps its name.
        if (const auto validity = viewValidity(function, step);
            validity != nullptr && name != validityMaskName)
            attributes.AddArray(validity);
        return view;
    }

    void setTime(double time)
    {
        const auto array = vtkSmartPointer<vtkDoubleArray>::New();
        array->SetName("TimeValue");
        array->InsertNextValue(time);
        mGrid.object->GetFieldData()->AddArray(array);
    }

    VtkView<vtkDataSet> mGrid;
};

}

std::unique_ptr<StepWriter> makeImageWriter(const Domain& domain, const volatile bool&)
{
    return std::make_unique<VtkStepWriter>(makeImageData(domain));
}

std::unique_ptr<StepWriter> makeRectilinearWriter(const Domain& domain, const volatile bool&)
{
    return std::make_unique<VtkStepWriter>(makeRectilinearGrid(domain));
}

std::unique_ptr<StepWriter> makeStructuredWriter(const Domain& domain,
                                                 const volatile bool& abortFlag)
{
    return std::make_unique<VtkStepWriter>(makeStructuredGrid(domain, abortFlag));
}

std::unique_ptr<StepWriter> makeUnstructuredWriter(const Domain& domain,
                                                   const volatile bool& abortFlag)
{
    return std::make_unique<VtkStepWriter>(makeUnstructuredGrid(domain, abortFlag));
}

std::unique_ptr<StepWriter> makePolyDataWriter(const Domain& domain, const volatile bool& abortFlag)
{
    return std::make_unique<VtkStepWriter>(makePolyData(domain, abortFlag));
}

bool areInOrderOfPolyData(const CellComplex& cells)
{
    std::size_t dimension = 0;
    for (std::size_t index = 0; index < cells.numCells(); ++index)
    {
        const CellType type = cells.cellType(index);
        const bool isLinear = linearTypeOf(type) == type && type != CellType::Invalid;
        if (!isLinear || dimensionOf(type) > 2 || dimensionOf(type) < dimension)
            return false;
        dimension = dimensionOf(type);
    }
    return true;
}

}
