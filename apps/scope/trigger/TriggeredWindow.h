#pragma once

#include "display/DisplayLines.h"
#include "libraries.h"

#include <tracery/figures/Figure.h>
#include <tracery/measures/TriggerSettings.h>

#include <vector>

namespace scope {

/// The window that a trigger shows, the event's time, and the levels as they were then.
struct TriggeredWindow {
    Window window;
    double event;
    std::vector<Marker> levels;
    LineSource source;
    bool freeRun; ///< no event: the mode is auto
};

SamplePart partOf(tracery::TDTC::ComplexityEnum complexity);

/// The levels that the trigger takes, as they are now.
std::vector<Marker> levelsOf(const tracery::TimeDomainTriggerController& controller, const TriggerSettings& settings);

/// Puts time zero at the event and marks it, and the levels where the source is drawn as it is triggered on.
void markTrigger(Figure& figure, const TriggeredWindow& triggered, const std::vector<DisplayLine>& lines);

} // namespace scope
