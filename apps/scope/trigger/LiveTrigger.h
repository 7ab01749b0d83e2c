#pragma once

#include "trigger/TriggeredWindow.h"

#include <tracery/TimeBuffer.h>
#include <tracery/TimeDomainTriggerController.h>

#include <optional>

namespace scope {

/// The trigger of a live display: asks the controller for a window whenever new steps have come. Of several events that
/// are ready by then the last is shown.
class LiveTrigger {
public:
    /// range  of the signal, for levels that are shares of it
    LiveTrigger(const TriggerSettings& settings, const LineSource& source, const SignalRange& range, double firstTime,
                double span);

    /// The new window when the steps up to `now` complete one.
    std::optional<TriggeredWindow> poll(const tracery::TimeBuffer& buffer, double now);
    const LineSource& source() const { return source_; }
    /// How far back from the newest step a window or its event may reach, seconds.
    double history() const;

private:
    TriggerSettings settings_;
    LineSource source_;
    double firstTime_;
    double span_;
    tracery::TimeDomainTriggerController controller_;
};

} // namespace scope
