#include "play/LiveDisplay.h"

#include <utility>

namespace scope {

LiveDisplay::LiveDisplay(tracery::embedded::EmbeddedHost& host, const Recordings& recordings,
                         std::vector<DisplayLine> lines, const Window& first, int columns)
    : lines_(std::move(lines)), display_(host, first.from, first.to - first.from, columns, lines_.size()),
      painter_(recordings, lines_, display_)
{}

bool LiveDisplay::update(LiveFeed& feed)
{
    FeedSteps steps;
    if (trigger_ == nullptr) {
        steps = feed.take();
    } else {
        const std::optional<double> now = feed.pass();
        auto window = now ? trigger_->poll(feed.buffer(), *now) : std::nullopt;
        if (!window)
            return false;
        triggered_ = std::move(window);
        display_.restart(triggered_->window.from);
        steps = readSteps(feed.buffer(), 0, triggered_->window.from, triggered_->window.to, true);
    }
    if (steps.count() == 0)
        return false;
    painter_.paint(steps);
    if (trigger_ != nullptr)
        display_.finish(); // the window is full: nothing of it changes any more
    hasPicture_ = true;
    return true;
}

Figure LiveDisplay::figure()
{
    Figure figure;
    const Window window{display_.getStartTime(), display_.windowEnd()};
    figure.xMin = window.from;
    figure.xMax = window.to;
    bool anything = false;
    figure.panels = makePanels(lines_, display_, window, false, anything);
    if (triggered_)
        markTrigger(figure, *triggered_, lines_);
    return figure;
}

} // namespace scope
