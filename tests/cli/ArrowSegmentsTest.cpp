#include <tavrin/pipeline/ArrowSegments.hpp>

#include <support/TemporaryFolder.hpp>
#include <support/abortFlags.hpp>

#include <tavrin/graphics/ObjectRenderer.hpp>
#include <tavrin/io/DataReference.hpp>
#include <tavrin/io/Loader.hpp>
#include <tavrin/io/Writer.hpp>

#include <gtest/gtest.h>
#include <vtkCellData.h>
#include <vtkDataArray.h>
#include <vtkNew.h>
#include <vtkPolyData.h>
#include <vtkXMLPolyDataReader.h>

#include <limits>

namespace
{

using namespace support;
using namespace tavrin;
using graphics::GraphicsSystem;
using pipeline::arrowSegments;

constexpr Color half{1.0F, 0.5F, 0.0F, 0.25F};

std::shared_ptr<const graphics::Drawable> arrows()
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    graphics::ObjectRenderer renderer(GraphicsSystem::mInstance, graphics::ShadingType::Phong);
    renderer.addArrow({1e7, 2.0, 3.0}, {0.1, 0.0, -1.0}, 0.5, half, true);
    renderer.addArrow({0.0, nan, 0.0}, {1.0, 0.0, 0.0}, 0.5, half, true);
    renderer.addArrow({4.0, 5.0, 6.0}, {0.0, 0.0, 0.0}, 0.0, {}, true);
    return renderer.commit();
}

std::shared_ptr<const graphics::Drawable> line()
{
    graphics::PrimitiveConfig config(graphics::RenderPrimitives::Lines);
    config
        .vertexBuffer("in_vertex",
                      GraphicsSystem::makeBuffer({{1.0F, 2.0F, 3.0F}, {1.5F, 2.0F, 1.0F}}))
        .vertexBuffer("in_color",
                      GraphicsSystem::makeBuffer({half, half}, graphics::ColorChannel::RGBA));
    return GraphicsSystem::makePrimitive(std::move(config),
                                         GraphicsSystem::makeProgram({}, {}, {}));
}

/// The functions that are read back from the file.
class ArrowSegments : public testing::Test
{
protected:
    void write(const graphics::Drawable& drawable, const std::string& extension)
    {
        mFile = mFolder / ("segments" + extension);
        io::prepareFunctions(arrowSegments(drawable), mFile, neverAbort)->publish();
    }

    const std::filesystem::path& file() const { return mFile; }

    template<typename T>
    std::shared_ptr<const Function<T>> read(const std::string& name)
    {
        return std::dynamic_pointer_cast<const Function<T>>(
            mLoader.loadFunction(io::DataReference::parse(mFile.string() + "#" + name)));
    }

private:
    TemporaryFolder mFolder;
    std::filesystem::path mFile;
    io::Loader mLoader{[](const std::string& line) { ADD_FAILURE() << line; }, neverAbort};
};

TEST_F(ArrowSegments, OfArrowsComeBackFromAFileExactly)
{
    for (const char* extension : {".vtp", ".vtu"})
    {
        write(*arrows(), extension);
        const auto vectors = read<Vector3>("vector");
        const auto colors = read<Vector4>("color");
        ASSERT_TRUE(vectors != nullptr && colors != nullptr);
        ASSERT_EQ(vectors->values()->size(), 2U);
        EXPECT_EQ((*vectors->values())[0], Vector3(0.1, 0.0, -1.0));
        EXPECT_EQ((*colors->values())[0], Vector4(1.0, 0.5, 0.0, 0.25));
        const auto* const grid =
            dynamic_cast<const EmbeddedCellComplex<3>*>(vectors->domain().get());
        ASSERT_NE(grid, nullptr);
        EXPECT_EQ(vectors->domain(), colors->domain());
        EXPECT_EQ(grid->cellType(1), CellType::Lines);
        EXPECT_EQ(grid->point(0), Vector3(1e7, 2.0, 3.0));
        EXPECT_EQ(grid->point(1), Vector3(1e7 + 0.1, 2.0, 2.0));
        EXPECT_EQ(grid->point(grid->cell(1).pointIndex(1)), Vector3(4.0, 5.0, 6.0));
    }
}

TEST_F(ArrowSegments, OpenInOtherTools)
{
    write(*arrows(), ".vtp");
    vtkNew<vtkXMLPolyDataReader> reader;
    reader->SetFileName(file().c_str());
    reader->Update();
    vtkPolyData* const segments = reader->GetOutput();
    EXPECT_EQ(segments->GetNumberOfLines(), 2);
    EXPECT_EQ(segments->GetNumberOfCells(), 2);
    ASSERT_EQ(segments->GetNumberOfPoints(), 4);
    EXPECT_EQ(segments->GetPoint(1)[0], 1e7 + 0.1);
    vtkDataArray* const vectors = segments->GetCellData()->GetArray("vector");
    vtkDataArray* const colors = segments->GetCellData()->GetArray("color");
    ASSERT_TRUE(vectors != nullptr && colors != nullptr);
    EXPECT_EQ(vectors->GetNumberOfComponents(), 3);
    EXPECT_EQ(vectors->GetComponent(0, 2), -1.0);
    EXPECT_EQ(colors->GetNumberOfComponents(), 4);
    EXPECT_EQ(colors->GetComponent(0, 3), 0.25);
}

TEST_F(ArrowSegments, OfLinesAreTheirVertices)
{
    write(*line(), ".vtp");
    EXPECT_EQ((*read<Vector3>("vector")->values())[0], Vector3(0.5, 0.0, -2.0));
    EXPECT_EQ((*read<Vector4>("color")->values())[0], Vector4(1.0, 0.5, 0.0, 0.25));
}

TEST_F(ArrowSegments, FormatsThatHoldNoLinesAreRefused)
{
    EXPECT_THROW(write(*line(), ".vti"), usage_error);
    EXPECT_THROW(write(*line(), ".pvd"), usage_error);
}

}
