#pragma once

#include <tavrin/io/Loader.hpp>

#include <variant>

namespace tavrin::pipeline
{

/// A grid that a text describes, so that no file has to hold it:
/// - `@line:X,Y,Z:X,Y,Z:POINTS`: evenly spaced points from one position to another as a chain of lines
/// - `@box:50x25x10`: a uniform grid with this number of points along each axis, over the bounds of
///   the other data; `@box:50x25x10:FILE` over the bounds of that file, and
///   `@box:50x25x10:X,Y,Z:X,Y,Z` between two corners
/// - `@points:FILE`: the points of a file, such as a table, without its cells
///
/// Positions have one to three coordinates. Like the grid of a file, the grid gets as many coordinates
/// as its points need: those at the end that are 0 everywhere are left out, unless more are asked for.
struct TAVRIN_API MadeGrid
{
    using Position = std::array<double, 3>;

    struct Line
    {
        Position from;
        Position to;
        std::size_t points;
    };
    struct Corners
    {
        Position lower;
        Position upper;
    };
    /// The bounds of the other data.
    struct Others
    {};
    struct Box
    {
        std::array<std::size_t, 3> points;
        std::variant<Others, Corners, io::DataReference> bounds;
    };
    struct Points
    {
        io::DataReference file;
    };

    /// What was parsed.
    std::string text;
    std::variant<Line, Box, Points> shape;

    /// Whether a text describes a grid: it begins with `@`.
    static bool isMeant(const std::string& text) { return text.starts_with('@'); }

    /// Throws `usage_error`, saying what would be right, for a text that describes no grid, and for
    /// lines and boxes without an extent or with more than 2^40 points.
    static MadeGrid parse(const std::string& text);

    /// Whether other data is needed to make the grid.
    bool dependsOnOthers() const;

    /// The files that are read to make the grid.
    std::vector<std::filesystem::path> files(io::Loader& loader) const;

    /// Makes the grid. `others` are functions, domains, and bundles of these; objects of other kinds
    /// have no bounds. The grid has at least `dimension` coordinates. Throws `usage_error` where the
    /// bounds do not suit the numbers of points, and what the loader throws.
    std::shared_ptr<const Domain> make(const std::vector<std::shared_ptr<const DataObject>>& others,
                                       io::Loader& loader, std::size_t dimension = 1) const;
};

}
