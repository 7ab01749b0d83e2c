#include "trigger/LiveTrigger.h"

#include <algorithm>
#include <cmath>

namespace scope {

using tracery::TimeDomainTriggerController;

LiveTrigger::LiveTrigger(const TriggerSettings& settings, const LineSource& source, const SignalRange& range,
                         double firstTime, double span)
    : settings_(settings), source_(source), firstTime_(firstTime), span_(span)
{
    configure(controller_, settings, range);
}

std::optional<TriggeredWindow> LiveTrigger::poll(const Steps& steps)
{
    double start = 0;
    double end = 0;
    takePairs(steps, source_.channel, settings_.part, samples_);
    controller_.processSamples(samples_, steps.lastTime(), span_);
    controller_.getTriggerWindow(firstTime_, steps.lastTime(), span_, false, start, end);
    if (std::isinf(start))
        return std::nullopt;
    const bool freeRun = std::ranges::none_of(controller_.getConsumedEvents(), [](const auto& event) {
        return event.fate == TimeDomainTriggerController::EventFate::Shown;
    });
    return TriggeredWindow{
        {start, end}, controller_.getLastTriggerTime(), levelsOf(controller_, settings_), source_, freeRun};
}

double LiveTrigger::history() const { return 2 * (span_ + std::abs(settings_.delay)); }

} // namespace scope
