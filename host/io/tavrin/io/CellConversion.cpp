#include <tavrin/io/CellConversion.hpp>

#include <tavrin/domain/CellFaults.hpp>
#include <tavrin/io/FileError.hpp>
#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/VtkCellTypes.hpp>

#include <vtkCellType.h>

#include <algorithm>
#include <map>

namespace tavrin::io
{

namespace
{

using enum CellType;

/// One cell of the host, made of vertices of a cell of the file.
struct Part
{
    CellType type;
    std::vector<std::size_t> vertices;
};

std::vector<std::size_t> firstVertices(std::size_t count)
{
    std::vector<std::size_t> vertices(count);
    for (std::size_t i = 0; i < count; ++i)
        vertices[i] = i;
    return vertices;
}

/// How a cell type with a fixed number of vertices becomes cells of the host.
struct Recipe
{
    std::size_t vertices = 0;
    std::vector<Part> parts;
    /// Whether the cell of the file has a higher order of interpolation.
    bool losesOrder = false;
};

/// A cell type whose order of interpolation the host does not have. Its corners come first.
struct HigherOrder
{
    int vtkType;
    std::string_view name;
    /// `Invalid` for a polygon.
    CellType corners;
};

constexpr std::array higherOrders{
    HigherOrder{VTK_CUBIC_LINE, "cubic line", Lines},
    HigherOrder{VTK_BIQUADRATIC_TRIANGLE, "biquadratic triangle", Triangles},
    HigherOrder{VTK_QUADRATIC_LINEAR_QUAD, "quadratic-linear quad", Quads},
    HigherOrder{VTK_TRIQUADRATIC_PYRAMID, "triquadratic pyramid", Pyramids},
    HigherOrder{VTK_QUADRATIC_LINEAR_WEDGE, "quadratic-linear wedge", Prisms},
    HigherOrder{VTK_BIQUADRATIC_QUADRATIC_WEDGE, "biquadratic-quadratic wedge", Prisms},
    HigherOrder{VTK_BIQUADRATIC_QUADRATIC_HEXAHEDRON, "biquadratic-quadratic hexahedron",
                Hexahedra},
    HigherOrder{VTK_LAGRANGE_CURVE, "Lagrange curve", Lines},
    HigherOrder{VTK_LAGRANGE_TRIANGLE, "Lagrange triangle", Triangles},
    HigherOrder{VTK_LAGRANGE_QUADRILATERAL, "Lagrange quadrilateral", Quads},
    HigherOrder{VTK_LAGRANGE_TETRAHEDRON, "Lagrange tetrahedron", Tetrahedra},
    HigherOrder{VTK_LAGRANGE_HEXAHEDRON, "Lagrange hexahedron", Hexahedra},
    HigherOrder{VTK_LAGRANGE_WEDGE, "Lagrange wedge", Prisms},
    HigherOrder{VTK_LAGRANGE_PYRAMID, "Lagrange pyramid", Pyramids},
    HigherOrder{VTK_BEZIER_CURVE, "Bezier curve", Lines},
    HigherOrder{VTK_BEZIER_TRIANGLE, "Bezier triangle", Triangles},
    HigherOrder{VTK_BEZIER_QUADRILATERAL, "Bezier quadrilateral", Quads},
    HigherOrder{VTK_BEZIER_TETRAHEDRON, "Bezier tetrahedron", Tetrahedra},
    HigherOrder{VTK_BEZIER_HEXAHEDRON, "Bezier hexahedron", Hexahedra},
    HigherOrder{VTK_BEZIER_WEDGE, "Bezier wedge", Prisms},
    HigherOrder{VTK_BEZIER_PYRAMID, "Bezier pyramid", Pyramids},
    HigherOrder{VTK_QUADRATIC_POLYGON, "quadratic polygon", Invalid},
};

std::string nameOfHigherOrder(int vtkType)
{
    return std::string(std::ranges::find(higherOrders, vtkType, &HigherOrder::vtkType)->name);
}

const std::map<int, Recipe>& recipes()
{
    static const std::map<int, Recipe> all = []
    {
        std::map<int, Recipe> result{
            {VTK_PIXEL, {4, {{Quads, {0, 1, 3, 2}}}}},
            {VTK_VOXEL, {8, {{Hexahedra, {0, 1, 3, 2, 4, 5, 7, 6}}}}},
            {VTK_PENTAGONAL_PRISM,
             {10, {{Hexahedra, {0, 1, 2, 3, 5, 6, 7, 8}}, {Prisms, {0, 3, 4, 5, 8, 9}}}}},
            {VTK_HEXAGONAL_PRISM,
             {12,
              {{Hexahedra, {0, 1, 2, 3, 6, 7, 8, 9}}, {Hexahedra, {0, 3, 4, 5, 6, 9, 10, 11}}}}},
        };
        for (const HigherOrder& kind : higherOrders)
            if (kind.corners != Invalid)
            {
                const std::size_t count = numVerticesOf(kind.corners);
                result.emplace(kind.vtkType,
                               Recipe{count, {{kind.corners, firstVertices(count)}}, true});
            }
        for (int vtkType = 0; vtkType < VTK_NUMBER_OF_CELL_TYPES; ++vtkType)
            if (const auto type = cellTypeOf(vtkType))
                result.emplace(vtkType, Recipe{numVerticesOf(*type),
                                               {{*type, firstVertices(numVerticesOf(*type))}}});
        // An empty cell keeps its place, so that the values of the others keep theirs.
        result[VTK_EMPTY_CELL] = {0, {{Invalid, {}}}};
        return result;
    }();
    return all;
}

std::string countedCells(std::size_t count, const std::string& one, const std::string& several)
{
    return std::to_string(count) + (count == 1 ? " cell " + one : " cells " + several);
}

/// Whether the host has all cell types with the same numbering, so that it can use the file's arrays.
bool fitAsTheyAre(const FileCells& cells)
{
    if (cells.offsets.size() != cells.types.size() + 1)
        return true; // The cell table refuses it.
    std::array<std::size_t, 256> vertices;
    vertices.fill(static_cast<std::size_t>(-1));
    for (int vtkType = 0; vtkType < VTK_NUMBER_OF_CELL_TYPES; ++vtkType)
        if (const auto type = cellTypeOf(vtkType))
            vertices[static_cast<std::size_t>(vtkType)] = numVerticesOf(*type);
    return std::visit(
        [&](const auto& offsets)
        {
            bool fit = true;
#pragma omp parallel for schedule(static) reduction(&& : fit) if (cells.types.size() > worthThreads)
            for (std::size_t cell = 0; cell < cells.types.size(); ++cell)
                fit = fit && static_cast<std::size_t>(offsets[cell + 1]) -
                                     static_cast<std::size_t>(offsets[cell]) ==
                                 vertices[cells.types[cell]];
            return fit;
        },
        cells.offsets.storage());
}

class Conversion
{
public:
    Conversion(const FileCells& cells, std::size_t numPoints, const PositionOf& position,
               const volatile bool& abortFlag)
        : mCells(cells), mNumPoints(static_cast<std::int64_t>(numPoints)), mPosition(position),
          mAbortFlag(abortFlag)
    {
    }

    ConvertedCells run();

private:
    void convert(std::size_t cell, std::span<const std::int64_t> vertices);
    void convertPolyhedron(std::size_t cell);
    void add(std::size_t cell, CellType type, std::span<const std::int64_t> vertices);
    /// Everything else relies on checked offsets.
    void checkOffsets() const;
    bool isPoint(std::int64_t vertex) const { return vertex >= 0 && vertex < mNumPoints; }

    const FileCells& mCells;
    std::int64_t mNumPoints;
    const PositionOf& mPosition;
    const volatile bool& mAbortFlag;

    std::vector<CellType> mTypes;
    std::vector<std::int64_t> mOffsets{0};
    std::vector<std::int64_t> mConnectivity;
    std::vector<std::size_t> mOrigin;
    CellFaults mOutside;
    CellFaults mTooFew;
    CellFaults mUnknown;
    CellFaults mBadFaces;
    std::size_t mTooMany = 0;
    std::size_t mConcave = 0;
    std::map<int, std::size_t> mLinearized;
};

void Conversion::checkOffsets() const
{
    const auto available = static_cast<std::int64_t>(mCells.connectivity.size());
    CellFaults faults;
    for (std::size_t cell = 0; cell < mCells.types.size(); ++cell)
    {
        const std::int64_t start = mCells.offsets[cell];
        const std::int64_t end = mCells.offsets[cell + 1];
        if (start < 0 || end < start || end > available)
            faults.add(cell);
    }
    complainIfAny<Malformed>(faults, "with offsets that descend or leave the connectivity");
}

void Conversion::add(std::size_t cell, CellType type, std::span<const std::int64_t> vertices)
{
    mTypes.push_back(type);
    mConnectivity.insert(mConnectivity.end(), vertices.begin(), vertices.end());
    mOffsets.push_back(static_cast<std::int64_t>(mConnectivity.size()));
    mOrigin.push_back(cell);
}

void Conversion::convert(std::size_t cell, std::span<const std::int64_t> vertices)
{
    const int vtkType = mCells.types[cell];
    const std::size_t count = vertices.size();
    if (const auto recipe = recipes().find(vtkType); recipe != recipes().end())
    {
        if (count < recipe->second.vertices)
            return mTooFew.add(cell);
        if (recipe->second.losesOrder)
            ++mLinearized[vtkType];
        else if (count > recipe->second.vertices)
            ++mTooMany;
        for (const Part& part : recipe->second.parts)
        {
            std::array<std::int64_t, maximumVertices> chosen;
            for (std::size_t i = 0; i < part.vertices.size(); ++i)
                chosen[i] = vertices[part.vertices[i]];
            add(cell, part.type, std::span(chosen).first(part.vertices.size()));
        }
        return;
    }
    switch (vtkType)
    {
    case VTK_POLY_VERTEX:
        for (const std::int64_t& vertex : vertices)
            add(cell, Points, {&vertex, 1});
        break;
    case VTK_POLY_LINE:
        if (count == 1)
            mTooFew.add(cell);
        for (std::size_t i = 0; i + 1 < count; ++i)
            add(cell, Lines, vertices.subspan(i, 2));
        break;
    case VTK_TRIANGLE_STRIP:
        if (count == 1 || count == 2)
            mTooFew.add(cell);
        for (std::size_t i = 0; i + 2 < count; ++i)
        {
            // The orientation of the triangles alternates.
            const std::size_t odd = i % 2;
            const Triangle triangle{vertices[i + odd], vertices[i + 1 - odd], vertices[i + 2]};
            add(cell, Triangles, triangle);
        }
        break;
    case VTK_QUADRATIC_POLYGON:
        ++mLinearized[vtkType];
        vertices = vertices.first(count / 2);
        [[fallthrough]];
    case VTK_POLYGON:
        if (vertices.size() == 4 && isConvex(vertices, mPosition))
            return add(cell, Quads, vertices);
        if (vertices.size() == 1 || vertices.size() == 2)
            return mTooFew.add(cell);
        if (!vertices.empty())
            for (const Triangle& triangle : triangulate(vertices, mPosition, mAbortFlag))
                add(cell, Triangles, triangle);
        break;
    default:
        mUnknown.add(cell);
    }
}

void Conversion::convertPolyhedron(std::size_t cell)
{
    auto next = static_cast<std::size_t>(mCells.faceStarts[cell]);
    const std::size_t end = mCells.faces.size();
    const auto take = [&]() -> std::int64_t { return next < end ? mCells.faces[next++] : -1; };
    std::vector<std::vector<std::int64_t>> faces;
    const std::int64_t numFaces = take();
    for (std::int64_t face = 0; face < numFaces; ++face)
    {
        const std::int64_t count = take();
        if (count < 3 || static_cast<std::size_t>(count) > end - next)
            return mBadFaces.add(cell);
        auto& vertices = faces.emplace_back();
        for (std::int64_t i = 0; i < count; ++i)
            vertices.push_back(take());
        if (!std::ranges::all_of(vertices, [this](std::int64_t v) { return isPoint(v); }))
            return mOutside.add(cell);
    }
    if (numFaces < 4)
        return mBadFaces.add(cell);
    if (!isConvex(faces, mPosition, mAbortFlag))
        ++mConcave;
    for (const Tetrahedron& tetrahedron : decompose(faces, mPosition, mAbortFlag))
        add(cell, Tetrahedra, tetrahedron);
}

ConvertedCells Conversion::run()
{
    checkOffsets();
    std::vector<std::int64_t> vertices;
    for (std::size_t cell = 0; cell < mCells.types.size(); ++cell)
    {
        if (mAbortFlag)
            throw Aborted();
        if (mCells.types[cell] == VTK_POLYHEDRON && cell < mCells.faceStarts.size())
        {
            convertPolyhedron(cell);
            continue;
        }
        vertices.clear();
        for (std::int64_t i = mCells.offsets[cell]; i < mCells.offsets[cell + 1]; ++i)
            vertices.push_back(mCells.connectivity[static_cast<std::size_t>(i)]);
        if (std::ranges::all_of(vertices, [this](std::int64_t v) { return isPoint(v); }))
            convert(cell, vertices);
        else
            mOutside.add(cell);
    }
    complainIfAny<Malformed>(mUnknown, "of a type that is not supported");
    complainIfAny<Malformed>(mTooFew, "with fewer vertices than the type has");
    complainIfAny<Malformed>(mBadFaces, "with a list of faces that makes no polyhedron");
    complainIfAny<Malformed>(mOutside,
                             "with vertices beyond the " + std::to_string(mNumPoints) + " points");

    ConvertedCells result{
        {std::move(mTypes), IndexArray(std::move(mOffsets)), IndexArray(std::move(mConnectivity))},
        std::nullopt,
        {}};
    const bool isOneToOne = mOrigin.size() == mCells.types.size() &&
                            std::ranges::adjacent_find(mOrigin) == mOrigin.end();
    if (!isOneToOne)
        result.origin = std::move(mOrigin);
    if (mTooMany > 0)
        result.warnings.push_back(countedCells(mTooMany, "lists more points than its type has",
                                               "list more points than their type has") +
                                  "; only the first are used");
    if (mConcave > 0)
        result.warnings.push_back(
            countedCells(mConcave, "is a concave polyhedron", "are concave polyhedra") +
            "; the parts that are not visible from the corner with the lowest index are filled wrongly");
    for (const auto& [vtkType, count] : mLinearized)
        result.warnings.push_back(countedCells(count, "of type ", "of type ") +
                                  nameOfHigherOrder(vtkType) + (count == 1 ? " is" : " are") +
                                  " read as linear, with the corners alone");
    return result;
}

}

ConvertedCells convertCells(FileCells cells, std::size_t numPoints, const PositionOf& position,
                            const volatile bool& abortFlag)
{
    if (!fitAsTheyAre(cells))
        return Conversion(cells, numPoints, position, abortFlag).run();
    std::vector<CellType> types(cells.types.size());
    for (std::size_t cell = 0; cell < types.size(); ++cell)
        types[cell] = cellTypeOf(cells.types[cell]).value_or(Invalid);
    return {{std::move(types), std::move(cells.offsets), std::move(cells.connectivity)},
            std::nullopt,
            {}};
}

}
