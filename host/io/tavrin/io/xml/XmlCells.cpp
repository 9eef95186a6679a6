#include <tavrin/io/xml/XmlCells.hpp>

#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/xml/XmlElements.hpp>
#include <tavrin/io/xml/XmlValues.hpp>

#include <vtkCellType.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace tavrin::io
{

namespace
{

struct PolySection
{
    PolyList list;
    const char* name;
    const char* count;
};

constexpr std::array polySections{
    PolySection{PolyList::Vertices, "Verts", "NumberOfVerts"},
    PolySection{PolyList::Lines, "Lines", "NumberOfLines"},
    PolySection{PolyList::Polygons, "Polys", "NumberOfPolys"},
    PolySection{PolyList::Strips, "Strips", "NumberOfStrips"},
};

}

std::size_t XmlCells::countOf(vtkXMLDataElement& piece, bool isPolyData)
{
    if (!isPolyData)
        return XmlValues::countAttribute(piece, "NumberOfCells");
    std::size_t cells = 0;
    for (const PolySection& section : polySections)
        cells += XmlValues::countAttribute(piece, section.count);
    return cells;
}

void XmlCells::add(vtkXMLDataElement& piece, std::size_t numPoints)
{
    ++mNumPieces;
    if (mIsPolyData)
        addPolyLists(piece);
    else
        addTypedList(piece);
    mNumPoints += numPoints;
}

FileCells XmlCells::take()
{
    if (mNumPieces > 1 && std::ranges::find(mCells.types, VTK_POLYHEDRON) != mCells.types.end())
        throw Malformed("polyhedra in a file of several pieces are not supported");
    mCells.offsets = mCollector.offsets();
    mCells.connectivity = mCollector.connectivity();
    return std::move(mCells);
}

void XmlCells::addPolyLists(vtkXMLDataElement& piece)
{
    for (const PolySection& section : polySections)
    {
        const std::size_t cells = XmlValues::countAttribute(piece, section.count);
        if (cells == 0)
            continue;
        vtkXMLDataElement* const element = child(piece, section.name);
        const IndexArray starts =
            readStarts(requireArray(element, "offsets", section.name), cells, section.name);
        for (std::size_t cell = 0; cell < cells; ++cell)
            mCells.types.push_back(
                vtkTypeOf(section.list, static_cast<std::size_t>(starts[cell + 1] - starts[cell])));
        addList(element, section.name, starts);
    }
}

void XmlCells::addTypedList(vtkXMLDataElement& piece)
{
    const std::size_t cells = countOf(piece, false);
    if (cells == 0)
        return;
    vtkXMLDataElement* const section = child(piece, "Cells");
    addList(section, "Cells",
            readStarts(requireArray(section, "offsets", "Cells"), cells, "Cells"));
    const std::size_t first = mCells.types.size();
    appendTypes(mCells.types, mValues.read(requireArray(section, "types", "Cells"), cells, 1));
    if (std::find(mCells.types.begin() + static_cast<std::ptrdiff_t>(first), mCells.types.end(),
                  VTK_POLYHEDRON) != mCells.types.end())
        readFaces(*section, cells);
}

/// The offsets of the first vertex of each cell and the end: files list only where each cell ends.
IndexArray XmlCells::readStarts(vtkXMLDataElement& ends, std::size_t cells,
                                const std::string& listName)
{
    const auto precision = XmlValues::precisionOf(ends);
    if (!precision)
        throw Malformed("the offsets of its " + listName + " have no type of number");
    mValues.require(ends, cells);
    const StoredArray offsets = StoredArray::allocate(*precision, cells + 1, 1);
    std::memset(offsets.data, 0, offsets.bytesPerTuple());
    StoredArray rest = offsets;
    rest.data += offsets.bytesPerTuple();
    rest.tuples = cells;
    mValues.read(ends, rest);
    IndexArray starts = toIndices(offsets);
    if (starts[cells] < 0)
        throw Malformed("the offsets of its " + listName + " are negative");
    return starts;
}

void XmlCells::addList(vtkXMLDataElement* section, const std::string& name,
                       const IndexArray& starts)
{
    const std::int64_t length = starts[starts.size() - 1];
    const StoredArray vertices = mValues.read(requireArray(section, "connectivity", name),
                                              static_cast<std::size_t>(length), 1);
    mCollector.add(starts, toIndices(vertices), mNumPoints);
}

void XmlCells::readFaces(vtkXMLDataElement& section, std::size_t cells)
{
    const IndexArray ends =
        toIndices(mValues.read(requireArray(&section, "faceoffsets", "Cells"), cells, 1));
    std::int64_t start = 0;
    for (std::size_t cell = 0; cell < cells; ++cell)
    {
        mCells.faceStarts.push_back(start);
        start = std::max(start, ends[cell]);
    }
    mCells.faces = toIndices(
        mValues.read(requireArray(&section, "faces", "Cells"), static_cast<std::size_t>(start), 1));
}

}
