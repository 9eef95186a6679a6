#include <tavrin/location/locatorOf.hpp>

#include <tavrin/location/RectilinearLocator.hpp>
#include <tavrin/location/TreeLocator.hpp>
#include <tavrin/location/UniformLocator.hpp>

namespace tavrin
{

template<std::size_t D>
const CellLocator<D>& locatorOf(const EmbeddedCellComplex<D>& grid)
{
    return grid.locator(makeLocator<D>);
}

template<std::size_t D>
std::shared_ptr<const CellLocator<D>> makeLocator(const EmbeddedCellComplex<D>& grid)
{
    if (grid.numCells() > 0)
    {
        if (const auto* const uniform = dynamic_cast<const UniformGrid<D>*>(&grid))
            return std::make_shared<UniformLocator<D>>(*uniform);
        if (const auto* const rectilinear = dynamic_cast<const RectilinearGrid<D>*>(&grid))
            return std::make_shared<RectilinearLocator<D>>(*rectilinear);
    }
    return std::make_shared<TreeLocator<D>>(grid);
}

template<std::size_t D>
std::shared_ptr<const CellLocator<D>> makeReachingLocator(const EmbeddedCellComplex<D>& grid,
                                                          double reach)
{
    const CellLocator<D>& plain = locatorOf(grid);
    if (const auto* const tree = dynamic_cast<const TreeLocator<D>*>(&plain))
        return std::make_shared<TreeLocator<D>>(*tree, reach);
    // All cells of the other grids are of one type. Only flat ones reach beside themselves.
    if (dimensionOf(grid.cellType(0)) == D)
        return {std::shared_ptr<const void>(), &plain};
    return std::make_shared<TreeLocator<D>>(grid, reach);
}

template const CellLocator<1>& locatorOf(const EmbeddedCellComplex<1>&);
template const CellLocator<2>& locatorOf(const EmbeddedCellComplex<2>&);
template const CellLocator<3>& locatorOf(const EmbeddedCellComplex<3>&);
template std::shared_ptr<const CellLocator<1>> makeLocator(const EmbeddedCellComplex<1>&);
template std::shared_ptr<const CellLocator<2>> makeLocator(const EmbeddedCellComplex<2>&);
template std::shared_ptr<const CellLocator<3>> makeLocator(const EmbeddedCellComplex<3>&);
template std::shared_ptr<const CellLocator<1>> makeReachingLocator(const EmbeddedCellComplex<1>&,
                                                                   double);
template std::shared_ptr<const CellLocator<2>> makeReachingLocator(const EmbeddedCellComplex<2>&,
                                                                   double);
template std::shared_ptr<const CellLocator<3>> makeReachingLocator(const EmbeddedCellComplex<3>&,
                                                                   double);

}
