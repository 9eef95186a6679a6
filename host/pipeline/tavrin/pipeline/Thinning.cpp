#include "Thinning.hpp"

#include <tavrin/domain/RectilinearGrid.hpp>
#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/domain/elementPosition.hpp>
#include <tavrin/function/visit.hpp>
#include <tavrin/value/SeriesValueArray.hpp>

#include <cmath>
#include <limits>
#include <numeric>
#include <unordered_map>
#include <unordered_set>

namespace tavrin::pipeline
{

namespace
{

using Indices = std::vector<std::size_t>;

/// Bisection steps between the finest and the coarsest distance of samples.
constexpr int numBisections = 40;

/// Whether each element is valid at one time step or more.
std::vector<bool> everValid(const FunctionBase& function)
{
    const std::size_t count = function.valuesPerStep();
    if (function.validity() == nullptr)
        return std::vector<bool>(count, true);
    std::vector<bool> isValid(count, false);
    for (std::size_t i = 0; i < function.validity()->size(); ++i)
        if ((*function.validity())[i] != 0)
            isValid[i % count] = true;
    return isValid;
}

/// The distance of neighboring points along each axis of a grid in which it is nearly constant.
template<std::size_t D>
std::optional<std::array<double, D>> evenSpacing(const PointSet<D>& points)
{
    std::array<double, D> spacing{};
    if (const auto* const uniform = dynamic_cast<const UniformGrid<D>*>(&points))
    {
        for (std::size_t i = 0; i < D; ++i)
            spacing[i] = std::abs(uniform->layout().spacing[i]);
        return spacing;
    }
    const auto* const rectilinear = dynamic_cast<const RectilinearGrid<D>*>(&points);
    if (rectilinear == nullptr)
        return {};
    constexpr double mostUneven = 2.0;
    for (std::size_t i = 0; i < D; ++i)
    {
        const std::vector<double>& coordinates = rectilinear->coordinates()[i];
        double least = std::numeric_limits<double>::infinity();
        double most = 0.0;
        for (std::size_t k = 0; k + 1 < coordinates.size(); ++k)
        {
            const double step = std::abs(coordinates[k + 1] - coordinates[k]);
            least = std::min(least, step);
            most = std::max(most, step);
        }
        if (most > mostUneven * least)
            return {};
        spacing[i] = coordinates.size() < 2 ? 0.0
                                            : std::abs(coordinates.back() - coordinates.front()) /
                                                  static_cast<double>(coordinates.size() - 1);
    }
    return spacing;
}

/// The elements of a structured grid at regular distances along each index axis.
class StridedChoice
{
public:
    using Strides = std::array<std::size_t, 3>;

    /// `counts` is the number of elements along each axis, `spacing` their distance.
    StridedChoice(const GridSize& counts, const std::array<double, 3>& spacing,
                  const std::vector<bool>& isValid)
        : mCounts(counts), mSpacing(spacing), mIsValid(isValid)
    {
    }

    Indices choose(std::size_t maximum) const
    {
        double tooFine = 0.0;
        double coarse = 0.0;
        for (std::size_t i = 0; i < 3; ++i)
            coarse = std::max(coarse, static_cast<double>(mCounts[i]) * mSpacing[i]);
        Strides strides = stridesFor(coarse);
        for (int i = 0; i < numBisections; ++i)
        {
            const double middle = 0.5 * (tooFine + coarse);
            const Strides candidate = stridesFor(middle);
            const bool fits = candidate == strides || elementsAt(candidate).size() <= maximum;
            (fits ? coarse : tooFine) = middle;
            if (fits)
                strides = candidate;
        }
        return elementsAt(refined(strides, maximum));
    }

private:
    double distance(const Strides& strides, std::size_t axis) const
    {
        return static_cast<double>(strides[axis]) * mSpacing[axis];
    }

    Strides stridesFor(double wanted) const
    {
        Strides strides{1, 1, 1};
        for (std::size_t i = 0; i < 3; ++i)
            if (mCounts[i] > 1)
                strides[i] = std::clamp<std::size_t>(
                    static_cast<std::size_t>(std::lround(wanted / mSpacing[i])), 1, mCounts[i]);
        return strides;
    }

    /// Shortens strides, the longest first, as long as the distances along all axes stay similar.
    Strides refined(Strides strides, std::size_t maximum) const
    {
        constexpr double similar = 1.5;
        for (std::size_t attempt = 0; attempt < 3; ++attempt)
        {
            std::array<std::size_t, 3> axes{0, 1, 2};
            std::ranges::stable_sort(axes, std::ranges::greater{},
                                     [&](std::size_t axis) { return distance(strides, axis); });
            for (const std::size_t axis : axes)
            {
                if (strides[axis] < 2)
                    continue;
                Strides shorter = strides;
                --shorter[axis];
                const bool isSimilar =
                    distance(shorter, axis) * similar >= distance(strides, axes.front());
                if (isSimilar && elementsAt(shorter).size() <= maximum)
                {
                    strides = shorter;
                    break;
                }
            }
        }
        return strides;
    }

    /// The valid elements. What strides leave over is shared by both ends of an axis.
    Indices elementsAt(const Strides& strides) const
    {
        std::array<std::size_t, 3> first{};
        for (std::size_t i = 0; i < 3; ++i)
            first[i] = (mCounts[i] - 1) % strides[i] / 2;
        Indices elements;
        for (std::size_t z = first[2]; z < mCounts[2]; z += strides[2])
            for (std::size_t y = first[1]; y < mCounts[1]; y += strides[1])
                for (std::size_t x = first[0]; x < mCounts[0]; x += strides[0])
                    if (const std::size_t element = (z * mCounts[1] + y) * mCounts[0] + x;
                        mIsValid[element])
                        elements.push_back(element);
        return elements;
    }

    GridSize mCounts;
    std::array<double, 3> mSpacing;
    const std::vector<bool>& mIsValid;
};

/// One sample in each cube of a lattice.
template<std::size_t D>
class LatticeChoice
{
public:
    using Position = Tensor<double, D>;

    /// `candidates` are the elements to choose from, in ascending order, `positions` where they are.
    LatticeChoice(Indices candidates, std::vector<Position> positions)
        : mCandidates(std::move(candidates)), mPositions(std::move(positions))
    {
        mLower = mUpper = mPositions.front();
        for (const Position& position : mPositions)
            for (std::size_t i = 0; i < D; ++i)
            {
                mLower[i] = std::min(mLower[i], position[i]);
                mUpper[i] = std::max(mUpper[i], position[i]);
            }
    }

    Indices choose(std::size_t maximum) const
    {
        // Cubes of this size hold everything in one cube.
        double coarse = 0.0;
        for (std::size_t i = 0; i < D; ++i)
            coarse = std::max(coarse, 2.0 * (mUpper[i] - mLower[i]));
        if (coarse == 0.0)
            return {mCandidates.front()};
        // Extents of several magnitudes need steps of ratios.
        double tooFine = coarse * 1e-12;
        std::size_t numChosen = 0;
        for (int i = 0; i < numBisections && numChosen < closeEnough(maximum); ++i)
        {
            const double middle = std::sqrt(tooFine * coarse);
            const std::size_t numCubes = countCubes(middle, maximum);
            (numCubes <= maximum ? coarse : tooFine) = middle;
            if (numCubes <= maximum)
                numChosen = numCubes;
        }
        return elementsAt(coarse);
    }

private:
    using Cube = std::array<long, D>;

    struct CubeHash
    {
        std::size_t operator()(const Cube& cube) const
        {
            std::size_t hash = 0;
            for (const long part : cube)
                hash = hash * 0x9E3779B97F4A7C15U + static_cast<std::size_t>(part) + (hash >> 29U);
            return hash;
        }
    };

    Cube cubeOf(const Position& position, double size) const
    {
        Cube cube{};
        for (std::size_t i = 0; i < D; ++i)
            cube[i] = static_cast<long>((position[i] - mLower[i]) / size);
        return cube;
    }

    /// The number of samples with which the search for a size ends.
    static std::size_t closeEnough(std::size_t maximum) { return maximum - maximum / 50; }

    /// The number of cubes of a size with samples, of which at most `maximum` + 1 are counted.
    std::size_t countCubes(double size, std::size_t maximum) const
    {
        std::unordered_set<Cube, CubeHash> cubes;
        for (const Position& position : mPositions)
            if (cubes.insert(cubeOf(position, size)).second && cubes.size() > maximum)
                break;
        return cubes.size();
    }

    Indices elementsAt(double size) const
    {
        struct Nearest
        {
            double squaredDistance;
            std::size_t element;
        };
        std::unordered_map<Cube, Nearest, CubeHash> nearest;
        for (std::size_t i = 0; i < mPositions.size(); ++i)
        {
            const Cube cube = cubeOf(mPositions[i], size);
            double squaredDistance = 0.0;
            for (std::size_t k = 0; k < D; ++k)
            {
                const double center = mLower[k] + (static_cast<double>(cube[k]) + 0.5) * size;
                // Distances in units of the size do not overflow.
                const double part = (mPositions[i][k] - center) / size;
                squaredDistance += part * part;
            }
            const Nearest candidate{squaredDistance, mCandidates[i]};
            const auto [entry, isNew] = nearest.try_emplace(cube, candidate);
            if (!isNew && squaredDistance < entry->second.squaredDistance)
                entry->second = candidate;
        }
        Indices elements;
        for (const auto& [cube, sample] : nearest)
            elements.push_back(sample.element);
        std::ranges::sort(elements);
        return elements;
    }

    Indices mCandidates;
    std::vector<Position> mPositions;
    Position mLower;
    Position mUpper;
};

/// Positions of elements of a domain part.
template<std::size_t D>
class Positions
{
public:
    Positions(const PointSet<D>& points, const DomainPart& part)
        : mPoints(points), mComplex(part == PointSetBase::Points
                                        ? nullptr
                                        : dynamic_cast<const EmbeddedCellComplex<D>*>(&points))
    {
    }

    Tensor<double, D> operator[](std::size_t element) const
    {
        return mComplex == nullptr ? mPoints.point(element) : centerOf(*mComplex, element);
    }

private:
    const PointSet<D>& mPoints;
    const EmbeddedCellComplex<D>* mComplex;
};

template<std::size_t D>
Indices choose(const PointSet<D>& points, const DomainPart& part, const std::vector<bool>& isValid,
               std::size_t maximum)
{
    if (const auto spacing = evenSpacing(points))
    {
        GridSize counts = dynamic_cast<const StructuredGrid<D>&>(points).size();
        std::array<double, 3> distances{};
        std::ranges::copy(*spacing, distances.begin());
        if (part != PointSetBase::Points)
            for (std::size_t& count : counts)
                count = std::max<std::size_t>(count, 2) - 1;
        return StridedChoice(counts, distances, isValid).choose(maximum);
    }
    const Positions<D> positions(points, part);
    Indices candidates;
    std::vector<Tensor<double, D>> places;
    for (std::size_t i = 0; i < isValid.size(); ++i)
    {
        if (!isValid[i])
            continue;
        const auto position = positions[i];
        if (!std::ranges::all_of(position,
                                 [](double coordinate) { return std::isfinite(coordinate); }))
            continue;
        candidates.push_back(i);
        places.push_back(position);
    }
    if (candidates.size() <= maximum)
        return candidates;
    return LatticeChoice<D>(std::move(candidates), std::move(places)).choose(maximum);
}

template<typename T>
std::shared_ptr<const ValueArray<T>> gathered(const ValueArray<T>& values, const Indices& elements)
{
    std::vector<T> chosen;
    chosen.reserve(elements.size());
    for (const std::size_t element : elements)
        chosen.push_back(values[element]);
    return std::make_shared<const DefaultValueArray<T>>(std::move(chosen), values.precision());
}

/// The values of chosen elements at all time steps.
template<typename T>
std::shared_ptr<const ValueArray<T>> valuesOf(const Function<T>& function, const Indices& elements)
{
    const std::size_t perStep = function.valuesPerStep();
    auto loader = [values = function.values(), perStep, elements](std::size_t step)
    { return gathered(*values->part(step * perStep, perStep), elements); };
    if (function.numTimeSteps() == 1)
        return loader(0);
    return std::make_shared<const SeriesValueArray<T>>(function.values()->precision(),
                                                       function.numTimeSteps(), elements.size(),
                                                       std::move(loader));
}

std::shared_ptr<const ValidityMask> maskOf(const FunctionBase& function, const Indices& elements)
{
    if (function.validity() == nullptr)
        return nullptr;
    auto mask = std::make_shared<ValidityMask>();
    for (std::size_t step = 0; step < function.numTimeSteps(); ++step)
        for (const std::size_t element : elements)
            mask->push_back((*function.validity())[step * function.valuesPerStep() + element]);
    return mask;
}

template<std::size_t D>
std::shared_ptr<const Domain> cloudOf(const PointSet<D>& points, const DomainPart& part,
                                      const Indices& elements)
{
    const Positions<D> positions(points, part);
    std::vector<Tensor<double, D>> chosen;
    for (const std::size_t element : elements)
        chosen.push_back(positions[element]);
    return std::make_shared<const PointCloud<D>>(
        std::make_shared<const DefaultValueArray<Tensor<double, D>>>(std::move(chosen),
                                                                     points.coordinatePrecision()));
}

}

std::shared_ptr<const FunctionBase> thinned(const std::shared_ptr<const FunctionBase>& function,
                                            std::size_t maximum)
{
    const std::vector<bool> isValid = everValid(*function);
    const auto numValid = static_cast<std::size_t>(std::ranges::count(isValid, true));
    if (numValid <= maximum)
        return function;

    std::shared_ptr<const FunctionBase> result = function;
    using PointSets = TypeList<PointSet<1>, PointSet<2>, PointSet<3>>;
    visitObject<PointSets>(*function->domain(),
                           [&]<std::size_t D>(const PointSet<D>& points)
                           {
                               const DomainPart& part = function->domainPart();
                               const Indices elements = choose(points, part, isValid, maximum);
                               auto fileIndices = std::make_shared<FileIndices>();
                               for (const std::size_t element : elements)
                                   fileIndices->push_back(function->indexInFile(element));
                               visitFunction<ValueTypes>(
                                   *function,
                                   [&]<typename T>(const Function<T>& typed)
                                   {
                                       result = std::make_shared<const Function<T>>(
                                           cloudOf(points, part, elements), PointSetBase::Points,
                                           valuesOf(typed, elements), typed.timeSteps(),
                                           typed.name(), maskOf(typed, elements), fileIndices);
                                   });
                           });
    return result;
}

}
