#pragma once

#include <tavrin/domain/Box.hpp>
#include <tavrin/domain/Lattice.hpp>
#include <tavrin/field/FieldBase.hpp>
#include <tavrin/function/Function.hpp>

#include <memory>
#include <span>
#include <vector>

namespace tavrin
{

/// Reads the values of a field, one position after the other. Each thread needs its own.
template<std::size_t D, Value T>
class TAVRIN_API FieldEvaluator
{
public:
    using Position = Tensor<double, D>;

    FieldEvaluator() = default;
    FieldEvaluator(const FieldEvaluator&) = delete;
    FieldEvaluator& operator=(const FieldEvaluator&) = delete;
    virtual ~FieldEvaluator() = default;

    /// Moves to a time and a position, valid or not. Costs little where one of them stays the same,
    /// and allocates nothing at the same time. Throws what loading values throws.
    virtual void reset(double time, const Position& position) = 0;

    /// Whether the field has a value where the evaluator was reset to. Not before the first reset.
    bool isValid() const { return mIsValid; }

    /// The value there. Only where it is valid.
    virtual T value() const = 0;

    /// What `reset`, `isValid` and `value` say of one position after the other: values[k] is the
    /// value at positions[k], or 0, and isValid[k] is 1, or 0 where there is none. Stops where
    /// `abortFlag` reads true. It is invalid until the next reset.
    virtual void sample(double time, std::span<const Position> positions, T* values,
                        std::uint8_t* isValid, const volatile bool& abortFlag)
    {
        for (std::size_t k = 0; k < positions.size() && !abortFlag; ++k)
        {
            reset(time, positions[k]);
            isValid[k] = mIsValid ? 1 : 0;
            values[k] = mIsValid ? value() : T{};
        }
        setValid(false);
    }

    /// A box outside of which no position is valid.
    virtual Box<D> bounds() const { return Box<D>::everything(); }

    /// Positions of which it is known where they are.
    class Places
    {
    public:
        Places() = default;
        Places(const Places&) = delete;
        Places& operator=(const Places&) = delete;
        virtual ~Places() = default;
    };

    /// What places take at most for each position: two cells with a reference point, since members of
    /// a bundle may lie over each other.
    static constexpr std::size_t bytesPerPlace = 2 * (sizeof(std::uint32_t) + 3 * sizeof(double));

    /// Finds out of positions what does not depend on time. That is faster for many positions at
    /// once, and done once for several times.
    virtual std::unique_ptr<Places> place(std::span<const Position> positions)
    {
        return std::make_unique<PlainPlaces>(positions);
    }

    /// The same of the positions of a lattice, fewer than 2^32; or null where it is no faster than to
    /// take them one after the other. Where `abortFlag` reads true the places are undefined.
    virtual std::unique_ptr<Places> place(const Lattice<D>&, const volatile bool&)
    {
        return nullptr;
    }

    /// What `sample` gives at `count` of the positions, from the one with the number `first` on. The
    /// places come from an evaluator of the same field.
    virtual void sampleAt(double time, const Places& places, std::size_t first, std::size_t count,
                          T* values, std::uint8_t* isValid, const volatile bool& abortFlag)
    {
        const auto& positions = static_cast<const PlainPlaces&>(places).positions;
        sample(time, std::span(positions).subspan(first, count), values, isValid, abortFlag);
    }

    /// Lets go of values that were loaded for the present time; it is invalid until the next reset.
    /// When all evaluators of a series do so before one of them goes on to the next time, no more
    /// than two steps of the series are in memory.
    virtual void release() { setValid(false); }

protected:
    void setValid(bool isValid) { mIsValid = isValid; }

private:
    struct PlainPlaces final : Places
    {
        explicit PlainPlaces(std::span<const Position> all) : positions(all.begin(), all.end()) {}

        std::vector<Position> positions;
    };

    bool mIsValid = false;
};

/// A field with values of type T at positions with D coordinates, within a region and a range of
/// times. It is held by shared pointers.
template<std::size_t D, Value T>
class TAVRIN_API Field : public FieldBase, public std::enable_shared_from_this<Field<D, T>>
{
    static_assert(D >= 1 && D <= 3);

public:
    using Position = Tensor<double, D>;
    using Evaluator = FieldEvaluator<D, T>;

    /// The object as a field of this very type, or null where it is none. One is
    /// - such a field itself,
    /// - a `Function<T>` on the points or cells of an `EmbeddedCellComplex<D>` (`FunctionField`),
    /// - a bundle of one or more such objects (`BundleField`).
    static std::shared_ptr<const Field> applyTo(const DataObject& object);

    /// A new evaluator, which the field must outlive. May be called from several threads at once.
    /// The first one may take long, to prepare the search for positions, and does it with all
    /// threads outside of a parallel region. Throws what that throws.
    virtual std::unique_ptr<Evaluator> makeEvaluator() const = 0;

    std::size_t dimension() const final { return D; }
    std::string valueTypeName() const final { return tavrin::valueTypeName<T>(); }

    static const TypeId<Field>& classTypeId()
    {
        return RTTI::typeId<Field, FieldBase>("Field", std::to_string(D) + "-D field of type " +
                                                           tavrin::valueTypeName<T>());
    }
};

}
