#include "ExampleData.hpp"

#include "ExampleFields.hpp"
#include "ExamplePipelines.hpp"

#include <tavrin/io/OutputFile.hpp>
#include <tavrin/io/Writer.hpp>

#include <array>
#include <system_error>

namespace tavrin::app
{

namespace
{

struct DataSet
{
    const char* file;
    const char* description;
    examples::Field (*make)();
};

constexpr std::array dataSets{
    DataSet{"double_gyre.pvd", "two gyres that swing to and fro: velocity, 2-D, 21 time steps",
            examples::makeDoubleGyre},
    DataSet{"abc_flow.vti", "the Arnold-Beltrami-Childress flow: velocity, 3-D uniform grid",
            examples::makeAbcFlow},
    DataSet{"plate_with_hole.vts", "a pulled plate with a round hole: stress, 2-D curvilinear grid",
            examples::makePlateWithHole},
    DataSet{"flow.vtu", "Hill's spherical vortex in a stream: velocity, tetrahedra",
            examples::makeSphericalVortex},
    DataSet{"quadratic.vtu", "a twisted elliptic bar: displacement, quadratic tetrahedra",
            examples::makeTwistedBar},
    DataSet{"probe.vti", "a grid to sample double_gyre.pvd at", examples::makeProbe},
    DataSet{"probe3d.vti", "a plane of points to sample flow.vtu at", examples::makeProbe3d},
};

void refuseExisting(const std::filesystem::path& folder)
{
    const auto refuse = [](const std::filesystem::path& file)
    {
        std::error_code error;
        if (std::filesystem::exists(std::filesystem::symlink_status(file, error)))
            throw io::FileError(file, "exists; use --force to replace existing files");
    };
    for (const DataSet& set : dataSets)
    {
        const std::filesystem::path file = folder / set.file;
        refuse(file);
        // The steps of a series are in a folder beside it that has its name.
        if (file.extension() == ".pvd")
            refuse(std::filesystem::path(file).replace_extension());
    }
    for (const auto& pipeline : examples::examplePipelines())
        refuse(folder / pipeline.file);
}

}

std::vector<ExampleFile> writeExamples(const std::filesystem::path& folder, ExistingFiles existing,
                                       const volatile bool& abortFlag)
{
    if (existing == ExistingFiles::Refuse)
        refuseExisting(folder);
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error)
        throw io::FileError(folder, error.message());
    std::vector<ExampleFile> files;
    files.reserve(dataSets.size() + examples::examplePipelines().size());
    for (const DataSet& set : dataSets)
    {
        const examples::Field field = set.make();
        io::writeFunction(*field, field->name(), folder / set.file, abortFlag);
        files.push_back({set.file, set.description});
    }
    for (const auto& [file, description, text] : examples::examplePipelines())
    {
        io::OutputFile output(folder / file, abortFlag);
        output.stream() << text;
        output.publish();
        files.push_back({file, description});
    }
    return files;
}

}
