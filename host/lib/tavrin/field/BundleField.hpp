#pragma once

#include <tavrin/field/BundleBatchEvaluator.hpp>
#include <tavrin/field/Field.hpp>

#include <algorithm>
#include <cassert>
#include <limits>
#include <vector>

namespace tavrin
{

/// Several fields as one, such as the blocks of a mesh: its value at a position and time is that of the
/// first member that is valid there.
template<std::size_t D, Value T>
class BundleField final : public Field<D, T>
{
public:
    using Members = std::vector<std::shared_ptr<const Field<D, T>>>;

    /// At least one member.
    explicit BundleField(Members members) : mMembers(std::move(members))
    {
        assert(!mMembers.empty());
    }

    std::unique_ptr<FieldEvaluator<D, T>> makeEvaluator() const override
    {
        return std::make_unique<Evaluator>(mMembers);
    }

    std::unique_ptr<BatchEvaluator<D, T>> makeBatchEvaluator() const override
    {
        typename BundleBatchEvaluator<D, T>::Members members;
        for (const auto& member : mMembers)
            members.push_back(member->makeBatchEvaluator());
        return std::make_unique<BundleBatchEvaluator<D, T>>(std::move(members));
    }

    /// The name of the first member.
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

private:
    class Evaluator;

    Members mMembers;
};

template<std::size_t D, Value T>
class BundleField<D, T>::Evaluator final : public FieldEvaluator<D, T>
{
public:
    using typename FieldEvaluator<D, T>::Position;

    explicit Evaluator(const Members& members)
    {
        for (const auto& member : members)
            mMembers.push_back(member->makeEvaluator());
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

    void release() override
    {
        this->setValid(false);
        for (const auto& member : mMembers)
            member->release();
    }

private:
    std::vector<std::unique_ptr<FieldEvaluator<D, T>>> mMembers;
    /// The member that is valid at the time and position of the last reset.
    const FieldEvaluator<D, T>* mAnswering = nullptr;
};

}
