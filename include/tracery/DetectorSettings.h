#pragma once

#include <tracery/TDTC.h>

#include <limits>

namespace tracery {

/// What a detector looks for. Each kind reads its share of these: edge and timeout the level and its hysteresis, the
/// others two levels and the bounds of a duration.
struct DetectorSettings {
    TDTC::PolarityEnum polarity = TDTC::PolarityEnum::Positive; ///< which direction counts
    bool autoLevel = false;                                     ///< levels follow the range of the signal
    double level = 0;                                           ///< signal units, like the next three
    double hysteresis = 0;                                    ///< distance from the level at which a crossing is armed
    double upperLevel = 0;                                    ///< of the detectors that have two levels
    double lowerLevel = 0;                                    ///< the other one
    double minTime = 0;                                       ///< bounds of a measured duration, inclusive, seconds
    double maxTime = std::numeric_limits<double>::infinity(); ///< the other one
    double timeout = 0;                                       ///< how long without a crossing is one, seconds
    double holdoff = 0;                                       ///< least distance of two accepted events, seconds
};

} // namespace tracery
