#pragma once

#include <tavrin/io/DataFile.hpp>
#include <tavrin/io/legacy/LegacyNumbers.hpp>

namespace tavrin::io
{

/// The structure of a legacy VTK file, and the positions of its arrays.
struct LegacyLayout
{
    using Place = LegacyNumbers::Place;

    struct CellList
    {
        /// Nothing for the list of an unstructured grid.
        std::optional<PolyList> poly;
        /// Whether `connectivity` holds the number of vertices and the vertices of each cell, as up to
        /// version 4. Later versions have offsets.
        bool isCounted = false;
        std::size_t cells = 0;
        Place offsets;
        Place connectivity;
    };

    struct NamedArray
    {
        DataFile::Array array;
        Place place;
        /// Whether the numbers are fractions of 1 that stand for bytes.
        bool isColor = false;
    };

    std::string_view format;
    StructuringType structuring = StructuringType::Unstructured;
    bool isPolyData = false;
    std::optional<DataFile::Extent> extent;
    std::array<double, 3> origin{0.0, 0.0, 0.0};
    std::array<double, 3> spacing{1.0, 1.0, 1.0};
    std::optional<Place> points;
    std::array<std::optional<Place>, 3> coordinates;
    std::vector<CellList> cellLists;
    std::optional<Place> cellTypes;
    /// The numbers of points and of cells that POINT_DATA and CELL_DATA declare.
    std::array<std::optional<std::size_t>, 2> declared;
    std::vector<NamedArray> arrays;
    std::optional<Place> time;
};

/// Scans a whole file, which is a sequence of keywords and arrays. Throws `Malformed` and `Aborted`.
LegacyLayout readLegacyLayout(LegacyNumbers& numbers);

}
