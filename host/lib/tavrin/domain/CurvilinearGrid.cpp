#include <tavrin/domain/CurvilinearGrid.hpp>

namespace tavrin
{

template<std::size_t D>
CurvilinearGrid<D>::CurvilinearGrid(const GridSize& size,
                                    std::shared_ptr<const ValueArray<Point>> points)
    : StructuredGrid<D>(size), mPoints(std::move(points))
{
    if (mPoints->size() != this->numPoints())
        throw runtime_error("a grid of " + std::to_string(size[0]) + " x " +
                            std::to_string(size[1]) + " x " + std::to_string(size[2]) +
                            " points cannot have " + std::to_string(mPoints->size()));
}

template class CurvilinearGrid<1>;
template class CurvilinearGrid<2>;
template class CurvilinearGrid<3>;

}
