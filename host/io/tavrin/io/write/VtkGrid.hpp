#pragma once

#include <tavrin/base/LargeVector.hpp>
#include <tavrin/domain/Domain.hpp>

#include <vtkDataSet.h>
#include <vtkDoubleArray.h>
#include <vtkSmartPointer.h>

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tavrin::io
{

/// A VTK object, and memory of others that it refers to.
template<typename Object>
struct VtkView
{
    vtkSmartPointer<Object> object;
    std::vector<std::shared_ptr<const void>> memory;
};

/// A VTK array of `count` tuples of type T. It refers to the memory that `read(scratch)` returns:
/// either memory that exists anyway, or the scratch.
template<typename T, typename Read>
VtkView<vtkDoubleArray> viewNumbers(std::size_t count, const Read& read, const std::string& name)
{
    static_assert(sizeof(T) == T::size * sizeof(double));
    // Takes no memory unless something is written to it.
    auto scratch = std::make_shared<LargeVector<T>>(count);
    const std::span<const T> values = read(std::span<T>(*scratch));
    auto array = vtkSmartPointer<vtkDoubleArray>::New();
    array->SetName(name.c_str());
    array->SetNumberOfComponents(static_cast<int>(T::size));
    // VTK's interface takes no constant memory, but its writers do not change it.
    array->SetArray(reinterpret_cast<double*>(const_cast<T*>(values.data())),
                    static_cast<vtkIdType>(count * T::size), 1);
    return {array, {std::move(scratch)}};
}

/// The grid as a VTK data set of a kind, without values. The domain must be a grid that this kind
/// can represent, and outlive the data set. They throw `Aborted`, and `runtime_error` for an index
/// that is too large for VTK.
VtkView<vtkDataSet> makeImageData(const Domain& domain);
VtkView<vtkDataSet> makeRectilinearGrid(const Domain& domain);
VtkView<vtkDataSet> makeStructuredGrid(const Domain& domain, const volatile bool& abortFlag);
VtkView<vtkDataSet> makeUnstructuredGrid(const Domain& domain, const volatile bool& abortFlag);
VtkView<vtkDataSet> makePolyData(const Domain& domain, const volatile bool& abortFlag);

}
