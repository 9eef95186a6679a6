#include "examples/ExampleFields.hpp"

#include <tavrin/domain/UniformGrid.hpp>

namespace tavrin::app::examples
{

namespace
{

template<std::size_t D>
Field numberPoints(const typename UniformGrid<D>::Layout& layout)
{
    const auto grid = std::make_shared<const UniformGrid<D>>(layout);
    std::vector<Scalar> numbers;
    for (std::size_t i = 0; i < grid->numPoints(); ++i)
        numbers.emplace_back(static_cast<double>(i));
    return addData(grid, PointSetBase::Points, std::move(numbers), Precision::Float64, {},
                   "number");
}

}

Field makeProbe()
{
    UniformGrid<2>::Layout layout;
    layout.size = {21, 13, 1};
    layout.origin = {0.5, 0.2};
    layout.spacing = {0.05, 0.05};
    return numberPoints<2>(layout);
}

Field makeProbe3d()
{
    UniformGrid<3>::Layout layout;
    layout.size = {39, 1, 29};
    layout.origin = {-1.9, 0.0, -1.4};
    layout.spacing = {0.1, 0.1, 0.1};
    return numberPoints<3>(layout);
}

}
