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

template const CellLocator<1>& locatorOf(const EmbeddedCellComplex<1>&);
template const CellLocator<2>& locatorOf(const EmbeddedCellComplex<2>&);
template const CellLocator<3>& locatorOf(const EmbeddedCellComplex<3>&);
template std::shared_ptr<const CellLocator<1>> makeLocator(const EmbeddedCellComplex<1>&);
template std::shared_ptr<const CellLocator<2>> makeLocator(const EmbeddedCellComplex<2>&);
template std::shared_ptr<const CellLocator<3>> makeLocator(const EmbeddedCellComplex<3>&);

}
