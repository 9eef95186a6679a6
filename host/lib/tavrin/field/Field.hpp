#pragma once

#include <tavrin/field/FieldBase.hpp>
#include <tavrin/field/FieldEvaluator.hpp>
#include <tavrin/function/Function.hpp>

#include <memory>

namespace tavrin
{

template<std::size_t D, Value T>
class BatchEvaluator;

/// A field with values of type T at positions with D coordinates, within a region and a range of
/// times. Fields are held by shared pointers.
template<std::size_t D, Value T>
class TAVRIN_API Field : public FieldBase, public std::enable_shared_from_this<Field<D, T>>
{
    static_assert(D >= 1 && D <= 3);

public:
    using Position = Tensor<double, D>;
    using Evaluator = FieldEvaluator<D, T>;

    /// The object as a field of exactly this type, or null where it cannot be seen as one. These can:
    /// - a field of the type itself,
    /// - a `Function<T>` on the points or cells of an `EmbeddedCellComplex<D>` (`FunctionField`),
    /// - a bundle of one or more such objects (`BundleField`).
    static std::shared_ptr<const Field> applyTo(const DataObject& object);

    /// A new evaluator. The field must outlive it. May be called from several threads at once. The
    /// first call may take long, since it builds the search structure of a grid, on all threads when
    /// made outside of a parallel region. Throws what that throws.
    virtual std::unique_ptr<Evaluator> makeEvaluator() const = 0;

    /// The same for many positions at once, for `FieldSampler`. By default it asks an evaluator for
    /// one position after the other.
    virtual std::unique_ptr<BatchEvaluator<D, T>> makeBatchEvaluator() const;

    std::size_t dimension() const final { return D; }
    std::string valueTypeName() const final { return tavrin::valueTypeName<T>(); }

    static const TypeId<Field>& classTypeId()
    {
        return RTTI::typeId<Field, FieldBase>("Field", std::to_string(D) + "-D field of type " +
                                                           tavrin::valueTypeName<T>());
    }
};

}
