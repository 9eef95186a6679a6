#pragma once

#include <tavrin/io/DataFile.hpp>

namespace tavrin::io
{

/// Throws `Malformed` unless the pieces of a structured grid fill it without a common cell.
void requireCover(const std::vector<DataFile::Extent>& pieces, const DataFile::Extent& whole);

/// Copies the values of a piece of a structured grid to their places among those of the whole. Both
/// arrays have the same precision and number of components.
void copyIntoWhole(const StoredArray& part, const DataFile::Extent& piece, const StoredArray& all,
                   const DataFile::Extent& whole, Association association);

/// The number of points of an extent along each axis, or of cells; an axis with one point has one
/// layer of cells.
GridSize countsOf(const DataFile::Extent& extent, Association association);

}
