#include "TextMeter.hpp"

#include <algorithm>
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

}

void useFont(cairo_t* context, double size)
{
    cairo_select_font_face(context, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL,
                           CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context, size);
    // Without hinting, the same text looks the same everywhere.
    const std::unique_ptr<cairo_font_options_t, decltype(&cairo_font_options_destroy)> options(
        cairo_font_options_create(), &cairo_font_options_destroy);
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
    cairo_set_font_options(context, options.get());
}

TextMeter::TextMeter(const Style& style)
    : mFontSize(style.fontSize),
      mSurface(cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1), &cairo_surface_destroy),
      mContext(cairo_create(mSurface.get()), &cairo_destroy)
{
    if (cairo_status(mContext.get()) != CAIRO_STATUS_SUCCESS)
        throw std::bad_alloc();
}

Label TextMeter::measured(std::string text, double scale) const
{
    Label label{.text = std::move(text), .fontSize = scale * mFontSize};
    useFont(mContext.get(), label.fontSize);
    cairo_text_extents_t extents{};
    cairo_text_extents(mContext.get(), label.text.c_str(), &extents);
    label.width = extents.x_advance;
    label.height = digitHeight * label.fontSize;
    return label;
}

Label TextMeter::label(const std::string& text, bool isVertical, double scale,
                       double mostLength) const
{
    std::string shown = printable(text);
    Label label = measured(shown, scale);
    while (label.width > mostLength && !shown.empty())
    {
        // Removes a whole character: bytes 10xxxxxx continue one.
        bool isContinued = true;
        while (isContinued && !shown.empty())
        {
            isContinued = (static_cast<unsigned char>(shown.back()) & 0xC0U) == 0x80U;
            shown.pop_back();
        }
        label = measured(shown + "\u2026", scale);
    }
    label.isVertical = isVertical;
    if (isVertical)
        std::swap(label.width, label.height);
    return label;
}

}
