#pragma once

#include <tracery/figures/Theme.h>

#include <cairo.h>

#include <memory>
#include <string>

namespace tracery::figures {

/// A rectangle in pixels, y downward.
struct Box {
    double left;
    double top;
    double right;
    double bottom;

    double width() const { return right - left; }
    double height() const { return bottom - top; }
    bool overlaps(const Box& other) const
    {
        return left < other.right && other.left < right && top < other.bottom && other.top < bottom;
    }
};

struct Font {
    double size; ///< pixels
    bool bold = false;
};

/// Where text stands relative to its point, along its own direction of writing.
enum class Align { Start, Centre, End };
enum class Turn { None, Upward };
/// Where text that is too long loses its characters. Names that are numbered at their end stay apart without
/// a middle.
enum class Cut { End, Middle };

/// What is drawn on: a Cairo context with the few shapes a figure is made of.
class Canvas {
public:
    /// whole  round text metrics to whole pixels, which suits a raster
    Canvas(cairo_surface_t& surface, bool whole, const Theme& theme);

    const Theme& theme() const { return theme_; }

    cairo_t* context() const { return context_.get(); }
    /// Whether anything drawn so far failed; nothing is drawn after that.
    cairo_status_t status() const { return cairo_status(context()); }
    bool failed() const { return status() != CAIRO_STATUS_SUCCESS; }

    void setColour(Colour colour, double opacity = 1);

    void fill(const Box& box);
    /// A straight horizontal or vertical line that fills whole pixels: `width` of them, from the middle
    /// outward.
    void horizontal(double left, double right, double y, double width);
    void vertical(double x, double top, double bottom, double width);
    /// Likewise, dashed.
    void dashedHorizontal(double left, double right, double y, double width);
    void dashedVertical(double x, double top, double bottom, double width);

    double textWidth(const std::string& text, Font font);
    /// The text, with its end or middle replaced by "…" where it is wider than `room`; empty if no
    /// character fits.
    std::string fitted(const std::string& text, Font font, double room, Cut cut = Cut::End);
    /// Draws clean text with its baseline at y (turned: at x).
    void text(const std::string& text, Font font, Align align, double x, double y, Turn turn = Turn::None);

private:
    void select(Font font);
    void dashed(double x0, double y0, double x1, double y1, double width);

    struct Destroy {
        void operator()(cairo_t* context) const noexcept { cairo_destroy(context); }
    };
    std::unique_ptr<cairo_t, Destroy> context_;
    const Theme& theme_;
};

/// Keeps the context's state, among it the clip, and brings it back.
class SavedState {
public:
    explicit SavedState(const Canvas& canvas) : context_(canvas.context()) { cairo_save(context_); }
    ~SavedState() { cairo_restore(context_); }
    SavedState(const SavedState&) = delete;
    SavedState& operator=(const SavedState&) = delete;

private:
    cairo_t* context_;
};

} // namespace tracery::figures
