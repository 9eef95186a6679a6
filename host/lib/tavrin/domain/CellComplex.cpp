#include <tavrin/domain/CellComplex.hpp>

#include <tavrin/field/CellLocator.hpp>

namespace tavrin
{

std::size_t CellComplex::numElements(const DomainPart& part) const
{
    return part == detail::Cells ? numCells() : 0;
}

template<std::size_t D>
std::size_t EmbeddedCellComplex<D>::numElements(const DomainPart& part) const
{
    return PointSet<D>::numElements(part) + CellComplex::numElements(part);
}

template<std::size_t D>
const CellLocator<D>& EmbeddedCellComplex<D>::locator() const
{
    std::call_once(mLocatorOnce, [this] { mLocator = makeLocator(*this); });
    return *mLocator;
}

template class EmbeddedCellComplex<1>;
template class EmbeddedCellComplex<2>;
template class EmbeddedCellComplex<3>;

}
