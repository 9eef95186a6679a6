#pragma once

#include <tavrin/base/Export.hpp>
#include <tavrin/value/Tensor.hpp>

namespace tavrin
{

/// Reads the values of a field, one position after the other. Each thread needs its own. Many positions
/// are faster with a `FieldSampler`.
///
///     const auto evaluator = field->makeEvaluator();
///     evaluator->reset(time, position);
///     if (evaluator->isValid())
///         use(evaluator->value());
template<std::size_t D, Value T>
class TAVRIN_API FieldEvaluator
{
public:
    using Position = Tensor<double, D>;

    FieldEvaluator() = default;
    FieldEvaluator(const FieldEvaluator&) = delete;
    FieldEvaluator& operator=(const FieldEvaluator&) = delete;
    virtual ~FieldEvaluator() = default;

    /// Moves to a time and a position, valid or not. Cheap where one of them stays the same;
    /// allocates nothing while the time stays the same. Throws what loading values throws.
    virtual void reset(double time, const Position& position) = 0;

    /// Whether the field has a value at the time and position of the last reset; false before the
    /// first one.
    bool isValid() const { return mIsValid; }

    /// The value there. The evaluator must be valid.
    virtual T value() const = 0;

    /// Releases the values that were loaded for the current time. The evaluator is invalid until the
    /// next reset. When all evaluators of a series do so before one of them goes on to the next time,
    /// at most two steps of the series are in memory.
    virtual void release() { setValid(false); }

protected:
    void setValid(bool isValid) { mIsValid = isValid; }

private:
    bool mIsValid = false;
};

}
