#pragma once

#include <tracery/AbstractTimeDomainTrigger.h>

#include <cstdint>

namespace tracery {

/// What the detectors of this library do alike: levels follow the signal before a block, its last sample is remembered
/// after it, and a block is taken whole or not at all: without memory for its events, the detector and the queue are as
/// before, so that the same block may come again. What is left to a detector is its rule:
///   examine(pairs, queue)  looks at a block that is not empty
///   seen_                  what it remembers of the signal; a reset makes it anew
///   kAutoLevels            how many levels auto level moves: 0, 1, or 2
template <class Detector>
class TRACERY_EXPORT DetectorOf : public AbstractTimeDomainTrigger {
public:
    /// A detector with these settings; and one that has two levels, with its settings alone.
    explicit DetectorOf(const DetectorSettings& settings) : AbstractTimeDomainTrigger(settings) {}
    DetectorOf(TDTC::PolarityEnum polarity, bool autoLevel, double upperLevel, double lowerLevel, double minTime,
               double maxTime, double holdoff)
        : AbstractTimeDomainTrigger({.polarity = polarity,
                                     .autoLevel = autoLevel,
                                     .upperLevel = upperLevel,
                                     .lowerLevel = lowerLevel,
                                     .minTime = minTime,
                                     .maxTime = maxTime,
                                     .holdoff = holdoff})
    {}

    void updateEventQueue(const std::complex<double>* samples, std::uint64_t n, const double* extrema, double time,
                          EventQueue& queue) override;
    void updateEventQueue(const double* samples, std::uint64_t n, const double* extrema, double time,
                          EventQueue& queue) override;

    void reset() override;

private:
    void update(SampleView pairs, const double* extrema, EventQueue& queue);
};

} // namespace tracery
