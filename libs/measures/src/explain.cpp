#include <tracery/basics/quantity.h>
#include <tracery/measures/explain.h>

namespace tracery::measures {

using namespace basics;

using namespace tracery::TDTC;

namespace {

std::string counted(std::uint64_t count, const std::string& what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string rangeText(const SignalRange& range)
{
    return formatQuantity(range.low, "") + " to " + formatQuantity(range.high, "");
}

/// Whether some value of the signal lies strictly above `level`, and some strictly below.
bool reaches(const SignalRange& range, double level) { return range.low < level && level < range.high; }

std::string levelText(double level, const SignalRange& range)
{
    const bool atEnd = level == range.low || level == range.high;
    return "the level " + formatQuantity(level, "") + (atEnd ? " is at the end of" : " is outside") +
           " the signal's range, " + rangeText(range);
}

std::string explainNothingFound(const TriggerSettings& settings, const tracery::TimeDomainTriggerController& controller,
                                const TriggerTotals& totals, const SignalRange& range)
{
    const double level = controller.getLevel();
    const double upper = controller.getUpperLevel();
    const double lower = controller.getLowerLevel();
    if (range.finite == 0)
        return "the trigger channel has only gaps: no number in it";
    if (range.low == range.high)
        return "the signal stays at " + formatQuantity(range.low, "");
    if (totals.outOfTimeBounds > 0)
        return counted(totals.outOfTimeBounds, "pulse") + " measured, none of them lasted " +
               formatQuantity(settings.detector.minTime, "s") + " to " + formatQuantity(settings.detector.maxTime, "s");
    if (settings.usesTwoLevels() && !(lower < upper))
        return "the levels are inverted: the lower one is " + formatQuantity(lower, "") + ", the upper one " +
               formatQuantity(upper, "");
    if (settings.usesTwoLevels()) {
        for (const double each : {lower, upper})
            if (!reaches(range, each))
                return levelText(each, range);
        return "the signal, which runs from " + rangeText(range) + ", never does this between the levels " +
               formatQuantity(lower, "") + " and " + formatQuantity(upper, "");
    }
    if (!reaches(range, level))
        return levelText(level, range);
    if (settings.type == TypeEnum::Timeout)
        return "the signal never goes " + formatQuantity(settings.detector.timeout, "s") +
               " without crossing the level " + formatQuantity(level, "");
    return "the signal, which runs from " + rangeText(range) + ", never crosses the level " +
           formatQuantity(level, "") + " with a hysteresis of " + formatQuantity(controller.getHysteresis(), "") +
           " in that direction";
}

} // namespace

std::string explainNothingShown(const TriggerSettings& settings, const tracery::TimeDomainTriggerController& controller,
                                const TriggerTotals& totals, const SignalRange& range, double span)
{
    if (settings.mode == ModeEnum::Off)
        return "nothing is shown: the trigger is off";
    const std::string refused =
        totals.refusedByHoldoff > 0 ? "; " + std::to_string(totals.refusedByHoldoff) + " more were held off" : "";
    if (totals.shown + totals.freeRuns > 0)
        return "only " + counted(totals.shown + totals.freeRuns, "window") +
               (totals.shown + totals.freeRuns == 1 ? " is" : " are") + " shown, of " +
               counted(totals.found(), "event") + refused;
    if (totals.found() > 0)
        return counted(totals.found(), "event") + ", but the recording ends before a window of " +
               formatQuantity(span, "s") + " is full" + refused;
    return "nothing triggers: " + explainNothingFound(settings, controller, totals, range);
}

} // namespace tracery::measures
