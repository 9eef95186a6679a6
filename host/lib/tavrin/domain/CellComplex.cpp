#include <tavrin/domain/CellComplex.hpp>

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
const CellLocator<D>& EmbeddedCellComplex<D>::locator(MakeLocator& make) const
{
    std::call_once(mLocatorOnce, [&] { mLocator = make(*this); });
    return *mLocator;
}

template class CellLocator<1>;
template class CellLocator<2>;
template class CellLocator<3>;
template class EmbeddedCellComplex<1>;
template class EmbeddedCellComplex<2>;
template class EmbeddedCellComplex<3>;

}
