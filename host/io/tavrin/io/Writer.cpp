#include <tavrin/io/Writer.hpp>

#include <tavrin/domain/StructuredGrid.hpp>
#include <tavrin/function/visit.hpp>
#include <tavrin/io/ArrayChoice.hpp>
#include <tavrin/io/OutputFile.hpp>
#include <tavrin/io/SeriesWriter.hpp>
#include <tavrin/io/VtkFileWriter.hpp>
#include <tavrin/io/VtkGrid.hpp>

#include <vtkCellData.h>
#include <vtkFieldData.h>
#include <vtkPointData.h>
#include <vtkUnsignedCharArray.h>

#include <functional>
#include <optional>

namespace tavrin::io
{

namespace fs = std::filesystem;

namespace
{

/// How the points of the domain are given; nothing for a point cloud.
std::optional<StructuringType> structuringOf(const Domain& domain)
{
    std::optional<StructuringType> type;
    visitObject<TypeList<EmbeddedCellComplex<1>, EmbeddedCellComplex<2>, EmbeddedCellComplex<3>>>(
        domain, [&](const auto& grid) { type = grid.structuringType(); });
    return type;
}

/// Whether the cells are vertices, then lines, then triangles and quadrilaterals: a ".vtp" file
/// keeps them in this order.
bool suitsPolyData(const CellComplex& complex)
{
    std::size_t dimension = 0;
    for (std::size_t index = 0; index < complex.numCells(); ++index)
    {
        const CellType type = complex.cellType(index);
        const bool isLinear = linearTypeOf(type) == type && type != CellType::Invalid;
        if (!isLinear || dimensionOf(type) > 2 || dimensionOf(type) < dimension)
            return false;
        dimension = dimensionOf(type);
    }
    return true;
}

/// The extensions of single files that suit the domain, best first.
std::vector<std::string> singleFileExtensions(const Domain& domain)
{
    if (dynamic_cast<const PointSetBase*>(&domain) == nullptr)
        return {};
    const auto* const complex = dynamic_cast<const CellComplex*>(&domain);
    if (complex == nullptr)
        return {".vtp", ".vtu"};
    switch (structuringOf(domain).value_or(StructuringType::Unstructured))
    {
    case StructuringType::Uniform:
        return {".vti", ".vts", ".vtu"};
    case StructuringType::Rectilinear:
        return {".vtr", ".vts", ".vtu"};
    case StructuringType::Curvilinear:
        return {".vts", ".vtu"};
    case StructuringType::Unstructured:
        break;
    }
    if (suitsPolyData(*complex))
        return {".vtu", ".vtp"};
    return {".vtu"};
}

std::string describe(const Domain& domain)
{
    const auto structuring = structuringOf(domain);
    if (!structuring)
        return "a point cloud";
    return (*structuring == StructuringType::Unstructured ? "an " : "a ") +
           std::string(nameOf(*structuring)) + " grid";
}

/// ".vts, .vtu or .pvd"
std::string enumerate(const std::vector<std::string>& extensions)
{
    std::string text = extensions.front();
    for (std::size_t i = 1; i < extensions.size(); ++i)
        text += (i + 1 < extensions.size() ? ", " : " or ") + extensions[i];
    return text;
}

/// Names that give the shape of matrices, and of values of one component, back; none for others.
template<Value T>
std::vector<std::string> componentNames()
{
    constexpr std::string_view axes = "xyzw";
    std::vector<std::string> names;
    if constexpr (T::rank == 2)
    {
        for (std::size_t row = 0; row < T::extent(0); ++row)
            for (std::size_t column = 0; column < T::extent(1); ++column)
                names.push_back({axes[row], axes[column]});
    }
    else if constexpr (T::rank == 1 && T::size == 1)
        names.emplace_back("x");
    return names;
}

/// VTK's writers put names into the file as they are.
std::string escaped(const std::string& name)
{
    std::string text;
    for (const char character : name)
    {
        switch (character)
        {
        case '&':
            text += "&amp;";
            break;
        case '<':
            text += "&lt;";
            break;
        case '>':
            text += "&gt;";
            break;
        case '"':
            text += "&quot;";
            break;
        default:
            // Control characters cannot be in an XML file in any form.
            text += static_cast<unsigned char>(character) < ' ' ? ' ' : character;
        }
    }
    return text;
}

using ArrayView = VtkView<vtkDoubleArray>;

template<Value T>
ArrayView viewStep(const Function<T>& function, const std::string& name, std::size_t step)
{
    const auto values = function.stepValues(step);
    const auto read = [&](std::span<T> scratch) { return values->read(0, scratch); };
    ArrayView view = viewNumbers<T>(values->size(), read, name);
    view.memory.push_back(values);
    const auto components = componentNames<T>();
    for (std::size_t i = 0; i < components.size(); ++i)
        view.object->SetComponentName(static_cast<vtkIdType>(i), components[i].c_str());
    return view;
}

/// The marks of one step's values; null where there are none.
vtkSmartPointer<vtkUnsignedCharArray> viewValidity(const FunctionBase& function, std::size_t step)
{
    if (function.validity() == nullptr)
        return nullptr;
    auto array = vtkSmartPointer<vtkUnsignedCharArray>::New();
    array->SetName(std::string(validityMaskName).c_str());
    const std::size_t count = function.valuesPerStep();
    // VTK takes no constant memory; a writer only reads it.
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

/// The arrays of the data set that belong to the same elements as the function's values.
vtkDataSetAttributes& attributesFor(const FunctionBase& function, vtkDataSet& dataSet)
{
    if (function.domainType() == DomainType::PointBased)
        return *dataSet.GetPointData();
    return *dataSet.GetCellData();
}

/// Writes single steps of a function.
template<Value T>
class StepWriter
{
public:
    StepWriter(const Function<T>& function, const std::string& arrayName,
               const std::string& extension, const volatile bool& abortFlag)
        : mFunction(function), mArrayName(escaped(arrayName)),
          mGrid(makeVtkGrid(*function.domain(), extension, abortFlag))
    {
    }

    void write(std::size_t step, std::ostream& stream)
    {
        const ArrayView values = viewStep(mFunction, mArrayName, step);
        vtkDataSetAttributes& attributes = attributesFor(mFunction, *mGrid.object);
        attributes.AddArray(values.object);
        activate<T>(attributes, mArrayName);
        // Sampled marks are values like others, and keep the name.
        if (const auto validity = viewValidity(mFunction, step);
            validity != nullptr && mArrayName != validityMaskName)
            attributes.AddArray(validity);
        if (!mFunction.timeSteps().empty())
            setTime(mFunction.timeSteps()[step]);
        if (!writeVtkFile(*mGrid.object, stream))
            stream.setstate(std::ios_base::badbit);
        attributes.RemoveArray(mArrayName.c_str());
        attributes.RemoveArray(std::string(validityMaskName).c_str());
    }

private:
    void setTime(double time)
    {
        const auto array = vtkSmartPointer<vtkDoubleArray>::New();
        array->SetName("TimeValue");
        array->InsertNextValue(time);
        mGrid.object->GetFieldData()->AddArray(array);
    }

    const Function<T>& mFunction;
    std::string mArrayName;
    VtkView<vtkDataSet> mGrid;
};

template<Value T>
std::unique_ptr<PendingFile> prepareTyped(const Function<T>& function, const std::string& arrayName,
                                          const fs::path& file, const volatile bool& abortFlag)
{
    if (file.extension() == ".pvd")
    {
        const std::string extension = singleFileExtensions(*function.domain()).front();
        StepWriter<T> writer(function, arrayName, extension, abortFlag);
        return prepareSeries(
            file, extension, function.timeSteps(),
            [&](std::size_t step, std::ostream& stream) { writer.write(step, stream); }, abortFlag);
    }
    auto output = std::make_unique<OutputFile>(file, abortFlag);
    StepWriter<T>(function, arrayName, file.extension().string(), abortFlag)
        .write(0, output->stream());
    output->complete();
    return output;
}

}

const std::vector<std::string>& writableExtensions()
{
    static const std::vector<std::string> extensions{".vti", ".vtr", ".vts",
                                                     ".vtu", ".vtp", ".pvd"};
    return extensions;
}

std::vector<std::string> extensionsFor(const Domain& domain, std::size_t numTimeSteps)
{
    std::vector<std::string> extensions = singleFileExtensions(domain);
    if (extensions.empty())
        return {};
    if (numTimeSteps > 1)
        return {".pvd"};
    extensions.emplace_back(".pvd");
    return extensions;
}

void requireSuitable(const fs::path& file, const Domain& domain, std::size_t numTimeSteps)
{
    const auto extensions = extensionsFor(domain, numTimeSteps);
    if (extensions.empty())
        throw usage_error(file.string() + ": values on this kind of domain are not written");
    const std::string extension = file.extension().string();
    if (std::ranges::find(extensions, extension) != extensions.end())
        return;
    const std::string what = numTimeSteps > 1
                                 ? "a function with " + std::to_string(numTimeSteps) + " time steps"
                                 : describe(domain);
    throw usage_error(file.string() + ": " + what + " is written as " + enumerate(extensions));
}

std::unique_ptr<PendingFile> prepareFunction(const FunctionBase& function,
                                             const std::string& arrayName, const fs::path& file,
                                             const volatile bool& abortFlag)
{
    requireSuitable(file, *function.domain(), function.numTimeSteps());
    // An array without a name could not be asked for.
    const std::string name = arrayName.empty() ? "values" : arrayName;
    std::unique_ptr<PendingFile> output;
    visitFunction<ValueTypes>(function, [&](const auto& typed)
                              { output = prepareTyped(typed, name, file, abortFlag); });
    return output;
}

std::unique_ptr<PendingFile> prepareFunctions(
    const std::vector<std::shared_ptr<const FunctionBase>>& functions, const fs::path& file,
    const volatile bool& abortFlag)
{
    const auto isAlike = [&](const std::shared_ptr<const FunctionBase>& function)
    { return function->domain() == functions.front()->domain() && function->numTimeSteps() == 1; };
    if (functions.empty() || !std::ranges::all_of(functions, isAlike))
        throw logic_error("functions of one step on one domain are needed for one file");
    if (file.extension() == ".pvd")
        throw usage_error(file.string() +
                          ": several functions are written into a file of one step");
    requireSuitable(file, *functions.front()->domain(), 1);

    auto output = std::make_unique<OutputFile>(file, abortFlag);
    const auto grid =
        makeVtkGrid(*functions.front()->domain(), file.extension().string(), abortFlag);
    std::vector<ArrayView> arrays;
    for (const auto& function : functions)
        visitFunction<ValueTypes>(*function,
                                  [&]<typename T>(const Function<T>& typed)
                                  {
                                      const std::string name = escaped(typed.name());
                                      arrays.push_back(viewStep(typed, name, 0));
                                      vtkDataSetAttributes& attributes =
                                          attributesFor(typed, *grid.object);
                                      attributes.AddArray(arrays.back().object);
                                      activate<T>(attributes, name);
                                  });
    if (!writeVtkFile(*grid.object, output->stream()))
        output->stream().setstate(std::ios_base::badbit);
    output->complete();
    return output;
}

void writeFunction(const FunctionBase& function, const std::string& arrayName, const fs::path& file,
                   const volatile bool& abortFlag)
{
    prepareFunction(function, arrayName, file, abortFlag)->publish();
}

}
