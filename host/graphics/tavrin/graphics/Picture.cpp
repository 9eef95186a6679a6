#include <tavrin/graphics/Picture.hpp>

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/value/LexicalCast.hpp>

#include <algorithm>
#include <array>
#include <string_view>

namespace tavrin::graphics
{

namespace
{

constexpr std::size_t largestSide = 16384;
constexpr double smallestFontScale = 0.1;
constexpr double largestFontScale = 10.0;

struct NamedView
{
    std::string_view name;
    View view;
};

constexpr std::array namedViews{NamedView{"x", {0.0, 0.0}},
                                NamedView{"-x", {180.0, 0.0}},
                                NamedView{"y", {90.0, 0.0}},
                                NamedView{"-y", {-90.0, 0.0}},
                                NamedView{"z", {-90.0, 90.0}},
                                NamedView{"-z", {-90.0, -90.0}},
                                NamedView{"iso", {-45.0, 35.26438968}}};

}

View View::fromText(const std::string& text)
{
    const auto* const named = std::ranges::find(namedViews, text, &NamedView::name);
    if (named != namedViews.end())
        return named->view;
    const auto comma = text.find(',');
    try
    {
        if (comma != std::string::npos)
        {
            const View view{lexicalCast<double>(text.substr(0, comma)),
                            lexicalCast<double>(text.substr(comma + 1))};
            if (std::isfinite(view.azimuth) && std::abs(view.elevation) <= 90.0)
                return view;
        }
    }
    catch (const bad_lexical_cast&)
    {
        // Reported below, in terms of views.
    }
    throw usage_error("\"" + text +
                      "\" is not a view; use x, -x, y, -y, z, -z, iso or AZIMUTH,ELEVATION in "
                      "degrees, the elevation in -90 to 90");
}

void checkPictureSize(std::size_t width, std::size_t height)
{
    const auto fits = [](std::size_t side) { return side >= 1 && side <= largestSide; };
    if (!fits(width) || !fits(height))
        throw usage_error("a picture of " + std::to_string(width) + "x" + std::to_string(height) +
                          " pixels cannot be painted; each side takes 1 to " +
                          std::to_string(largestSide));
}

void checkFontScale(double scale)
{
    if (!(scale >= smallestFontScale && scale <= largestFontScale))
        throw usage_error("texts cannot be scaled by " + toText(scale) + "; use " +
                          toText(smallestFontScale) + " to " + toText(largestFontScale));
}

std::optional<PictureFormat> pictureFormatOf(const std::string& extension)
{
    const auto& all = pictureExtensions();
    const auto found = std::ranges::find(all, extension);
    if (found == all.end())
        return {};
    return static_cast<PictureFormat>(found - all.begin());
}

const std::vector<std::string>& pictureExtensions()
{
    static const std::vector<std::string> extensions{".png", ".svg", ".pdf"};
    return extensions;
}

}
