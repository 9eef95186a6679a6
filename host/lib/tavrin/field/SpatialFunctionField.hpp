#pragma once

#include <tavrin/field/Field.hpp>

#include <functional>
#include <limits>

namespace tavrin
{

/// A field defined by a formula of position and time, valid everywhere and at every time.
template<std::size_t D, Value T>
class SpatialFunctionField final : public Field<D, T>
{
public:
    using typename Field<D, T>::Position;
    using Formula = std::function<T(const Position& position, double time)>;

    /// The formula is called from several threads at once.
    explicit SpatialFunctionField(Formula formula, std::string name = {})
        : mFormula(std::move(formula)), mName(std::move(name))
    {
    }

    std::unique_ptr<FieldEvaluator<D, T>> makeEvaluator() const override
    {
        return std::make_unique<Evaluator>(mFormula);
    }

    std::string name() const override { return mName; }
    TimeRange timeRange() const override { return {}; }
    PointSetBase::BoundingBox boundingBox() const override
    {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        std::vector<std::pair<double, double>> bounds(D, {-infinity, infinity});
        return PointSetBase::BoundingBox(std::move(bounds));
    }

private:
    class Evaluator final : public FieldEvaluator<D, T>
    {
    public:
        explicit Evaluator(const Formula& formula) : mFormula(formula) {}

        void reset(double time, const Position& position) override
        {
            mTime = time;
            mPosition = position;
            this->setValid(true);
        }

        T value() const override { return mFormula(mPosition, mTime); }

    private:
        const Formula& mFormula;
        double mTime = 0.0;
        Position mPosition{};
    };

    Formula mFormula;
    std::string mName;
};

}
