#pragma once

#include "trigger/TriggeredWindow.h"

#include <tracery/TimeDomainTriggerController.h>

#include <optional>
#include <vector>

namespace scope {

/// The trigger of a live display: hands new steps to the controller and asks it for a window. Of several events that are
/// ready by then the last is shown.
class LiveTrigger {
public:
    /// range  of the signal, for levels that are shares of it
    LiveTrigger(const TriggerSettings& settings, const LineSource& source, const SignalRange& range, double firstTime,
                double span);

    /// The new window when these steps, one at least, complete one.
    std::optional<TriggeredWindow> poll(const Steps& steps);
    const LineSource& source() const { return source_; }
    /// How far back from the newest step a window or its event may reach, seconds.
    double history() const;

private:
    TriggerSettings settings_;
    LineSource source_;
    double firstTime_;
    double span_;
    tracery::TimeDomainTriggerController controller_;
    std::vector<double> samples_; ///< of the steps, kept for its memory
};

} // namespace scope
