#include <tracery/measures/TriggerScan.h>

#include <algorithm>
#include <cmath>

namespace tracery::measures {

using namespace tracery;

namespace {

constexpr std::uint64_t kFirstCapacity = 1024;

TimeBuffer::Counts asCounts(std::uint64_t value) { return TimeBuffer::Counts{value}; }

} // namespace

TriggerScan::TriggerScan(BatchReader reader, std::size_t channel, double firstTime, double span)
    : reader_(std::move(reader)), channel_(channel), firstTime_(firstTime), span_(span), now_(firstTime),
      capacity_(kFirstCapacity)
{
    const HostComplexity complexity = reader_.info().complex ? HostComplexity::complex : HostComplexity::real;
    buffer_.ResetBuffer(asCounts(capacity_), asCounts(reader_.info().channels.size()), asCounts(1), 1,
                        BufferType::SingleRate, {complexity}, false);
}

TriggerTotals TriggerScan::run(const Visitor& visit, const std::function<void(double reached)>& progress)
{
    bool goOn = true;
    while (goOn) {
        const std::optional<Batch> batch = reader_.next();
        if (!batch)
            break;
        if (batch->count > capacity_) {
            capacity_ = batch->count;
            buffer_.SetMaxNumTimeSteps({capacity_});
        }
        buffer_.addTimeAndValue(batch->times.get(), batch->values.get(), 0, true);
        // The first poll hands the detector the new samples without letting time pass; then time moves on to where each
        // pending event's window is full, and so to the end of the batch.
        goOn = poll(now_, visit);
        while (goOn && now_ < batch->lastTime) {
            const auto& pending = controller_.getPendingEvents();
            const double due = pending.empty() ? batch->lastTime : controller_.getDisplayTime(pending.front(), span_);
            // A span that passes the largest double has no such time, and no window is ever full.
            goOn = poll(std::isnan(due) ? batch->lastTime : std::min(batch->lastTime, std::max(now_, due)), visit);
        }
        progress(batch->lastTime);
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
    controller_.getTriggerWindow(buffer_, false, 0, 0, channel_, firstTime_, now_, span_, false, start, end);
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

SignalRange measureRange(BatchReader reader, std::size_t channel, TDTC::ComplexityEnum part)
{
    using TDTC::ComplexityEnum;
    SignalRange range;
    const std::size_t channels = reader.info().channels.size();
    while (const std::optional<Batch> batch = reader.next()) {
        const double* real = getRealData(batch->values.get());
        const double* imag = getImagData(batch->values.get());
        for (std::uint64_t i = 0; i < batch->count; ++i) {
            const double re = real[i * channels + channel];
            const double im = imag != nullptr ? imag[i * channels + channel] : 0.0;
            const bool polar = part == ComplexityEnum::Magnitude || part == ComplexityEnum::Phase;
            const double value = polar                               ? polarPart(re, im, part == ComplexityEnum::Phase)
                                 : part == ComplexityEnum::Imaginary ? im
                                                                     : re;
            if (!std::isfinite(value))
                continue;
            range.extend(value);
            ++range.finite;
        }
    }
    return range;
}

} // namespace tracery::measures
