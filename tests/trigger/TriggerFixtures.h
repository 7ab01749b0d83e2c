#pragma once

#include "trigger/NaiveTriggers.h"

#include <tracery/EdgeTimeDomainTrigger.h>
#include <tracery/PulseWidthTimeDomainTrigger.h>
#include <tracery/RuntTimeDomainTrigger.h>
#include <tracery/TimeoutTimeDomainTrigger.h>
#include <tracery/TransitionTimeDomainTrigger.h>
#include <tracery/WindowTimeDomainTrigger.h>

#include <type_traits>

namespace tracery {

using EventQueue = AbstractTimeDomainTrigger::EventQueue;

template <class Detector>
Detector make(const naive::Settings& s)
{
    if constexpr (std::is_same_v<Detector, EdgeTimeDomainTrigger>)
        return Detector(s.tdtcPolarity(), s.autoLevel, s.level, s.hysteresis, s.holdoff);
    else if constexpr (std::is_same_v<Detector, TimeoutTimeDomainTrigger>)
        return Detector(s.tdtcPolarity(), s.level, s.hysteresis, s.holdoff, s.timeout);
    else
        return Detector(s.tdtcPolarity(), s.autoLevel, s.upper, s.lower, s.minTime, s.maxTime, s.holdoff);
}

/// Interleaves samples [first, last) into a block.
inline std::vector<double> block(const naive::Signal& signal, std::size_t first, std::size_t last)
{
    std::vector<double> pairs;
    for (std::size_t i = first; i < last; ++i)
        pairs.insert(pairs.end(), {signal[i].t, signal[i].x});
    return pairs;
}

/// Shows the detector samples [first, last) as one block.
inline void feed(AbstractTimeDomainTrigger& detector, const naive::Signal& signal, std::size_t first, std::size_t last,
                 EventQueue& queue, const double* extrema = nullptr)
{
    detector.updateEventQueue(block(signal, first, last).data(), last - first, extrema, 0, queue);
}

} // namespace tracery
