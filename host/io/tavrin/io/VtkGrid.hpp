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

/// An object of VTK and the memory of others that it looks at.
template<typename Object>
struct VtkView
{
    vtkSmartPointer<Object> object;
    std::vector<std::shared_ptr<const void>> memory;
};

/// The numbers of `count` tuples of type T as an array of VTK: without a copy where
/// `read(scratch)` returns a view of memory that it has anyway, else copied into the scratch.
template<typename T, typename Read>
VtkView<vtkDoubleArray> viewNumbers(std::size_t count, const Read& read, const std::string& name)
{
    static_assert(sizeof(T) == T::size * sizeof(double));
    // Costs no memory as long as nothing is written to it.
    auto scratch = std::make_shared<LargeVector<T>>(count);
    const std::span<const T> values = read(std::span<T>(*scratch));
    auto array = vtkSmartPointer<vtkDoubleArray>::New();
    array->SetName(name.c_str());
    array->SetNumberOfComponents(static_cast<int>(T::size));
    // VTK takes no constant memory; a writer only reads it.
    array->SetArray(reinterpret_cast<double*>(const_cast<T*>(values.data())),
                    static_cast<vtkIdType>(count * T::size), 1);
    return {array, {std::move(scratch)}};
}

/// The grid as a data set of VTK of the kind that files with the extension hold, without values.
/// The domain must suit the extension, see `extensionsFor`, and outlive the data set.
/// Throws `Aborted`, and `runtime_error` where a number is too large for VTK.
VtkView<vtkDataSet> makeVtkGrid(const Domain& domain, const std::string& extension,
                                const volatile bool& abortFlag);

}
