#include <tracery/measures/TriggerScan.h>

#include <algorithm>
#include <cmath>

namespace tracery::measures {

using namespace tracery;

TriggerScan::TriggerScan(BatchReader reader, std::size_t channel, double firstTime, double span)
    : reader_(std::move(reader)), channel_(channel), firstTime_(firstTime), span_(span), now_(firstTime)
{}

TriggerTotals TriggerScan::run(const Visitor& visit, const std::function<void(double reached)>& progress)
{
    bool goOn = true;
    while (goOn) {
        const Steps batch = reader_.next();
        if (batch.count() == 0)
            break;
        takePairs(batch, channel_, controller_.getComplexity(), samples_);
        controller_.processSamples(samples_, now_, span_);
        const double lastTime = batch.lastTime();
        // The detector has the new samples without time having passed; now time moves on to where each pending event's
        // window is full, and so to the end of the batch.
        goOn = poll(now_, visit);
        while (goOn && now_ < lastTime) {
            const auto& pending = controller_.getPendingEvents();
            const double due = pending.empty() ? lastTime : controller_.getDisplayTime(pending.front(), span_);
            // A span that passes the largest double has no such time, and no window is ever full.
            goOn = poll(std::isnan(due) ? lastTime : std::min(lastTime, std::max(now_, due)), visit);
        }
        if (progress)
            progress(lastTime);
    }
    if (goOn)
        for (const double time : controller_.getPendingEvents())
            if (!report({time, Fate::notFull, 0, 0, false}, visit))
                break;
    totals_.refusedByHoldoff = controller_.getDetector().getNumHoldoffRefusals();
    totals_.outOfTimeBounds = controller_.getDetector().getNumOutOfTimeBounds();
    return totals_;
}

bool TriggerScan::poll(double currentTime, const Visitor& visit)
{
    using Consumed = TimeDomainTriggerController::EventFate;
    now_ = currentTime;
    double start = 0;
    double end = 0;
    controller_.getTriggerWindow(firstTime_, now_, span_, false, start, end);
    bool anyShown = false;
    for (const auto& event : controller_.getConsumedEvents()) {
        const Fate fate = event.fate == Consumed::Shown        ? Fate::shown
                          : event.fate == Consumed::Superseded ? Fate::superseded
                          : event.fate == Consumed::Overlap    ? Fate::overlap
                                                               : Fate::disarmed;
        anyShown |= fate == Fate::shown;
        if (!report({event.time, fate, start, end, false}, visit))
            return false;
    }
    return std::isinf(start) || anyShown ||
           report({controller_.getLastTriggerTime(), Fate::shown, start, end, true}, visit);
}

bool TriggerScan::report(const TriggerEvent& event, const Visitor& visit)
{
    std::uint64_t& count = event.freeRun                    ? totals_.freeRuns
                           : event.fate == Fate::shown      ? totals_.shown
                           : event.fate == Fate::superseded ? totals_.superseded
                           : event.fate == Fate::overlap    ? totals_.overlap
                           : event.fate == Fate::disarmed   ? totals_.disarmed
                                                            : totals_.notFull;
    ++count;
    return visit(event);
}

double polarPart(double re, double im, bool phase)
{
    return phase ? std::atan2(im, re) * 57.29577951308232 : std::hypot(re, im);
}

void takePairs(const Steps& steps, std::size_t channel, TDTC::ComplexityEnum part, std::vector<double>& pairs)
{
    using TDTC::ComplexityEnum;
    const std::size_t count = steps.count();
    const std::size_t width = count > 0 ? steps.real.size() / count : 0;
    pairs.resize(2 * count);
    const auto take = [&](auto&& value) {
        for (std::size_t i = 0; i < count; ++i) {
            pairs[2 * i] = steps.times[i];
            pairs[2 * i + 1] = value(i * width + channel);
        }
    };
    const auto imag = [&](std::size_t at) { return steps.imag.empty() ? 0.0 : steps.imag[at]; };
    if (part == ComplexityEnum::Magnitude || part == ComplexityEnum::Phase)
        take([&](std::size_t at) { return polarPart(steps.real[at], imag(at), part == ComplexityEnum::Phase); });
    else if (part == ComplexityEnum::Imaginary)
        take(imag);
    else
        take([&](std::size_t at) { return steps.real[at]; });
}

SignalRange measureRange(BatchReader reader, std::size_t channel, TDTC::ComplexityEnum part)
{
    SignalRange range;
    std::vector<double> pairs;
    for (Steps batch = reader.next(); batch.count() > 0; batch = reader.next()) {
        takePairs(batch, channel, part, pairs);
        for (std::size_t i = 1; i < pairs.size(); i += 2) {
            if (!std::isfinite(pairs[i]))
                continue;
            range.extend(pairs[i]);
            ++range.finite;
        }
    }
    return range;
}

} // namespace tracery::measures
