#include <tavrin/field/TreeLocator.hpp>

#include <tavrin/field/Inverse.hpp>

namespace tavrin
{

template<std::size_t D>
TreeLocator<D>::TreeLocator(const EmbeddedCellComplex<D>& grid)
    : mCells(grid), mRounding(coordinateRounding *
                              std::max(maximumNorm(mCells.lower()), maximumNorm(mCells.upper()))),
      mTree(mCells, mRounding)
{
}

template<std::size_t D>
bool TreeLocator<D>::locate(const Position& position, Location& location, Hint&) const
{
    const Position scaled = mCells.scale() * position;
    typename GridCells<D>::Vertices vertices;
    Reference at;
    Reference found;
    CellType type = CellType::Invalid;
    const auto contains = [&](std::uint32_t cell)
    {
        mCells.gather(cell, vertices);
        const CellGeometry<D> geometry(vertices.type, vertices.positions.data(), mRounding);
        if (!geometry.contains(scaled, at))
            return false;
        type = vertices.type;
        found = at;
        location.numVertices = vertices.count;
        for (std::size_t k = 0; k < vertices.count; ++k)
            location.pointIndices[k] = vertices.pointIndices[k];
        return true;
    };
    const std::uint32_t cell = mTree.search(scaled, contains);
    if (cell == CellTree<D>::nothing)
        return false;
    location.cell = cell;
    shapeFunctions(type, found, location.weights);
    return true;
}

template class TreeLocator<1>;
template class TreeLocator<2>;
template class TreeLocator<3>;

}
