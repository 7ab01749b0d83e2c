#include "trigger/LiveDisplay.h"

#include <utility>

namespace scope {

LiveDisplay::LiveDisplay(tracery::embedded::EmbeddedHost& host, const Recordings& recordings, std::vector<DisplayLine> lines,
                         const Window& first, int columns)
    : lines_(std::move(lines)), display_(host, first.from, first.to - first.from, columns, lines_.size()),
      painter_(recordings, lines_, display_)
{}

bool LiveDisplay::update(LiveFeed& feed)
{
    const Steps steps = feed.take();
    if (steps.count() == 0)
        return false;
    if (trigger_ != nullptr)
        return showWindow(feed.buffer(), trigger_->poll(steps));
    painter_.paint({steps, 0});
    return hasPicture_ = true;
}

bool LiveDisplay::showWindow(const tracery::TimeBuffer& buffer, std::optional<TriggeredWindow> window)
{
    if (!window)
        return false;
    triggered_ = std::move(window);
    display_.restart(triggered_->window.from);
    tracery::HostArray *times = nullptr, *values = nullptr;
    buffer.GetTimeAndValue(0, times, values, triggered_->window.from, triggered_->window.to, true);
    const tracery::HostArrayPtr ownedTimes(times), ownedValues(values);
    if (times == nullptr)
        return false;
    const auto part = [](const double* data, const tracery::HostArray* array) {
        return data != nullptr ? std::span(data, getNumberOfElements(array)) : std::span<const double>();
    };
    painter_.paint(
        {{part(getRealData(times), times), part(getRealData(values), values), part(getImagData(values), values)}, 0});
    display_.finish(); // the window is full: nothing of it changes any more
    return hasPicture_ = true;
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
