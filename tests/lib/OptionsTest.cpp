#include <support/errorOf.hpp>
#include <support/smallData.hpp>

#include <tavrin/algorithm/Options.hpp>
#include <tavrin/field/Field.hpp>
#include <tavrin/function/visit.hpp>

#include <gtest/gtest.h>

namespace
{

using namespace support;
using namespace tavrin;

/// One input of every kind; remembers what changed and shows "Color" by "Flag".
struct EveryKind : Options
{
    explicit EveryKind(Control& control) : Options(control)
    {
        addImpl<FunctionBase>(DataObjectInput_t{}, "Field", "a field", InputDataObject::ignore,
                              Required::Yes);
        addImpl<TypeList<PointSet<1>, PointSet<2>>>(
            TypeListInput_t{}, "Grid", "a grid",
            [](const DataObject& object)
            { return dynamic_cast<const PointSetBase&>(object).numPoints() > 2; },
            Required::No);
        addBundle<DataObject>(
            "Bundle", "several", [](const DataObjectBundle&) { return true; }, Required::No);
        addSeparator();
        add<bool>("Flag", "", false);
        addGroup("Look");
        add<double>("Number", "", 1.5);
        add<long>("Count", "", 3L);
        add<std::string>("Text", "", "none");
        add<Color>("Color", "", Color{0.75F, 0.75F, 0.0F, 1.0F});
        add<InputChoices>("Choice", "", {"one", "two"}, "one");
        add<InputLabel>("Label", "", "read me");
        setHidden("Color", true);
    }

    void optionChanged(const std::string& name) override
    {
        changes.push_back(name);
        setVisible("Color", get<bool>("Flag"));
    }

    std::vector<std::string> changes;
};

class OptionsTest : public testing::Test
{
protected:
    template<typename Input>
    Input& input(const std::string& name)
    {
        return dynamic_cast<Input&>(*control.getInput(name));
    }

    InputValueBase& value(const std::string& name) { return input<InputValueBase>(name); }

    template<typename T>
    std::string failureOf(const std::string& name)
    {
        return errorOf([&] { options.get<T>(name); });
    }

    Options::Control control;
    EveryKind options{control};
};

TEST_F(OptionsTest, ReadsValuesByTheirKind)
{
    EXPECT_FALSE(options.get<bool>("Flag"));
    EXPECT_EQ(options.get<double>("Number"), 1.5);
    EXPECT_EQ(options.get<long>("Count"), 3);
    EXPECT_EQ(options.get<std::string>("Text"), "none");
    EXPECT_EQ(options.get<std::string>("Choice"), "one");
    EXPECT_EQ(options.get<Color>("Color").green, 0.75F);
    EXPECT_EQ(options.get<TypeList<PointSet<1>>>("Grid"), nullptr);
    EXPECT_EQ(options.get<DataObjectBundle>("Bundle"), nullptr);
}

TEST_F(OptionsTest, AWrongKindOrNameIsAMismatch)
{
    const std::string mismatch = "implementation error: option type mismatch";
    EXPECT_EQ(failureOf<double>("Field"), mismatch);
    EXPECT_EQ(failureOf<double>("Flag"), mismatch);
    EXPECT_EQ(failureOf<double>("Nothing"), mismatch);
    EXPECT_EQ(failureOf<FunctionBase>("Number"), mismatch);
    EXPECT_EQ(failureOf<FunctionBase>("Bundle"), mismatch);
    EXPECT_EQ(failureOf<std::string>("Label"), mismatch);
}

TEST_F(OptionsTest, ARequiredOptionMustBeConnected)
{
    EXPECT_EQ(failureOf<FunctionBase>("Field"), "Missing input for mandatory option \"Field\"");
    EXPECT_TRUE(control.isRequired("Field"));
    EXPECT_FALSE(control.isRequired("Grid"));
    EXPECT_FALSE(control.isRequired("Nothing"));
}

TEST_F(OptionsTest, AnObjectOfAnotherClassReadsAsNone)
{
    const auto line = lineOf(3);
    input<InputDataObject>("Grid").setDataObject(line);
    EXPECT_EQ((options.get<TypeList<PointSet<2>, PointSet<1>>>("Grid")), line);
    EXPECT_EQ(options.get<PointSet<1>>("Grid"), line);
    EXPECT_EQ(options.get<PointSet<2>>("Grid"), nullptr);
    EXPECT_EQ(options.get<TypeList<PointSet<2>>>("Grid"), nullptr);
}

TEST_F(OptionsTest, ADataInputTakesWhatItsTypesAndItsFilterAccept)
{
    auto& grid = input<InputDataObject>("Grid");
    EXPECT_THROW(grid.setDataObject(lineOf(2)), usage_error);
    EXPECT_THROW(input<InputDataObject>("Field").setDataObject(lineOf(3)), usage_error);
    EXPECT_TRUE(options.changes.empty());
    grid.setDataObject(lineOf(3));
    grid.setDataObject(nullptr);
    EXPECT_EQ(options.changes, (std::vector<std::string>{"Grid", "Grid"}));
}

TEST_F(OptionsTest, AChangeIsToldOnceAndOnlyIfTheValueIsAnother)
{
    value("Flag").fromString("false");
    EXPECT_TRUE(options.changes.empty());
    value("Flag").fromString("true");
    EXPECT_EQ(options.changes, std::vector<std::string>{"Flag"});
    value("Number").fromString("1.50");
    EXPECT_EQ(options.changes.size(), 1U);
    EXPECT_EQ(value("Flag").toString(), "true");
    EXPECT_EQ(value("Flag").defaultToString(), "false");
    EXPECT_THROW(value("Flag").fromString("perhaps"), bad_lexical_cast);
    EXPECT_EQ(value("Flag").toString(), "true");
}

TEST_F(OptionsTest, AValidatorMayCorrectAValue)
{
    auto& number = input<InputArithmeticImpl<double>>("Number");
    number.setValidator([](const double& wanted) { return std::clamp(wanted, 0.0, 2.0); });
    number.fromString("7");
    EXPECT_EQ(number.value(), 2.0);
    EXPECT_EQ(options.changes.size(), 1U);
    number.fromString("8");
    EXPECT_EQ(options.changes.size(), 1U);
    number.fromStringUnchecked("8");
    EXPECT_EQ(number.value(), 8.0);
}

TEST_F(OptionsTest, AChoiceRefusesOtherTextsUnlessSetDirectly)
{
    auto& choice = value("Choice");
    EXPECT_EQ(errorOf<usage_error>([&] { choice.fromString("three"); }),
              "\"three\" is not among the choices; there are \"one\", \"two\"");
    choice.fromStringUnchecked("three");
    EXPECT_EQ(options.get<std::string>("Choice"), "three");
}

TEST_F(OptionsTest, VisibilityFollowsOptionChangedAndKeepsValues)
{
    EXPECT_FALSE(control.getInput("Color")->isVisible());
    EXPECT_EQ(options.get<Color>("Color").red, 0.75F);
    value("Flag").fromString("1");
    EXPECT_TRUE(control.getInput("Color")->isVisible());
    value("Flag").fromString("0");
    EXPECT_FALSE(control.getInput("Color")->isVisible());
}

TEST_F(OptionsTest, DeclarationsKeepTheirOrder)
{
    std::string order;
    for (const auto& item : control.items())
        if (const auto* const entry = std::get_if<std::shared_ptr<InputBase>>(&item))
            order += (*entry)->name() + ' ';
        else
            order += std::holds_alternative<Options::Control::Group>(item) ? "( " : "| ";
    EXPECT_EQ(order, "Field Grid Bundle | Flag ( Number Count Text Color Choice Label ");
}

/// A change of "Number" is refused when it is too large, after "Color" was hidden; one of "Count"
/// reads data that is required.
struct Refusing : EveryKind
{
    using EveryKind::EveryKind;

    void optionChanged(const std::string& name) override
    {
        setHidden("Color", true);
        if (name == "Number" && get<double>("Number") > 10.0)
            throw usage_error("too large");
        if (name == "Count")
            static_cast<void>(get<FunctionBase>("Field"));
        setHidden("Color", false);
    }
};

TEST(OptionChange, ThatIsRefusedIsUndone)
{
    Options::Control control;
    const Refusing options(control);
    control.getInput("Color")->setVisible(true);
    auto& number = dynamic_cast<InputValueBase&>(*control.getInput("Number"));
    EXPECT_THROW(number.fromString("11"), usage_error);
    EXPECT_EQ(number.toString(), "1.5");
    EXPECT_TRUE(control.getInput("Color")->isVisible());
    // Data that is missing is no reason to refuse: it may be connected later.
    dynamic_cast<InputValueBase&>(*control.getInput("Count")).fromString("4");
    EXPECT_EQ(options.get<long>("Count"), 4);
}

/// Data inputs beyond single classes.
struct ManyTypes : Options
{
    explicit ManyTypes(Control& control) : Options(control)
    {
        add<Field<1, Scalar>>("Field", "made from functions");
        add<TypeList<PointSet<3>, Function<Scalar>>>("Either", "a grid or values");
        add<StructuredGrid<1>>("Structured", "by a class between others");
        add<DataObject>("Any", "anything", std::function<bool(const DataObject&)>());
        addBundle<Field<1, Scalar>>("Pair", "exactly two",
                                    [](const DataObjectBundle& bundle)
                                    { return bundle.members().size() == 2; });
    }
};

TEST(DataInput, AcceptsExactlyWhatGetReturns)
{
    Options::Control control;
    const ManyTypes options(control);
    const auto connect = [&](const std::string& name, std::shared_ptr<const DataObject> object)
    { dynamic_cast<InputDataObject&>(*control.getInput(name)).setDataObject(object); };
    const std::shared_ptr<const DataObject> function = fieldOf<Scalar>({1.0, 2.0});
    const std::shared_ptr<const DataObject> vectors = fieldOf<Vector2>({{1.0, 2.0}, {}});

    connect("Field", function);
    ASSERT_NE((options.get<Field<1, Scalar>>("Field")), nullptr);
    EXPECT_THROW(connect("Field", vectors), usage_error);
    EXPECT_THROW(connect("Field", lineOf(2)), usage_error);

    connect("Either", function);
    EXPECT_EQ((options.get<TypeList<PointSet<3>, Function<Scalar>>>("Either")), function);
    EXPECT_THROW(connect("Either", vectors), usage_error);

    connect("Structured", lineOf(3));
    EXPECT_NE(options.get<StructuredGrid<1>>("Structured"), nullptr);
    EXPECT_THROW(connect("Structured", cloudOf<1>({{0.0}, {1.0}})), usage_error);

    connect("Any", vectors);
    EXPECT_EQ(options.get<DataObject>("Any"), vectors);

    auto& pair = dynamic_cast<InputDataObjectBundle&>(*control.getInput("Pair"));
    const auto bundleOf = [](DataObjectBundle::Members members)
    { return std::make_shared<const DataObjectBundle>(std::move(members)); };
    EXPECT_THROW(pair.setBundle(bundleOf({function})), usage_error);
    EXPECT_THROW(pair.setBundle(bundleOf({function, vectors})), usage_error);
    EXPECT_THROW(pair.setBundle(bundleOf({function, nullptr})), usage_error);
    pair.setBundle(bundleOf({function, function}));
    EXPECT_TRUE(pair.bundle()->members().front()->isA(Field<1, Scalar>::classTypeId()));
    EXPECT_TRUE((Field<1, Scalar>::classTypeId().isDerivedFrom(DataObject::classTypeId())));
}

// A class that inherits the statement of its base is none that an option may be declared for.
struct Silent : PointCloud<2>::PointSet
{};
static_assert(DataClass<PointCloud<2>> && !DataClass<Silent> && !DataClass<int>);

TEST(OptionDeclaration, ThatCannotWorkIsAProgrammingError)
{
    struct Twice : Options
    {
        explicit Twice(Control& control) : Options(control)
        {
            add<bool>("A", "", true);
            add<double>("A", "", 1.0);
        }
    };
    struct WrongDefault : Options
    {
        explicit WrongDefault(Control& control) : Options(control)
        {
            add<InputChoices>("A", "", {"one"}, "two");
        }
    };
    struct HidesNothing : Options
    {
        explicit HidesNothing(Control& control) : Options(control) { setHidden("A", true); }
    };
    Options::Control first;
    Options::Control second;
    Options::Control third;
    EXPECT_THROW(Twice{first}, logic_error);
    EXPECT_THROW(WrongDefault{second}, logic_error);
    EXPECT_THROW(HidesNothing{third}, logic_error);
}

}
