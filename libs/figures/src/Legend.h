#pragma once

#include "Canvas.h"
#include "Sizes.h"
#include "Styles.h"

#include <string>
#include <vector>

namespace tracery::figures {

/// The names of the traces with their lines, in rows between `left` and `right`. One row flows; more rows are
/// aligned in columns. Long names are cut; what goes beyond the rows allowed is counted in the last place
/// ("+12 more").
class Legend {
public:
    Legend(Canvas& canvas, const Styles& styles, const Sizes& sizes, double left, double right, int mostRows);

    double height() const { return rowHeight_ * rows_; }
    void draw(Canvas& canvas, double top) const;

private:
    struct Entry {
        std::string text;
        TraceStyle style;
        double room; ///< for the text
        double x = 0;
        int row = 0;
        bool sample = true; ///< has a line of a trace before it
    };
    void flow(double left);
    void arrange(double left, double right, int mostRows);
    /// Of an entry's line and the spaces before and after its text.
    double extra() const { return sampleWidth_ + gap_; }

    Sizes sizes_;
    double sampleWidth_; ///< of the line before a name, with the space between
    double gap_;         ///< between entries
    double rowHeight_;
    int rows_ = 0;
    std::vector<Entry> entries_;
};

} // namespace tracery::figures
