#include "Canvas.hpp"

#include <tavrin/base/Exceptions.hpp>

#include <cairo-pdf.h>
#include <cairo-svg.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <numbers>

namespace tavrin::graphics::painter
{

namespace
{

/// Points, the unit of PDF, per pixel of 1/96 inch.
constexpr double pointsPerPixel = 0.75;

std::uint32_t pixelOf(const std::uint8_t* rgba)
{
    return static_cast<std::uint32_t>(rgba[3]) << 24U | static_cast<std::uint32_t>(rgba[0]) << 16U |
           static_cast<std::uint32_t>(rgba[1]) << 8U | rgba[2];
}

cairo_status_t append(void* target, const unsigned char* bytes, unsigned int count)
{
    auto& all = *static_cast<std::vector<std::uint8_t>*>(target);
    all.insert(all.end(), bytes, bytes + count);
    return CAIRO_STATUS_SUCCESS;
}

/// The coordinate of the middle of a line with a width of whole pixels that lies on the pixel grid.
double aligned(double coordinate, double lineWidth)
{
    const double half = 0.5 * std::fmod(lineWidth, 2.0);
    return std::round(coordinate - half) + half;
}

}

Canvas::Canvas(std::size_t width, std::size_t height, const Style& style,
               std::optional<PictureFormat> format)
    : mWidth(width), mHeight(height), mStyle(style), mFormat(format), mSurface(makeSurface()),
      mContext(cairo_create(mSurface.get()), &cairo_destroy)
{
    if (cairo_status(mContext.get()) != CAIRO_STATUS_SUCCESS)
        throw std::bad_alloc();
    if (mFormat == PictureFormat::Pdf)
        cairo_scale(mContext.get(), pointsPerPixel, pointsPerPixel);
    cairo_set_line_join(mContext.get(), CAIRO_LINE_JOIN_MITER);
    // Rims of sharp tips end bluntly.
    cairo_set_miter_limit(mContext.get(), 3.0);
    if (style.background.alpha > 0.0F)
    {
        useColor(style.background);
        cairo_paint(mContext.get());
    }
}

Canvas::Surface Canvas::makeSurface()
{
    const auto width = static_cast<double>(mWidth);
    const auto height = static_cast<double>(mHeight);
    cairo_surface_t* surface = nullptr;
    if (mFormat == PictureFormat::Svg)
    {
        surface = cairo_svg_surface_create_for_stream(&append, &mFile, width, height);
        cairo_svg_surface_set_document_unit(surface, CAIRO_SVG_UNIT_PX);
    }
    else if (mFormat == PictureFormat::Pdf)
    {
        surface = cairo_pdf_surface_create_for_stream(&append, &mFile, pointsPerPixel * width,
                                                      pointsPerPixel * height);
        // Without the time of creation, the same picture is the same file.
        cairo_pdf_surface_set_metadata(surface, CAIRO_PDF_METADATA_CREATE_DATE, "");
    }
    else
        surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(mWidth),
                                             static_cast<int>(mHeight));
    return {surface, &cairo_surface_destroy};
}

void Canvas::drawPixels(const Frame& frame, const std::vector<std::uint8_t>& pixels)
{
    const auto width = static_cast<std::size_t>(frame.width);
    const auto height = static_cast<std::size_t>(frame.height);
    const Surface image(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(width),
                                                   static_cast<int>(height)),
                        &cairo_surface_destroy);
    unsigned char* const data = cairo_image_surface_get_data(image.get());
    if (data == nullptr)
        throw std::bad_alloc();
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(image.get()));
    for (std::size_t row = 0; row < height; ++row)
    {
        const std::uint8_t* const source = pixels.data() + row * width * 4;
        unsigned char* const target = data + row * stride;
        for (std::size_t column = 0; column < width; ++column)
        {
            const std::uint32_t pixel = pixelOf(source + column * 4);
            std::memcpy(target + column * 4, &pixel, sizeof(pixel));
        }
    }
    cairo_surface_mark_dirty(image.get());
    cairo_set_source_surface(mContext.get(), image.get(), frame.left, frame.top);
    cairo_pattern_set_filter(cairo_get_source(mContext.get()), CAIRO_FILTER_NEAREST);
    cairo_rectangle(mContext.get(), frame.left, frame.top, frame.width, frame.height);
    cairo_fill(mContext.get());
}

void Canvas::draw(const Canvas& other)
{
    cairo_set_source_surface(mContext.get(), other.mSurface.get(), 0.0, 0.0);
    cairo_paint(mContext.get());
}

void Canvas::useColor(const Color& color, double alpha) const
{
    cairo_set_source_rgba(mContext.get(), color.red, color.green, color.blue, color.alpha * alpha);
}

void Canvas::draw(const Stroke& stroke, const Color& color)
{
    Stroke shown = stroke;
    constexpr double straight = 0.01;
    if (!isScalable())
        for (const std::size_t axis : {0U, 1U})
            if (std::abs(stroke.from[axis] - stroke.to[axis]) < straight)
                shown.from[axis] = shown.to[axis] = aligned(stroke.from[axis], mStyle.lineWidth);
    draw(shown, color, mStyle.lineWidth);
}

void Canvas::draw(const Stroke& stroke, const Color& color, double lineWidth)
{
    useColor(color);
    cairo_set_line_width(mContext.get(), lineWidth);
    cairo_move_to(mContext.get(), stroke.from[0], stroke.from[1]);
    cairo_line_to(mContext.get(), stroke.to[0], stroke.to[1]);
    cairo_stroke(mContext.get());
}

void Canvas::draw(const Label& label)
{
    cairo_t* const context = mContext.get();
    cairo_save(context);
    useFont(context, label.fontSize);
    cairo_translate(context, label.x, label.y);
    double width = label.width;
    double height = label.height;
    if (label.isVertical)
    {
        cairo_rotate(context, -0.5 * std::numbers::pi);
        std::swap(width, height);
    }
    cairo_move_to(context, -0.5 * width, 0.5 * height);
    cairo_text_path(context, label.text.c_str());
    // A halo keeps the text readable in front of glyphs.
    useColor(mStyle.background, 0.8);
    cairo_set_line_join(context, CAIRO_LINE_JOIN_ROUND);
    cairo_set_line_width(context, 0.22 * label.fontSize);
    cairo_stroke(context);
    useColor(mStyle.ink);
    cairo_move_to(context, -0.5 * width, 0.5 * height);
    cairo_show_text(context, label.text.c_str());
    cairo_restore(context);
}

void Canvas::fill(const Frame& frame, const Color& color)
{
    useColor(color);
    cairo_rectangle(mContext.get(), frame.left, frame.top, frame.width, frame.height);
    cairo_fill(mContext.get());
}

void Canvas::trace(std::span<const Pixel> corners)
{
    // A text that was drawn before has left a current point.
    cairo_new_path(mContext.get());
    for (const Pixel& corner : corners)
        cairo_line_to(mContext.get(), corner[0], corner[1]);
    cairo_close_path(mContext.get());
}

void Canvas::fillPolygon(std::span<const Pixel> corners, const Color& color)
{
    useColor(color);
    trace(corners);
    cairo_fill(mContext.get());
}

void Canvas::outlinePolygon(std::span<const Pixel> corners, const Color& color, double lineWidth)
{
    useColor(color);
    cairo_set_line_width(mContext.get(), lineWidth);
    trace(corners);
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

std::vector<std::uint8_t> Canvas::finishFile(const std::string& title)
{
    if (mFormat == PictureFormat::Pdf && !title.empty())
        cairo_pdf_surface_set_metadata(mSurface.get(), CAIRO_PDF_METADATA_TITLE, title.c_str());
    cairo_surface_finish(mSurface.get());
    const cairo_status_t status = cairo_surface_status(mSurface.get());
    if (status == CAIRO_STATUS_NO_MEMORY)
        throw std::bad_alloc();
    if (status != CAIRO_STATUS_SUCCESS)
        throw runtime_error(std::string("the picture cannot be written: ") +
                            cairo_status_to_string(status));
    return std::move(mFile);
}

}
