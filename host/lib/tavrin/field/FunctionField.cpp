#include <tavrin/field/FunctionField.hpp>

#include <tavrin/field/BatchEvaluator.hpp>
#include <tavrin/location/locatorOf.hpp>

#include <cassert>
#include <limits>

namespace tavrin
{

namespace
{

template<std::size_t D, Value T>
const EmbeddedCellComplex<D>* gridOf(const Function<T>& function)
{
    return dynamic_cast<const EmbeddedCellComplex<D>*>(function.domain().get());
}

/// The values of a function at locations in its grid.
template<Value T, bool isOnPoints>
class ValuesInGrid
{
public:
    explicit ValuesInGrid(const Function<T>& function)
        : mSteps(function.timeSeries()), mMask(function.validity()),
          mValuesPerStep(function.valuesPerStep())
    {
    }

    bool moveTo(double time) { return mSteps.moveTo(time); }
    void release() { mSteps.release(); }

    T operator[](const Location& location) const
    {
        if constexpr (isOnPoints)
            return mSteps.combination(std::span(location.pointIndices).first(location.numVertices),
                                      location.weights.data());
        else
            return mSteps.value(location.cell);
    }

    /// Whether all values that count at the location are real, in both steps around the time.
    bool isReal(const Location& location) const
    {
        if (mMask == nullptr)
            return true;
        const auto [lower, upper] = mSteps.steps();
        return isRealIn(lower, location) && (upper == lower || isRealIn(upper, location));
    }

private:
    bool isRealIn(std::size_t step, const Location& location) const
    {
        const std::uint8_t* const marks = mMask->data() + step * mValuesPerStep;
        if constexpr (!isOnPoints)
            return marks[location.cell] != 0;
        for (std::size_t k = 0; k < location.numVertices; ++k)
            if (location.weights[k] != 0.0 && marks[location.pointIndices[k]] == 0)
                return false;
        return true;
    }

    StepInterpolator<T> mSteps;
    std::shared_ptr<const ValidityMask> mMask;
    std::size_t mValuesPerStep;
};

/// Evaluates a function on a grid, whose locator must outlive it, at one position after the other.
template<std::size_t D, Value T, bool isOnPoints>
class EvaluatorInGrid final : public FieldEvaluator<D, T>
{
public:
    using typename FieldEvaluator<D, T>::Position;

    EvaluatorInGrid(const Function<T>& function, const CellLocator<D>& locator)
        : mValues(function), mLocator(locator)
    {
        mPosition[0] = std::numeric_limits<double>::quiet_NaN();
    }

    void reset(double time, const Position& position) override
    {
        this->setValid(false);
        if (!mValues.moveTo(time))
            return;
        if (!(position == mPosition))
        {
            mLocator.locate(std::span(&position, 1), &mLocation, &mIsInside, mHint);
            mPosition = position;
        }
        this->setValid(mIsInside != 0 && mValues.isReal(mLocation));
    }

    T value() const override { return mValues[mLocation]; }

    void release() override
    {
        this->setValid(false);
        mValues.release();
    }

private:
    ValuesInGrid<T, isOnPoints> mValues;
    const CellLocator<D>& mLocator;
    typename CellLocator<D>::Hint mHint;
    Position mPosition{};
    Location mLocation;
    std::uint8_t mIsInside = 0;
};

/// Evaluates a function on a grid, whose locator must outlive it, at many positions at once.
template<std::size_t D, Value T, bool isOnPoints>
class BatchesInGrid final : public BatchEvaluator<D, T>
{
public:
    using typename BatchEvaluator<D, T>::Position;

    BatchesInGrid(const Function<T>& function, const CellLocator<D>& locator)
        : mValues(function), mLocator(locator)
    {
    }

    Box<D> bounds() const override { return mLocator.bounds(); }
    bool isSearching() const override { return mLocator.isSearching(); }

    void evaluate(double time, std::span<const Position> positions, T* values,
                  std::uint8_t* isValid, const volatile bool& abortFlag) override
    {
        evaluateInGroups(time, positions.size(), values, isValid, abortFlag,
                         [&](std::size_t first, std::size_t count, Location* locations) {
                             mLocator.locate(positions.subspan(first, count), locations,
                                             isValid + first, mHint);
                         });
    }

    std::unique_ptr<PreparedPositions> prepare(std::span<const Position> positions) override
    {
        return prepared(mLocator.find(positions));
    }

    std::unique_ptr<PreparedPositions> prepare(const Lattice<D>& lattice,
                                               const volatile bool& abortFlag) override
    {
        return prepared(mLocator.find(lattice, abortFlag));
    }

    void evaluate(double time, const PreparedPositions& positions, std::size_t first,
                  std::size_t count, T* values, std::uint8_t* isValid,
                  const volatile bool& abortFlag) override
    {
        const FoundPositions& found = *static_cast<const PreparedInGrid&>(positions).found;
        evaluateInGroups(time, count, values, isValid, abortFlag,
                         [&](std::size_t group, std::size_t size, Location* locations)
                         { found.locate(first + group, size, locations, isValid + group); });
    }

    void release() override { mValues.release(); }

private:
    struct PreparedInGrid final : PreparedPositions
    {
        explicit PreparedInGrid(std::unique_ptr<FoundPositions> all) : found(std::move(all)) {}

        std::unique_ptr<FoundPositions> found;
    };

    static std::unique_ptr<PreparedPositions> prepared(std::unique_ptr<FoundPositions> found)
    {
        return found != nullptr ? std::make_unique<PreparedInGrid>(std::move(found)) : nullptr;
    }

    /// Calls `locate` for a few positions at once. They are found faster together, and the memory
    /// delivers the values of one position while those of the next are asked for.
    template<typename Locate>
    void evaluateInGroups(double time, std::size_t numPositions, T* values, std::uint8_t* isValid,
                          const volatile bool& abortFlag, const Locate& locate)
    {
        if (!mValues.moveTo(time))
        {
            std::fill_n(values, numPositions, T{});
            std::fill_n(isValid, numPositions, std::uint8_t{0});
            return;
        }
        std::array<Location, positionsPerGroup> locations;
        for (std::size_t first = 0; first < numPositions && !abortFlag; first += positionsPerGroup)
        {
            const std::size_t count = std::min(positionsPerGroup, numPositions - first);
            locate(first, count, locations.data());
            for (std::size_t k = 0; k < count; ++k)
            {
                std::uint8_t& mark = isValid[first + k];
                if (mark != 0 && !mValues.isReal(locations[k]))
                    mark = 0;
                values[first + k] = mark != 0 ? mValues[locations[k]] : T{};
            }
        }
    }

    /// The packet size of the tree that searches for positions.
    static constexpr std::size_t positionsPerGroup = 32;

    ValuesInGrid<T, isOnPoints> mValues;
    const CellLocator<D>& mLocator;
    typename CellLocator<D>::Hint mHint;
};

}

template<std::size_t D, Value T>
bool FunctionField<D, T>::accepts(const Function<T>& function)
{
    return gridOf<D>(function) != nullptr && (function.domainPart() == PointSetBase::Points ||
                                              function.domainPart() == detail::Cells);
}

template<std::size_t D, Value T>
FunctionField<D, T>::FunctionField(const Function<T>& function)
    : mFunction(function), mGrid(gridOf<D>(mFunction))
{
    assert(accepts(function));
}

template<std::size_t D, Value T>
std::unique_ptr<FieldEvaluator<D, T>> FunctionField<D, T>::makeEvaluator() const
{
    if (isOnPoints())
        return std::make_unique<EvaluatorInGrid<D, T, true>>(mFunction, locator());
    return std::make_unique<EvaluatorInGrid<D, T, false>>(mFunction, locator());
}

template<std::size_t D, Value T>
std::unique_ptr<BatchEvaluator<D, T>> FunctionField<D, T>::makeBatchEvaluator() const
{
    if (isOnPoints())
        return std::make_unique<BatchesInGrid<D, T, true>>(mFunction, locator());
    return std::make_unique<BatchesInGrid<D, T, false>>(mFunction, locator());
}

template<std::size_t D, Value T>
const CellLocator<D>& FunctionField<D, T>::locator() const
{
    if (mFunction.reach() == 0.0)
        return locatorOf(*mGrid);
    std::call_once(mReachingLocatorOnce,
                   [&] { mReachingLocator = makeReachingLocator(*mGrid, mFunction.reach()); });
    return *mReachingLocator;
}

template<std::size_t D, Value T>
TimeRange FunctionField<D, T>::timeRange() const
{
    if (mFunction.timeBehavior() == TimeBehavior::Steady)
        return {};
    return {mFunction.timeSteps().front(), mFunction.timeSteps().back()};
}

template class FunctionField<1, Scalar>;
template class FunctionField<1, Vector1>;
template class FunctionField<1, Vector2>;
template class FunctionField<1, Vector3>;
template class FunctionField<1, Vector4>;
template class FunctionField<1, Matrix1>;
template class FunctionField<1, Matrix2>;
template class FunctionField<1, Matrix3>;
template class FunctionField<1, Matrix4>;
template class FunctionField<1, Vector242>;
template class FunctionField<1, Vector375>;
template class FunctionField<2, Scalar>;
template class FunctionField<2, Vector1>;
template class FunctionField<2, Vector2>;
template class FunctionField<2, Vector3>;
template class FunctionField<2, Vector4>;
template class FunctionField<2, Matrix1>;
template class FunctionField<2, Matrix2>;
template class FunctionField<2, Matrix3>;
template class FunctionField<2, Matrix4>;
template class FunctionField<2, Vector242>;
template class FunctionField<2, Vector375>;
template class FunctionField<3, Scalar>;
template class FunctionField<3, Vector1>;
template class FunctionField<3, Vector2>;
template class FunctionField<3, Vector3>;
template class FunctionField<3, Vector4>;
template class FunctionField<3, Matrix1>;
template class FunctionField<3, Matrix2>;
template class FunctionField<3, Matrix3>;
template class FunctionField<3, Matrix4>;
template class FunctionField<3, Vector242>;
template class FunctionField<3, Vector375>;

}
