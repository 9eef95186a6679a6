#include "WriterSamples.hpp"

#include <tavrin/function/visit.hpp>
#include <tavrin/io/Loader.hpp>
#include <tavrin/io/Writer.hpp>

#include <cstdlib>
#include <cstring>

namespace
{

using namespace samples;

/// Equal bits: NaN equals NaN, and 0 is not -0.
template<typename T>
bool areSame(const ValueArray<T>& a, const ValueArray<T>& b)
{
    for (std::size_t i = 0; i < a.size(); ++i)
    {
        const T x = a[i];
        const T y = b[i];
        if (std::memcmp(&x, &y, sizeof(T)) != 0)
            return false;
    }
    return a.size() == b.size();
}

bool haveSamePoints(const Domain& a, const Domain& b)
{
    bool result = false;
    visitObject<TypeList<PointSet<1>, PointSet<2>, PointSet<3>>>(
        a,
        [&]<std::size_t D>(const PointSet<D>& set)
        {
            const auto* const other = dynamic_cast<const PointSet<D>*>(&b);
            result = other != nullptr && set.numPoints() == other->numPoints();
            for (std::size_t i = 0; result && i < set.numPoints(); ++i)
                result = set.point(i) == other->point(i);
        });
    return result;
}

bool haveSameCells(const Domain& a, const Domain& b)
{
    const auto* const left = dynamic_cast<const CellComplex*>(&a);
    const auto* const right = dynamic_cast<const CellComplex*>(&b);
    if (left == nullptr || right == nullptr)
        return left == right;
    bool result = left->numCells() == right->numCells();
    for (std::size_t i = 0; result && i < left->numCells(); ++i)
    {
        const Cell cell = left->cell(i);
        const Cell other = right->cell(i);
        result = cell.type() == other.type() &&
                 std::ranges::equal(cell.pointIndices(), other.pointIndices());
    }
    return result;
}

class RoundTrip : public TemporaryFolderTest
{
protected:
    /// Writes the function under each extension that suits it, and looks whether it comes back.
    template<typename T>
    void expectToComeBack(const Function<T>& function)
    {
        auto extensions = io::extensionsFor(*function.domain(), function.numTimeSteps());
        // Tables keep no grid; they have tests of their own.
        std::erase(extensions, ".csv");
        ASSERT_FALSE(extensions.empty());
        for (const std::string& extension : extensions)
        {
            SCOPED_TRACE(extension);
            const auto file = folder() / ("f" + extension);
            io::writeFunction(function, "f [m/s]", file, neverAbort);
            io::Loader loader([](const std::string& line) { ADD_FAILURE() << line; }, neverAbort);
            io::DataReference reference;
            reference.file = file;
            const auto loaded = loader.loadFunction(reference);
            const auto* const typed = dynamic_cast<const Function<T>*>(loaded.get());
            ASSERT_NE(typed, nullptr) << loaded->valueTypeName();
            EXPECT_EQ(typed->name(), "f [m/s]");
            const bool getsATime = function.timeSteps().empty() && extension == ".pvd";
            EXPECT_EQ(typed->timeSteps(),
                      getsATime ? std::vector<double>{0.0} : function.timeSteps());
            EXPECT_EQ(typed->domainPart(), function.domainPart());
            EXPECT_TRUE(areSame(*typed->values(), *function.values()));
            EXPECT_TRUE(haveSamePoints(*function.domain(), *typed->domain()));
            EXPECT_TRUE(haveSameCells(*function.domain(), *typed->domain()));
            if (extension == extensions.front())
            {
                EXPECT_TRUE(function.domain()->equals(*typed->domain()));
            }
        }
    }
};

TEST_F(RoundTrip, EveryValueTypeKeepsItsShape)
{
    visitTypes<ValueTypes>(
        [&]<typename T>()
        {
            SCOPED_TRACE(valueTypeName<T>());
            expectToComeBack(*awkwardFunction<T>(uniformGrid<2>()));
            expectToComeBack(*awkwardFunction<T>(uniformGrid<2>(), detail::Cells, {0.1, 0.3}));
            return false;
        });
}

TEST_F(RoundTrip, EveryKindOfGridKeepsItsPointsAndCells)
{
    const std::vector<std::pair<std::string, std::shared_ptr<const Domain>>> domains{
        {"uniform 1-D", uniformGrid<1>()},
        {"uniform 2-D", uniformGrid<2>()},
        {"uniform 3-D", uniformGrid<3>()},
        {"oriented", orientedGrid()},
        {"rectilinear 1-D", rectilinearGrid<1>()},
        {"rectilinear 2-D", rectilinearGrid<2>()},
        {"rectilinear 3-D", rectilinearGrid<3>()},
        {"curvilinear 1-D", curvilinearGrid<1>()},
        {"curvilinear 2-D", curvilinearGrid<2>()},
        {"curvilinear 3-D", curvilinearGrid<3>()},
        {"lines 1-D", oneCellOfEach<1>({CellType::Lines, CellType::QuadraticLine})},
        {"flat", oneCellOfEach<2>(
                     {CellType::Points, CellType::Lines, CellType::Quads, CellType::Triangles})},
        {"all linear", oneCellOfEach<3>({CellType::Hexahedra, CellType::Points, CellType::Prisms,
                                         CellType::Pyramids, CellType::Tetrahedra,
                                         CellType::Invalid, CellType::Lines})},
        {"all quadratic",
         oneCellOfEach<3>({CellType::QuadraticTriangle, CellType::QuadraticQuad,
                           CellType::QuadraticTetrahedron, CellType::QuadraticHexahedron,
                           CellType::QuadraticPyramid, CellType::QuadraticPrism,
                           CellType::BiquadraticQuad, CellType::TriquadraticHexahedron})},
    };
    for (const auto& [name, domain] : domains)
    {
        SCOPED_TRACE(name);
        for (const std::vector<double>& times : {std::vector<double>{}, {1.0 / 3.0}, {-1.0, 1e-7}})
        {
            expectToComeBack(*awkwardFunction<Vector3>(domain, PointSetBase::Points, times));
            expectToComeBack(*awkwardFunction<Scalar>(domain, detail::Cells, times));
        }
    }
}

TEST_F(RoundTrip, RealDataStaysWhatItIs)
{
    const auto data = realDataFolder();
    if (!data)
        GTEST_SKIP() << "TAVRIN_TEST_DATA is not set";
    for (const std::string name :
         {"storm.vti", "rectgrid2.vtk", "combustor.vts", "darcy_anisotropy.vtu", "disk_slice.vtk",
          "cylinder_quadratic.vtk", "surface_wind_1987.vti", "bunny.vtp", "ccx_zoo/ccx_zoo.pvd"})
    {
        SCOPED_TRACE(name);
        io::Loader loader([](const std::string&) {}, neverAbort);
        io::DataReference reference;
        reference.file = *data / name;
        for (const auto& array : loader.inspect(reference).arrays)
        {
            SCOPED_TRACE(array.name);
            reference.array = array.name;
            reference.on = array.association;
            visitFunction<ValueTypes>(*loader.loadFunction(reference),
                                      [&](const auto& function) { expectToComeBack(function); });
        }
    }
}

TEST_F(RoundTrip, PointCloudsStayWithoutCells)
{
    expectToComeBack(*awkwardFunction<Vector2>(pointCloud<1>()));
    expectToComeBack(*awkwardFunction<Vector2>(pointCloud<2>()));
    expectToComeBack(*awkwardFunction<Matrix3>(pointCloud<3>(), PointSetBase::Points, {1.0, 2.0}));
}

TEST_F(RoundTrip, MasksComeBackAsTheValidityOfValues)
{
    const auto grid = uniformGrid<2>();
    const std::size_t count = grid->numElements(PointSetBase::Points);
    for (const std::vector<double>& times : {std::vector<double>{}, std::vector<double>{1.0, 2.0}})
    {
        const std::size_t steps = std::max<std::size_t>(1, times.size());
        auto validity = std::make_shared<ValidityMask>(steps * count);
        for (std::size_t i = 0; i < validity->size(); ++i)
            (*validity)[i] = i % 3 == 0 ? 0 : 1;
        const auto function =
            addData(grid, PointSetBase::Points, std::vector<Scalar>(steps * count, Scalar(2.0)),
                    Precision::Float64, times, "f", validity);
        expectToComeBack(*function);

        const auto file = folder() / "marked.pvd";
        io::writeFunction(*function, "f", file, neverAbort);
        io::Loader loader([](const std::string& line) { ADD_FAILURE() << line; }, neverAbort);
        EXPECT_EQ(loader.inspect(io::DataReference::parse(file.string())).arrays.size(), 2U);
        EXPECT_EQ(*loader.loadFunction(io::DataReference::parse(file.string()))->validity(),
                  *validity);
        const auto marks = std::dynamic_pointer_cast<const Function<Scalar>>(
            loader.loadFunction(io::DataReference::parse(file.string() + "#vtkValidPointMask")));
        ASSERT_NE(marks, nullptr);
        EXPECT_EQ(marks->values()->precision(), Precision::UInt8);
        for (std::size_t i = 0; i < validity->size(); ++i)
            ASSERT_EQ((*marks->values())[i], Scalar((*validity)[i]));

        // Values that are written with the name of the mask are not replaced by it.
        io::writeFunction(*function, "vtkValidPointMask", file, neverAbort);
        io::Loader again([](const std::string& line) { ADD_FAILURE() << line; }, neverAbort);
        const auto values =
            again.loadFunction(io::DataReference::parse(file.string() + "#vtkValidPointMask"));
        EXPECT_EQ(values->values()->precision(), Precision::Float64);
    }
}

}
