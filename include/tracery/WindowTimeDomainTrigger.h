#pragma once

#include <tracery/AbstractTimeDomainTrigger.h>

#include <span>

namespace tracery {

struct TimedSample;

/// Reports the end of stays inside the band between the levels (polarity Positive), of excursions outside it
/// (Negative), or of both, when they took a time within [minTime, maxTime].
///
/// Comparisons differ on purpose: a stay is strictly inside the band; with Negative an excursion is strictly
/// beyond a level and ends on reaching it, with Either it begins on reaching the level and ends within it.
/// A stay without a crossing at its start, as at the first sample, is measured from that sample's value
/// instead of its time; this is kept on purpose.
class TRACERY_EXPORT WindowTimeDomainTrigger : public AbstractTimeDomainTrigger {
public:
    /// A detector with these settings (see the setters of its base).
    WindowTimeDomainTrigger(TDTC::PolarityEnum polarity, bool autoLevel, double upperLevel, double lowerLevel,
                            double minTime, double maxTime, double holdoff);

    void updateEventQueue(const std::complex<double>* samples, std::uint64_t n, const double* extrema, double time,
                          EventQueue& queue) override;
    void updateEventQueue(const double* samples, std::uint64_t n, const double* extrema, double time,
                          EventQueue& queue) override;

    void reset() override;

    /// Pushes the event at `time` when `duration` is in bounds.
    void pushWindow(EventQueue& queue, double duration, double time);

private:
    template <class Element>
    void update(std::span<const Element> pairs, const double* extrema, EventQueue& queue);
    template <class Element, class Rule>
    void scanBand(std::span<const Element> pairs, Rule&& rule);
    template <class Element>
    void updateInsideEventQueue(std::span<const Element> pairs, EventQueue& queue);
    template <class Element>
    void updateOutsideEventQueue(std::span<const Element> pairs, EventQueue& queue);
    template <class Element>
    void updateEitherEventQueue(std::span<const Element> pairs, EventQueue& queue);

    void enterBand(TimedSample before, TimedSample now);
    // A stay or an excursion opens and ends where the signal crosses `level`; only its end can be an event.
    static void begin(bool& open, double& start, double level, TimedSample before, TimedSample now);
    void end(bool& open, double start, double level, TimedSample before, TimedSample now, EventQueue& queue);

    // With Positive, above and below say where the previous sample was; otherwise, that an excursion is open.
    bool above_ = false;
    bool below_ = false;
    bool inside_ = false; // a stay inside the band is open
    double aboveStart_ = kNoTime;
    double entryTime_ = kNoTime;
    double belowStart_ = kNoTime;
};

} // namespace tracery
