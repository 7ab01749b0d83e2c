#include "Canvas.h"

#include <array>
#include <cmath>
#include <numbers>

namespace tracery::figures {

namespace {

struct DestroyOptions {
    void operator()(cairo_font_options_t* options) const noexcept { cairo_font_options_destroy(options); }
};

/// The first pixel boundary of a line `width` pixels wide around `at`.
double snapped(double at, double width) { return std::round(at - width / 2); }

} // namespace

Canvas::Canvas(cairo_surface_t& surface, bool whole, const Theme& theme)
    : context_(cairo_create(&surface)), theme_(theme)
{
    // Set in full, so that the machine's own font settings have no part in the picture.
    const std::unique_ptr<cairo_font_options_t, DestroyOptions> options(cairo_font_options_create());
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options.get(), whole ? CAIRO_HINT_STYLE_SLIGHT : CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options.get(), whole ? CAIRO_HINT_METRICS_ON : CAIRO_HINT_METRICS_OFF);
    cairo_set_font_options(context(), options.get());
}

void Canvas::setColour(Colour colour, double opacity)
{
    cairo_set_source_rgba(context(), colour.red, colour.green, colour.blue, opacity);
}

void Canvas::fill(const Box& box)
{
    cairo_rectangle(context(), box.left, box.top, box.width(), box.height());
    cairo_fill(context());
}

void Canvas::horizontal(double left, double right, double y, double width)
{
    const double top = snapped(y, width);
    fill({std::round(left), top, std::round(right), top + width});
}

void Canvas::vertical(double x, double top, double bottom, double width)
{
    const double left = snapped(x, width);
    fill({left, std::round(top), left + width, std::round(bottom)});
}

void Canvas::dashedHorizontal(double left, double right, double y, double width)
{
    const double middle = snapped(y, width) + width / 2;
    dashed(left, middle, right, middle, width);
}

void Canvas::dashedVertical(double x, double top, double bottom, double width)
{
    const double middle = snapped(x, width) + width / 2;
    dashed(middle, top, middle, bottom, width);
}

void Canvas::dashed(double x0, double y0, double x1, double y1, double width)
{
    const SavedState saved(*this);
    const std::array dashes = {5 * width, 3 * width};
    cairo_set_dash(context(), dashes.data(), static_cast<int>(dashes.size()), 0);
    cairo_set_line_cap(context(), CAIRO_LINE_CAP_BUTT);
    cairo_set_line_width(context(), width);
    cairo_move_to(context(), x0, y0);
    cairo_line_to(context(), x1, y1);
    cairo_stroke(context());
}

void Canvas::select(Font font)
{
    cairo_select_font_face(context(), "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL,
                           font.bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context(), font.size);
}

double Canvas::textWidth(const std::string& text, Font font)
{
    select(font);
    cairo_text_extents_t extents;
    cairo_text_extents(context(), text.c_str(), &extents);
    return extents.x_advance;
}

std::string Canvas::fitted(const std::string& text, Font font, double room, Cut cut)
{
    if (textWidth(text, font) <= room)
        return text;
    const auto insideCharacter = [&](std::size_t at) {
        return at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80;
    };
    const auto shortened = [&](std::size_t kept) {
        std::size_t head = cut == Cut::Middle ? kept - kept / 2 : kept;
        std::size_t tail = text.size() - (kept - head);
        while (insideCharacter(head))
            --head;
        while (insideCharacter(tail))
            ++tail;
        return text.substr(0, head) + "…" + text.substr(tail);
    };
    std::size_t fits = 0;
    std::size_t tooLong = text.size();
    while (tooLong - fits > 1) {
        const std::size_t middle = fits + (tooLong - fits) / 2;
        (textWidth(shortened(middle), font) <= room ? fits : tooLong) = middle;
    }
    return fits == 0 ? std::string() : shortened(fits);
}

void Canvas::text(const std::string& text, Font font, Align align, double x, double y, Turn turn)
{
    const double width = textWidth(text, font);
    const double back = align == Align::Start ? 0 : align == Align::Centre ? width / 2 : width;
    const SavedState saved(*this);
    if (turn == Turn::Upward) {
        cairo_translate(context(), std::round(x), std::round(y + back));
        cairo_rotate(context(), -std::numbers::pi / 2);
    } else {
        cairo_translate(context(), std::round(x - back), std::round(y));
    }
    cairo_move_to(context(), 0, 0);
    cairo_show_text(context(), text.c_str());
    cairo_new_path(context());
}

} // namespace tracery::figures
