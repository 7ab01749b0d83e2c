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
    /// A detector with these settings.
    explicit DetectorOf(const DetectorSettings& settings) : AbstractTimeDomainTrigger(settings) {}

    /// A detector of two levels, with the settings that such ones read.
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

    /// Takes a complex block, through the part that is chosen.
    void updateEventQueue(const std::complex<double>* samples, std::uint64_t n, const double* extrema, double time,
                          EventQueue& queue) override;
    /// The same of a real block.
    void updateEventQueue(const double* samples, std::uint64_t n, const double* extrema, double time,
                          EventQueue& queue) override;

    /// Forgets what the rule remembers, too.
    void reset() override;

private:
    void update(SampleView pairs, const double* extrema, EventQueue& queue);
};

} // namespace tracery
