#pragma once

#include "libraries.h"

#include <tracery/figures/Figure.h>

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

namespace scope {

/// Draws a figure as rows of text: a heading, then a row a line, with its name, its range in the window, and its course
/// in block characters. A character stands for the extreme of its column that is farther from the middle of the line's
/// course, so that a spike shows whichever way it goes; a gap is blank.
/// columns   characters a row has room for
/// mostRows  lines beyond these are left out, and the heading says so
std::vector<std::string> drawText(const Figure& figure, std::size_t columns, std::size_t mostRows);

/// Shows frames on standard output: in place on a terminal, whose size it follows, one after the other elsewhere.
class TextScreen {
public:
    TextScreen();
    /// Room for a row.
    std::size_t columns() const { return size_.columns; }
    /// throws  std::runtime_error when the output cannot be written
    void show(const Figure& figure);

private:
    struct Size {
        std::size_t columns = 80;
        std::size_t rows = std::numeric_limits<std::size_t>::max(); ///< of lines
        bool operator==(const Size&) const = default;
    };
    Size currentSize() const;

    bool terminal_;
    Size size_;
    std::size_t shown_ = 0; ///< rows of the last frame
};

} // namespace scope
