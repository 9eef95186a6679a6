#include <support/errorOf.hpp>

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/pipeline/NameMatch.hpp>

#include <gtest/gtest.h>

#include <vector>

namespace
{

using namespace tavrin;
using pipeline::matchingName;
using support::errorOf;

const std::vector<std::string> algorithms{"Field/Info", "Field/Sample Field on Given Grid",
                                          "Field/Show Hedgehogs", "Field/Tensor Field Operator"};
const std::vector<std::string> operators{"Norm of Field A", "Normalized Field A",
                                         "Trace of Field A", "Scale ( A * C )"};
const std::vector<std::string> options{"Color", "Color Map", "Scalar C", "Scalar D", "Scale"};

std::string nameOf(const std::string& text, const std::vector<std::string>& names)
{
    return matchingName(text, names, "name").value_or("none");
}

TEST(NameMatch, TakesBeginningsOfWords)
{
    for (const auto& [text, name] :
         {std::pair("info", "Field/Info"), std::pair("field-info", "Field/Info"),
          std::pair("FIELD INFO", "Field/Info"), std::pair("hedge", "Field/Show Hedgehogs"),
          std::pair("show", "Field/Show Hedgehogs"), std::pair("showhedge", "Field/Show Hedgehogs"),
          std::pair("samp grid", "Field/Sample Field on Given Grid"),
          std::pair("hedgehogs show", "none"), std::pair("edge", "none"), std::pair("", "none"),
          std::pair("/", "none")})
        EXPECT_EQ(nameOf(text, algorithms), name) << text;
}

/// A rule that comes earlier decides, even if names meet later rules as well.
TEST(NameMatch, PrefersNamesThenWholeWords)
{
    EXPECT_EQ(nameOf("norm", operators), "Norm of Field A");
    EXPECT_EQ(nameOf("norma", operators), "Normalized Field A");
    EXPECT_EQ(nameOf("trace", operators), "Trace of Field A");
    EXPECT_EQ(nameOf("color", options), "Color");
    EXPECT_EQ(nameOf("map", options), "Color Map");
    EXPECT_EQ(nameOf("scale", options), "Scale");
    EXPECT_EQ(nameOf("scalarc", options), "Scalar C");
}

TEST(NameMatch, ListsWhatAnAbbreviationMayMean)
{
    EXPECT_EQ(errorOf<usage_error>([] { nameOf("field a", operators); }),
              "\"field a\" fits more than one name: \"Norm of Field A\", \"Normalized Field A\", "
              "\"Trace of Field A\"");
    EXPECT_EQ(errorOf<usage_error>([] { nameOf("scalar", options); }),
              "\"scalar\" fits more than one name: \"Scalar C\", \"Scalar D\"");
}

}
