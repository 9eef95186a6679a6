#include "ReaderSamples.hpp"

#include <tavrin/field/Field.hpp>
#include <tavrin/location/locatorOf.hpp>

#include <nlohmann/json.hpp>

#include <vtkCellData.h>
#include <vtkDataArray.h>
#include <vtkDataSet.h>
#include <vtkGenericCell.h>
#include <vtkGenericDataObjectReader.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkXMLGenericDataObjectReader.h>

#include <random>

/// Samples of real files beside those of VTK, which reads the files itself.
///
/// The position of a sample is made by VTK's shape functions from reference coordinates that are
/// chosen. So its exact value is known, and where both sides differ it says who is right.
namespace
{

using namespace samples;

/// Of the largest difference between numbers of a field.
constexpr double tolerance = 1e-9;

/// A position inside a cell.
struct Probe
{
    vtkIdType cell;
    int cellType;
    Vector3 position;
    /// Those of the cell's points at the chosen reference coordinates.
    std::vector<double> weights;
};

/// VTK computes the reference coordinates of a position in these cells; in others it iterates, and
/// ends with steps that may still count.
bool isInvertedDirectly(int cellType)
{
    return cellType == VTK_VOXEL || cellType == VTK_PIXEL || cellType == VTK_TETRA ||
           cellType == VTK_TRIANGLE || cellType == VTK_LINE;
}

vtkSmartPointer<vtkDataSet> readByVtk(const std::filesystem::path& file)
{
    const auto read = [&](auto* reader)
    {
        reader->SetFileName(file.c_str());
        reader->Update();
        return vtkSmartPointer<vtkDataSet>(vtkDataSet::SafeDownCast(reader->GetOutput()));
    };
    if (file.extension() != ".vtk")
        return read(vtkNew<vtkXMLGenericDataObjectReader>().Get());
    vtkNew<vtkGenericDataObjectReader> reader;
    reader->ReadAllScalarsOn();
    reader->ReadAllVectorsOn();
    reader->ReadAllTensorsOn();
    reader->ReadAllFieldsOn();
    return read(reader.Get());
}

/// A few thousand positions, several in each of many cells.
std::vector<Probe> probesIn(vtkDataSet& dataSet)
{
    constexpr vtkIdType mostCells = 700;
    constexpr int perCell = 5;
    std::mt19937_64 random(4);
    std::uniform_real_distribution<double> share(0.05, 1.0);
    std::vector<Probe> probes;
    vtkNew<vtkGenericCell> cell;
    vtkNew<vtkGenericCell> wellFormed;
    const vtkIdType step = 1 + (dataSet.GetNumberOfCells() - 1) / mostCells;
    for (vtkIdType i = 0; i < dataSet.GetNumberOfCells(); i += step)
    {
        dataSet.GetCell(i, cell);
        if (cell->GetCellDimension() == 0)
            continue;
        // A cell of a file may list more points than count.
        wellFormed->SetCellType(cell->GetCellType());
        const vtkIdType numPoints = wellFormed->GetNumberOfPoints();
        for (int n = 0; n < perCell; ++n)
        {
            // Between the reference coordinates of all points is the inside of every cell.
            Vector3 at{};
            double sum = 0.0;
            for (vtkIdType k = 0; k < numPoints; ++k)
            {
                const double weight = share(random);
                sum += weight;
                for (int axis = 0; axis < 3; ++axis)
                    at[axis] += weight * cell->GetParametricCoords()[3 * k + axis];
            }
            at = at * (1.0 / sum);
            Probe probe{i, cell->GetCellType(), {}, {}};
            probe.weights.resize(static_cast<std::size_t>(numPoints));
            int part = 0;
            cell->EvaluateLocation(part, at.begin(), probe.position.begin(), probe.weights.data());
            probes.push_back(std::move(probe));
        }
    }
    return probes;
}

/// The tuples of a VTK array as values of type T.
template<typename T>
T tupleOf(vtkDataArray& array, vtkIdType index)
{
    std::vector<double> components(static_cast<std::size_t>(array.GetNumberOfComponents()));
    array.GetTuple(index, components.data());
    // The symmetric matrix XX YY ZZ XY YZ XZ.
    if (const auto c = components; c.size() == 6 && T::size == 9)
        components = {c[0], c[3], c[5], c[3], c[1], c[4], c[5], c[4], c[2]};
    T value{};
    std::copy_n(components.begin(), T::size, value.begin());
    return value;
}

/// How far samples of one array lie apart, as shares of its span.
struct Differences
{
    std::size_t samples = 0;
    /// Samples for which both sides take different cells.
    std::size_t elsewhere = 0;
    double ownFromExact = 0.0;
    double vtkFromExact = 0.0;
    /// Where VTK needs no iterations.
    double ownFromVtk = 0.0;
};

class Comparison
{
public:
    Comparison(vtkDataSet& dataSet, const std::vector<Probe>& probes)
        : mDataSet(dataSet), mProbes(probes)
    {
    }

    template<std::size_t D, typename T>
    Differences compare(const Function<T>& function, Association association) const
    {
        const bool isOnPoints = association == Association::Points;
        vtkDataSetAttributes* const attributes =
            isOnPoints ? static_cast<vtkDataSetAttributes*>(mDataSet.GetPointData())
                       : mDataSet.GetCellData();
        vtkDataArray& array = *attributes->GetArray(function.name().c_str());
        const double span = spanOf(array);
        const auto& grid = dynamic_cast<const EmbeddedCellComplex<D>&>(*function.domain());
        const auto field = Field<D, T>::applyTo(function);
        const auto evaluator = field->makeEvaluator();
        typename CellLocator<D>::Hint hint;
        vtkNew<vtkGenericCell> cell;
        Differences result;
        for (const Probe& probe : mProbes)
        {
            Tensor<double, D> position;
            std::copy_n(probe.position.begin(), D, position.begin());
            Location location;
            evaluator->reset(0.0, position);
            std::uint8_t isInside = 0;
            locatorOf(grid).locate(std::span(&position, 1), &location, &isInside, hint);
            EXPECT_TRUE(isInside != 0 && evaluator->isValid());
            if (isInside == 0)
                continue;
            ++result.samples;
            if (location.cell != static_cast<std::size_t>(probe.cell))
            {
                ++result.elsewhere;
                continue;
            }
            mDataSet.GetCell(probe.cell, cell);
            const auto sampleWith = [&](const std::vector<double>& weights)
            {
                T value{};
                for (int k = 0; k < static_cast<int>(weights.size()) && isOnPoints; ++k)
                    value += weights[static_cast<std::size_t>(k)] *
                             tupleOf<T>(array, cell->GetPointId(k));
                return isOnPoints ? value : tupleOf<T>(array, probe.cell);
            };
            std::vector<double> found(probe.weights.size());
            Vector3 at;
            Vector3 closest;
            double distance = 0.0;
            int part = 0;
            cell->EvaluatePosition(probe.position.begin(), closest.begin(), part, at.begin(),
                                   distance, found.data());
            const T own = evaluator->value();
            const T exact = sampleWith(probe.weights);
            const T vtk = sampleWith(found);
            raise(result.ownFromExact, own, exact, span);
            raise(result.vtkFromExact, vtk, exact, span);
            if (isInvertedDirectly(probe.cellType))
                raise(result.ownFromVtk, own, vtk, span);
        }
        return result;
    }

private:
    /// The largest difference between two numbers of an array, or their size where all are equal.
    static double spanOf(vtkDataArray& array)
    {
        double lowest = std::numeric_limits<double>::infinity();
        double highest = -lowest;
        for (int component = 0; component < array.GetNumberOfComponents(); ++component)
        {
            double range[2];
            array.GetFiniteRange(range, component);
            lowest = std::min(lowest, range[0]);
            highest = std::max(highest, range[1]);
        }
        return highest > lowest ? highest - lowest : std::abs(highest);
    }

    /// Numbers that are none are equal.
    template<typename T>
    static void raise(double& largest, const T& a, const T& b, double span)
    {
        for (std::size_t i = 0; i < T::size; ++i)
            if (!(a[i] == b[i]) && !(std::isnan(a[i]) && std::isnan(b[i])))
            {
                const double share = std::abs(a[i] - b[i]) / span;
                largest = std::isnan(share) ? std::numeric_limits<double>::infinity()
                                            : std::max(largest, share);
            }
    }

    vtkDataSet& mDataSet;
    const std::vector<Probe>& mProbes;
};

class SampleAgreement : public RealFilesTest
{
protected:
    /// Those of every array of the file.
    std::vector<std::pair<std::string, Differences>> differencesIn(const std::string& name)
    {
        const auto dataSet = readByVtk(data() / name);
        const auto probes = probesIn(*dataSet);
        const Comparison comparison(*dataSet, probes);
        std::vector<std::pair<std::string, Differences>> result;
        DataReference reference;
        reference.file = data() / name;
        for (const FileInfo::Array& array : loader().inspect(reference).arrays)
        {
            reference.array = array.name;
            reference.on = array.association;
            const auto function = loader().loadFunction(reference);
            const auto add = [&]<std::size_t D>()
            {
                visitFunction<TypeList<Scalar, Vector2, Vector3, Matrix3>>(
                    *function,
                    [&]<typename T>(const Function<T>& typed) {
                        result.emplace_back(array.name, comparison.template compare<D, T>(
                                                            typed, array.association));
                    });
            };
            if (dynamic_cast<const EmbeddedCellComplex<2>*>(function->domain().get()) != nullptr)
                add.template operator()<2>();
            else
                add.template operator()<3>();
        }
        return result;
    }
};

TEST_F(SampleAgreement, IsExactInsideTheCellsOfRealFiles)
{
    const auto facts = nlohmann::json::parse(std::ifstream(data() / "facts.json"));
    for (const auto& [name, fact] : facts.items())
        for (const auto& [array, differences] : differencesIn(name))
        {
            SCOPED_TRACE(name + "#" + array);
            EXPECT_GT(differences.samples, 100U);
            EXPECT_EQ(differences.elsewhere, 0U);
            EXPECT_LE(differences.ownFromExact, tolerance);
            EXPECT_LE(differences.ownFromVtk, tolerance);
        }
}

/// A slice that another program cut out of the hexahedra, and printed with six digits.
TEST_F(SampleAgreement, GivesTheValuesOfASlice)
{
    const auto functionOf = [&](const std::string& file)
    {
        DataReference reference;
        reference.file = data() / file;
        reference.array = "Temp";
        return std::dynamic_pointer_cast<const Function<Scalar>>(loader().loadFunction(reference));
    };
    const auto slice = functionOf("disk_slice.vtk");
    const auto field = Field<3, Scalar>::applyTo(*functionOf("disk_out_ref.vtu"));
    const auto evaluator = field->makeEvaluator();
    const auto& points = dynamic_cast<const PointSet<3>&>(*slice->domain());
    std::size_t compared = 0;
    for (std::size_t i = 0; i < points.numPoints(); ++i)
    {
        const Vector3 position = points.point(i);
        // The lowest row lies on the rim of the disk, where both grids differ.
        if (position[2] <= 1.0)
            continue;
        evaluator->reset(0.0, position);
        ASSERT_TRUE(evaluator->isValid());
        const double expected = (*slice->values())[i][0];
        EXPECT_NEAR(evaluator->value()[0], expected, 3e-6 * expected);
        ++compared;
    }
    EXPECT_GT(compared, 300U);
}

TEST_F(SampleAgreement, LeavesTheErrorToVtkInQuadraticCells)
{
    for (const auto& [array, differences] : differencesIn("cylinder_quadratic.vtk"))
        if (differences.vtkFromExact > 0.0)
        {
            EXPECT_GT(differences.vtkFromExact, 1e-6) << array;
            EXPECT_LE(differences.ownFromExact, 1e-12) << array;
        }
}

}
