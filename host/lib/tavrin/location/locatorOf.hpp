#pragma once

#include <tavrin/domain/CellComplex.hpp>
#include <tavrin/domain/CellLocator.hpp>

namespace tavrin
{

/// The locator of a grid, which is made on the first call and kept with the grid. A first call outside
/// of a parallel region builds it on all threads. Throws what `makeLocator` throws.
///
/// The way of a position through this folder:
///
/// - On a `UniformGrid`, `UniformLocator` computes the cell and the reference coordinates; on a
///   `RectilinearGrid`, `RectilinearLocator` searches the coordinates of each axis. `StructuredCell`
///   turns both into a `Location`.
/// - On all other grids `TreeLocator` takes positions in packets of 32. `CellTree` holds a hierarchy of
///   boxes over the cells (built by `CellTreeBuilder`, which `CellSorter` divides the cells for). A
///   packet descends it; `CellFilter` drops most cells of a leaf in single precision.
/// - `CellCandidates` decides which of the remaining cells contains the position and keeps the lowest
///   one in `CellMatches`. It tests quads, prisms and hexahedra eight at a time, one in each lane of a
///   vector (`CandidateQueue`, `MultilinearCells`, `MultilinearInversion`). All other cells, and
///   those that this quick test leaves undecided, are inverted one by one by `CellGeometry`: in closed
///   form for simplices, by Newton's method for the rest.
/// - The cell and the reference point become a `Location` by the `shapeFunctions` of the cell type.
/// - The positions of a lattice go another way to `CellCandidates`: `LatticeSweep` visits the leaves
///   of the tree and looks up the positions in the box of each cell (`SortedCoordinates`).
///
/// - For a function that reaches beside surfaces and lines, `NearestCell` searches the tree again for the
///   positions in no cell, and computes the `closestPoint` of the cells nearby.
///
/// `GridCells` gives all of them the vertices of a cell; `Tolerance.hpp` says when a position belongs
/// to a cell.
template<std::size_t D>
TAVRIN_API const CellLocator<D>& locatorOf(const EmbeddedCellComplex<D>& grid);

/// The locator of a grid for a function with a reach, see `FunctionBase::reach`. It shares the search
/// structure of `locatorOf(grid)` where that has one. The grid must outlive it. Throws what
/// `makeLocator` throws.
template<std::size_t D>
std::shared_ptr<const CellLocator<D>> makeReachingLocator(const EmbeddedCellComplex<D>& grid,
                                                          double reach);

/// Makes the locator that suits the kind of grid, on all threads. The grid must outlive it. Throws
/// `std::bad_alloc`, and `runtime_error` for a grid of 2^32 cells or more whose points are stored.
template<std::size_t D>
TAVRIN_API std::shared_ptr<const CellLocator<D>> makeLocator(const EmbeddedCellComplex<D>& grid);

}
