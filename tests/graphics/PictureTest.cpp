#include <support/abortFlags.hpp>
#include <support/errorOf.hpp>

#include <tavrin/graphics/Picture.hpp>

#include <tavrin/base/Exceptions.hpp>

#include <gtest/gtest.h>

namespace
{

using namespace support;
using namespace tavrin;
using namespace tavrin::graphics;

TEST(View, HasNamesAndAngles)
{
    EXPECT_EQ(View::fromText("x"), (View{0.0, 0.0}));
    EXPECT_EQ(View::fromText("-y"), (View{-90.0, 0.0}));
    EXPECT_EQ(View::fromText("z").elevation, 90.0);
    EXPECT_EQ(View::fromText("iso").azimuth, -45.0);
    EXPECT_EQ(View::fromText("400, -12.5"), (View{400.0, -12.5}));
    for (const std::string text :
         {"", "front", "10", "10,", ",10", "0,91", "nan,0", "0,nan", "1,2,3"})
        EXPECT_EQ(errorOf<usage_error>([&] { View::fromText(text); }),
                  "\"" + text +
                      "\" is not a view; use x, -x, y, -y, z, -z, iso or AZIMUTH,ELEVATION in "
                      "degrees, the elevation in -90 to 90");
}

TEST(PictureSize, HasLimits)
{
    EXPECT_NO_THROW(checkPictureSize(1, 16384));
    EXPECT_EQ(errorOf<usage_error>([] { checkPictureSize(0, 0); }),
              "a picture of 0x0 pixels cannot be painted; each side takes 1 to 16384");
    EXPECT_EQ(errorOf<usage_error>([] { checkPictureSize(640, 100000); }),
              "a picture of 640x100000 pixels cannot be painted; each side takes 1 to 16384");
    EXPECT_THROW(paint({}, {.width = 0}, neverAbort), usage_error);
}

}
