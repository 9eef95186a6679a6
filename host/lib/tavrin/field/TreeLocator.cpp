#include <tavrin/field/TreeLocator.hpp>

#include <tavrin/field/CellCandidates.hpp>

namespace tavrin
{

template<std::size_t D>
TreeLocator<D>::TreeLocator(const EmbeddedCellComplex<D>& grid) : mCells(grid), mTree(mCells)
{
}

template<std::size_t D>
void TreeLocator<D>::locate(std::span<const Position> positions, Location* locations,
                            std::uint8_t* isInside, Hint&) const
{
    for (std::size_t first = 0; first < positions.size(); first += CellTree<D>::packetSize)
        locatePacket(
            positions.subspan(first, std::min(CellTree<D>::packetSize, positions.size() - first)),
            locations + first, isInside + first);
}

template<std::size_t D>
void TreeLocator<D>::locatePacket(std::span<const Position> positions, Location* locations,
                                  std::uint8_t* isInside) const
{
    std::array<Position, CellTree<D>::packetSize> scaled;
    std::ranges::transform(positions, scaled.begin(),
                           [this](const Position& position) { return mCells.scale() * position; });
    CellCandidates<D> candidates(mCells, scaled);
    mTree.search(std::span(scaled).first(positions.size()),
                 [&](std::size_t k, std::uint32_t cell) { candidates.add(k, cell); });
    const auto& found = candidates.finish();
    for (std::size_t k = 0; k < positions.size(); ++k)
    {
        isInside[k] = found[k].cell != CellCandidates<D>::nothing ? 1 : 0;
        if (isInside[k] == 0)
            continue;
        Location& location = locations[k];
        location.cell = found[k].cell;
        location.numVertices = mCells.gather(found[k].cell, location.pointIndices);
        shapeFunctions(mCells.type(found[k].cell), found[k].at, location.weights);
    }
}

template class TreeLocator<1>;
template class TreeLocator<2>;
template class TreeLocator<3>;

}
