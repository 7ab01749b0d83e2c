#include <tracery/measures/TriggerSettings.h>

namespace tracery::measures {

using namespace tracery::TDTC;

namespace {

// Where levels go that were left out beside one that was given: the middle, and 90 % and 10 % of the range.
constexpr LevelSetting kMiddle{0.5, true};
constexpr LevelSetting kUpper{0.9, true};
constexpr LevelSetting kLower{0.1, true};

} // namespace

bool TriggerSettings::needsRange() const
{
    if (hysteresis.share && !usesTwoLevels())
        return true;
    if (usesTwoLevels())
        return !autoLevel() && (upper.value_or(kUpper).share || lower.value_or(kLower).share);
    return level ? level->share : type == TypeEnum::Timeout;
}

void configure(tracery::TimeDomainTriggerController& controller, const TriggerSettings& settings,
               const SignalRange& range)
{
    const double height = range.high - range.low;
    const auto valueOf = [&](const LevelSetting& level) {
        return level.share ? range.low + height * level.value : level.value;
    };
    DetectorSettings detector = settings.detector;
    detector.autoLevel = settings.autoLevel();
    detector.level = valueOf(settings.level.value_or(kMiddle));
    detector.hysteresis = settings.hysteresis.share ? height * settings.hysteresis.value : settings.hysteresis.value;
    detector.upperLevel = valueOf(settings.upper.value_or(kUpper));
    detector.lowerLevel = valueOf(settings.lower.value_or(kLower));
    controller.setType(settings.type);
    controller.setMode(settings.mode);
    controller.setComplexity(settings.part);
    controller.setDetectorSettings(detector);
    controller.setPosition(settings.position);
    controller.setDelay(settings.delay);
}

} // namespace tracery::measures
