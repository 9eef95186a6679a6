#include <tavrin/location/NearestCell.hpp>

#include <tavrin/location/CellGeometry.hpp>
#include <tavrin/location/Inverse.hpp>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavrin
{

namespace
{

/// The closest cells found so far: those whose distances exceed the shortest one by no more than rounding,
/// as those of neighboring cells do that share the closest point.
class Ties
{
public:
    /// Rounding is relative to distances and to the size of the position.
    Ties(double reach, double rounding, double size)
        : mShortest(reach), mRounding(rounding), mSize(size)
    {
    }

    /// Cells farther away than this are of no use.
    double limit() const { return mCount == 0 ? mShortest : farthestTie(); }

    /// Takes a cell within the limit.
    void add(std::uint32_t cell, const ClosestPoint& point)
    {
        mShortest = std::min(mShortest, point.distance);
        const auto isFirstBetter = [](const Tie& a, const Tie& b)
        { return a.cell < b.cell && a.point.distance <= b.point.distance; };
        const Tie added{cell, point};
        const auto end = mTies.begin() + mCount;
        if (std::any_of(mTies.begin(), end,
                        [&](const Tie& tie) { return isFirstBetter(tie, added); }))
            return;
        const double farthest = farthestTie();
        const auto rest =
            std::remove_if(mTies.begin(), end,
                           [&](const Tie& tie)
                           { return tie.point.distance > farthest || isFirstBetter(added, tie); });
        mCount = static_cast<std::size_t>(rest - mTies.begin());
        if (mCount < mTies.size())
            mTies[mCount++] = added;
    }

    /// The lowest cell, if any was added.
    std::optional<std::pair<std::uint32_t, Reference>> lowest() const
    {
        const auto end = mTies.begin() + mCount;
        const auto best = std::min_element(
            mTies.begin(), end, [](const Tie& a, const Tie& b) { return a.cell < b.cell; });
        if (best == end)
            return std::nullopt;
        return std::pair(best->cell, best->point.at);
    }

private:
    struct Tie
    {
        std::uint32_t cell;
        ClosestPoint point;
    };

    double farthestTie() const { return mShortest + mRounding * (mSize + mShortest); }

    double mShortest;
    double mRounding;
    double mSize;
    /// Each lower cell is farther away, by a rounding, so that there are no more than a few.
    std::array<Tie, 16> mTies;
    std::size_t mCount = 0;
};

}

template<std::size_t D>
std::optional<ClosestPoint> NearestCell<D>::closestIn(std::uint32_t cell, const Position& position,
                                                      double limit) const
{
    if (dimensionOf(mCells.type(cell)) == D)
        return std::nullopt;
    typename GridCells<D>::Vertices vertices;
    mCells.gather(cell, vertices);
    return closestPoint<D>(geometryTypeOf(vertices.type), vertices.positions.data(), position,
                           limit);
}

template<std::size_t D>
auto NearestCell<D>::find(const Position& position) const -> std::optional<Answer>
{
    const double size = maximumNorm(position);
    if (!std::isfinite(size))
        return std::nullopt;
    Ties ties(mReach, mCells.rounding(), size);
    mTree.searchAround(
        position, [&] { return ties.limit(); },
        [&](std::uint32_t cell)
        {
            if (const auto closest = closestIn(cell, position, ties.limit()))
                ties.add(cell, *closest);
        });
    const auto lowest = ties.lowest();
    return lowest ? std::optional(Answer{lowest->first, lowest->second}) : std::nullopt;
}

template class NearestCell<1>;
template class NearestCell<2>;
template class NearestCell<3>;

}
