#pragma once

#include <tavrin/io/DataFile.hpp>

#include <functional>

namespace tavrin::io
{

/// The grid of a file, and the elements of the file that its elements come from.
struct BuiltGrid
{
    std::shared_ptr<const Domain> domain;
    /// The index in the file for each point or cell of the domain; nothing where all are the same.
    std::shared_ptr<const std::vector<std::size_t>> pointOrigin;
    std::shared_ptr<const std::vector<std::size_t>> cellOrigin;
    std::vector<std::string> warnings;
};

/// Makes the domain of a file: an `EmbeddedCellComplex` or, without cells, a `PointCloud`. By default
/// its dimension is the smallest that keeps all coordinates that are not 0 everywhere. Blanked and
/// ghost elements are left out, together with the cells at blanked points and the points that only
/// removed cells have. Duplicate points stay where a cell needs them.
/// Throws `Malformed`, `Aborted`, `usage_error` for a dimension that does not fit, and what the
/// domains throw.
BuiltGrid buildGrid(DataFile& file, std::optional<std::size_t> dimension,
                    const volatile bool& abortFlag);

}
