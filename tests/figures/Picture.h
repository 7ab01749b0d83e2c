#pragma once

#include <tracery/figures/Figure.h>

#include <cairo.h>

#include <memory>
#include <set>
#include <string>

namespace tracery::figures {

/// The pixels of a picture that was written.
class Picture {
public:
    Picture(const Figure& figure, const std::string& path)
    {
        writeFigure(figure, path);
        surface_.reset(cairo_image_surface_create_from_png(path.c_str()));
    }
    int width() const { return cairo_image_surface_get_width(surface_.get()); }
    int height() const { return cairo_image_surface_get_height(surface_.get()); }
    unsigned at(int x, int y) const
    {
        const unsigned char* row =
            cairo_image_surface_get_data(surface_.get()) + y * cairo_image_surface_get_stride(surface_.get());
        return reinterpret_cast<const unsigned*>(row)[x] & 0xFFFFFFU;
    }
    /// Columns in which a pixel under the legend has a colour, rather than a grey.
    std::set<int> colouredColumns(int top) const
    {
        std::set<int> columns;
        for (int x = 0; x < width(); ++x)
            for (int y = top; y < height(); ++y) {
                const unsigned pixel = at(x, y);
                const unsigned red = pixel >> 16U;
                const unsigned green = pixel >> 8U & 0xFFU;
                if (red != green || green != (pixel & 0xFFU))
                    columns.insert(x);
            }
        return columns;
    }

private:
    std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface_{nullptr, cairo_surface_destroy};
};

} // namespace tracery::figures
