#pragma once

#include <tavrin/io/FileCells.hpp>

#include <string>

class vtkXMLDataElement;

namespace tavrin::io
{

class XmlValues;

/// Collects the cells of the pieces of an unstructured grid or of polygonal data. All functions throw
/// `Malformed` and `Aborted`.
class XmlCells
{
public:
    XmlCells(XmlValues& values, bool isPolyData) : mValues(values), mIsPolyData(isPolyData) {}

    /// The number of cells that a piece declares.
    static std::size_t countOf(vtkXMLDataElement& piece, bool isPolyData);

    /// Adds the cells of the next piece.
    void add(vtkXMLDataElement& piece, std::size_t numPoints);

    /// The cells of all pieces; the points of each piece are numbered after those of the previous one.
    FileCells take();

private:
    void addPolyLists(vtkXMLDataElement& piece);
    void addTypedList(vtkXMLDataElement& piece);
    IndexArray readStarts(vtkXMLDataElement& ends, std::size_t cells, const std::string& listName);
    void addList(vtkXMLDataElement* section, const std::string& name, const IndexArray& starts);
    void readFaces(vtkXMLDataElement& section, std::size_t cells);

    XmlValues& mValues;
    bool mIsPolyData;
    std::size_t mNumPieces = 0;
    std::size_t mNumPoints = 0;
    CellCollector mCollector;
    FileCells mCells;
};

}
