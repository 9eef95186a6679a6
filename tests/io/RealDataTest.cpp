#include "ReaderSamples.hpp"

#include <nlohmann/json.hpp>

namespace
{

using namespace samples;

/// Real files against what was found out about them by other means.
using RealData = RealFilesTest;

const std::map<std::string, std::string> precisionNames{
    {"float", "float32"},   {"double", "float64"},  {"int", "int32"},          {"long", "int64"},
    {"vtkIdType", "int64"}, {"long long", "int64"}, {"unsigned char", "uint8"}};

void expectNear(double actual, const nlohmann::json& expected, const std::string& what)
{
    // The facts have nine digits at most.
    EXPECT_NEAR(actual, expected.get<double>(), 1e-8 * std::abs(expected.get<double>())) << what;
}

/// Lowest and highest norm of the values whose components are all finite.
std::pair<double, double> normRangeOf(const FunctionBase& function, std::size_t& notFinite)
{
    std::pair range{std::numeric_limits<double>::infinity(), 0.0};
    notFinite = 0;
    visitFunction<ValueTypes>(
        function,
        [&]<typename T>(const Function<T>& typed)
        {
            for (std::size_t i = 0; i < typed.values()->size(); ++i)
            {
                const double size = norm((*typed.values())[i]);
                notFinite += std::isfinite(size) ? 0 : 1;
                if (std::isfinite(size))
                    range = {std::min(range.first, size), std::max(range.second, size)};
            }
        });
    return range;
}

TEST_F(RealData, IsReadAsItIs)
{
    const auto facts = nlohmann::json::parse(std::ifstream(data() / "facts.json"));
    for (const auto& [name, fact] : facts.items())
    {
        SCOPED_TRACE(name);
        DataReference file;
        file.file = data() / name;
        file.dimension = 3;
        const FileInfo info = loader().inspect(file);
        EXPECT_EQ(info.points, fact["points"]);
        EXPECT_EQ(info.cells, fact["cells"]);
        for (std::size_t i = 0; i < 3; ++i)
        {
            expectNear(info.bounds[i].first, fact["bounds"][2 * i], "lower bound");
            expectNear(info.bounds[i].second, fact["bounds"][2 * i + 1], "upper bound");
        }
        EXPECT_EQ(info.arrays.size(), fact["point_data"].size() + fact["cell_data"].size());
        for (const FileInfo::Array& array : info.arrays)
        {
            SCOPED_TRACE(array.name);
            const auto& expected =
                fact[array.association == Association::Points ? "point_data" : "cell_data"]
                    [array.name];
            EXPECT_EQ(array.components, expected["components"]);
            EXPECT_EQ(nameOf(array.precision), precisionNames.at(expected["type"]));
            file.array = array.name;
            file.on = array.association;
            std::size_t notFinite = 0;
            const auto [lowest, highest] = normRangeOf(*loader().loadFunction(file), notFinite);
            EXPECT_EQ(notFinite, expected["nonfinite_tuples"]);
            // The norm of six components counts each of the symmetric ones once.
            if (array.components == 6)
                continue;
            expectNear(lowest, expected["norm_min"], "lowest norm");
            expectNear(highest, expected["norm_max"], "highest norm");
        }
    }
}

TEST_F(RealData, SeriesHaveAllTheirSteps)
{
    const auto functionOf = [&](const std::string& text)
    { return loader().loadFunction(DataReference::parse((data() / text).string())); };
    const auto mechanics = functionOf("terzaghi3d/mechanics.pvd#stress");
    EXPECT_EQ(mechanics->timeSteps(), (std::vector<double>{0.0, 1e4, 1e5, 1e6, 1e7, 5e7}));
    EXPECT_EQ(mechanics->values()->size(), 6U * 540U);
    std::size_t notFinite = 0;
    EXPECT_EQ(normRangeOf(*functionOf("cavity/cavity.pvd#U?time=0"), notFinite).second, 0.0);
    EXPECT_GT(normRangeOf(*functionOf("cavity/cavity.pvd#U"), notFinite).second, 0.5);
    EXPECT_EQ(
        functionOf("ccx_zoo/ccx_zoo.pvd#STRESS")->domain()->numElements(tavrin::detail::Cells),
        61U);
    const std::string complaint =
        errorOf<FileError>([&] { functionOf("broken_series/mechanics.pvd#stress"); });
    EXPECT_TRUE(complaint.ends_with(
        "mechanics.pvd: step 1 at t = 1: mechanics/mechanics-000001.vtu: no such file"))
        << complaint;
}

}
