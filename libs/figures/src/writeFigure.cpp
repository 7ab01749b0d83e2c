#include "Canvas.h"
#include "drawFigure.h"

#include <tracery/basics/WholeFile.h>
#include <tracery/figures/Figure.h>

#include <cairo-svg.h>

#include <algorithm>
#include <stdexcept>
#include <string_view>

namespace tracery::figures {

using namespace basics;

namespace {

struct DestroySurface {
    void operator()(cairo_surface_t* surface) const noexcept { cairo_surface_destroy(surface); }
};
using Surface = std::unique_ptr<cairo_surface_t, DestroySurface>;

cairo_status_t appendTo(void* text, const unsigned char* data, unsigned size) noexcept
{
    try {
        static_cast<std::string*>(text)->append(reinterpret_cast<const char*>(data), size);
        return CAIRO_STATUS_SUCCESS;
    } catch (const std::exception&) {
        return CAIRO_STATUS_NO_MEMORY;
    }
}

cairo_status_t drawPng(const Figure& figure, std::string& png)
{
    const Surface surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, figure.width, figure.height));
    Canvas canvas(*surface, true, themeOf(figure.theme));
    drawFigure(canvas, figure);
    return canvas.failed() ? canvas.status() : cairo_surface_write_to_png_stream(surface.get(), appendTo, &png);
}

/// Cairo names the page after the number of surfaces the process has made before, and nothing refers to that
/// name.
void dropPageName(std::string& svg)
{
    constexpr std::string_view kNamed = "<g id=\"surface";
    const std::size_t start = svg.find(kNamed);
    if (start != std::string::npos)
        svg.replace(start, svg.find('>', start) - start, "<g");
}

cairo_status_t drawSvg(const Figure& figure, std::string& svg)
{
    const Surface surface(cairo_svg_surface_create_for_stream(appendTo, &svg, figure.width, figure.height));
    cairo_svg_surface_set_document_unit(surface.get(), CAIRO_SVG_UNIT_PX);
    Canvas canvas(*surface, false, themeOf(figure.theme));
    drawFigure(canvas, figure);
    if (canvas.failed())
        return canvas.status();
    cairo_surface_finish(surface.get());
    dropPageName(svg);
    return cairo_surface_status(surface.get());
}

struct Format {
    PictureFormatEnum format;
    std::string_view ending;
    int mostPixels;
    cairo_status_t (*draw)(const Figure&, std::string&);
};
constexpr Format kFormats[] = {{PictureFormatEnum::Png, ".png", kMostPixels, drawPng},
                               {PictureFormatEnum::Svg, ".svg", kMaxPixels* kMaxPixels, drawSvg}};

bool endsWith(std::string_view path, std::string_view ending)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return path.size() >= ending.size() &&
           std::equal(ending.rbegin(), ending.rend(), path.rbegin(), [&](char a, char b) { return a == lower(b); });
}

/// name  what messages begin with
void requireSize(const Format& format, const std::string& name, int width, int height)
{
    const auto fits = [](int pixels) { return pixels >= kMinPixels && pixels <= kMaxPixels; };
    if (!fits(width) || !fits(height))
        throw std::runtime_error(name + ": a picture is " + std::to_string(kMinPixels) + " to " +
                                 std::to_string(kMaxPixels) + " pixels wide and high, not " + std::to_string(width) +
                                 " × " + std::to_string(height));
    if (width * height > format.mostPixels)
        throw std::runtime_error(name + ": a picture of pixels, a .png, has at most " + std::to_string(kMostPixels) +
                                 " of them, not " + std::to_string(width) + " × " + std::to_string(height));
}

const Format& formatFor(const std::string& path, int width, int height)
{
    const auto format = std::ranges::find_if(kFormats, [&](const Format& each) { return endsWith(path, each.ending); });
    if (format == std::end(kFormats))
        throw std::runtime_error(path + ": the name of a picture must end in .png or .svg");
    requireSize(*format, path, width, height);
    return *format;
}

std::string draw(const Figure& figure, const Format& format, const std::string& name)
{
    std::string picture;
    const cairo_status_t status = format.draw(figure, picture);
    if (status != CAIRO_STATUS_SUCCESS)
        throw std::runtime_error(name + ": cannot be drawn: " + cairo_status_to_string(status));
    return picture;
}

} // namespace

void requirePictureSize(const std::string& path, int width, int height) { formatFor(path, width, height); }

void requireWritablePicture(const std::string& path, int width, int height)
{
    formatFor(path, width, height);
    const WholeFile probe(path);
}

void writeFigure(const Figure& figure, const std::string& path)
{
    const Format& format = formatFor(path, figure.width, figure.height);
    WholeFile file(path);
    const std::string picture = draw(figure, format, path);
    file.write(picture.data(), picture.size());
    file.keep();
}

std::string pictureOf(const Figure& figure, PictureFormatEnum format)
{
    const auto known = std::ranges::find(kFormats, format, &Format::format);
    requireSize(*known, "picture", figure.width, figure.height);
    return draw(figure, *known, "picture");
}

} // namespace tracery::figures
