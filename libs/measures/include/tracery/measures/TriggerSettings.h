#pragma once

#include <tracery/TDTC.h>
#include <tracery/TimeDomainTriggerController.h>
#include <tracery/basics/Interval.h>

#include <cstdint>
#include <optional>
#include <string>

namespace tracery::measures {

/// A level as it is given: a value, or a share of the signal's range (0 its minimum, 1 its maximum).
struct LevelSetting {
    double value = 0;
    bool share = false;
};

/// What to trigger on, as chosen on the command line.
struct TriggerSettings {
    tracery::TDTC::TypeEnum type = tracery::TDTC::TypeEnum::Edge;
    tracery::TDTC::ModeEnum mode = tracery::TDTC::ModeEnum::Normal;
    tracery::DetectorSettings detector; ///< but for its levels and its hysteresis, which may be shares
    tracery::TDTC::ComplexityEnum part = tracery::TDTC::ComplexityEnum::Real;
    std::optional<LevelSetting> level; ///< none: auto
    LevelSetting hysteresis;           ///< a share is one of the range's height
    std::optional<LevelSetting> upper; ///< none with no lower: auto
    std::optional<LevelSetting> lower;
    double position = 0.5;
    double delay = 0;
    std::string source; ///< a channel's name or number; empty: the first one drawn

    bool usesTwoLevels() const
    {
        return type != tracery::TDTC::TypeEnum::Edge && type != tracery::TDTC::TypeEnum::Timeout;
    }
    /// Whether the levels follow the signal while it runs.
    bool autoLevel() const { return usesTwoLevels() ? !upper && !lower : !level; }
    /// Whether some level is a share of the signal's range, so that the range must be known first.
    bool needsRange() const;
};

/// Lowest and highest finite value of the trigger signal, and how many there are.
struct SignalRange : basics::Interval {
    std::uint64_t finite = 0;
};

/// Turns the settings into the controller's, shares into values of `range`.
void configure(tracery::TimeDomainTriggerController& controller, const TriggerSettings& settings,
               const SignalRange& range);

} // namespace tracery::measures
