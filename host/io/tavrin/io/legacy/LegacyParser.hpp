#pragma once

#include <tavrin/io/legacy/LegacyLayout.hpp>

#include <map>

namespace tavrin::io
{

/// Scans a legacy VTK file keyword by keyword. The functions for the grid are in LegacyLayout.cpp,
/// those for the arrays on it in LegacyArrays.cpp.
class LegacyParser
{
public:
    explicit LegacyParser(LegacyNumbers& numbers) : mNumbers(numbers) {}

    LegacyLayout parse();

private:
    using Place = LegacyNumbers::Place;
    using CellList = LegacyLayout::CellList;

    using Handler = void (LegacyParser::*)(const std::string& keyword);
    static const std::map<std::string, Handler, std::less<>>& handlers();

    void readHeader();
    std::size_t declaredTuples(const std::string& keyword) const;
    void addNamed(const std::string& name, const std::string& typeName, std::size_t tuples,
                  std::size_t components, bool isColor = false);

    void onDimensions(const std::string& keyword);
    void onExtent(const std::string& keyword);
    void onOrigin(const std::string& keyword);
    void onSpacing(const std::string& keyword);
    void onPoints(const std::string& keyword);
    void onCoordinates(const std::string& keyword);
    void onCells(const std::string& keyword);
    void onCellTypes(const std::string& keyword);
    void onPointData(const std::string& keyword);
    void onCellData(const std::string& keyword);
    void onField(const std::string& keyword);
    void onScalars(const std::string& keyword);
    void onColorScalars(const std::string& keyword);
    void onFixedSize(const std::string& keyword);
    void onTextureCoordinates(const std::string& keyword);
    void onLookupTable(const std::string& keyword);
    void onMetadata(const std::string& keyword);

    LegacyNumbers& mNumbers;
    LegacyLayout mLayout;
    int mMajorVersion = 0;
    /// The association of the arrays that follow.
    std::optional<Association> mSection;
    /// The array that a METADATA block would describe.
    std::optional<std::size_t> mLastNamed;
    std::size_t mLastComponents = 0;
};

}
