#include <tavrin/domain/CellComplex.hpp>

#include <tavrin/field/CellLocator.hpp>

namespace tavrin
{

std::size_t CellComplex::numElements(const DomainPart& part) const
{
    return part == detail::Cells ? numCells() : 0;
}

const RTTI_TypeId& CellComplex::classTypeId()
{
    static const RTTI_TypeId id = newTypeId("CellComplex");
    return id;
}

bool CellComplex::isA(const RTTI_TypeId& id) const
{
    return id == classTypeId() || Domain::isA(id);
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

template<std::size_t D>
const RTTI_TypeId& EmbeddedCellComplex<D>::classTypeId()
{
    static const RTTI_TypeId id = RTTI::newTypeId("EmbeddedCellComplex<" + std::to_string(D) + ">");
    return id;
}

template<std::size_t D>
bool EmbeddedCellComplex<D>::isA(const RTTI_TypeId& id) const
{
    return id == classTypeId() || PointSet<D>::isA(id) || CellComplex::isA(id);
}

template class EmbeddedCellComplex<1>;
template class EmbeddedCellComplex<2>;
template class EmbeddedCellComplex<3>;

}
