#pragma once

#include <tavrin/domain/UnstructuredGrid.hpp>

namespace tavrin::app::examples
{

/// A bar along the x axis with an elliptic cross-section, subdivided into tetrahedra.
struct RoundBar
{
    double begin;
    double end;
    double halfAxisY;
    double halfAxisZ;
    std::size_t cellsAlong;
    /// The even number of cells across the bar, in y and in z.
    std::size_t cellsAcross;

    /// A mesh with 6 tetrahedra of positive volume for each cell.
    std::shared_ptr<const UnstructuredGrid<3>> makeTetrahedra() const;

    /// The same mesh with additional vertices at the edge midpoints, which lie on the ellipse.
    std::shared_ptr<const UnstructuredGrid<3>> makeQuadraticTetrahedra() const;

private:
    std::shared_ptr<const UnstructuredGrid<3>> make(CellType type) const;
};

}
