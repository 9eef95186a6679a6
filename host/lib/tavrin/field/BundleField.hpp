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
        {
            if (!mBounds[i].meets(box))
                continue;
            mRest.clear();
            mRestIndices.clear();
            for (std::size_t k = 0; k < positions.size(); ++k)
                if (mBounds[i].contains(positions[k]))
                    addIfMissing(positions[k], k, isValid);
            answerRest(*mMembers[i], time, values, isValid, abortFlag);
        }
    }

    using FieldEvaluator<D, T>::place;

    std::unique_ptr<Places> place(const Lattice<D>& lattice,
                                  const volatile bool& abortFlag) override
    {
        auto result = std::make_unique<LatticePlaces>(lattice);
        std::size_t numPlaces = 0;
        for (std::size_t i = 0; i < mMembers.size() && !abortFlag; ++i)
        {
            const LatticeBlock block = lattice.within(mBounds[i]);
            if (block.size() == 0)
                continue;
            std::unique_ptr<Places> places;
            if (numPlaces + block.size() <= mostPlaces * lattice.size())
                places = mMembers[i]->place(lattice.part(block), abortFlag);
            numPlaces += places != nullptr ? block.size() : 0;
            result->members.push_back({i, block, std::move(places)});
        }
        return numPlaces > 0 && !abortFlag ? std::move(result) : nullptr;
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
        const Lattice<D> lattice = latticeOf(known->planes);
        for (const auto& member : known->members)
        {
            if (abortFlag)
                return;
            FieldEvaluator<D, T>& evaluator = *mMembers[member.index];
            mRest.clear();
            mRestIndices.clear();
            lattice.whole().forEachRun(
                member.block, first, first + count,
                [&](std::size_t number, std::size_t numberInBlock, std::size_t size)
                {
                    const std::size_t start = number - first;
                    if (std::count(isValid + start, isValid + start + size, 0) == 0)
                        return;
                    if (member.places != nullptr)
                        sampleRun(evaluator, time, *member.places, numberInBlock, size,
                                  values + start, isValid + start, abortFlag);
                    else
                        for (std::size_t k = start; k < start + size; ++k)
                            addIfMissing(lattice.position(lattice.indices(first + k)), k, isValid);
                });
            answerRest(evaluator, time, values, isValid, abortFlag);
        }
    }

    void release() override
    {
        this->setValid(false);
        for (const auto& member : mMembers)
            member->release();
    }

private:
    /// So many places are kept at most for each position, since members may lie over each other.
    static constexpr std::size_t mostPlaces = 2;

    /// Of a lattice: the members with a part of it in their bounds.
    struct LatticePlaces final : Places
    {
        struct Member
        {
            std::size_t index;
            LatticeBlock block;
            /// Null where they are found as they come.
            std::unique_ptr<Places> places;
        };

        explicit LatticePlaces(const Lattice<D>& lattice)
        {
            for (std::size_t axis = 0; axis < D; ++axis)
                planes[axis].assign(lattice.planes[axis].begin(), lattice.planes[axis].end());
        }

        std::array<std::vector<double>, D> planes;
        std::vector<Member> members;
    };

    /// Remembers position k if it has no value yet.
    void addIfMissing(const Position& position, std::size_t k, const std::uint8_t* isValid)
    {
        if (isValid[k] != 0)
            return;
        mRest.push_back(position);
        mRestIndices.push_back(k);
    }

    /// Asks a member for the positions that are remembered.
    void answerRest(FieldEvaluator<D, T>& member, double time, T* values, std::uint8_t* isValid,
                    const volatile bool& abortFlag)
    {
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

    /// Asks a member for neighbors of which it has the places, and keeps what is missing.
    void sampleRun(FieldEvaluator<D, T>& member, double time, const Places& places,
                   std::size_t first, std::size_t count, T* values, std::uint8_t* isValid,
                   const volatile bool& abortFlag)
    {
        mRestValues.resize(count);
        mRestValidity.resize(count);
        member.sampleAt(time, places, first, count, mRestValues.data(), mRestValidity.data(),
                        abortFlag);
        for (std::size_t k = 0; k < count; ++k)
            if (isValid[k] == 0 && mRestValidity[k] != 0)
            {
                values[k] = mRestValues[k];
                isValid[k] = 1;
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
