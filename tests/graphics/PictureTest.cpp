#include <tavrin/graphics/Picture.hpp>

#include <tavrin/base/Exceptions.hpp>

#include <gtest/gtest.h>

namespace
{

using namespace tavrin;
using namespace tavrin::graphics;

template<typename Call>
std::string refusalOf(const Call& call)
{
    try
    {
        call();
    }
    catch (const usage_error& error)
    {
        return error.what();
    }
    return {};
}

TEST(View, HasNamesAndAngles)
{
    EXPECT_EQ(View::fromText("x"), (View{0.0, 0.0}));
    EXPECT_EQ(View::fromText("-y"), (View{-90.0, 0.0}));
    EXPECT_EQ(View::fromText("z").elevation, 90.0);
    EXPECT_EQ(View::fromText("iso").azimuth, -45.0);
    EXPECT_EQ(View::fromText("400, -12.5"), (View{400.0, -12.5}));
    for (const std::string text :
         {"", "front", "10", "10,", ",10", "0,91", "nan,0", "0,nan", "1,2,3"})
        EXPECT_EQ(refusalOf([&] { View::fromText(text); }),
                  "\"" + text +
                      "\" is not a view; use x, -x, y, -y, z, -z, iso or AZIMUTH,ELEVATION in "
                      "degrees, the elevation in -90 to 90");
}

TEST(PictureSize, HasLimits)
{
    EXPECT_EQ(refusalOf([] { checkPictureSize(1, 16384); }), "");
    EXPECT_EQ(refusalOf([] { checkPictureSize(0, 0); }),
              "a picture of 0x0 pixels cannot be painted; each side takes 1 to 16384");
    EXPECT_EQ(refusalOf([] { checkPictureSize(640, 100000); }),
              "a picture of 640x100000 pixels cannot be painted; each side takes 1 to 16384");
    const volatile bool abortFlag = false;
    EXPECT_NE(refusalOf([&] { paint({}, {.width = 0}, abortFlag); }), "");
}

}
