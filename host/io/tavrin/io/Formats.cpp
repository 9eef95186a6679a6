#include <tavrin/io/Formats.hpp>

#include <tavrin/function/visit.hpp>
#include <tavrin/io/DataFile.hpp>
#include <tavrin/io/legacy/LegacyFile.hpp>
#include <tavrin/io/series/ListFiles.hpp>
#include <tavrin/io/tables/TableFile.hpp>
#include <tavrin/io/tables/TableWriter.hpp>
#include <tavrin/io/write/SeriesWriter.hpp>
#include <tavrin/io/write/VtkWriters.hpp>
#include <tavrin/io/xml/XmlFile.hpp>

#include <algorithm>
#include <cctype>

namespace tavrin::io
{

namespace
{

using enum StructuringType;

/// The row of a VTK XML format that holds one grid.
FileFormat vtkXml(std::string_view extension, std::string_view name, std::string_view dataSet,
                  std::vector<StructuringType> grids, decltype(FileFormat::makeWriter) makeWriter,
                  decltype(FileFormat::holdsCells) holdsCells = nullptr)
{
    const bool isUnstructured = grids.front() == Unstructured;
    return {.extension = extension,
            .name = name,
            .family = "VTK XML",
            .beginning = "<",
            .dataSet = dataSet,
            .grids = std::move(grids),
            .holdsPointClouds = isUnstructured,
            .holdsCells = holdsCells,
            .open = openXmlFile,
            .makeWriter = makeWriter};
}

std::vector<FileFormat> makeFormats()
{
    return {
        vtkXml(".vti", "VTK XML image data", "ImageData", {Uniform}, makeImageWriter),
        vtkXml(".vtr", "VTK XML rectilinear grid", "RectilinearGrid", {Rectilinear},
               makeRectilinearWriter),
        vtkXml(".vts", "VTK XML structured grid", "StructuredGrid",
               {Curvilinear, Uniform, Rectilinear}, makeStructuredWriter),
        vtkXml(".vtu", "VTK XML unstructured grid", "UnstructuredGrid",
               {Unstructured, Uniform, Rectilinear, Curvilinear}, makeUnstructuredWriter),
        vtkXml(".vtp", "VTK XML polygonal data", "PolyData", {Unstructured}, makePolyDataWriter,
               areInOrderOfPolyData),
        {.extension = ".vtk",
         .name = "legacy VTK",
         .family = "legacy VTK",
         .beginning = "# vtk DataFile",
         .open = openLegacyFile},
        {.extension = ".vtm",
         .name = "VTK XML multi-block data",
         .family = "VTK XML",
         .dataSet = "vtkMultiBlockDataSet",
         .content = FileContent::Blocks,
         .readList = readMultiBlockList},
        {.extension = ".pvd",
         .name = "time series",
         .family = "VTK XML",
         .dataSet = "Collection",
         .content = FileContent::TimeSteps,
         .holdsSeveralArrays = false,
         .readList = readPvdList,
         .startSeries = startPvd},
        {.extension = ".csv",
         .name = "table",
         .family = "table",
         .holdsPointClouds = true,
         .holdsSeveralArrays = false,
         .open = openTable,
         .startSeries = startTable},
        {.extension = ".series",
         .name = "time series",
         .content = FileContent::TimeSteps,
         .readList = readJsonList},
    };
}

/// How the points of the domain are given; nothing for points without cells.
std::optional<StructuringType> structuringOf(const Domain& domain)
{
    std::optional<StructuringType> type;
    visitObject<TypeList<EmbeddedCellComplex<1>, EmbeddedCellComplex<2>, EmbeddedCellComplex<3>>>(
        domain, [&](const auto& grid) { type = grid.structuringType(); });
    return type;
}

bool canHold(const FileFormat& format, const Domain& domain)
{
    const auto structuring = structuringOf(domain);
    if (!structuring)
        return format.holdsPointClouds;
    return std::ranges::find(format.grids, *structuring) != format.grids.end() &&
           (format.holdsCells == nullptr ||
            format.holdsCells(dynamic_cast<const CellComplex&>(domain)));
}

std::vector<std::string> extensionsWhere(const auto& condition)
{
    std::vector<std::string> extensions;
    for (const FileFormat& format : fileFormats())
        if (condition(format))
            extensions.emplace_back(format.extension);
    return extensions;
}

}

const std::vector<FileFormat>& fileFormats()
{
    static const std::vector<FileFormat> formats = makeFormats();
    return formats;
}

std::string extensionOf(const std::filesystem::path& file)
{
    std::string extension = file.extension().string();
    std::ranges::transform(extension, extension.begin(),
                           [](unsigned char character)
                           { return static_cast<char>(std::tolower(character)); });
    return extension;
}

const FileFormat* findFormat(const std::filesystem::path& file)
{
    const auto& formats = fileFormats();
    const auto found = std::ranges::find(formats, extensionOf(file), &FileFormat::extension);
    return found == formats.end() ? nullptr : &*found;
}

bool isSeries(const std::filesystem::path& file)
{
    const FileFormat* const format = findFormat(file);
    return format != nullptr && format->content == FileContent::TimeSteps;
}

bool isList(const std::filesystem::path& file)
{
    const FileFormat* const format = findFormat(file);
    return format != nullptr && format->content != FileContent::Grid;
}

std::vector<std::string> readableExtensions()
{
    return extensionsWhere([](const FileFormat& format) { return format.isRead(); });
}

std::vector<std::string> writableExtensions()
{
    return extensionsWhere([](const FileFormat& format) { return format.isWritten(); });
}

bool isSuitable(const FileFormat& format, const Domain& domain, std::size_t numTimeSteps)
{
    if (dynamic_cast<const PointSetBase*>(&domain) == nullptr)
        return false;
    return format.startSeries != nullptr ||
           (format.makeWriter != nullptr && numTimeSteps == 1 && canHold(format, domain));
}

std::vector<std::string> extensionsFor(const Domain& domain, std::size_t numTimeSteps)
{
    return extensionsWhere([&](const FileFormat& format)
                           { return isSuitable(format, domain, numTimeSteps); });
}

const FileFormat& bestGridFormat(const Domain& domain)
{
    const auto& formats = fileFormats();
    return *std::ranges::find_if(formats, [&](const FileFormat& format)
                                 { return format.makeWriter && canHold(format, domain); });
}

std::string describeGridKind(const Domain& domain)
{
    const auto structuring = structuringOf(domain);
    if (!structuring)
        return "a point cloud";
    return (*structuring == Unstructured ? "an " : "a ") + std::string(nameOf(*structuring)) +
           " grid";
}

std::string enumerate(const std::vector<std::string>& texts, std::string_view word)
{
    std::string text = texts.empty() ? "" : texts.front();
    for (std::size_t i = 1; i < texts.size(); ++i)
        text += (i + 1 < texts.size() ? ", " : " " + std::string(word) + " ") + texts[i];
    return text;
}

}
