#pragma once

#include <tavrin/io/DataFile.hpp>

#include <functional>

namespace tavrin::io
{

/// The grid of a file, and which element of the file each of its elements is.
struct BuiltGrid
{
    std::shared_ptr<const Domain> domain;
    /// The file's point or cell for each of the domain's; nothing where that is itself.
    std::optional<std::vector<std::size_t>> pointOrigin;
    std::optional<std::vector<std::size_t>> cellOrigin;
    std::vector<std::string> warnings;
};

/// Makes the domain of a file: an `EmbeddedCellComplex` or, without cells, a `PointCloud`, with the
/// given number of coordinates, by default as many as are not 0 everywhere. Blanked and ghost
/// elements are left out, and with them cells at such points and points of such cells alone.
/// Throws `Malformed`, `Aborted`, `usage_error` for a dimension that does not fit, and what the
/// domains throw.
BuiltGrid buildGrid(DataFile& file, std::optional<std::size_t> dimension,
                    const volatile bool& abortFlag);

}
