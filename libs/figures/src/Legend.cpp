#include "Legend.h"

#include "drawTrace.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tracery::figures {

namespace {
constexpr double kSampleWidth = 22; // sizes in pixels at scale 1
constexpr double kSampleGap = 6;
constexpr double kEntryGap = 18;
constexpr double kLongestName = 220;
constexpr double kShortestName = 60; // names are cut to this before any is left out
constexpr double kRowHeight = 1.45;  // in text sizes
constexpr double kMiddle = 0.36;     // of small letters over the baseline, in text sizes
} // namespace

Legend::Legend(Canvas& canvas, const Styles& styles, const Sizes& sizes, double left, double right, int mostRows)
    : sizes_(sizes), sampleWidth_((kSampleWidth + kSampleGap) * sizes.scale), gap_(kEntryGap * sizes.scale),
      rowHeight_(std::ceil(kRowHeight * sizes.tick.size))
{
    right += gap_; // the last entry of a row needs none after it
    const double most = right - left - extra();
    if (most < kShortestName * sizes.scale)
        return;
    double together = 0;
    for (std::size_t i = 0; i < styles.labels().size(); ++i) {
        const std::string& name = styles.labels()[i];
        if (name.empty())
            continue;
        const double room = std::min({canvas.textWidth(name, sizes.tick), kLongestName * sizes.scale, most});
        entries_.push_back({.text = name, .style = styles.ofLabel(i), .room = room});
        together += room + extra();
    }
    if (entries_.empty())
        return;
    if (together <= right - left)
        flow(left);
    else
        arrange(left, right, mostRows);
    for (Entry& entry : entries_)
        entry.text = canvas.fitted(entry.text, sizes.tick, entry.room, entry.sample ? Cut::Middle : Cut::End);
}

void Legend::flow(double left)
{
    rows_ = 1;
    for (Entry& entry : entries_)
        entry.x = std::exchange(left, left + entry.room + extra());
}

void Legend::arrange(double left, double right, int mostRows)
{
    const auto count = static_cast<int>(entries_.size());
    double widest = 0;
    for (const Entry& entry : entries_)
        widest = std::max(widest, entry.room + extra());
    const auto columnsOf = [&](double width) { return std::max(1, static_cast<int>((right - left) / width)); };
    const auto rowsOf = [&](int columns) { return (count + columns - 1) / columns; };

    // The names in full if the rows suffice, else as many columns as bring all in or as are readable.
    const int full = columnsOf(widest);
    const int readable = std::max(full, columnsOf(extra() + kShortestName * sizes_.scale));
    int columns = std::clamp((count + mostRows - 1) / mostRows, full, readable);
    rows_ = std::min(mostRows, rowsOf(columns));
    columns = std::min(columns, rowsOf(rows_)); // rows of even length

    const int places = columns * rows_;
    if (count > places) {
        entries_.resize(static_cast<std::size_t>(places));
        entries_.back() = {.text = std::string("+").append(std::to_string(count - (places - 1))).append(" more"),
                           .style = {},
                           .room = 0,
                           .sample = false};
    }
    const double columnWidth = std::min((right - left) / columns, widest);
    for (int i = 0; i < static_cast<int>(entries_.size()); ++i) {
        Entry& entry = entries_[static_cast<std::size_t>(i)];
        entry.x = left + columnWidth * (i % columns);
        entry.row = i / columns;
        entry.room = columnWidth - (entry.sample ? extra() : gap_);
    }
}

void Legend::draw(Canvas& canvas, double top) const
{
    for (const Entry& entry : entries_) {
        const double baseline = top + rowHeight_ * entry.row + sizes_.tick.size;
        if (entry.sample)
            drawSample(canvas, entry.x, entry.x + kSampleWidth * sizes_.scale,
                       std::round(baseline - kMiddle * sizes_.tick.size), entry.style, sizes_.traceLine + 0.5);
        canvas.setColour(canvas.theme().ink);
        canvas.text(entry.text, sizes_.tick, Align::Start, entry.x + (entry.sample ? sampleWidth_ : 0), baseline);
    }
}

} // namespace tracery::figures
