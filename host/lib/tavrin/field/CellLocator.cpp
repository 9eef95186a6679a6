#include <tavrin/field/CellLocator.hpp>

#include <tavrin/field/RectilinearLocator.hpp>
#include <tavrin/field/TreeLocator.hpp>
#include <tavrin/field/UniformLocator.hpp>

namespace tavrin
{

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

template std::shared_ptr<const CellLocator<1>> makeLocator(const EmbeddedCellComplex<1>&);
template std::shared_ptr<const CellLocator<2>> makeLocator(const EmbeddedCellComplex<2>&);
template std::shared_ptr<const CellLocator<3>> makeLocator(const EmbeddedCellComplex<3>&);

template class CellLocator<1>;
template class CellLocator<2>;
template class CellLocator<3>;

}
