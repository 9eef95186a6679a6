#include "AlgorithmTest.hpp"

#include <support/ThreadCount.hpp>
#include <support/captured.hpp>

#include <tavrin/value/SeriesValueArray.hpp>
#include <tavrin/value/WrappedValueArray.hpp>

#include <bit>
#include <limits>

namespace
{

using namespace support;
using namespace tavrin;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

class OperatorTest : public testing::Test
{
protected:
    OperatorTest()
    {
        run.setText("Scalar C", "1");
        run.setText("Scalar D", "1");
    }

    void prepare(const std::string& operation, double c, double d)
    {
        run.setDirectly("Operator", operation);
        run.setText("Scalar C", toText(c));
        run.setText("Scalar D", toText(d));
    }

    /// The result of an operation on one or two fields. Another type of result fails the test.
    template<typename Result>
    std::vector<Result> resultOf(const std::string& operation,
                                 std::shared_ptr<const FunctionBase> a,
                                 std::shared_ptr<const FunctionBase> b, double c = 1.0,
                                 double d = 1.0)
    {
        prepare(operation, c, d);
        run.connect("Field A", a);
        run.connect("Field B", b);
        run.execute(neverAbort);
        const auto result = std::dynamic_pointer_cast<const Function<Result>>(run.result("Field"));
        if (result == nullptr)
        {
            ADD_FAILURE() << operation << " gave no " << valueTypeName<Result>();
            return {};
        }
        return support::valuesOf<Result>(*result);
    }

    template<typename Result, typename A>
    Result unary(const std::string& operation, const A& a, double c = 1.0, double d = 1.0)
    {
        const auto values = resultOf<Result>(operation, fieldOf<A>({a}), nullptr, c, d);
        return values.empty() ? Result{} : values.front();
    }

    template<typename Result, typename A, typename B>
    Result binary(const std::string& operation, const A& a, const B& b, double c = 1.0,
                  double d = 1.0)
    {
        const auto domain = lineOf(1);
        const auto values =
            resultOf<Result>(operation, fieldOf<A>({a}, domain), fieldOf<B>({b}, domain), c, d);
        return values.empty() ? Result{} : values.front();
    }

    AlgorithmRun run{makeRun("Field/Tensor Field Operator")};
};

const char* const normOp = "Norm of Field A";
const char* const normalizeOp = "Normalized Field A";
const char* const traceOp = "Trace of Field A";
const char* const clipOp = "Clip Between C and D";
const char* const maskOp = "Mask Between C and D";
const char* const scaleOp = "Scale ( A * C )";
const char* const linearOp = "Linear Combine ( A*C+B*D )";
const char* const multiplyOp = "Multiply (A*B)*C";
const char* const maskTwoOp = "Mask Field 1 if Field 2 Between C and D";

const Matrix2 m2(1.0, 2.0, 3.0, 4.0);
const Matrix3 m3(1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 10.0);
const Matrix4 m4(2.0, 0.0, 0.0, 1.0, 0.0, 1.0, 0.0, 0.0, 0.0, 3.0, 1.0, 0.0, 0.0, 0.0, 0.0, 1.0);

TEST_F(OperatorTest, Norm)
{
    EXPECT_EQ(unary<Scalar>(normOp, Scalar(-2.0)), Scalar(2.0));
    EXPECT_EQ(unary<Scalar>(normOp, Vector2(3.0, -4.0)), Scalar(5.0));
    EXPECT_EQ(unary<Scalar>(normOp, Vector3(2.0, 3.0, 6.0)), Scalar(7.0));
    EXPECT_EQ(unary<Scalar>(normOp, Vector4(1.0, 1.0, 1.0, -1.0)), Scalar(2.0));
    EXPECT_EQ(unary<Scalar>(normOp, Matrix2(1.0, 2.0, 2.0, 4.0)), Scalar(5.0));
    EXPECT_EQ(unary<Scalar>(normOp, m3), Scalar(std::sqrt(304.0)));
    EXPECT_EQ(unary<Scalar>(normOp, m4), Scalar(std::sqrt(17.0)));
}

TEST_F(OperatorTest, Normalized)
{
    EXPECT_EQ(unary<Scalar>(normalizeOp, Scalar(-2.0)), Scalar(-1.0));
    EXPECT_EQ(unary<Scalar>(normalizeOp, Scalar(0.0)), Scalar(0.0));
    EXPECT_EQ(unary<Vector2>(normalizeOp, Vector2(3.0, -4.0)), Vector2(0.6, -0.8));
    EXPECT_EQ(unary<Vector3>(normalizeOp, Vector3{}), Vector3{});
    EXPECT_EQ(unary<Vector4>(normalizeOp, Vector4(0.0, 0.0, 0.0, 5.0)),
              Vector4(0.0, 0.0, 0.0, 1.0));
    EXPECT_EQ(unary<Matrix2>(normalizeOp, Matrix2(1.0, 2.0, 2.0, 4.0)),
              Matrix2(0.2, 0.4, 0.4, 0.8));
    EXPECT_EQ(unary<Matrix3>(normalizeOp, Matrix3{}), Matrix3{});
    EXPECT_NEAR(norm(unary<Matrix4>(normalizeOp, m4)), 1.0, 1e-15);
}

TEST_F(OperatorTest, TraceIsForMatrices)
{
    EXPECT_EQ(unary<Scalar>(traceOp, m2), Scalar(5.0));
    EXPECT_EQ(unary<Scalar>(traceOp, m3), Scalar(16.0));
    EXPECT_EQ(unary<Scalar>(traceOp, m4), Scalar(5.0));
    const auto refusal = [&](std::shared_ptr<const FunctionBase> field)
    {
        run.setText("Operator", traceOp);
        run.connect("Field A", std::move(field));
        try
        {
            run.execute(neverAbort);
        }
        catch (const tavrin::runtime_error& error)
        {
            return std::string(error.what());
        }
        return std::string();
    };
    const std::string text = "trace operation not available for the chosen data type";
    EXPECT_EQ(refusal(fieldOf<Scalar>({1.0})), text);
    EXPECT_EQ(refusal(fieldOf<Vector2>({Vector2{}})), text);
    EXPECT_EQ(refusal(fieldOf<Vector4>({Vector4{}})), text);
}

TEST_F(OperatorTest, Scale)
{
    EXPECT_EQ(unary<Scalar>(scaleOp, Scalar(3.0), -2.0), Scalar(-6.0));
    EXPECT_EQ(unary<Vector2>(scaleOp, Vector2(1.0, 2.0), 0.5), Vector2(0.5, 1.0));
    EXPECT_EQ(unary<Vector3>(scaleOp, Vector3(1.0, infinity, nan), 2.0)[1], infinity);
    EXPECT_EQ(unary<Vector4>(scaleOp, Vector4(1.0, 2.0, 3.0, 4.0), 2.0),
              Vector4(2.0, 4.0, 6.0, 8.0));
    EXPECT_EQ(unary<Matrix2>(scaleOp, m2, 10.0), Matrix2(10.0, 20.0, 30.0, 40.0));
    EXPECT_EQ(unary<Matrix3>(scaleOp, m3, 0.0), Matrix3{});
    EXPECT_EQ(unary<Matrix4>(scaleOp, m4, 1.0), m4);
    EXPECT_EQ(std::dynamic_pointer_cast<const FunctionBase>(run.result("Field"))->name(),
              "scaled by 1");
}

TEST_F(OperatorTest, ClipLimitsTheNormAndTheSignedScalar)
{
    EXPECT_EQ(unary<Scalar>(clipOp, Vector2(3.0, 4.0), 1.0, 4.5), Scalar(4.5));
    EXPECT_EQ(unary<Scalar>(clipOp, Vector3(0.1, 0.0, 0.0), 1.0, 4.5), Scalar(1.0));
    EXPECT_EQ(unary<Scalar>(clipOp, Vector4(1.0, 1.0, 1.0, 1.0), 1.0, 4.5), Scalar(2.0));
    EXPECT_EQ(unary<Scalar>(clipOp, m2, 0.0, 5.0), Scalar(5.0));
    EXPECT_EQ(unary<Scalar>(clipOp, m3, 0.0, 5.0), Scalar(5.0));
    EXPECT_EQ(unary<Scalar>(clipOp, m4, 9.0, 19.0), Scalar(9.0));
    EXPECT_EQ(unary<Scalar>(clipOp, Scalar(-5.0), -1.0, 1.0), Scalar(-1.0));
    EXPECT_EQ(unary<Scalar>(clipOp, Scalar(0.5), -1.0, 1.0), Scalar(0.5));
    // With C above D every value becomes D.
    EXPECT_EQ(unary<Scalar>(clipOp, Vector2(3.0, 4.0), 7.0, 2.0), Scalar(2.0));
    EXPECT_EQ(unary<Scalar>(clipOp, Scalar(100.0), 2.0, 2.0), Scalar(2.0));
}

TEST_F(OperatorTest, MaskKeepsTheBandAndMultipliesTheRestByZero)
{
    const Vector2 v(3.0, -4.0);
    EXPECT_EQ(unary<Vector2>(maskOp, v, 5.0, 5.0), v);
    const auto outside = unary<Vector2>(maskOp, v, 5.5, 9.0);
    EXPECT_EQ(outside, Vector2{});
    EXPECT_FALSE(std::signbit(outside[0]));
    EXPECT_TRUE(std::signbit(outside[1]));
    EXPECT_EQ(unary<Vector2>(maskOp, v, 9.0, 1.0), Vector2{});
    const auto infinite = unary<Vector3>(maskOp, Vector3(infinity, 1.0, nan), 0.0, 1.0);
    EXPECT_TRUE(std::isnan(infinite[0]));
    EXPECT_EQ(infinite[1], 0.0);
    EXPECT_TRUE(std::isnan(infinite[2]));
    EXPECT_EQ(unary<Vector4>(maskOp, Vector4(0.0, 0.0, 0.0, 1.0), 0.0, 1.0)[3], 1.0);
    EXPECT_EQ(unary<Matrix2>(maskOp, m2, 0.0, 6.0), m2);
    EXPECT_EQ(unary<Matrix3>(maskOp, m3, 0.0, 6.0), Matrix3{});
    EXPECT_EQ(unary<Matrix4>(maskOp, m4, 0.0, 6.0), m4);
}

TEST_F(OperatorTest, MaskOfAScalarCountsItsSign)
{
    const auto outside = unary<Scalar>(maskOp, Scalar(-0.5), 0.0, 1.0);
    EXPECT_EQ(outside, Scalar(0.0));
    EXPECT_FALSE(std::signbit(outside[0]));
    EXPECT_EQ(unary<Scalar>(maskOp, Scalar(0.5), 0.0, 1.0), Scalar(0.5));
    EXPECT_EQ(unary<Scalar>(maskOp, Scalar(infinity), 0.0, 1.0), Scalar(0.0));
    EXPECT_TRUE(std::isnan(unary<Scalar>(maskOp, Scalar(nan), 0.0, 1.0)[0]));
}

TEST_F(OperatorTest, MultiplyCombinesEverySupportedPair)
{
    EXPECT_EQ(binary<Scalar>(multiplyOp, Scalar(2.0), Scalar(3.0), -1.0), Scalar(-6.0));
    EXPECT_EQ(binary<Scalar>(multiplyOp, Vector2(1.0, 2.0), Vector2(3.0, 4.0), 2.0), Scalar(22.0));
    EXPECT_EQ(binary<Scalar>(multiplyOp, Vector3(1.0, 2.0, 3.0), Vector3(4.0, 5.0, 6.0)),
              Scalar(32.0));
    EXPECT_EQ(binary<Scalar>(multiplyOp, Vector4(1.0, 0.0, 0.0, 2.0), Vector4(1.0, 9.0, 9.0, 3.0)),
              Scalar(7.0));
    EXPECT_EQ(binary<Vector3>(multiplyOp, Vector3(1.0, 2.0, 3.0), Scalar(2.0), 10.0),
              Vector3(20.0, 40.0, 60.0));
    EXPECT_EQ(binary<Matrix2>(multiplyOp, m2, Matrix2(0.0, 1.0, 5.0, 7.0), 2.0),
              Matrix2(20.0, 30.0, 40.0, 62.0));
    EXPECT_EQ(binary<Matrix3>(multiplyOp, m3, m3)(0, 2), 45.0);
    EXPECT_EQ(binary<Matrix3>(multiplyOp, m3, m3)(2, 0), 109.0);
    EXPECT_EQ(binary<Vector2>(multiplyOp, m2, Vector2(1.0, 10.0), 0.5), Vector2(10.5, 21.5));
    EXPECT_EQ(binary<Vector4>(multiplyOp, m4, Vector4(1.0, 1.0, 1.0, 1.0)),
              Vector4(3.0, 1.0, 4.0, 1.0));
    EXPECT_EQ(binary<Matrix4>(multiplyOp, m4, Scalar(2.0))(2, 1), 6.0);
    EXPECT_EQ(binary<Matrix2>(multiplyOp, m2, m2, 0.0), Matrix2{});
    EXPECT_EQ(std::dynamic_pointer_cast<const FunctionBase>(run.result("Field"))->name(),
              "Inner Product of 0");
}

TEST_F(OperatorTest, MultiplyFindsNothingForOtherPairs)
{
    const auto domain = lineOf(1);
    const auto attempt =
        [&](std::shared_ptr<const FunctionBase> a, std::shared_ptr<const FunctionBase> b)
    {
        prepare(multiplyOp, 1.0, 1.0);
        run.connect("Field A", std::move(a));
        run.connect("Field B", std::move(b));
        EXPECT_EQ(standardErrorOf([&] { run.execute(neverAbort); }), "Nothing found! Bad!\n");
        EXPECT_EQ(run.result("Field"), nullptr);
    };
    const auto vector = fieldOf<Vector2>({Vector2(1.0, 2.0)}, domain);
    const auto matrix = fieldOf<Matrix2>({m2}, domain);
    attempt(vector, matrix);
    attempt(vector, fieldOf<Vector3>({Vector3{}}, domain));
    attempt(fieldOf<Scalar>({1.0}, domain), vector);
    attempt(matrix, fieldOf<Matrix3>({m3}, domain));
    EXPECT_EQ(run.debugLog(), "The operation does not take values of type 2x2 Matrix with values "
                              "of type 3x3 Matrix.\n");
    attempt(fieldOf<Vector1>({Vector1(1.0)}, domain), vector);
}

TEST_F(OperatorTest, LinearCombinationNeedsEqualTypes)
{
    EXPECT_EQ(binary<Scalar>(linearOp, Scalar(1.0), Scalar(2.0), 3.0, 5.0), Scalar(13.0));
    EXPECT_EQ(binary<Vector2>(linearOp, Vector2(1.0, 0.0), Vector2(0.0, 1.0), 2.0, -1.0),
              Vector2(2.0, -1.0));
    EXPECT_EQ(binary<Matrix3>(linearOp, m3, m3, 1.0, -1.0), Matrix3{});
    EXPECT_EQ(binary<Matrix4>(linearOp, m4, m4, 0.5, 0.5), m4);
    EXPECT_EQ(std::dynamic_pointer_cast<const FunctionBase>(run.result("Field"))->name(),
              "Linear combination A*0.5 + B*0.5");
    const auto refusal = [&]<typename A, typename B>(const A& a, const B& b)
    {
        try
        {
            binary<Scalar>(linearOp, a, b);
        }
        catch (const tavrin::logic_error& error)
        {
            return std::string(error.what());
        }
        return std::string();
    };
    EXPECT_EQ(refusal(Vector3{}, Scalar(1.0)),
              "Operation not defined for the given input data types: 3-D Vector * Scalar.");
    EXPECT_EQ(refusal(Matrix4{}, Matrix2{}),
              "Operation not defined for the given input data types: 4x4 Matrix * 2x2 Matrix.");
}

TEST_F(OperatorTest, MaskBySecondFieldTakesEveryPairThoughItIsNotOffered)
{
    // It is not among the choices.
    EXPECT_THROW(run.setText("Operator", maskTwoOp), usage_error);
    const Vector2 v(3.0, -4.0);
    EXPECT_EQ(binary<Vector2>(maskTwoOp, v, Scalar(2.0), 2.0, 3.0), v);
    EXPECT_EQ(binary<Vector2>(maskTwoOp, v, Scalar(3.0), 2.0, 3.0), v);
    EXPECT_TRUE(std::signbit(binary<Vector2>(maskTwoOp, v, Scalar(-2.5), 2.0, 3.0)[1]));
    EXPECT_EQ(binary<Scalar>(maskTwoOp, Scalar(7.0), Vector3(2.0, 3.0, 6.0), 7.0, 7.0),
              Scalar(7.0));
    EXPECT_EQ(binary<Matrix3>(maskTwoOp, m3, Matrix2(1.0, 2.0, 2.0, 4.0), 5.0, 5.0), m3);
    EXPECT_EQ(binary<Matrix4>(maskTwoOp, m4, Vector4{}, 1.0, 2.0), Matrix4{});
    EXPECT_TRUE(std::isnan(binary<Scalar>(maskTwoOp, Scalar(infinity), Scalar(9.0), 1.0, 2.0)[0]));
    // A scalar that is not a number is outside, unlike in the mask by the field itself.
    EXPECT_EQ(binary<Scalar>(maskTwoOp, Scalar(4.0), Scalar(nan), 1.0, 2.0), Scalar(0.0));
}

TEST_F(OperatorTest, MissingOrMismatchedFieldsAreLogged)
{
    run.connect("Field A", fieldOf<Scalar>({1.0}));
    run.execute(neverAbort);
    ASSERT_NE(run.result("Field"), nullptr);

    run.setText("Operator", multiplyOp);
    const auto attempt =
        [&](std::shared_ptr<const FunctionBase> a, std::shared_ptr<const FunctionBase> b)
    {
        run.connect("Field A", std::move(a));
        run.connect("Field B", std::move(b));
        run.execute(neverAbort);
        return run.debugLog();
    };
    const std::string mismatch = "Input Fields do not match in domain or timesteps.\n";
    const auto domain = lineOf(2);
    const auto a = fieldOf<Scalar>({1.0, 2.0}, domain);
    // A mismatch leaves an earlier result unchanged; a missing field clears it.
    EXPECT_EQ(attempt(a, fieldOf<Scalar>({1.0, 2.0})), mismatch);
    EXPECT_NE(run.result("Field"), nullptr);
    EXPECT_EQ(attempt(a, fieldOf<Scalar>({1.0, 2.0, 3.0, 4.0}, domain, {0.0, 1.0})), mismatch);
    EXPECT_EQ(attempt(addData(domain, tavrin::detail::Cells, std::vector<Scalar>{1.0},
                              Precision::Float64, {}),
                      a),
              mismatch);
    EXPECT_EQ(attempt(a, nullptr), "Input Field B was not set.\n");
    EXPECT_EQ(run.result("Field"), nullptr);
    EXPECT_EQ(attempt(nullptr, a), "Input Field A was not set.\n");

    run.setDirectly("Operator", "Divide");
    EXPECT_THROW(attempt(a, a), tavrin::logic_error);
}

TEST_F(OperatorTest, WorksOnAllStepsOfASeriesAndKeepsDomainPartAndTimes)
{
    const auto domain = lineOf(3);
    const auto series = std::make_shared<SeriesValueArray<Vector2>>(
        Precision::Float32, 2, 2,
        [](std::size_t step)
        {
            return std::make_shared<DefaultValueArray<Vector2>>(
                std::vector<Vector2>{{3.0, 4.0}, {0.0, static_cast<double>(step)}},
                Precision::Float32);
        });
    run.connect("Field A",
                std::make_shared<Function<Vector2>>(domain, tavrin::detail::Cells, series,
                                                    std::vector<double>{0.5, 7.0}));
    run.execute(neverAbort);
    const auto result = std::dynamic_pointer_cast<const Function<Scalar>>(run.result("Field"));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->domain(), domain);
    EXPECT_EQ(result->domainPart(), tavrin::detail::Cells);
    EXPECT_EQ(result->timeSteps(), (std::vector<double>{0.5, 7.0}));
    EXPECT_EQ(result->name(), "Norm");
    EXPECT_EQ((*result->values())[3], Scalar(1.0));
}

TEST_F(OperatorTest, AResultIsValidWhereAllOperandsAre)
{
    const auto domain = lineOf(4);
    const auto withMask = [&](const ValidityMask& mask)
    {
        return addData(domain, PointSetBase::Points, std::vector<Scalar>{1.0, 2.0, 3.0, 4.0},
                       Precision::Float64, {}, "f",
                       mask.empty() ? nullptr : std::make_shared<const ValidityMask>(mask));
    };
    const auto maskOf = [&](const ValidityMask& a, const ValidityMask& b)
    {
        resultOf<Scalar>(linearOp, withMask(a), withMask(b));
        const auto result = std::dynamic_pointer_cast<const FunctionBase>(run.result("Field"));
        return result->validity() == nullptr ? ValidityMask{} : *result->validity();
    };
    EXPECT_EQ(maskOf({1, 1, 0, 0}, {1, 0, 1, 0}), (ValidityMask{1, 0, 0, 0}));
    EXPECT_EQ(maskOf({}, {1, 0, 1, 0}), (ValidityMask{1, 0, 1, 0}));
    EXPECT_EQ(maskOf({0, 0, 1, 0}, {}), (ValidityMask{0, 0, 1, 0}));
    EXPECT_EQ(maskOf({}, {}), ValidityMask{});
    // Operations on one field keep its mask.
    resultOf<Scalar>(normOp, withMask({1, 1, 0, 0}), withMask({0, 0, 0, 0}));
    EXPECT_EQ(*std::dynamic_pointer_cast<const FunctionBase>(run.result("Field"))->validity(),
              (ValidityMask{1, 1, 0, 0}));
}

TEST_F(OperatorTest, AnEmptyFieldGivesAnEmptyResult)
{
    const auto none = cloudOf<2>({});
    EXPECT_TRUE(resultOf<Scalar>(normOp, fieldOf<Vector3>({}, none), nullptr).empty());
}

TEST_F(OperatorTest, AbortedPublishesNothing)
{
    run.connect("Field A", fieldOf<Scalar>({1.0}));
    run.execute(alreadyAborted);
    EXPECT_EQ(run.result("Field"), nullptr);
}

TEST_F(OperatorTest, GivesTheSameBitsForEveryNumberOfThreads)
{
    std::vector<Matrix3> values(4001);
    for (std::size_t i = 0; i < values.size(); ++i)
        for (std::size_t k = 0; k < Matrix3::size; ++k)
            values[i][k] = std::sin(static_cast<double>(i * 9 + k));
    const auto field = fieldOf(std::move(values));
    const auto withThreads = [&](int threads)
    {
        const ThreadCount count(threads);
        return resultOf<Matrix3>(multiplyOp, field, field, 0.1);
    };
    const auto expected = withThreads(1);
    for (const int threads : {2, 3, 8})
        EXPECT_EQ(withThreads(threads), expected);
}

TEST_F(OperatorTest, RefusesValueTypesOutsideItsList)
{
    run.connect("Field A", fieldOf<Vector1>({Vector1(1.0)}));
    EXPECT_EQ(standardErrorOf([&] { run.execute(neverAbort); }), "Nothing found! Bad!\n");
    EXPECT_EQ(run.result("Field"), nullptr);
    EXPECT_EQ(run.debugLog(), "The operation does not take values of type 1-D Vector.\n");
}

}
