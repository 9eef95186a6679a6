#pragma once

#include <tavrin/domain/Box.hpp>
#include <tavrin/domain/Lattice.hpp>

#include <cassert>
#include <cstdint>
#include <memory>
#include <span>

namespace tavrin
{

/// What a field has found out about some positions that does not depend on the time.
class TAVRIN_API PreparedPositions
{
public:
    PreparedPositions() = default;
    PreparedPositions(const PreparedPositions&) = delete;
    PreparedPositions& operator=(const PreparedPositions&) = delete;
    virtual ~PreparedPositions() = default;

    /// An upper bound of the memory that they take for each position: two cells with a reference point
    /// each, since members of a bundle may overlap.
    static constexpr std::size_t mostBytesPerPosition =
        2 * (sizeof(std::uint32_t) + 3 * sizeof(double));
};

/// Evaluates a field at many positions at once: the interface between `FieldSampler` and the kinds of
/// field. Each thread needs its own.
///
/// Results are written to arrays with one entry per position: isValid[k] is 1 and values[k] the value
/// at position k, or both are 0 where the field has no value. They are those that a `FieldEvaluator`
/// of the field gives. Once `abortFlag` reads true, evaluation ends soon and results are undefined.
template<std::size_t D, Value T>
class TAVRIN_API BatchEvaluator
{
public:
    using Position = Tensor<double, D>;

    BatchEvaluator() = default;
    BatchEvaluator(const BatchEvaluator&) = delete;
    BatchEvaluator& operator=(const BatchEvaluator&) = delete;
    virtual ~BatchEvaluator() = default;

    /// A box outside of which no position is valid.
    virtual Box<D> bounds() const { return Box<D>::everything(); }

    /// Whether positions are searched for among stored cells. That is slow enough to be worth
    /// preparing positions, and faster for positions in spatial order.
    virtual bool isSearching() const { return false; }

    /// Throws what loading values throws.
    virtual void evaluate(double time, std::span<const Position> positions, T* values,
                          std::uint8_t* isValid, const volatile bool& abortFlag) = 0;

    /// Prepares positions that will be evaluated at several times. Null where that saves nothing.
    virtual std::unique_ptr<PreparedPositions> prepare(std::span<const Position>)
    {
        return nullptr;
    }

    /// Prepares the positions of a lattice of fewer than 2^32 positions together. Null where that is
    /// not faster than evaluating them one after the other, and where `abortFlag` was set in the
    /// meantime.
    virtual std::unique_ptr<PreparedPositions> prepare(const Lattice<D>&, const volatile bool&)
    {
        return nullptr;
    }

    /// Evaluates `count` prepared positions from number `first` on. They were prepared by this
    /// evaluator or another one of the same field. A field that prepares no positions need not
    /// implement this.
    virtual void evaluate(double /*time*/, const PreparedPositions& /*positions*/,
                          std::size_t /*first*/, std::size_t /*count*/, T* /*values*/,
                          std::uint8_t* /*isValid*/, const volatile bool& /*abortFlag*/)
    {
        assert(!"a field that prepares positions must evaluate them");
    }

    /// Releases the values that were loaded for the current time, as `FieldEvaluator::release` does.
    virtual void release() = 0;
};

}
