#include "CommandBench.hpp"

#include "RatioReporter.hpp"

#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/function/Function.hpp>
#include <tavrin/io/FunctionOutput.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace tavrin::bench
{

namespace
{

constexpr const char* pipelineText = R"(steps:
  - id: twice
    algorithm: Field/Tensor Field Operator
    options: {Field A: field.vti, Operator: Scale ( A * C ), Scalar C: 2}
  - id: difference
    algorithm: Field/Tensor Field Operator
    options: {Field A: twice.Field, Field B: field.vti, Operator: Linear Combine ( A*C+B*D ), Scalar D: -1}
  - id: norm
    algorithm: Field/Tensor Field Operator
    options: {Field A: difference.Field, Operator: Norm of Field A}
  - id: report
    algorithm: Field/Info
    options: {Field: norm.Field}
outputs: {norm.Field: norm.vti}
)";

/// A folder with the data of the rows, made on first use and removed at the end.
class Folder
{
public:
    Folder() : mPath(std::filesystem::temp_directory_path() / "tavrin-bench-commands")
    {
        std::filesystem::remove_all(mPath);
        std::filesystem::create_directory(mPath);
        writeSteps("field.vti", 162, 1);
        writeSteps("series.pvd", 20, 100);
        std::ofstream(mPath / "four.yaml") << pipelineText;
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }

    /// Runs a command of the shell in which `tavrin` is the program.
    void run(const std::string& command) const
    {
        const std::string whole =
            "cd '" + mPath.string() +
            "' && tavrin() { '" TAVRIN_PROGRAM "' -q \"$@\" >/dev/null; } && " + command;
        if (std::system(whole.c_str()) != 0)
            throw std::runtime_error("failed: " + command);
    }

private:
    void writeSteps(const std::string& name, std::size_t n, std::size_t numSteps) const
    {
        const auto grid = std::make_shared<const UniformGrid<3>>(
            UniformGrid<3>::Layout{.size = {n, n, n}, .spacing = Vector3(1.0, 1.0, 1.0)});
        const volatile bool neverAborts = false;
        io::FunctionOutput output(mPath / name, neverAborts);
        for (std::size_t step = 0; step < numSteps; ++step)
        {
            std::vector<Vector3> values(n * n * n);
            for (std::size_t i = 0; i < values.size(); ++i)
                values[i] =
                    Vector3(1e-3 * static_cast<double>(i % 1009), 1.0, static_cast<double>(step));
            const auto times =
                numSteps == 1 ? std::vector<double>{} : std::vector{static_cast<double>(step)};
            output.append(*addData(grid, PointSetBase::Points, std::move(values),
                                   Precision::Float64, times, "v"),
                          "v");
        }
        output.finish()->publish();
    }

    std::filesystem::path mPath;
};

const Folder& folder()
{
    static const Folder made;
    return made;
}

}

void addCommandRows()
{
    const std::string pipeline = "a pipeline of 4 steps on 102 MB, from start to file";
    addContender(pipeline, "tavrin", [] { folder().run("tavrin pipeline four.yaml"); });
    addContender(pipeline, "commands",
                 []
                 {
                     folder().run(
                         "tavrin run tensor 'field a=field.vti' op=scale 'scalar c=2' -o a.vti && "
                         "tavrin run tensor 'field a=a.vti' 'field b=field.vti' op=linear "
                         "'scalar d=-1' -o b.vti && "
                         "tavrin run tensor 'field a=b.vti' op=norm -o c.vti && "
                         "tavrin run info field=c.vti");
                 });
    const std::string series = "extremes of each of 100 time steps";
    addContender(series, "tavrin",
                 [] { folder().run("tavrin run info field=series.pvd --each-step"); });
    addContender(series, "commands",
                 []
                 {
                     folder().run("for t in $(seq 0 99); do tavrin run info "
                                  "\"field=series.pvd?time=$t\" || exit 1; done");
                 });
}

}
