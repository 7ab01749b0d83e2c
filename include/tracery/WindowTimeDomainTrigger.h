#pragma once

#include <tracery/DetectorOf.h>

namespace tracery {

/// Reports the end of stays inside the band between the levels (polarity Positive), of excursions outside it
/// (Negative), or of both, when they took a time within [minTime, maxTime].
///
/// Comparisons differ on purpose: a stay is strictly inside the band; with Negative an excursion is strictly
/// beyond a level and ends on reaching it, with Either it begins on reaching the level and ends within it.
/// A stay without a crossing at its start, as at the first sample, is measured from that sample's value
/// instead of its time; this is kept on purpose.
class TRACERY_EXPORT WindowTimeDomainTrigger : public DetectorOf<WindowTimeDomainTrigger> {
public:
    using DetectorOf::DetectorOf;

    /// Pushes the event at `time` when `duration` is in bounds.
    void pushWindow(EventQueue& queue, double duration, double time);

private:
    friend DetectorOf;
    static constexpr int kAutoLevels = 2;
    void examine(SampleView pairs, EventQueue& queue);
    void updateInsideEventQueue(SampleView pairs, EventQueue& queue);
    void updateOutsideEventQueue(SampleView pairs, EventQueue& queue);
    void updateEitherEventQueue(SampleView pairs, EventQueue& queue);

    void enterBand(TimedSample before, TimedSample now);
    // A stay or an excursion opens and ends where the signal crosses `level`; only its end can be an event.
    static void begin(bool& open, double& start, double level, TimedSample before, TimedSample now);
    void end(bool& open, double start, double level, TimedSample before, TimedSample now, EventQueue& queue);

    struct Seen {
        // With Positive, above and below say where the previous sample was; otherwise, that an excursion is open.
        bool above = false;
        bool below = false;
        bool inside = false; // a stay inside the band is open
        double aboveStart = kNoTime;
        double entryTime = kNoTime;
        double belowStart = kNoTime;
    } seen_;
};

extern template class DetectorOf<WindowTimeDomainTrigger>;

} // namespace tracery
