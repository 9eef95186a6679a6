#pragma once

#include <tavrin/domain/UnstructuredGrid.hpp>

namespace tavrin::app::examples
{

/// A bar along the x axis with an elliptic cross-section, cut into tetrahedra.
struct RoundBar
{
    double begin;
    double end;
    double halfAxisY;
    double halfAxisZ;
    std::size_t cellsAlong;
    /// Across the bar, in y and in z; even.
    std::size_t cellsAcross;

    /// 6 tetrahedra for each cell, with positive volume.
    std::shared_ptr<const UnstructuredGrid<3>> makeTetrahedra() const;

    /// The same with vertices in the middles of the edges, which follow the ellipse.
    std::shared_ptr<const UnstructuredGrid<3>> makeQuadraticTetrahedra() const;

private:
    std::shared_ptr<const UnstructuredGrid<3>> make(CellType type) const;
};

}
