#include <support/abortFlags.hpp>
#include <support/smallData.hpp>

#include <tavrin/domain/CurvilinearGrid.hpp>
#include <tavrin/domain/RectilinearGrid.hpp>
#include <tavrin/domain/Subdomain.hpp>
#include <tavrin/domain/UniformGrid.hpp>
#include <tavrin/domain/UnstructuredGrid.hpp>
#include <tavrin/field/BatchEvaluator.hpp>
#include <tavrin/field/Field.hpp>
#include <tavrin/field/SpatialFunctionField.hpp>
#include <tavrin/value/SeriesValueArray.hpp>
#include <tavrin/value/WrappedValueArray.hpp>

#include <gtest/gtest.h>

#include <random>

namespace
{

using namespace support;
using namespace tavrin;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

template<std::size_t D>
using Grid = std::shared_ptr<const EmbeddedCellComplex<D>>;

template<std::size_t D>
Grid<D> uniformGrid()
{
    typename UniformGrid<D>::Layout layout;
    for (std::size_t i = 0; i < D; ++i)
    {
        layout.size[i] = 4 + i;
        layout.origin[i] = -0.5;
        layout.spacing[i] = 2.0 / static_cast<double>(3 + i);
    }
    return std::make_shared<UniformGrid<D>>(layout);
}

template<std::size_t D>
Grid<D> rectilinearGrid()
{
    typename RectilinearGrid<D>::Coordinates coordinates;
    for (auto& axis : coordinates)
        axis = {-0.5, -0.1, 0.7, 0.75, 1.5};
    return std::make_shared<RectilinearGrid<D>>(coordinates);
}

template<std::size_t D>
std::shared_ptr<const ValueArray<Tensor<double, D>>> pointsOf(const PointSet<D>& set)
{
    std::vector<Tensor<double, D>> points(set.numPoints());
    for (std::size_t i = 0; i < points.size(); ++i)
        points[i] = set.point(i);
    return stored(std::move(points));
}

/// The uniform grid with stored points.
template<std::size_t D>
Grid<D> curvilinearGrid()
{
    const auto uniform = uniformGrid<D>();
    return std::make_shared<CurvilinearGrid<D>>(
        dynamic_cast<const UniformGrid<D>&>(*uniform).size(), pointsOf(*uniform));
}

/// The cells of the uniform grid, listed.
template<std::size_t D>
Grid<D> unstructuredGrid()
{
    const auto uniform = uniformGrid<D>();
    std::vector<std::int64_t> offsets{0};
    std::vector<std::int64_t> connectivity;
    std::vector<CellType> types;
    for (std::size_t i = 0; i < uniform->numCells(); ++i)
    {
        const Cell cell = uniform->cell(i);
        for (const std::size_t point : cell.pointIndices())
            connectivity.push_back(static_cast<std::int64_t>(point));
        offsets.push_back(static_cast<std::int64_t>(connectivity.size()));
        types.push_back(uniform->cellType(i));
    }
    return std::make_shared<UnstructuredGrid<D>>(
        pointsOf(*uniform),
        CellTable{types, IndexArray(std::move(offsets)), IndexArray(std::move(connectivity))});
}

/// Component c is linear in the position.
template<typename T, std::size_t D>
T linear(const Tensor<double, D>& position)
{
    T value;
    for (std::size_t c = 0; c < T::size; ++c)
    {
        value[c] = 0.5 + static_cast<double>(c);
        for (std::size_t i = 0; i < D; ++i)
            value[c] += static_cast<double>((c + 1) * (i + 1)) * position[i];
    }
    return value;
}

/// The values of the linear formula at the points, as numbers of another type.
template<typename T, typename Stored, std::size_t D>
std::shared_ptr<const Function<T>> linearFunction(const Grid<D>& grid)
{
    auto numbers = std::make_shared<std::vector<Stored>>();
    for (std::size_t i = 0; i < grid->numPoints(); ++i)
        for (const double component : linear<T>(grid->point(i)))
            numbers->push_back(static_cast<Stored>(component));
    const Stored* const data = numbers->data();
    return std::make_shared<const Function<T>>(
        grid, PointSetBase::Points,
        std::make_shared<WrappedValueArray<T, Stored>>(data, grid->numPoints(), T::size, numbers),
        std::vector<double>{});
}

template<typename T, std::size_t D>
std::shared_ptr<const Field<D, T>> fieldOf(const std::shared_ptr<const Function<T>>& function)
{
    return Field<D, T>::applyTo(*function);
}

template<typename T, typename Stored, std::size_t D>
void expectLinear(const Grid<D>& grid, double tolerance)
{
    const auto field = fieldOf<T, D>(linearFunction<T, Stored>(grid));
    ASSERT_NE(field, nullptr);
    const auto evaluator = field->makeEvaluator();
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> coordinate(-0.75, 1.75);
    for (int sample = 0; sample < 500; ++sample)
    {
        Tensor<double, D> position;
        bool isInside = true;
        for (double& x : position)
        {
            x = coordinate(random);
            isInside = isInside && x >= -0.5 && x <= 1.5;
        }
        evaluator->reset(0.0, position);
        ASSERT_EQ(evaluator->isValid(), isInside) << position;
        if (!isInside)
            continue;
        const T difference = evaluator->value() - linear<T>(position);
        ASSERT_LT(norm(difference), tolerance) << position;
    }
}

template<typename Dimension>
class GridField : public testing::Test
{};
using Dimensions =
    testing::Types<std::integral_constant<std::size_t, 1>, std::integral_constant<std::size_t, 2>,
                   std::integral_constant<std::size_t, 3>>;
TYPED_TEST_SUITE(GridField, Dimensions);

TYPED_TEST(GridField, InterpolatesLinearValuesExactly)
{
    constexpr std::size_t D = TypeParam::value;
    for (const Grid<D>& grid :
         {uniformGrid<D>(), rectilinearGrid<D>(), curvilinearGrid<D>(), unstructuredGrid<D>()})
    {
        SCOPED_TRACE(nameOf(grid->structuringType()));
        expectLinear<Scalar, double>(grid, 1e-13);
        expectLinear<Matrix2, double>(grid, 1e-12);
        expectLinear<Vector3, float>(grid, 1e-5);
    }
}

TYPED_TEST(GridField, HasTheValueOfTheCellAllOverIt)
{
    constexpr std::size_t D = TypeParam::value;
    for (const Grid<D>& grid :
         {uniformGrid<D>(), rectilinearGrid<D>(), curvilinearGrid<D>(), unstructuredGrid<D>()})
    {
        std::vector<Scalar> numbers;
        for (std::size_t i = 0; i < grid->numCells(); ++i)
            numbers.emplace_back(static_cast<double>(i));
        const auto field = fieldOf<Scalar, D>(
            addData(grid, detail::Cells, std::move(numbers), Precision::Float64, {}));
        const auto evaluator = field->makeEvaluator();
        for (std::size_t i = 0; i < grid->numCells(); ++i)
        {
            Tensor<double, D> middle{};
            const Cell cell = grid->cell(i);
            for (const std::size_t point : cell.pointIndices())
                middle += grid->point(point) / static_cast<double>(cell.numVertices());
            evaluator->reset(0.0, middle);
            ASSERT_TRUE(evaluator->isValid());
            ASSERT_EQ(evaluator->value(), Scalar(static_cast<double>(i)));
        }
        // The last vertex but one belongs to other cells, too, of which the first answers.
        evaluator->reset(0.0, grid->point(grid->cell(0).pointIndex(1)));
        EXPECT_EQ(evaluator->value(), Scalar(0.0));
    }
}

/// Two unit cells on a line, from `origin` on.
std::shared_ptr<const Function<Scalar>> onLine(double origin, std::vector<Scalar> values,
                                               std::vector<double> times = {})
{
    return addData(std::make_shared<UniformGrid<1>>(UniformGrid<1>::Layout{
                       .size = {3, 1, 1}, .origin = {origin}, .spacing = {1.0}}),
                   PointSetBase::Points, std::move(values), Precision::Float64, std::move(times));
}

/// The value at a position, or NaN where there is none.
double valueAt(FieldEvaluator<1, Scalar>& evaluator, double time, double x)
{
    evaluator.reset(time, Vector1(x));
    return evaluator.isValid() ? evaluator.value()[0] : nan;
}

TEST(Field, IsMadeOfObjectsOfItsOwnTypeOnly)
{
    const auto grid = uniformGrid<2>();
    const auto function = linearFunction<Vector2, double>(grid);
    EXPECT_NE((Field<2, Vector2>::applyTo(*function)), nullptr);
    EXPECT_EQ((Field<2, Vector3>::applyTo(*function)), nullptr);
    EXPECT_EQ((Field<3, Vector2>::applyTo(*function)), nullptr);
    EXPECT_EQ((Field<2, Vector2>::applyTo(*grid)), nullptr);

    const auto cloud = std::make_shared<PointCloud<2>>(pointsOf(*grid));
    const auto onCloud = addData(cloud, PointSetBase::Points,
                                 std::vector<Vector2>(cloud->numPoints()), Precision::Float64, {});
    EXPECT_EQ((Field<2, Vector2>::applyTo(*onCloud)), nullptr);
    const auto part =
        std::make_shared<Subdomain>(grid, PointSetBase::Points, std::vector<std::size_t>{0});
    const auto onPart =
        addData(part, PointSetBase::Points, std::vector<Vector2>(1), Precision::Float64, {});
    EXPECT_EQ((Field<2, Vector2>::applyTo(*onPart)), nullptr);

    const auto bundle = [](DataObjectBundle::Members members)
    { return Field<2, Vector2>::applyTo(DataObjectBundle(std::move(members))); };
    EXPECT_NE(bundle({function}), nullptr);
    EXPECT_NE(bundle({function, function}), nullptr);
    EXPECT_EQ(bundle({}), nullptr);
    EXPECT_EQ(bundle({function, onCloud}), nullptr);
    EXPECT_EQ(bundle({linearFunction<Vector3, double>(grid), function}), nullptr);
    EXPECT_EQ(bundle({function, linearFunction<Vector2, double>(uniformGrid<3>())}), nullptr);

    const auto field = Field<2, Vector2>::applyTo(*function);
    EXPECT_EQ((Field<2, Vector2>::applyTo(*field)), field);
    EXPECT_EQ((Field<2, Scalar>::applyTo(*field)), nullptr);
    EXPECT_NE(bundle({field, function}), nullptr);
}

TEST(Field, OutlivesTheObjectItIsMadeOf)
{
    auto function = onLine(0.0, {1.0, 2.0, 3.0});
    const auto field = Field<1, Scalar>::applyTo(*function);
    function.reset();
    EXPECT_EQ(valueAt(*field->makeEvaluator(), 0.0, 1.5), 2.5);
}

TEST(Field, OfABundleIsAnsweredByTheFirstMemberThatIsValid)
{
    const DataObjectBundle bundle({onLine(0.0, {0.0, 1.0, 2.0}), onLine(1.0, {10.0, 20.0, 30.0}),
                                   onLine(5.0, {5.0, 5.0, 5.0, 7.0, 7.0, 7.0}, {1.0, 3.0})});
    const auto field = Field<1, Scalar>::applyTo(bundle);
    const auto evaluator = field->makeEvaluator();
    EXPECT_EQ(valueAt(*evaluator, 0.0, 2.5), 25.0);
    EXPECT_EQ(valueAt(*evaluator, 0.0, 1.5), 1.5);
    EXPECT_EQ(valueAt(*evaluator, 0.0, 2.0), 2.0);
    EXPECT_TRUE(std::isnan(valueAt(*evaluator, 0.0, 4.0)));
    EXPECT_TRUE(std::isnan(valueAt(*evaluator, 0.0, 6.0)));
    EXPECT_EQ(valueAt(*evaluator, 2.0, 6.0), 6.0);
    EXPECT_EQ(field->boundingBox()[0], std::pair(0.0, 7.0));
    EXPECT_TRUE(field->timeRange().contains(-1e300));
}

/// A function on the points of a grid with arbitrary values at some times.
std::shared_ptr<const Function<Vector2>> arbitrary(const Grid<3>& grid, std::vector<double> times)
{
    std::vector<Vector2> values;
    for (std::size_t i = 0; i < grid->numPoints() * times.size(); ++i)
        values.emplace_back(std::sin(static_cast<double>(i)), std::cos(static_cast<double>(7 * i)));
    return std::make_shared<Function<Vector2>>(grid, PointSetBase::Points,
                                               stored(std::move(values)), std::move(times), "v");
}

TEST(Field, GivesManyPositionsAtOnceWhatItGivesOneByOne)
{
    const auto early = arbitrary(uniformGrid<3>(), {0.0, 1.0});
    const auto late = arbitrary(curvilinearGrid<3>(), {0.5, 1.5, 2.0});
    const auto members = std::make_shared<DataObjectBundle>(DataObjectBundle::Members{early, late});
    std::mt19937 random(5);
    std::uniform_real_distribution<double> coordinate(-0.8, 1.8);
    std::vector<Vector3> positions;
    for (int i = 0; i < 100; ++i)
        positions.emplace_back(coordinate(random), coordinate(random), coordinate(random));
    for (const std::shared_ptr<const DataObject>& object :
         std::initializer_list<std::shared_ptr<const DataObject>>{early, late, members})
    {
        const auto field = Field<3, Vector2>::applyTo(*object);
        const auto one = field->makeEvaluator();
        const auto many = field->makeBatchEvaluator();
        const auto prepared = many->prepare(positions);
        EXPECT_EQ(prepared != nullptr, object == late);
        std::vector<Vector2> values(positions.size());
        std::vector<std::uint8_t> isValid(positions.size());
        for (const double time : {1.0, 0.25, -1.0, 1.75, 3.0})
            for (const bool isPrepared : {false, true})
            {
                if (isPrepared && prepared != nullptr)
                    many->evaluate(time, *prepared, 0, positions.size(), values.data(),
                                   isValid.data(), neverAbort);
                else
                    many->evaluate(time, positions, values.data(), isValid.data(), neverAbort);
                for (std::size_t k = 0; k < positions.size(); ++k)
                {
                    one->reset(time, positions[k]);
                    ASSERT_EQ(isValid[k] != 0, one->isValid());
                    EXPECT_EQ(values[k], one->isValid() ? one->value() : Vector2{});
                }
            }
    }
}

TEST(Field, HasNoValueWhereTheMaskOfTheFunctionLeavesAGap)
{
    // Two steps of four values; the third value of the first step and the last of both are gaps.
    const auto mask = std::make_shared<const ValidityMask>(ValidityMask{1, 1, 0, 0, 1, 1, 1, 0});
    const auto marksOf = [&](std::shared_ptr<const Domain> line, const DomainPart& part,
                             double time, std::vector<Tensor<double, 1>> positions)
    {
        const auto field =
            Field<1, Scalar>::applyTo(*addData(std::move(line), part, std::vector<Scalar>(8, 2.0),
                                               Precision::Float64, {0.0, 1.0}, {}, mask));
        const auto evaluator = field->makeEvaluator();
        const auto batches = field->makeBatchEvaluator();
        std::vector<Scalar> values(positions.size());
        std::vector<std::uint8_t> marks(positions.size());
        batches->evaluate(time, positions, values.data(), marks.data(), neverAbort);
        for (std::size_t k = 0; k < positions.size(); ++k)
        {
            evaluator->reset(time, positions[k]);
            EXPECT_EQ(evaluator->isValid(), marks[k] != 0) << positions[k];
            EXPECT_EQ(values[k], Scalar(marks[k] != 0 ? 2.0 : 0.0)) << positions[k];
        }
        return marks;
    };
    using Marks = std::vector<std::uint8_t>;
    const auto points = PointSetBase::Points;
    EXPECT_EQ(marksOf(lineOf(4), points, 0.0, {{0.5}, {1.0}, {1.5}, {2.5}}), (Marks{1, 1, 0, 0}));
    EXPECT_EQ(marksOf(lineOf(4), points, 1.0, {{0.5}, {1.5}, {2.0}, {2.5}}), (Marks{1, 1, 1, 0}));
    EXPECT_EQ(marksOf(lineOf(4), points, 0.5, {{0.5}, {1.5}}), (Marks{1, 0}));
    EXPECT_EQ(marksOf(lineOf(5), detail::Cells, 0.0, {{0.5}, {2.5}, {3.5}}), (Marks{1, 0, 0}));
}

TEST(Field, IsInterpolatedBetweenSteps)
{
    const auto field = Field<1, Scalar>::applyTo(
        *onLine(0.0, {0.0, 2.0, 4.0, 10.0, 12.0, 14.0, nan, nan, nan}, {1.0, 2.0, 4.0}));
    const auto evaluator = field->makeEvaluator();
    EXPECT_FALSE(evaluator->isValid());
    EXPECT_TRUE(std::isnan(valueAt(*evaluator, std::nextafter(1.0, 0.0), 0.5)));
    EXPECT_EQ(valueAt(*evaluator, 1.0, 0.5), 1.0);
    EXPECT_EQ(valueAt(*evaluator, 1.25, 0.5), 3.5);
    EXPECT_EQ(valueAt(*evaluator, 1.25, 1.5), 5.5);
    // At the time of a step no other step takes part.
    EXPECT_EQ(valueAt(*evaluator, 2.0, 1.5), 13.0);
    EXPECT_TRUE(std::isnan(valueAt(*evaluator, 3.0, 1.5)));
    EXPECT_TRUE(evaluator->isValid());
    EXPECT_TRUE(std::isnan(valueAt(*evaluator, 4.5, 1.5)));
    EXPECT_FALSE(evaluator->isValid());
    EXPECT_EQ(valueAt(*evaluator, 1.0, 1.5), 3.0);
    EXPECT_TRUE(std::isnan(valueAt(*evaluator, nan, 1.5)));
    EXPECT_EQ(field->timeRange().first, 1.0);
    EXPECT_EQ(field->timeRange().last, 4.0);
}

TEST(Field, ThatIsSteadyHasItsValuesAtEveryTime)
{
    const auto field = Field<1, Scalar>::applyTo(*onLine(0.0, {0.0, 2.0, 4.0}, {5.0}));
    const auto evaluator = field->makeEvaluator();
    for (const double time : {-1e300, 0.0, 5.0, 1e300})
        EXPECT_EQ(valueAt(*evaluator, time, 0.5), 1.0);
}

TEST(Field, IsNotSpoiltByValuesThatDoNotCount)
{
    const auto field = Field<1, Scalar>::applyTo(*onLine(0.0, {1.0, 2.0, nan}));
    const auto evaluator = field->makeEvaluator();
    EXPECT_EQ(valueAt(*evaluator, 0.0, 1.0), 2.0);
    EXPECT_EQ(valueAt(*evaluator, 0.0, 0.5), 1.5);
    EXPECT_TRUE(std::isnan(valueAt(*evaluator, 0.0, 1.5)));
    EXPECT_TRUE(std::isnan(valueAt(*evaluator, 0.0, nan)));
    EXPECT_FALSE(evaluator->isValid());
}

TEST(Field, OfASeriesLoadsNothingButTheStepsItNeedsAndLetsThemGo)
{
    std::vector<std::weak_ptr<const ValueArray<Scalar>>> loaded;
    std::vector<std::size_t> numbers;
    const auto liveSteps = [&]
    { return std::ranges::count_if(loaded, [](const auto& step) { return !step.expired(); }); };
    const auto load = [&](std::size_t step)
    {
        // A step must be released before another one is loaded.
        EXPECT_LE(liveSteps(), 1);
        const double value = static_cast<double>(step);
        auto values = std::make_shared<DefaultValueArray<Scalar>>(
            std::vector<Scalar>{value, value, value}, Precision::Float64);
        loaded.push_back(values);
        numbers.push_back(step);
        return values;
    };
    const auto domain = onLine(0.0, {0.0, 0.0, 0.0})->domain();
    const auto function = std::make_shared<const Function<Scalar>>(
        domain, PointSetBase::Points,
        std::make_shared<SeriesValueArray<Scalar>>(Precision::Float64, 6, 3, load),
        std::vector<double>{0.0, 1.0, 2.0, 3.0, 4.0, 5.0});
    const auto field = Field<1, Scalar>::applyTo(*function);
    const auto evaluator = field->makeEvaluator();
    EXPECT_TRUE(numbers.empty());
    for (const double time : {1.5, 1.75, 2.0, 2.5, 4.5, 5.0, 0.5})
        EXPECT_EQ(valueAt(*evaluator, time, 0.5), time);
    EXPECT_EQ(numbers, (std::vector<std::size_t>{1, 2, 3, 4, 5, 0, 1}));
    evaluator->release();
    EXPECT_FALSE(evaluator->isValid());
    EXPECT_EQ(valueAt(*evaluator, 0.5, 0.5), 0.5);
    EXPECT_EQ(numbers.size(), 7U);
}

TEST(SpatialFunctionField, HasTheValueOfItsFormulaEverywhere)
{
    const auto field = std::make_shared<const SpatialFunctionField<2, Vector2>>(
        [](const Vector2& position, double time) { return position * time; }, "flow");
    const auto evaluator = field->makeEvaluator();
    EXPECT_FALSE(evaluator->isValid());
    evaluator->reset(2.0, Vector2(1e9, -3.0));
    EXPECT_TRUE(evaluator->isValid());
    EXPECT_EQ(evaluator->value(), Vector2(2e9, -6.0));
    EXPECT_EQ(field->name(), "flow");
    EXPECT_EQ(field->valueTypeName(), "2-D Vector");
    EXPECT_TRUE(std::isinf(field->boundingBox()[1].second));
    EXPECT_TRUE(field->isA(FieldBase::classTypeId()));
    EXPECT_EQ((Field<2, Vector2>::classTypeId().name()), "Field");
}

}
