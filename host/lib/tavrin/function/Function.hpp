#pragma once

#include <tavrin/base/LargeVector.hpp>
#include <tavrin/domain/CellComplex.hpp>
#include <tavrin/function/FunctionEvaluator.hpp>
#include <tavrin/value/ValueArray.hpp>

#include <cstdint>
#include <string>
#include <string_view>

namespace tavrin
{

enum class TimeBehavior
{
    Steady,
    Unsteady
};

/// "steady", "unsteady".
TAVRIN_API std::string_view nameOf(TimeBehavior behavior);

/// For each value of a function 1, or 0 where the value is only a placeholder.
using ValidityMask = LargeVector<std::uint8_t>;

/// For each element of a domain part its index in the file that a function was read from.
using FileIndices = std::vector<std::size_t>;

/// Values on one part of a domain, at one or more time steps.
///
/// A function made with m time steps holds the values of all of them, step after step, in one
/// value array. A function with at most one step is steady.
class TAVRIN_API FunctionBase : public DataObject
{
public:
    const std::shared_ptr<const Domain>& domain() const { return mDomain; }
    const DomainPart& domainPart() const { return mDomainPart; }

    /// The values of all time steps.
    const std::shared_ptr<const ValueArrayBase>& values() const { return mValues; }

    /// Strictly ascending. Empty for one step that belongs to no particular time.
    const std::vector<double>& timeSteps() const { return mTimeSteps; }

    /// At least 1.
    std::size_t numTimeSteps() const { return std::max<std::size_t>(1, mTimeSteps.size()); }
    TimeBehavior timeBehavior() const
    {
        return numTimeSteps() > 1 ? TimeBehavior::Unsteady : TimeBehavior::Steady;
    }

    /// The number of values of one time step.
    std::size_t valuesPerStep() const { return mDomain->numElements(mDomainPart); }

    /// Values on points are point-based, all others cell-based.
    DomainType domainType() const;

    /// The name of the quantity, such as that of an array in a file; may be empty.
    const std::string& name() const { return mName; }

    /// Marks the values that are real, for all time steps; null where all of them are. Values that are not
    /// are left out of statistics and pictures, and fields have no value where they would take part.
    const std::shared_ptr<const ValidityMask>& validity() const { return mValidity; }

    /// The index that an element of the domain part has in the file that the function was read from.
    /// It differs from `element` where elements of the file were left out or decomposed.
    std::size_t indexInFile(std::size_t element) const
    {
        return mFileIndices == nullptr ? element : (*mFileIndices)[element];
    }

    /// How far from a surface, a line or a vertex its values reach, in units of the coordinates: at a
    /// position in no cell the function as a field has the value of the closest point of the cells of
    /// fewer dimensions than the space, if that is no farther away.
    double reach() const { return mReach; }

    /// "3-D Vector" and the like.
    virtual std::string valueTypeName() const = 0;

    /// Readable lines on value type and precision, domain part, number of values and time steps.
    std::vector<std::string> getInfoStrings() const;

    static const TypeId<FunctionBase>& classTypeId()
    {
        return typeId<FunctionBase, DataObject>("FunctionBase", "function");
    }

protected:
    FunctionBase(std::shared_ptr<const Domain> domain, const DomainPart& domainPart,
                 std::shared_ptr<const ValueArrayBase> values, std::vector<double> timeSteps,
                 std::string name, std::shared_ptr<const ValidityMask> validity,
                 std::shared_ptr<const FileIndices> fileIndices, double reach);

private:
    std::shared_ptr<const Domain> mDomain;
    DomainPart mDomainPart;
    std::shared_ptr<const ValueArrayBase> mValues;
    std::vector<double> mTimeSteps;
    std::string mName;
    std::shared_ptr<const ValidityMask> mValidity;
    std::shared_ptr<const FileIndices> mFileIndices;
    double mReach;
};

/// The name of a tensor type by its extents: "Scalar", "3-D Vector", "2x2 Matrix", "2x2x2 Tensor".
template<typename T>
std::string valueTypeName()
{
    if constexpr (T::rank == 0)
        return "Scalar";
    else if constexpr (T::rank == 1)
        return std::to_string(T::size) + "-D Vector";
    else
    {
        std::string name = std::to_string(T::extent(0));
        for (std::size_t axis = 1; axis < T::rank; ++axis)
            name += "x" + std::to_string(T::extent(axis));
        return name + (T::rank == 2 ? " Matrix" : " Tensor");
    }
}

/// A function whose values are of type T, a `Tensor` of doubles of any shape. The library holds the
/// instances of `ValueTypes`.
template<typename T>
class TAVRIN_API Function final : public FunctionBase
{
public:
    /// Throws `runtime_error` "Data can't be registered to non-existent domains." for a null domain and
    /// "The data does not fit onto the specified domain" for a wrong number of values. Throws
    /// `logic_error` where there is no value array, time steps do not ascend, the mask differs in size
    /// from the values, the file indices from the domain part, or the reach is negative or not a number.
    Function(std::shared_ptr<const Domain> domain, const DomainPart& domainPart,
             std::shared_ptr<const ValueArray<T>> values, std::vector<double> timeSteps,
             std::string name = {}, std::shared_ptr<const ValidityMask> validity = nullptr,
             std::shared_ptr<const FileIndices> fileIndices = nullptr, double reach = 0.0);

    /// The values of all time steps.
    std::shared_ptr<const ValueArray<T>> values() const
    {
        return std::static_pointer_cast<const ValueArray<T>>(FunctionBase::values());
    }

    /// The values by time step. The function must outlive the series.
    TimeSeries<T> timeSeries() const { return {values(), timeSteps(), valuesPerStep()}; }

    /// The values of one time step, below `numTimeSteps()`.
    std::shared_ptr<const ValueArray<T>> stepValues(std::size_t step) const
    {
        return timeSeries().step(step);
    }

    /// Reads the stored values of one step, by default the first.
    DiscreteFunctionEvaluator<T> makeDiscreteEvaluator(std::size_t step = 0) const
    {
        return DiscreteFunctionEvaluator<T>(stepValues(step));
    }

    /// Reads values at any time between the first and the last step. The function must outlive the
    /// evaluator.
    FunctionEvaluator<T> makeEvaluator() const { return FunctionEvaluator<T>(timeSeries()); }

    std::string valueTypeName() const override { return tavrin::valueTypeName<T>(); }

    static const TypeId<Function>& classTypeId()
    {
        return RTTI::typeId<Function, FunctionBase>("Function", "function of type " +
                                                                    tavrin::valueTypeName<T>());
    }

private:
    /// Throws where the values cannot live on the domain.
    static void transferToDomain(const Domain* domain, const DomainPart& part,
                                 const ValueArrayBase& values, std::size_t numTimeSteps);
};

template<typename T>
Function<T>::Function(std::shared_ptr<const Domain> domain, const DomainPart& domainPart,
                      std::shared_ptr<const ValueArray<T>> values, std::vector<double> timeSteps,
                      std::string name, std::shared_ptr<const ValidityMask> validity,
                      std::shared_ptr<const FileIndices> fileIndices, double reach)
    : FunctionBase(std::move(domain), domainPart, std::move(values), std::move(timeSteps),
                   std::move(name), std::move(validity), fileIndices, reach)
{
    transferToDomain(this->domain().get(), domainPart, *FunctionBase::values(), numTimeSteps());
    if (fileIndices != nullptr && fileIndices->size() != valuesPerStep())
        throw logic_error("the file indices of a function do not fit its domain");
}

template<typename T>
void Function<T>::transferToDomain(const Domain* domain, const DomainPart& part,
                                   const ValueArrayBase& values, std::size_t numTimeSteps)
{
    if (domain == nullptr)
        throw runtime_error("Data can't be registered to non-existent domains.");
    if (values.size() != domain->numElements(part) * numTimeSteps)
        throw runtime_error("The data does not fit onto the specified domain");
}

extern template class Function<Scalar>;
extern template class Function<Vector1>;
extern template class Function<Vector2>;
extern template class Function<Vector3>;
extern template class Function<Vector4>;
extern template class Function<Matrix1>;
extern template class Function<Matrix2>;
extern template class Function<Matrix3>;
extern template class Function<Matrix4>;
extern template class Function<Vector242>;
extern template class Function<Vector375>;

/// Makes a function from values that are moved in, without copying them: one per element of the domain
/// part, for each time step in turn. Throws what the constructor of `Function` throws.
template<typename T, typename Allocator>
std::shared_ptr<const Function<T>> addData(std::shared_ptr<const Domain> domain,
                                           const DomainPart& domainPart,
                                           std::vector<T, Allocator> values, Precision precision,
                                           std::vector<double> timeSteps, std::string name = {},
                                           std::shared_ptr<const ValidityMask> validity = nullptr)
{
    auto array = std::make_shared<DefaultValueArray<T>>(std::move(values), precision, true);
    return std::make_shared<const Function<T>>(std::move(domain), domainPart, std::move(array),
                                               std::move(timeSteps), std::move(name),
                                               std::move(validity));
}

}
