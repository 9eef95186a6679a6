#include "AlgorithmTest.hpp"

#include <tavrin/domain/Subdomain.hpp>

#include <limits>

namespace
{

using namespace support;
using namespace tavrin;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

class InfoTest : public testing::Test
{
protected:
    std::string reportOf(std::shared_ptr<const DataObject> field, bool extremes, bool median)
    {
        run.connect("Field", std::move(field));
        run.setText("Compute min, max, average", toText(extremes));
        run.setText("Compute median", toText(median));
        run.execute(neverAbort);
        return run.infoLog();
    }

    /// The report without the line of the bounding box.
    std::string statisticsOf(std::shared_ptr<const DataObject> field, bool extremes, bool median)
    {
        run.setText("Compute grid bounding box", "false");
        return reportOf(std::move(field), extremes, median);
    }

    bool isBoxOptionVisible() const { return run.describe().options[1].isVisible; }

    AlgorithmRun run{makeRun("Field/Info")};
};

TEST_F(InfoTest, ReportsTheBoxThenExtremesThenMedian)
{
    const auto grid = std::make_shared<UniformGrid<3>>(UniformGrid<3>::Layout{
        .size = {2, 1, 3}, .origin = {-1.0, 0.5, 0.0}, .spacing = {2.0, 1.0, 1e-7}});
    const auto field = addData(grid, detail::Cells, std::vector<Vector2>{{3.0, 4.0}, {0.0, -0.5}},
                               Precision::Float64, {});
    EXPECT_EQ(reportOf(field, true, true),
              "The domain bounding box is spanned by [-1, 0.5, 0] and [1, 0.5, 2e-07]\n"
              "A tensor with minimal norm has the norm 0.5, the value [0, -0.5] at index 1 of "
              "Cells\n"
              "A tensor with maximal norm has the norm 5, the value [3, 4] at index 0 of Cells\n"
              "The median value of the field is [3, 4] with norm 5\n");
    EXPECT_EQ(run.debugLog(), "");
}

TEST_F(InfoTest, TiesKeepTheLowestIndex)
{
    EXPECT_EQ(statisticsOf(fieldOf<Scalar>({-3.0, 1.0, -1.0, 5.0, -5.0}), true, false),
              "A tensor with minimal norm has the norm 1, the value [1] at index 1 of Points\n"
              "A tensor with maximal norm has the norm 5, the value [5] at index 3 of Points\n");
    std::vector<Vector3> same(2000, Vector3(1.0, 2.0, 2.0));
    const auto report = statisticsOf(fieldOf(same), true, false);
    EXPECT_EQ(
        report,
        "A tensor with minimal norm has the norm 3, the value [1, 2, 2] at index 0 of Points\n"
        "A tensor with maximal norm has the norm 3, the value [1, 2, 2] at index 0 of Points\n");
    same[1300] = same[1700] = Vector3{};
    same[600] = same[599] = Vector3(9.0, 0.0, 0.0);
    EXPECT_EQ(statisticsOf(fieldOf(same), true, false),
              "A tensor with minimal norm has the norm 0, the value [0, 0, 0] at index 1300 of "
              "Points\n"
              "A tensor with maximal norm has the norm 9, the value [9, 0, 0] at index 599 of "
              "Points\n");
}

TEST_F(InfoTest, TheMedianOfAnEvenCountIsTheUpperAndOfAnOddOneAveragesTheMiddleAndTheNext)
{
    const auto median = [&](std::shared_ptr<const FunctionBase> field)
    { return statisticsOf(std::move(field), false, true); };
    EXPECT_EQ(median(fieldOf<Scalar>({4.0, 1.0, 3.0, 2.0})),
              "The median value of the field is [3] with norm 3\n");
    EXPECT_EQ(median(fieldOf<Scalar>({1.0, 2.0, 3.0})),
              "The median value of the field is [2.5] with norm 2.5\n");
    EXPECT_EQ(median(fieldOf<Scalar>({-7.0})),
              "The median value of the field is [-7] with norm 7\n");
    EXPECT_EQ(median(fieldOf<Vector2>({{1.0, 9.0}, {2.0, 8.0}, {3.0, 7.0}, {4.0, 6.0}})),
              "The median value of the field is [3, 8] with norm 8.544\n");
    EXPECT_EQ(median(fieldOf<Matrix2>({{1.0, 0.0, 0.0, 1.0}, {3.0, 0.0, 0.0, 2.0}})),
              "The median value of the field is [3, 0, 0, 2] with norm 3.60555\n");
}

TEST_F(InfoTest, TheMedianAgreesWithASortedList)
{
    for (const std::size_t count : {2U, 5U, 1000U, 4097U})
    {
        std::vector<Vector1> values(count);
        std::vector<double> sorted(count);
        for (std::size_t i = 0; i < count; ++i)
            sorted[i] = values[i][0] = static_cast<double>(i * 7919 % 1009);
        std::ranges::sort(sorted);
        const double expected =
            count % 2 == 0 ? sorted[count / 2] : (sorted[count / 2] + sorted[count / 2 + 1]) * 0.5;
        std::ostringstream text;
        text << "The median value of the field is [" << expected << "] with norm " << expected
             << '\n';
        EXPECT_EQ(statisticsOf(fieldOf(values), false, true), text.str()) << count;
    }
}

TEST_F(InfoTest, AnswersForNothingAtAll)
{
    const auto none = cloudOf<2>({});
    const std::string empty = "Field does not contain any values\n";
    EXPECT_EQ(statisticsOf(fieldOf<Scalar>({}, none), true, true), empty);
    EXPECT_EQ(statisticsOf(fieldOf<Scalar>({}, none), false, true), empty);
    EXPECT_EQ(statisticsOf(fieldOf<Scalar>({}, none), false, false), "");
    EXPECT_EQ(statisticsOf(nullptr, true, true), "");
    EXPECT_EQ(run.debugLog(), "Input field not set\n");
}

TEST_F(InfoTest, NamesAFieldThatItDoesNotKnow)
{
    EXPECT_EQ(reportOf(fieldOf<Vector242>({Vector242{}}), true, true),
              "The domain bounding box is spanned by [0] and [0]\nUnknown field type.\n");
    EXPECT_EQ(reportOf(fieldOf<Tensor<double, 5>>({{}}), true, true),
              "The domain bounding box is spanned by [0] and [0]\nUnknown field type.\n");
}

TEST_F(InfoTest, ShowsTheBoxOptionForPointSetsOnly)
{
    EXPECT_FALSE(isBoxOptionVisible());
    const auto line = lineOf(2);
    run.connect("Field", fieldOf<Scalar>({1.0, 2.0}, line));
    EXPECT_TRUE(isBoxOptionVisible());
    run.connect("Field", nullptr);
    EXPECT_TRUE(isBoxOptionVisible());
    const auto part =
        std::make_shared<Subdomain>(line, PointSetBase::Points, std::vector<std::size_t>{1});
    const auto onPart = fieldOf<Scalar>({1.0}, part);
    run.connect("Field", onPart);
    EXPECT_FALSE(isBoxOptionVisible());
    // The hidden option is still true, but the domain has no box.
    EXPECT_EQ(reportOf(onPart, false, false), "");
}

TEST_F(InfoTest, LeavesOutWhatIsNotANumberAndSaysSo)
{
    EXPECT_EQ(statisticsOf(fieldOf<Scalar>({2.0, nan, 7.0, nan, 1.0}), true, false),
              "A tensor with minimal norm has the norm 1, the value [1] at index 4 of Points\n"
              "A tensor with maximal norm has the norm 7, the value [7] at index 2 of Points\n");
    EXPECT_EQ(run.hints(), std::vector<std::string>{"2 of 5 values are not a number; they are "
                                                    "neither minimal nor maximal"});
    // A first value that is not a number stays the minimum, because no comparison with it holds.
    EXPECT_NE(
        statisticsOf(fieldOf<Scalar>({nan, 1.0}), true, true).find("the value [nan] at index 0"),
        std::string::npos);
    EXPECT_EQ(run.hints(), std::vector<std::string>{
                               "1 of 2 values are not a number; the first is one of them, and no "
                               "norm is less or greater than it; the median depends on where they "
                               "stand"});
    static_cast<void>(statisticsOf(fieldOf<Scalar>({1.0, nan, 2.0}), false, true));
    EXPECT_EQ(run.hints(), std::vector<std::string>{"1 of 3 values are not a number; the median "
                                                    "depends on where they stand"});
}

TEST_F(InfoTest, LeavesOutWhatAMaskMarks)
{
    // More values than are read together; those that count are 3000, 3, 2, 1 and 7.
    std::vector<Scalar> values(2000, -1e9);
    auto mask = std::make_shared<ValidityMask>(values.size(), std::uint8_t{0});
    const auto set = [&](std::size_t index, double value)
    {
        values[index] = value;
        (*mask)[index] = 1;
    };
    set(5, 3000.0);
    set(600, 3.0);
    set(601, 2.0);
    set(1400, 1.0);
    set(1999, 7.0);
    const auto line = lineOf(values.size());
    const auto maskedBy = [&](std::shared_ptr<const ValidityMask> validity)
    {
        return addData(std::shared_ptr<const Domain>(line), PointSetBase::Points, values,
                       Precision::Float64, {}, "masked", std::move(validity));
    };
    EXPECT_EQ(
        statisticsOf(maskedBy(mask), true, true),
        "A tensor with minimal norm has the norm 1, the value [1] at index 1400 of Points\n"
        "A tensor with maximal norm has the norm 3000, the value [3000] at index 5 of Points\n"
        "The median value of the field is [5] with norm 5\n");
    EXPECT_EQ(run.hints(),
              std::vector<std::string>{"1995 of 2000 values are marked as outside and left out"});
    EXPECT_EQ(
        statisticsOf(maskedBy(std::make_shared<ValidityMask>(2000, std::uint8_t{0})), true, true),
        "Field does not contain any values\n");
}

TEST_F(InfoTest, ReportsAtFullPrecision)
{
    static_cast<void>(reportOf(fieldOf<Vector2>({{0.1, 0.2}, {1.0 / 3.0, 0.0}, {}}), true, true));
    const double third = 1.0 / 3.0;
    using Numbers = ReportValue::Numbers;
    const ReportValue::Members expected{
        {"box", {{"minimum", Numbers{0.0}}, {"maximum", Numbers{2.0}}}},
        {"minimum",
         {{"norm", 0.0},
          {"value", Numbers{0.0, 0.0}},
          {"index", std::size_t{2}},
          {"position", Numbers{2.0}}}},
        {"maximum",
         {{"norm", third},
          {"value", Numbers{third, 0.0}},
          {"index", std::size_t{1}},
          {"position", Numbers{1.0}}}},
        {"median",
         {{"value", Numbers{(0.1 + third) * 0.5, 0.1}},
          {"norm", norm(Vector2{(0.1 + third) * 0.5, 0.1})}}},
        {"counts",
         {{"values", std::size_t{3}},
          {"invalid", std::size_t{0}},
          {"notANumber", std::size_t{0}},
          {"infinite", std::size_t{0}}}}};
    EXPECT_EQ(run.results(), expected);
}

TEST_F(InfoTest, ReportsTheSameOfEveryValueType)
{
    using Types =
        TypeList<Scalar, Vector1, Vector2, Vector3, Vector4, Matrix1, Matrix2, Matrix3, Matrix4>;
    const auto namesOf = [](const ReportValue::Members& members)
    {
        std::vector<std::string> names;
        for (const ReportMember& member : members)
            names.push_back(member.name);
        return names;
    };
    const auto numbersIn = [](const ReportValue::Members& members, std::size_t member)
    { return std::get<ReportValue::Numbers>(members[member].value.content()); };
    visitTypes<Types>(
        [&]<typename T>()
        {
            // A value outside, one that is not a number, an infinite one, and 1 and 2.
            std::vector<T> values(5);
            for (std::size_t i = 0; i < values.size(); ++i)
                values[i][T::size - 1] = static_cast<double>(i) - 2.0;
            values[1][T::size - 1] = nan;
            values[2][T::size - 1] = -std::numeric_limits<double>::infinity();
            const auto mask = std::make_shared<ValidityMask>(ValidityMask{0, 1, 1, 1, 1});
            const auto field =
                addData(std::shared_ptr<const Domain>(lineOf(5)), PointSetBase::Points, values,
                        Precision::Float64, {}, "f", mask);
            SCOPED_TRACE(valueTypeName<T>());
            const ReportMember counts{"counts",
                                      {{"values", std::size_t{4}},
                                       {"invalid", std::size_t{1}},
                                       {"notANumber", std::size_t{1}},
                                       {"infinite", std::size_t{1}}}};
            static_cast<void>(reportOf(field, true, true));
            const auto all = run.results();
            EXPECT_EQ(namesOf(all),
                      (std::vector<std::string>{"box", "minimum", "maximum", "median", "counts"}));
            for (const std::size_t extreme : {1, 2})
            {
                EXPECT_EQ(namesOf(*all[extreme].value.members()),
                          (std::vector<std::string>{"norm", "value", "index", "position"}));
                EXPECT_EQ(numbersIn(*all[extreme].value.members(), 1).size(), T::size);
                EXPECT_EQ(numbersIn(*all[extreme].value.members(), 3).size(), 1U);
            }
            EXPECT_EQ(numbersIn(*all[3].value.members(), 0).size(), T::size);
            EXPECT_EQ(all[4], counts);
            static_cast<void>(reportOf(field, false, true));
            EXPECT_EQ(namesOf(run.results()),
                      (std::vector<std::string>{"box", "median", "counts"}));
            EXPECT_EQ(run.results()[2], counts);
            static_cast<void>(reportOf(field, true, false));
            EXPECT_EQ(namesOf(run.results()),
                      (std::vector<std::string>{"box", "minimum", "maximum", "counts"}));
            return false;
        });
    const auto outside = std::make_shared<ValidityMask>(ValidityMask{0, 0});
    static_cast<void>(
        statisticsOf(addData(std::shared_ptr<const Domain>(lineOf(2)), PointSetBase::Points,
                             std::vector<Scalar>(2), Precision::Float64, {}, "f", outside),
                     true, true));
    EXPECT_EQ(run.results(), (ReportValue::Members{{"counts",
                                                    {{"values", std::size_t{0}},
                                                     {"invalid", std::size_t{2}},
                                                     {"notANumber", std::size_t{0}},
                                                     {"infinite", std::size_t{0}}}}}));
}

TEST_F(InfoTest, AnAbortEndsAMedianInTheMiddle)
{
    // The flag is set by the progress report, which is opened after the list is filled.
    struct Aborting : RunObserver
    {
        void opened(const ProgressReport&) override { flag = true; }
        volatile bool flag = false;
    };
    Aborting observer;
    run.connect("Field", fieldOf<Scalar>({3.0, 1.0, 2.0}));
    run.setText("Compute min, max, average", "false");
    run.setText("Compute median", "true");
    run.execute(observer.flag, &observer);
    EXPECT_EQ(run.infoLog().find("median"), std::string::npos);
}

TEST_F(InfoTest, FindsTheFirstExtremesInAnyBlock)
{
    // Extremes at every position in the blocks of the loop, each twice.
    std::vector<Vector3> values(2000, Vector3(3.0, 4.0, 0.0));
    for (const std::size_t index : {1U, 31U, 511U, 512U, 1023U, 1500U, 1998U})
    {
        auto changed = values;
        changed[index] = changed[index + 1] = Vector3(0.0, -1e-200, 0.0);
        changed[index - 1] = changed[1999] = Vector3(0.0, 0.0, 1e200);
        const auto text = statisticsOf(fieldOf<Vector3>(changed), true, false);
        const auto at = [](std::size_t i) { return " at index " + std::to_string(i) + " of"; };
        EXPECT_NE(text.find("norm 0, the value [0, -1e-200, 0]" + at(index)), std::string::npos)
            << text;
        EXPECT_NE(text.find("norm inf, the value [0, 0, 1e+200]" + at(index - 1)),
                  std::string::npos)
            << text;
    }
    // The norm of a scalar is its absolute value, without a square that could underflow.
    EXPECT_EQ(statisticsOf(fieldOf<Scalar>({-1e200, 2e-200, 1e-200}), true, false),
              "A tensor with minimal norm has the norm 1e-200, the value [1e-200] at index 2 of "
              "Points\n"
              "A tensor with maximal norm has the norm 1e+200, the value [-1e+200] at index 0 of "
              "Points\n");
}

TEST_F(InfoTest, AbortedReportsWhatWasSeen)
{
    run.connect("Field", fieldOf<Scalar>({2.0, 1.0, 3.0}));
    run.setText("Compute median", "true");
    run.execute(alreadyAborted);
    EXPECT_EQ(run.infoLog(),
              "The domain bounding box is spanned by [0] and [2]\n"
              "A tensor with minimal norm has the norm 2, the value [2] at index 0 of Points\n"
              "A tensor with maximal norm has the norm 2, the value [2] at index 0 of Points\n"
              "The median value of the field is [2] with norm 2\n");
}

}
