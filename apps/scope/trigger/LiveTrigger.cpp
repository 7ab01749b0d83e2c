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

std::optional<TriggeredWindow> LiveTrigger::poll(const tracery::TimeBuffer& buffer, double now)
{
    double start = 0;
    double end = 0;
    controller_.getTriggerWindow(buffer, false, 0, source_.port, source_.channel, firstTime_, now, span_, false, start,
                                 end);
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
