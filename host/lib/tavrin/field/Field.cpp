#include <tavrin/field/BatchEvaluator.hpp>
#include <tavrin/field/BundleField.hpp>
#include <tavrin/field/FunctionField.hpp>

#include <algorithm>

namespace tavrin
{

namespace
{

/// Adds the members of a bundle as fields; a bundle among them is replaced by its members. Returns
/// false where one of them is not such a field.
template<std::size_t D, Value T>
bool addMembers(const DataObjectBundle& bundle, typename BundleField<D, T>::Members& fields)
{
    return std::ranges::all_of(
        bundle.members(),
        [&](const auto& member)
        {
            if (const auto* const inner = dynamic_cast<const DataObjectBundle*>(member.get()))
                return !inner->members().empty() && addMembers<D, T>(*inner, fields);
            fields.push_back(Field<D, T>::applyTo(*member));
            return fields.back() != nullptr;
        });
}

template<std::size_t D, Value T>
std::shared_ptr<const Field<D, T>> applyToBundle(const DataObjectBundle& bundle)
{
    typename BundleField<D, T>::Members members;
    if (!addMembers<D, T>(bundle, members) || members.empty())
        return nullptr;
    if (members.size() == 1)
        return members.front();
    return std::make_shared<const BundleField<D, T>>(std::move(members));
}

/// Asks an evaluator for one position after the other.
template<std::size_t D, Value T>
class OneByOne final : public BatchEvaluator<D, T>
{
public:
    using typename BatchEvaluator<D, T>::Position;
    using BatchEvaluator<D, T>::evaluate;

    explicit OneByOne(std::unique_ptr<FieldEvaluator<D, T>> evaluator)
        : mEvaluator(std::move(evaluator))
    {
    }

    void evaluate(double time, std::span<const Position> positions, T* values,
                  std::uint8_t* isValid, const volatile bool& abortFlag) override
    {
        for (std::size_t k = 0; k < positions.size() && !abortFlag; ++k)
        {
            mEvaluator->reset(time, positions[k]);
            isValid[k] = mEvaluator->isValid() ? 1 : 0;
            values[k] = mEvaluator->isValid() ? mEvaluator->value() : T{};
        }
    }

    void release() override { mEvaluator->release(); }

private:
    std::unique_ptr<FieldEvaluator<D, T>> mEvaluator;
};

}

template<std::size_t D, Value T>
std::unique_ptr<BatchEvaluator<D, T>> Field<D, T>::makeBatchEvaluator() const
{
    return std::make_unique<OneByOne<D, T>>(makeEvaluator());
}

template<std::size_t D, Value T>
std::shared_ptr<const Field<D, T>> Field<D, T>::applyTo(const DataObject& object)
{
    if (const auto* const field = dynamic_cast<const Field*>(&object))
        return field->shared_from_this();
    if (const auto* const bundle = dynamic_cast<const DataObjectBundle*>(&object))
        return applyToBundle<D, T>(*bundle);
    const auto* const function = dynamic_cast<const Function<T>*>(&object);
    if (function == nullptr || !FunctionField<D, T>::accepts(*function))
        return nullptr;
    return std::make_shared<const FunctionField<D, T>>(*function);
}

template class Field<1, Scalar>;
template class Field<1, Vector1>;
template class Field<1, Vector2>;
template class Field<1, Vector3>;
template class Field<1, Vector4>;
template class Field<1, Matrix1>;
template class Field<1, Matrix2>;
template class Field<1, Matrix3>;
template class Field<1, Matrix4>;
template class Field<1, Vector242>;
template class Field<1, Vector375>;
template class Field<2, Scalar>;
template class Field<2, Vector1>;
template class Field<2, Vector2>;
template class Field<2, Vector3>;
template class Field<2, Vector4>;
template class Field<2, Matrix1>;
template class Field<2, Matrix2>;
template class Field<2, Matrix3>;
template class Field<2, Matrix4>;
template class Field<2, Vector242>;
template class Field<2, Vector375>;
template class Field<3, Scalar>;
template class Field<3, Vector1>;
template class Field<3, Vector2>;
template class Field<3, Vector3>;
template class Field<3, Vector4>;
template class Field<3, Matrix1>;
template class Field<3, Matrix2>;
template class Field<3, Matrix3>;
template class Field<3, Matrix4>;
template class Field<3, Vector242>;
template class Field<3, Vector375>;

}
