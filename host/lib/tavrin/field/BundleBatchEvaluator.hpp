#pragma once

#include <tavrin/field/BatchEvaluator.hpp>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace tavrin
{

/// Evaluates a bundle of fields at many positions at once. Members are asked in order, each only for
/// the positions in its bounds that no earlier one has answered.
template<std::size_t D, Value T>
class BundleBatchEvaluator final : public BatchEvaluator<D, T>
{
public:
    using typename BatchEvaluator<D, T>::Position;
    using Members = std::vector<std::unique_ptr<BatchEvaluator<D, T>>>;

    explicit BundleBatchEvaluator(Members members) : mMembers(std::move(members))
    {
        for (const auto& member : mMembers)
            mBounds.push_back(member->bounds());
    }

    Box<D> bounds() const override
    {
        auto all = Box<D>::nothing();
        for (const Box<D>& box : mBounds)
            all.add(box);
        return all;
    }

    bool isSearching() const override
    {
        return std::ranges::any_of(mMembers,
                                   [](const auto& member) { return member->isSearching(); });
    }

    void evaluate(double time, std::span<const Position> positions, T* values,
                  std::uint8_t* isValid, const volatile bool& abortFlag) override
    {
        std::fill_n(values, positions.size(), T{});
        std::fill_n(isValid, positions.size(), std::uint8_t{0});
        auto box = Box<D>::nothing();
        for (const Position& position : positions)
            box.add(position);
        for (std::size_t i = 0; i < mMembers.size() && !abortFlag; ++i)
        {
            if (!mBounds[i].meets(box))
                continue;
            mOpen.clear();
            mOpenIndices.clear();
            for (std::size_t k = 0; k < positions.size(); ++k)
                if (mBounds[i].contains(positions[k]))
                    collectIfOpen(positions[k], k, isValid);
            evaluateOpen(*mMembers[i], time, values, isValid, abortFlag);
        }
    }

    using BatchEvaluator<D, T>::prepare;

    std::unique_ptr<PreparedPositions> prepare(const Lattice<D>& lattice,
                                               const volatile bool& abortFlag) override
    {
        auto result = std::make_unique<PreparedLattice>(lattice);
        std::size_t numPrepared = 0;
        for (std::size_t i = 0; i < mMembers.size() && !abortFlag; ++i)
        {
            const LatticeBlock block = lattice.within(mBounds[i]);
            if (block.size() == 0)
                continue;
            std::unique_ptr<PreparedPositions> prepared;
            if (numPrepared + block.size() <= mostPreparedPerPosition * lattice.size())
                prepared = mMembers[i]->prepare(lattice.part(block), abortFlag);
            numPrepared += prepared != nullptr ? block.size() : 0;
            result->members.push_back({i, block, std::move(prepared)});
        }
        return numPrepared > 0 && !abortFlag ? std::move(result) : nullptr;
    }

    void evaluate(double time, const PreparedPositions& positions, std::size_t first,
                  std::size_t count, T* values, std::uint8_t* isValid,
                  const volatile bool& abortFlag) override
    {
        const auto& prepared = static_cast<const PreparedLattice&>(positions);
        std::fill_n(values, count, T{});
        std::fill_n(isValid, count, std::uint8_t{0});
        const Lattice<D> lattice = latticeOf(prepared.planes);
        for (const auto& member : prepared.members)
        {
            if (abortFlag)
                return;
            BatchEvaluator<D, T>& evaluator = *mMembers[member.index];
            mOpen.clear();
            mOpenIndices.clear();
            lattice.whole().forEachRun(
                member.block, first, first + count,
                [&](std::size_t number, std::size_t numberInBlock, std::size_t size)
                {
                    const std::size_t start = number - first;
                    if (std::count(isValid + start, isValid + start + size, 0) == 0)
                        return;
                    if (member.prepared != nullptr)
                        evaluateRun(evaluator, time, *member.prepared, numberInBlock, size,
                                    values + start, isValid + start, abortFlag);
                    else
                        for (std::size_t k = start; k < start + size; ++k)
                            collectIfOpen(lattice.position(lattice.indices(first + k)), k, isValid);
                });
            evaluateOpen(evaluator, time, values, isValid, abortFlag);
        }
    }

    void release() override
    {
        for (const auto& member : mMembers)
            member->release();
    }

private:
    /// The bound of `PreparedPositions::mostBytesPerPosition` on overlapping members.
    static constexpr std::size_t mostPreparedPerPosition = 2;

    /// The members of the bundle whose bounds hold a part of a lattice.
    struct PreparedLattice final : PreparedPositions
    {
        struct Member
        {
            std::size_t index;
            /// The part of the lattice in the member's bounds.
            LatticeBlock block;
            /// Null where the member evaluates the positions one after the other.
            std::unique_ptr<PreparedPositions> prepared;
        };

        explicit PreparedLattice(const Lattice<D>& lattice)
        {
            for (std::size_t axis = 0; axis < D; ++axis)
                planes[axis].assign(lattice.planes[axis].begin(), lattice.planes[axis].end());
        }

        std::array<std::vector<double>, D> planes;
        std::vector<Member> members;
    };

    /// Collects position k if no member has answered it yet.
    void collectIfOpen(const Position& position, std::size_t k, const std::uint8_t* isValid)
    {
        if (isValid[k] != 0)
            return;
        mOpen.push_back(position);
        mOpenIndices.push_back(k);
    }

    /// Evaluates a member at the collected positions.
    void evaluateOpen(BatchEvaluator<D, T>& member, double time, T* values, std::uint8_t* isValid,
                      const volatile bool& abortFlag)
    {
        if (mOpen.empty())
            return;
        mMemberValues.resize(mOpen.size());
        mMemberValidity.resize(mOpen.size());
        member.evaluate(time, mOpen, mMemberValues.data(), mMemberValidity.data(), abortFlag);
        for (std::size_t i = 0; i < mOpen.size(); ++i)
        {
            values[mOpenIndices[i]] = mMemberValues[i];
            isValid[mOpenIndices[i]] = mMemberValidity[i];
        }
    }

    /// Evaluates a member at prepared positions, and keeps the values that no earlier member gave.
    void evaluateRun(BatchEvaluator<D, T>& member, double time, const PreparedPositions& prepared,
                     std::size_t first, std::size_t count, T* values, std::uint8_t* isValid,
                     const volatile bool& abortFlag)
    {
        mMemberValues.resize(count);
        mMemberValidity.resize(count);
        member.evaluate(time, prepared, first, count, mMemberValues.data(), mMemberValidity.data(),
                        abortFlag);
        for (std::size_t k = 0; k < count; ++k)
            if (isValid[k] == 0 && mMemberValidity[k] != 0)
            {
                values[k] = mMemberValues[k];
                isValid[k] = 1;
            }
    }

    Members mMembers;
    std::vector<Box<D>> mBounds;

    /// Positions that are collected for a member, their indices and the member's answers.
    std::vector<Position> mOpen;
    std::vector<std::size_t> mOpenIndices;
    std::vector<T> mMemberValues;
    std::vector<std::uint8_t> mMemberValidity;
};

}
