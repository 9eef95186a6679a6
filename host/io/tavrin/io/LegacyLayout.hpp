#pragma once

#include <tavrin/io/DataFile.hpp>
#include <tavrin/io/LegacyNumbers.hpp>

namespace tavrin::io
{

/// What a legacy VTK file declares, and where its arrays are.
struct LegacyLayout
{
    using Place = LegacyNumbers::Place;

    struct CellList
    {
        /// None is the list of an unstructured grid.
        std::optional<PolyList> poly;
        /// The number of vertices and the vertices, cell after cell; or, since version 5, offsets
        /// and connectivity.
        bool isCounted = false;
        std::size_t cells = 0;
        Place offsets;
        Place connectivity;
    };

    struct NamedArray
    {
        DataFile::Array array;
        Place place;
        /// Whether the numbers are shares of 1 that stand for bytes.
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
    /// For how many points and cells there are values.
    std::array<std::optional<std::size_t>, 2> declared;
    std::vector<NamedArray> arrays;
    std::optional<Place> time;
};

/// Goes through a whole file, whose format is a sequence of keywords and arrays, and notes where the
/// arrays are. Throws `Malformed` and `Aborted`.
LegacyLayout readLegacyLayout(LegacyNumbers& numbers);

}
