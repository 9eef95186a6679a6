#pragma once

#include "WriterSamples.hpp"

#include <tavrin/function/visit.hpp>
#include <tavrin/io/Loader.hpp>

namespace samples
{

using namespace tavrin::io;

/// A loader whose warnings are kept.
class ReaderTest : public TemporaryFolderTest
{
protected:
    DataReference reference(const std::string& text) const
    {
        return DataReference::parse((folder() / text).string());
    }

    std::shared_ptr<const FunctionBase> load(const std::string& text)
    {
        return mLoader.loadFunction(reference(text));
    }

    template<typename T>
    std::vector<T> loadValues(const std::string& text)
    {
        return valuesOf<T>(*load(text));
    }

    /// The error for a file that cannot be read, without the folder; or "ok". A file may be changed
    /// between two calls.
    std::string complaintAbout(const std::string& text)
    {
        try
        {
            Loader loader(mWarn, neverAbort);
            FileInfo info = loader.inspect(reference(text));
            for (const FileInfo::Array& array : info.arrays)
            {
                DataReference one = reference(text);
                one.array = array.name;
                one.on = array.association;
                if (!array.valueType.empty())
                    loader.loadFunction(one);
            }
        }
        catch (const FileError& error)
        {
            return withoutFolder(error.what());
        }
        return "ok";
    }

    /// The error for a request that does not fit the file.
    std::string usageErrorOf(const std::string& text)
    {
        return withoutFolder(errorOf<usage_error>([&] { load(text); }));
    }

    std::string withoutFolder(std::string text) const
    {
        const std::string prefix = folder().string() + "/";
        for (std::size_t at; (at = text.find(prefix)) != std::string::npos;)
            text.erase(at, prefix.size());
        return text;
    }

    const std::vector<std::string>& warnings() const { return mWarnings; }
    Loader& loader() { return mLoader; }

private:
    std::vector<std::string> mWarnings;
    Loader::Warn mWarn = [this](const std::string& line)
    { mWarnings.push_back(withoutFolder(line)); };
    Loader mLoader{mWarn, neverAbort};
};

/// Real files, where a folder of them is given.
class RealFilesTest : public ReaderTest
{
protected:
    void SetUp() override
    {
        ReaderTest::SetUp();
        const auto folder = realDataFolder();
        if (!folder)
            GTEST_SKIP() << "TAVRIN_TEST_DATA is not set";
        mData = *folder;
    }

    const std::filesystem::path& data() const { return mData; }

private:
    std::filesystem::path mData;
};

inline std::string vtkFile(const std::string& type, const std::string& content,
                           const std::string& attributes = "")
{
    return "<?xml version=\"1.0\"?>\n<VTKFile type=\"" + type + "\" byte_order=\"LittleEndian\" " +
           attributes + ">\n" + content + "\n</VTKFile>\n";
}

inline std::string dataArray(const std::string& attributes, const std::string& numbers)
{
    return "<DataArray format=\"ascii\" " + attributes + ">" + numbers + "</DataArray>\n";
}

/// A uniform grid of 3 x 2 x 1 points with the content in its piece.
inline std::string smallImage(const std::string& content, const std::string& attributes = "")
{
    return vtkFile("ImageData",
                   "<ImageData WholeExtent=\"0 2 0 1 0 0\" Origin=\"0 0 0\" Spacing=\"1 1 1\" " +
                       attributes + "><Piece Extent=\"0 2 0 1 0 0\">" + content +
                       "</Piece></ImageData>");
}

/// An unstructured grid; the texts are the numbers of its arrays.
inline std::string gridFile(std::size_t numPoints, const std::string& points, std::size_t numCells,
                            const std::string& connectivity, const std::string& offsets,
                            const std::string& types, const std::string& more = "")
{
    return vtkFile("UnstructuredGrid",
                   "<UnstructuredGrid><Piece NumberOfPoints=\"" + std::to_string(numPoints) +
                       "\" NumberOfCells=\"" + std::to_string(numCells) + "\"><Points>" +
                       dataArray("type=\"Float32\" NumberOfComponents=\"3\"", points) +
                       "</Points><Cells>" +
                       dataArray("type=\"Int64\" Name=\"connectivity\"", connectivity) +
                       dataArray("type=\"Int32\" Name=\"offsets\"", offsets) +
                       dataArray("type=\"UInt8\" Name=\"types\"", types) + "</Cells>" + more +
                       "</Piece></UnstructuredGrid>");
}

/// "CELLTYPE: vertices" for each cell.
inline std::vector<std::string> cellsOf(const Domain& domain)
{
    const auto& cells = dynamic_cast<const CellComplex&>(domain);
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < cells.numCells(); ++i)
    {
        const Cell cell = cells.cell(i);
        std::string text = std::string(nameOf(cell.type())) + ":";
        for (const std::size_t vertex : cell.pointIndices())
            text += " " + std::to_string(vertex);
        texts.push_back(text);
    }
    return texts;
}

}
