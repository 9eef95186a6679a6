#pragma once

#include <tavrin/domain/CellComplex.hpp>

namespace tavrin
{

/// The center of a cell: the arithmetic mean of the positions of its vertices, computed as their sum
/// times the reciprocal of their number. Not a number for a cell without vertices.
template<std::size_t D>
Tensor<double, D> centerOf(const EmbeddedCellComplex<D>& grid, std::size_t cellIndex)
{
    const Cell cell = grid.cell(cellIndex);
    Tensor<double, D> sum{};
    for (const std::size_t vertex : cell.pointIndices())
        sum += grid.point(vertex);
    return sum * (1.0 / static_cast<double>(cell.numVertices()));
}

/// The coordinates of an element of a domain part: the point itself, or the center of the cell.
/// Empty for domains without positions and for parts that are neither points nor cells.
TAVRIN_API std::vector<double> elementPosition(const Domain& domain, const DomainPart& part,
                                               std::size_t index);

}
