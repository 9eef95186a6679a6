#include <support/errorOf.hpp>
#include <support/smallData.hpp>

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/base/LargeVector.hpp>
#include <tavrin/base/Suggestion.hpp>
#include <tavrin/value/Color.hpp>
#include <tavrin/value/LexicalCast.hpp>
#include <tavrin/value/SeriesValueArray.hpp>
#include <tavrin/value/Tensor.hpp>
#include <tavrin/value/WrappedValueArray.hpp>

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

namespace
{

using namespace support;
using namespace tavrin;

constexpr double infinity = std::numeric_limits<double>::infinity();

template<typename T>
std::string printed(const T& value)
{
    std::ostringstream text;
    text << value;
    return text.str();
}

TEST(Tensor, PrintsItsComponentsFlat)
{
    EXPECT_EQ(printed(Vector3(1.0, 2.0, 3.0)), "[1, 2, 3]");
    EXPECT_EQ(printed(Scalar(-0.5)), "[-0.5]");
    EXPECT_EQ(printed(Matrix2(1.0, 2.0, 3.0, 1e-7)), "[1, 2, 3, 1e-07]");
}

TEST(Tensor, StoresMatricesRowByRow)
{
    const Matrix3 m(1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0);
    EXPECT_EQ(m(0, 2), 3.0);
    EXPECT_EQ(m(2, 0), 7.0);
    EXPECT_EQ(trace(m), 15.0);
}

TEST(Tensor, ProductsKeepTheOrderOfIndices)
{
    const Matrix2 a(1.0, 2.0, 3.0, 4.0);
    const Matrix2 b(0.0, 1.0, 5.0, 7.0);
    EXPECT_EQ(multiply(a, b), Matrix2(10.0, 15.0, 20.0, 31.0));
    EXPECT_EQ(multiply(a, Vector2(1.0, 10.0)), Vector2(21.0, 43.0));
    EXPECT_EQ(-a, Matrix2(-1.0, -2.0, -3.0, -4.0));
}

TEST(Tensor, NormIsEuclideanAndDoesNotOverflowForScalars)
{
    EXPECT_EQ(norm(Vector2(3.0, -4.0)), 5.0);
    EXPECT_EQ(norm(Matrix2(1.0, 1.0, 1.0, -1.0)), 2.0);
    EXPECT_EQ(norm(Scalar(-1e300)), 1e300);
    EXPECT_EQ(normalized(Vector3{}), Vector3{});
    EXPECT_EQ(normalized(Vector2(0.0, -2.0)), Vector2(0.0, -1.0));
    EXPECT_EQ(normalized(Scalar(-7.0)), Scalar(-1.0));
}

TEST(LexicalCast, ReadsWhatItWrites)
{
    for (const double number : {0.1, -1.0 / 3.0, 1e-320, 1.7976931348623157e308, -0.0, infinity})
        EXPECT_EQ(lexicalCast<double>(toText(number)), number);
    EXPECT_TRUE(std::isnan(lexicalCast<double>("nan")));
    EXPECT_EQ(toText(Color{1.0F, 0.0F, 0.0F, 1.0F}), "#ff0000ff");
    const Color odd{0.75F, 0.1F, 0.0F, 0.5F};
    EXPECT_EQ(lexicalCast<Color>(toText(odd)), odd);
    EXPECT_EQ(lexicalCast<Color>("#0000ff"), (Color{0.0F, 0.0F, 1.0F, 1.0F}));
    EXPECT_EQ(lexicalCast<Color>("0, 0.5,1"), (Color{0.0F, 0.5F, 1.0F, 1.0F}));
    EXPECT_TRUE(lexicalCast<bool>("true"));
    EXPECT_FALSE(lexicalCast<bool>("0"));
}

TEST(LexicalCast, RefusesWhatIsNoValue)
{
    for (const char* text : {"", "abc", "1.0x", "1 2", "0x10", "--1", "+-1", "1e999"})
        EXPECT_THROW(lexicalCast<double>(text), bad_lexical_cast) << text;
    for (const char* text : {"", "maybe", "2"})
        EXPECT_THROW(lexicalCast<bool>(text), bad_lexical_cast) << text;
    for (const char* text : {"", "#12345", "#gg0000", "1,2,3", "0,0", "0,0,0,0,0", "0,0,nan"})
        EXPECT_THROW(lexicalCast<Color>(text), bad_lexical_cast) << text;
    EXPECT_EQ(errorOf<bad_lexical_cast>([] { lexicalCast<double>("abc"); }),
              "\"abc\" is not a number");
}

TEST(Suggestion, NamesTheNearestOrAll)
{
    const std::vector<std::string> names{"Scalar C", "Scalar D", "Operator"};
    EXPECT_EQ(suggestionFor("operatr", names), "; did you mean \"Operator\"?");
    EXPECT_EQ(suggestionFor("Scalar X", names), "; did you mean \"Scalar C\"?");
    EXPECT_EQ(suggestionFor("zzz", names), "; there are \"Scalar C\", \"Scalar D\", \"Operator\"");
    EXPECT_EQ(suggestionFor("x", {}), "");
}

TEST(Exceptions, CarryTheirTextAndAReadableBacktrace)
{
    const assertion_failed error("Invalid range.: start < end", "Header", "Source", 460);
    EXPECT_STREQ(error.what(), "Invalid range.: start < end (Header:460, included from Source)");
    const std::string trace = runtime_error("x").getBacktrace();
    EXPECT_NE(trace.find("#0"), std::string::npos);
    EXPECT_NE(trace.find("test-lib"), std::string::npos) << trace;
}

template<typename Stored>
class StoredPrecision : public testing::Test
{};
using Stored = testing::Types<std::int8_t, std::int16_t, std::int32_t, std::int64_t, std::uint8_t,
                              std::uint16_t, std::uint32_t, std::uint64_t, float, double>;
TYPED_TEST_SUITE(StoredPrecision, Stored);

TYPED_TEST(StoredPrecision, IsKeptAndReadAsDoubles)
{
    using Limits = std::numeric_limits<TypeParam>;
    const std::vector<TypeParam> stored{Limits::lowest(), Limits::max(), TypeParam(3),
                                        TypeParam(4)};
    const WrappedValueArray<Vector2, TypeParam> array(stored.data(), 2, 2, nullptr);
    EXPECT_EQ(array.precision(), precisionOf<TypeParam>());
    std::array<Vector2, 2> scratch;
    const auto values = array.read(0, scratch);
    EXPECT_EQ(values[0],
              Vector2(static_cast<double>(Limits::lowest()), static_cast<double>(Limits::max())));
    EXPECT_EQ(values[1], Vector2(3.0, 4.0));
    EXPECT_EQ(array[1], values[1]);
    // Doubles are viewed in place; other numbers are converted into the scratch memory.
    const bool inPlace = static_cast<const void*>(values.data()) == stored.data();
    EXPECT_EQ(inPlace, (std::is_same_v<TypeParam, double>));
}

TEST(WrappedValueArray, PicksComponents)
{
    const std::vector<float> stored{1, 2, 3, 4, 5, 6, 10, 20, 30, 40, 50, 60};
    const WrappedValueArray<Matrix3, float> symmetric(stored.data(), 2, 6, nullptr,
                                                      symmetricComponents);
    EXPECT_EQ(symmetric[0], Matrix3(1.0, 4.0, 6.0, 4.0, 2.0, 5.0, 6.0, 5.0, 3.0));
    std::array<Matrix3, 1> scratch;
    EXPECT_EQ(symmetric.read(1, scratch)[0], symmetric[1]);
    const WrappedValueArray<Vector2, float> flat(stored.data(), 4, 3, nullptr);
    EXPECT_EQ(flat[3], Vector2(40.0, 50.0));
}

TEST(SubValueArray, ShowsARunAndRefusesToLeaveItsArray)
{
    const auto array = stored(std::vector<Scalar>{0.0, 1.0, 2.0, 3.0});
    const auto part = array->part(1, 2);
    EXPECT_EQ(part->size(), 2U);
    EXPECT_EQ((*part)[1], Scalar(2.0));
    EXPECT_THROW(array->part(3, 2), logic_error);
    EXPECT_THROW(array->part(5, 0), logic_error);
}

TEST(SeriesValueArray, LoadsEachStepOnceAndKeepsTwo)
{
    std::vector<std::size_t> loaded;
    std::vector<std::weak_ptr<const ValueArray<Scalar>>> alive;
    const auto load = [&](std::size_t step)
    {
        loaded.push_back(step);
        const auto first = static_cast<double>(10 * step);
        const auto values = stored(std::vector<Scalar>{first, first + 1.0, first + 2.0});
        alive.push_back(values);
        return values;
    };
    const auto series = std::make_shared<SeriesValueArray<Scalar>>(Precision::Float64, 4, 3, load);
    EXPECT_EQ(series->size(), 12U);
    std::array<Scalar, 12> scratch;
    const auto values = series->read(0, scratch);
    EXPECT_EQ(values[11], Scalar(32.0));
    EXPECT_EQ(loaded, (std::vector<std::size_t>{0, 1, 2, 3}));
    const auto numAlive = std::ranges::count_if(alive, [](const auto& p) { return !p.expired(); });
    EXPECT_EQ(numAlive, 2);
    EXPECT_EQ((*series)[7], Scalar(21.0));
    EXPECT_EQ(loaded.size(), 4U);
    // A part inside a step keeps only that step, one across steps reads from the series.
    EXPECT_EQ((*series->part(4, 2))[0], Scalar(11.0));
    EXPECT_EQ((*series->part(4, 5))[4], Scalar(22.0));
}

TEST(SeriesValueArray, ReportsAStepThatDoesNotFit)
{
    const auto series = std::make_shared<SeriesValueArray<Scalar>>(
        Precision::Float64, 2, 3, [](std::size_t) { return stored(std::vector<Scalar>{1.0}); });
    EXPECT_THROW(series->part(0, 3), logic_error);
}

TEST(LargeVector, ReusesTheBlockOfTheSameSizeOnly)
{
    constexpr std::size_t large = 3 << 20;
    const void* first = nullptr;
    {
        LargeVector<double> values(large);
        first = values.data();
        values.front() = values.back() = 1.0;
    }
    LargeVector<double> again(large);
    EXPECT_EQ(again.data(), first);
    LargeVector<double> other(2 * large);
    other.front() = other.back() = 1.0;
    EXPECT_NE(static_cast<const void*>(other.data()), first);
    EXPECT_THROW(LargeVector<double>(static_cast<std::size_t>(-1) / 16), std::bad_alloc);
}

}
