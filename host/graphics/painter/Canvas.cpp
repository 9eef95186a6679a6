#include "Canvas.hpp"

#include <algorithm>
#include <cstring>
#include <new>

namespace tavrin::graphics::painter
{

namespace
{

/// Height of digits and capital letters of the font, in units of the font size.
constexpr double digitHeight = 0.73;

/// The number of bytes of the printable UTF-8 character at a position; 0 if there is none.
std::size_t validSequenceLength(const std::string& text, std::size_t at)
{
    const auto byte = [&](std::size_t i)
    { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
    const auto follows = [&](std::size_t count)
    {
        for (std::size_t i = 1; i <= count; ++i)
            if ((byte(at + i) & 0xC0U) != 0x80U)
                return false;
        return true;
    };
    const unsigned lead = byte(at);
    const unsigned second = byte(at + 1);
    if (lead >= 0x20 && lead < 0x7F)
        return 1;
    if (lead >= 0xC2 && lead <= 0xDF && follows(1))
        return 2;
    // Overlong forms, surrogates and numbers beyond the last code point are invalid.
    if (lead >= 0xE0 && lead <= 0xEF && follows(2) && (lead != 0xE0 || second >= 0xA0) &&
        (lead != 0xED || second < 0xA0))
        return 3;
    if (lead >= 0xF0 && lead <= 0xF4 && follows(3) && (lead != 0xF0 || second >= 0x90) &&
        (lead != 0xF4 || second < 0x90))
        return 4;
    return 0;
}

/// The text with a question mark for every control character and every byte that is not UTF-8.
std::string printable(const std::string& text)
{
    std::string result;
    for (std::size_t at = 0; at < text.size();)
    {
        const std::size_t length = validSequenceLength(text, at);
        result += length == 0 ? "?" : text.substr(at, length);
        at += std::max<std::size_t>(length, 1);
    }
    return result;
}

std::uint32_t pixelOf(const std::uint8_t* rgba)
{
    return static_cast<std::uint32_t>(rgba[3]) << 24U | static_cast<std::uint32_t>(rgba[0]) << 16U |
           static_cast<std::uint32_t>(rgba[1]) << 8U | rgba[2];
}

}

Style::Style(double width, double height, const Color& pictureBackground)
    : background(pictureBackground)
{
    const double base = std::min(0.75 * width, height);
    fontSize = std::max(0.0235 * base, 10.0);
    lineWidth = std::max(base / 800.0, 1.0);
    hasText = width >= 200.0 && height >= 150.0;
    // Behind a transparent background, white paper is assumed.
    const auto over = [&](float part) { return part * background.alpha + 1.0F - background.alpha; };
    const float brightness = 0.3F * over(background.red) + 0.59F * over(background.green) +
                             0.11F * over(background.blue);
    const float gray = brightness > 0.45F ? 0.12F : 0.92F;
    ink = {gray, gray, gray, 1.0F};
}

Canvas::Canvas(std::size_t width, std::size_t height, const Style& style)
    : mWidth(width), mHeight(height), mStyle(style),
      mSurface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(width),
                                          static_cast<int>(height)),
               &cairo_surface_destroy),
      mContext(cairo_create(mSurface.get()), &cairo_destroy)
{
    if (cairo_status(mContext.get()) != CAIRO_STATUS_SUCCESS)
        throw std::bad_alloc();
    cairo_select_font_face(mContext.get(), "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL,
                           CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(mContext.get(), style.fontSize);
    // Without hinting, the same text looks the same everywhere.
    const std::unique_ptr<cairo_font_options_t, decltype(&cairo_font_options_destroy)> options(
        cairo_font_options_create(), &cairo_font_options_destroy);
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
    cairo_set_font_options(mContext.get(), options.get());
}

Label Canvas::label(const std::string& text, bool isVertical) const
{
    Label label{.text = printable(text), .isVertical = isVertical};
    cairo_text_extents_t extents{};
    cairo_text_extents(mContext.get(), label.text.c_str(), &extents);
    label.width = extents.x_advance;
    label.height = digitHeight * mStyle.fontSize;
    if (isVertical)
        std::swap(label.width, label.height);
    return label;
}

void Canvas::setTile(const Frame& tile, const std::vector<std::uint8_t>& pixels)
{
    cairo_surface_flush(mSurface.get());
    unsigned char* const data = cairo_image_surface_get_data(mSurface.get());
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(mSurface.get()));
    const auto left = static_cast<std::size_t>(tile.left);
    const auto top = static_cast<std::size_t>(tile.top);
    const auto width = static_cast<std::size_t>(tile.width);
    const auto height = static_cast<std::size_t>(tile.height);
    for (std::size_t row = 0; row < height; ++row)
    {
        const std::uint8_t* const source = pixels.data() + (height - 1 - row) * width * 4;
        unsigned char* const target = data + (top + row) * stride + left * 4;
        for (std::size_t column = 0; column < width; ++column)
        {
            const std::uint32_t pixel = pixelOf(source + column * 4);
            std::memcpy(target + column * 4, &pixel, sizeof(pixel));
        }
    }
    cairo_surface_mark_dirty(mSurface.get());
}

void Canvas::useColor(const Color& color, double alpha) const
{
    cairo_set_source_rgba(mContext.get(), color.red, color.green, color.blue, color.alpha * alpha);
}

void Canvas::draw(const Stroke& stroke)
{
    useColor(mStyle.ink);
    cairo_set_line_width(mContext.get(), mStyle.lineWidth);
    cairo_move_to(mContext.get(), stroke.from[0], stroke.from[1]);
    cairo_line_to(mContext.get(), stroke.to[0], stroke.to[1]);
    cairo_stroke(mContext.get());
}

void Canvas::draw(const Label& label)
{
    cairo_t* const context = mContext.get();
    cairo_save(context);
    cairo_translate(context, label.x, label.y);
    double width = label.width;
    double height = label.height;
    if (label.isVertical)
    {
        cairo_rotate(context, -0.5 * 3.14159265358979323846);
        std::swap(width, height);
    }
    cairo_move_to(context, -0.5 * width, 0.5 * height);
    cairo_text_path(context, label.text.c_str());
    // A halo keeps the text readable in front of glyphs.
    useColor(mStyle.background, 0.8);
    cairo_set_line_join(context, CAIRO_LINE_JOIN_ROUND);
    cairo_set_line_width(context, 0.22 * mStyle.fontSize);
    cairo_stroke_preserve(context);
    useColor(mStyle.ink);
    cairo_fill(context);
    cairo_restore(context);
}

void Canvas::fill(const Frame& frame, const Color& color)
{
    useColor(color);
    cairo_rectangle(mContext.get(), frame.left, frame.top, frame.width, frame.height);
    cairo_fill(mContext.get());
}

void Canvas::outline(const Frame& frame)
{
    useColor(mStyle.ink);
    cairo_set_line_width(mContext.get(), mStyle.lineWidth);
    cairo_rectangle(mContext.get(), frame.left, frame.top, frame.width, frame.height);
    cairo_stroke(mContext.get());
}

Image Canvas::image() const
{
    cairo_surface_flush(mSurface.get());
    const unsigned char* const data = cairo_image_surface_get_data(mSurface.get());
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(mSurface.get()));
    Image image{mWidth, mHeight, std::vector<std::uint8_t>(mWidth * mHeight * 4)};
    for (std::size_t row = 0; row < mHeight; ++row)
        for (std::size_t column = 0; column < mWidth; ++column)
        {
            std::uint32_t pixel = 0;
            std::memcpy(&pixel, data + row * stride + column * 4, sizeof(pixel));
            std::uint8_t* const rgba = image.rgba.data() + (row * mWidth + column) * 4;
            const std::uint32_t alpha = pixel >> 24U;
            const auto straight = [&](unsigned shift)
            {
                const std::uint32_t part = pixel >> shift & 0xFFU;
                return static_cast<std::uint8_t>(
                    alpha == 0 ? 0U : std::min(255U, (part * 255U + alpha / 2U) / alpha));
            };
            rgba[0] = straight(16);
            rgba[1] = straight(8);
            rgba[2] = straight(0);
            rgba[3] = static_cast<std::uint8_t>(alpha);
        }
    return image;
}

}
