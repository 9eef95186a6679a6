#include <tavrin/location/TreeLocator.hpp>

#include <tavrin/location/LatticeSweep.hpp>
#include <tavrin/location/NearestCell.hpp>

namespace tavrin
{

template<std::size_t D>
class TreeLocator<D>::Found final : public FoundPositions
{
public:
    Found(const TreeLocator& locator, std::size_t count) : mLocator(locator), mStored(count) {}

    CellMatches matches() const { return mStored.matches(); }

    void locate(std::size_t first, std::size_t count, Location* locations,
                std::uint8_t* isInside) const override
    {
        const CellMatches found = matches().from(first);
        for (std::size_t k = 0; k < count; ++k)
        {
            isInside[k] = found.isInside(k) ? 1 : 0;
            if (found.isInside(k))
                mLocator.locate(found.cell(k), found.point(k), locations[k]);
        }
    }

private:
    const TreeLocator& mLocator;
    StoredCellMatches mStored;
};

template<std::size_t D>
TreeLocator<D>::TreeLocator(const EmbeddedCellComplex<D>& grid, double reach)
    : mCells(std::make_shared<GridCells<D>>(grid)), mTree(std::make_shared<CellTree<D>>(*mCells)),
      mReach(reach)
{
}

template<std::size_t D>
TreeLocator<D>::TreeLocator(const TreeLocator& other, double reach)
    : mCells(other.mCells), mTree(other.mTree), mReach(reach)
{
}

template<std::size_t D>
void TreeLocator<D>::locate(std::span<const Position> positions, Location* locations,
                            std::uint8_t* isInside, Hint&) const
{
    constexpr std::size_t atOnce = CellTree<D>::packetSize;
    for (std::size_t first = 0; first < positions.size(); first += atOnce)
    {
        const std::size_t count = std::min(atOnce, positions.size() - first);
        std::array<std::uint32_t, atOnce> cells;
        std::array<Reference, atOnce> points;
        const CellMatches matches(cells, points);
        find(positions.subspan(first, count), matches);
        for (std::size_t k = 0; k < count; ++k)
        {
            isInside[first + k] = matches.isInside(k) ? 1 : 0;
            if (matches.isInside(k))
                locate(cells[k], points[k], locations[first + k]);
        }
    }
}

template<std::size_t D>
void TreeLocator<D>::find(std::span<const Position> positions, CellMatches matches) const
{
    std::array<Position, CellTree<D>::packetSize> scaled;
    for (std::size_t first = 0; first < positions.size(); first += scaled.size())
    {
        const std::size_t count = std::min(scaled.size(), positions.size() - first);
        for (std::size_t k = 0; k < count; ++k)
            scaled[k] = mCells->scale() * positions[first + k];
        CellCandidates<D> candidates(*mCells, matches.from(first));
        mTree->search(std::span(scaled).first(count), [&](std::size_t k, std::uint32_t cell)
                      { candidates.add(k, scaled[k], cell); });
        candidates.finish();
        if (isReaching())
            reach(
                count, [&](std::size_t k) { return scaled[k]; }, matches.from(first));
    }
}

template<std::size_t D>
template<typename PositionOf>
void TreeLocator<D>::reach(std::size_t count, const PositionOf& position, CellMatches matches) const
{
    const NearestCell<D> nearest(*mCells, *mTree, mReach * mCells->scale());
    for (std::size_t k = 0; k < count; ++k)
        if (!matches.isInside(k))
            if (const auto answer = nearest.find(position(k)))
                matches.keep(k, answer->cell, answer->at);
}

template<std::size_t D>
std::unique_ptr<FoundPositions> TreeLocator<D>::find(std::span<const Position> positions) const
{
    auto found = std::make_unique<Found>(*this, positions.size());
    find(positions, found->matches());
    return found;
}

template<std::size_t D>
std::unique_ptr<FoundPositions> TreeLocator<D>::find(const Lattice<D>& lattice,
                                                     const volatile bool& abortFlag) const
{
    if (!mTree->hasBoxes() || lattice.size() == 0)
        return nullptr;
    const PaddedLattice<D> scaled(lattice, mCells->scale());
    const auto sweep = LatticeSweep<D>::over(*mTree, scaled);
    if (!sweep)
        return nullptr;
    auto found = std::make_unique<Found>(*this, lattice.size());
    CellCandidates<D> candidates(*mCells, found->matches());
    using Cells = std::span<const std::uint32_t>;
    sweep->run([&](Cells cells) { candidates.fetch(cells); },
               [&](Cells cells, std::span<const LatticeBlock> blocks)
               { candidates.add(cells, blocks, scaled, abortFlag); },
               abortFlag);
    candidates.finish();
    constexpr std::size_t atOnce = 1024;
    for (std::size_t first = 0; first < lattice.size() && isReaching() && !abortFlag;
         first += atOnce)
        reach(
            std::min(atOnce, lattice.size() - first),
            [&](std::size_t k) { return scaled.position(scaled.indices(first + k)); },
            found->matches().from(first));
    if (abortFlag)
        return nullptr;
    return found;
}

template<std::size_t D>
void TreeLocator<D>::locate(std::uint32_t cell, const Reference& point, Location& location) const
{
    location.cell = cell;
    location.numVertices = mCells->gather(cell, location.pointIndices);
    shapeFunctions(mCells->type(cell), point, location.weights);
}

template<std::size_t D>
Box<D> TreeLocator<D>::bounds() const
{
    const Box<D> scaled = mTree->bounds();
    Box<D> box{scaled.lower / mCells->scale(), scaled.upper / mCells->scale()};
    for (std::size_t i = 0; i < D && isReaching(); ++i)
    {
        box.lower[i] -= mReach;
        box.upper[i] += mReach;
    }
    return box;
}

template class TreeLocator<1>;
template class TreeLocator<2>;
template class TreeLocator<3>;

}
