#pragma once

#include <tavrin/domain/CellComplex.hpp>
#include <tavrin/field/Field.hpp>
#include <tavrin/function/StepInterpolator.hpp>
#include <tavrin/location/locatorOf.hpp>

namespace tavrin
{

/// A function on a grid as a field. Values on points are interpolated in the cell at the position
/// by its shape functions, values on cells hold all over the cell. Where no cell is there is no
/// value; between two time steps it is interpolated linearly.
template<std::size_t D, Value T>
class FunctionField final : public Field<D, T>
{
public:
    /// Whether the function lives on the points or cells of a grid of this dimension.
    static bool accepts(const Function<T>& function)
    {
        return gridOf(function) != nullptr && (function.domainPart() == PointSetBase::Points ||
                                               function.domainPart() == detail::Cells);
    }

    /// The function must be accepted.
    explicit FunctionField(const Function<T>& function)
        : mFunction(function), mGrid(gridOf(mFunction))
    {
    }

    std::unique_ptr<FieldEvaluator<D, T>> makeEvaluator() const override
    {
        if (mFunction.domainPart() == PointSetBase::Points)
            return std::make_unique<Evaluator<true>>(*this);
        return std::make_unique<Evaluator<false>>(*this);
    }

    std::string name() const override { return mFunction.name(); }

    TimeRange timeRange() const override
    {
        if (mFunction.timeBehavior() == TimeBehavior::Steady)
            return {};
        return {mFunction.timeSteps().front(), mFunction.timeSteps().back()};
    }

    PointSetBase::BoundingBox boundingBox() const override { return mGrid->boundingBox(); }

    bool isSearched() const override
    {
        const StructuringType structuring = mGrid->structuringType();
        return structuring == StructuringType::Curvilinear ||
               structuring == StructuringType::Unstructured;
    }

private:
    template<bool isOnPoints>
    class Evaluator;

    static const EmbeddedCellComplex<D>* gridOf(const Function<T>& function)
    {
        return dynamic_cast<const EmbeddedCellComplex<D>*>(function.domain().get());
    }

    // A copy, which shares domain and values with the original.
    Function<T> mFunction;
    const EmbeddedCellComplex<D>* mGrid;
};

template<std::size_t D, Value T>
template<bool isOnPoints>
class FunctionField<D, T>::Evaluator final : public FieldEvaluator<D, T>
{
public:
    using typename FieldEvaluator<D, T>::Places;
    using typename FieldEvaluator<D, T>::Position;

    explicit Evaluator(const FunctionField& field)
        : mSteps(field.mFunction.timeSeries()), mLocator(locatorOf(*field.mGrid))
    {
        mPosition[0] = std::numeric_limits<double>::quiet_NaN();
    }

    Box<D> bounds() const override { return mLocator.bounds(); }

    void reset(double time, const Position& position) override
    {
        this->setValid(false);
        if (!mSteps.moveTo(time))
            return;
        if (!(position == mPosition))
        {
            mLocator.locate(std::span(&position, 1), &mLocation, &mIsInside, mHint);
            mPosition = position;
        }
        this->setValid(mIsInside != 0);
    }

    T value() const override { return valueAt(mLocation); }

    void sample(double time, std::span<const Position> positions, T* values, std::uint8_t* isValid,
                const volatile bool& abortFlag) override
    {
        sampleInGroups(time, positions.size(), values, isValid, abortFlag,
                       [&](std::size_t first, std::size_t count, Location* locations) {
                           mLocator.locate(positions.subspan(first, count), locations,
                                           isValid + first, mHint);
                       });
    }

    std::unique_ptr<Places> place(std::span<const Position> positions) override
    {
        auto found = mLocator.find(positions);
        if (found == nullptr)
            return FieldEvaluator<D, T>::place(positions);
        return std::make_unique<PlacesInCells>(std::move(found));
    }

    std::unique_ptr<Places> place(const Lattice<D>& lattice,
                                  const volatile bool& abortFlag) override
    {
        auto found = mLocator.find(lattice, abortFlag);
        return found ? std::make_unique<PlacesInCells>(std::move(found)) : nullptr;
    }

    void sampleAt(double time, const Places& places, std::size_t first, std::size_t count,
                  T* values, std::uint8_t* isValid, const volatile bool& abortFlag) override
    {
        const auto* const known = dynamic_cast<const PlacesInCells*>(&places);
        if (known == nullptr)
            return FieldEvaluator<D, T>::sampleAt(time, places, first, count, values, isValid,
                                                  abortFlag);
        sampleInGroups(time, count, values, isValid, abortFlag,
                       [&](std::size_t group, std::size_t size, Location* locations)
                       { known->found->locate(first + group, size, locations, isValid + group); });
    }

    void release() override
    {
        this->setValid(false);
        mSteps.release();
    }

private:
    struct PlacesInCells final : Places
    {
        explicit PlacesInCells(std::unique_ptr<FoundPositions> all) : found(std::move(all)) {}

        std::unique_ptr<FoundPositions> found;
    };

    /// Calls `locate` for a few positions at once: they are found faster together, and no value is
    /// waited for before the next position is located.
    template<typename Locate>
    void sampleInGroups(double time, std::size_t numPositions, T* values, std::uint8_t* isValid,
                        const volatile bool& abortFlag, const Locate& locate)
    {
        this->setValid(false);
        if (!mSteps.moveTo(time))
        {
            std::fill_n(values, numPositions, T{});
            std::fill_n(isValid, numPositions, std::uint8_t{0});
            return;
        }
        std::array<Location, 32> locations;
        for (std::size_t first = 0; first < numPositions && !abortFlag; first += locations.size())
        {
            const std::size_t count = std::min(locations.size(), numPositions - first);
            locate(first, count, locations.data());
            for (std::size_t k = 0; k < count; ++k)
                values[first + k] = isValid[first + k] != 0 ? valueAt(locations[k]) : T{};
        }
    }

    T valueAt(const Location& location) const
    {
        if constexpr (isOnPoints)
            return mSteps.combination(std::span(location.pointIndices).first(location.numVertices),
                                      location.weights.data());
        else
            return mSteps.value(location.cell);
    }

    StepInterpolator<T> mSteps;
    const CellLocator<D>& mLocator;
    typename CellLocator<D>::Hint mHint;
    Position mPosition{};
    Location mLocation;
    std::uint8_t mIsInside = 0;
};

}
