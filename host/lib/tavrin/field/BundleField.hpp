#pragma once

#include <tavrin/field/Field.hpp>

namespace tavrin
{

/// Several fields as one, such as the blocks of a mesh: at each position and time the first of them
/// that is valid there answers.
template<std::size_t D, Value T>
class BundleField final : public Field<D, T>
{
public:
    using Members = std::vector<std::shared_ptr<const Field<D, T>>>;

    /// At least one member.
    explicit BundleField(Members members) : mMembers(std::move(members)) {}

    std::unique_ptr<FieldEvaluator<D, T>> makeEvaluator() const override
    {
        return std::make_unique<Evaluator>(mMembers);
    }

    /// That of the first member.
    std::string name() const override { return mMembers.front()->name(); }

    /// From the first time of any member to the last of any.
    TimeRange timeRange() const override
    {
        TimeRange range = mMembers.front()->timeRange();
        for (const auto& member : mMembers)
        {
            range.first = std::min(range.first, member->timeRange().first);
            range.last = std::max(range.last, member->timeRange().last);
        }
        return range;
    }

    PointSetBase::BoundingBox boundingBox() const override
    {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        std::vector<std::pair<double, double>> bounds(D, {infinity, -infinity});
        for (const auto& member : mMembers)
        {
            const auto box = member->boundingBox();
            for (std::size_t i = 0; i < D; ++i)
                bounds[i] = {std::min(bounds[i].first, box[i].first),
                             std::max(bounds[i].second, box[i].second)};
        }
        return PointSetBase::BoundingBox(std::move(bounds));
    }

    /// Whether one of the members is.
    bool isSearched() const override
    {
        return std::ranges::any_of(mMembers,
                                   [](const auto& member) { return member->isSearched(); });
    }

private:
    class Evaluator;

    Members mMembers;
};

template<std::size_t D, Value T>
class BundleField<D, T>::Evaluator final : public FieldEvaluator<D, T>
{
public:
    using typename FieldEvaluator<D, T>::Places;
    using typename FieldEvaluator<D, T>::Position;

    explicit Evaluator(const Members& members)
    {
        for (const auto& member : members)
        {
            mMembers.push_back(member->makeEvaluator());
            mBounds.push_back(mMembers.back()->bounds());
        }
    }

    void reset(double time, const Position& position) override
    {
        this->setValid(false);
        for (const auto& member : mMembers)
        {
            member->reset(time, position);
            if (member->isValid())
            {
                mAnswering = member.get();
                this->setValid(true);
                return;
            }
        }
    }

    T value() const override { return mAnswering->value(); }

    void sample(double time, std::span<const Position> positions, T* values, std::uint8_t* isValid,
                const volatile bool& abortFlag) override
    {
        this->setValid(false);
        std::fill_n(values, positions.size(), T{});
        std::fill_n(isValid, positions.size(), std::uint8_t{0});
        auto box = Box<D>::nothing();
        for (const Position& position : positions)
            box.add(position);
        for (std::size_t i = 0; i < mMembers.size() && !abortFlag; ++i)
            if (mBounds[i].meets(box))
                sampleRest(*mMembers[i], time, positions, values, isValid, abortFlag);
    }

    using FieldEvaluator<D, T>::place;

    /// Where the boxes of the members lie over each other much, it is no faster.
    std::unique_ptr<Places> place(const Lattice<D>& lattice,
                                  const volatile bool& abortFlag) override
    {
        auto result = std::make_unique<LatticePlaces>();
        result->whole = lattice.whole();
        std::size_t total = 0;
        for (const Box<D>& bounds : mBounds)
        {
            result->members.push_back({lattice.within(bounds), nullptr});
            total += result->members.back().block.size();
        }
        if (total > mostPlaces * lattice.size())
            return nullptr;
        bool isFaster = false;
        for (std::size_t i = 0; i < mMembers.size() && !abortFlag; ++i)
        {
            auto& [block, places] = result->members[i];
            if (block.size() == 0)
                continue;
            const Lattice<D> part = lattice.part(block);
            places = mMembers[i]->place(part, abortFlag);
            isFaster = isFaster || places != nullptr;
            if (places == nullptr)
                places = mMembers[i]->place(part.positions());
        }
        return isFaster ? std::move(result) : nullptr;
    }

    void sampleAt(double time, const Places& places, std::size_t first, std::size_t count,
                  T* values, std::uint8_t* isValid, const volatile bool& abortFlag) override
    {
        const auto* const known = dynamic_cast<const LatticePlaces*>(&places);
        if (known == nullptr)
            return FieldEvaluator<D, T>::sampleAt(time, places, first, count, values, isValid,
                                                  abortFlag);
        this->setValid(false);
        std::fill_n(values, count, T{});
        std::fill_n(isValid, count, std::uint8_t{0});
        mRestValues.resize(count);
        mRestValidity.resize(count);
        for (std::size_t i = 0; i < mMembers.size() && !abortFlag; ++i)
            known->whole.forEachRun(
                known->members[i].block, first, first + count,
                [&](std::size_t number, std::size_t numberOfMember, std::size_t size)
                {
                    mMembers[i]->sampleAt(time, *known->members[i].places, numberOfMember, size,
                                          mRestValues.data(), mRestValidity.data(), abortFlag);
                    for (std::size_t k = 0; k < size; ++k)
                        if (const std::size_t n = number - first + k;
                            isValid[n] == 0 && mRestValidity[k] != 0)
                        {
                            values[n] = mRestValues[k];
                            isValid[n] = 1;
                        }
                });
    }

    void release() override
    {
        this->setValid(false);
        for (const auto& member : mMembers)
            member->release();
    }

private:
    /// The places of a lattice may be so many times as many as its positions.
    static constexpr std::size_t mostPlaces = 2;

    /// Of a lattice, for each member those in its bounds.
    struct LatticePlaces final : Places
    {
        struct OfMember
        {
            LatticeBlock block;
            std::unique_ptr<Places> places;
        };

        LatticeBlock whole;
        std::vector<OfMember> members;
    };

    /// Asks a member for the positions where those before it have no value.
    void sampleRest(FieldEvaluator<D, T>& member, double time, std::span<const Position> positions,
                    T* values, std::uint8_t* isValid, const volatile bool& abortFlag)
    {
        mRest.clear();
        mRestIndices.clear();
        for (std::size_t k = 0; k < positions.size(); ++k)
            if (isValid[k] == 0)
            {
                mRest.push_back(positions[k]);
                mRestIndices.push_back(k);
            }
        if (mRest.empty())
            return;
        mRestValues.resize(mRest.size());
        mRestValidity.resize(mRest.size());
        member.sample(time, mRest, mRestValues.data(), mRestValidity.data(), abortFlag);
        for (std::size_t i = 0; i < mRest.size(); ++i)
        {
            values[mRestIndices[i]] = mRestValues[i];
            isValid[mRestIndices[i]] = mRestValidity[i];
        }
    }

    std::vector<Position> mRest;
    std::vector<std::size_t> mRestIndices;
    std::vector<T> mRestValues;
    std::vector<std::uint8_t> mRestValidity;
    std::vector<std::unique_ptr<FieldEvaluator<D, T>>> mMembers;
    /// Of the members.
    std::vector<Box<D>> mBounds;
    const FieldEvaluator<D, T>* mAnswering = nullptr;
};

}
