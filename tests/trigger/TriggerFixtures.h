#pragma once

#include "trigger/NaiveTriggers.h"

#include <tracery/EdgeTimeDomainTrigger.h>
#include <tracery/PulseWidthTimeDomainTrigger.h>
#include <tracery/RuntTimeDomainTrigger.h>
#include <tracery/TimeoutTimeDomainTrigger.h>
#include <tracery/TransitionTimeDomainTrigger.h>
#include <tracery/WindowTimeDomainTrigger.h>

#include <cmath>
#include <random>
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

template <class T>
T oneOf(std::mt19937& random, std::initializer_list<T> values)
{
    return values.begin()[random() % values.size()];
}

/// Stretches, some of them long, of random walk, square wave, spikes, gaps, noise and hum, on a grid that meets the levels
/// exactly; times that repeat, jump and go missing.
inline naive::Signal hostileSignal(std::mt19937& random)
{
    naive::Signal signal;
    double t = oneOf(random, {-3.0, 0.0, 1e6}), x = 0;
    const double jitter = std::uniform_real_distribution(0.1, 1.0)(random);
    while (signal.size() < 400) {
        const auto kind = random() % 6;
        for (auto i = random() % 30 * oneOf(random, {1U, 1U, 1U, 8U}); i > 0; --i) {
            const double walk = (std::isfinite(x) ? x : 0) + 0.25 * static_cast<double>(random() % 9) - 1.0;
            const double noise = std::normal_distribution(0.5, 1.5)(random);
            const double next[] = {
                walk,  i / 4 % 2 ? 1.0 : -1.0, oneOf<double>(random, {0, 0, 3, -3, INFINITY, -INFINITY}), NAN,
                noise, 0.3 + 0.01 * noise};
            x = next[kind];
            t += oneOf(random, {0.0, 0.5, 0.5, 0.5, jitter, jitter, 4.0});
            signal.push_back({random() % 300 ? t : NAN, x});
        }
    }
    return signal;
}

inline naive::Settings anySettings(std::mt19937& random)
{
    naive::Settings s;
    s.polarity = oneOf(random, {-1, 0, 1, 1, 7});
    s.level = oneOf(random, {0.0, 0.25, -0.5});
    s.hysteresis = oneOf(random, {0.0, 0.25, 0.5, -0.25});
    s.lower = oneOf(random, {-0.75, -0.5, 0.0});
    s.upper = oneOf(random, {0.75, 1.0, 1.0, 0.5, -0.5});
    s.minTime = oneOf(random, {0.0, 0.0, 0.5});
    s.maxTime = oneOf(random, {HUGE_VAL, HUGE_VAL, 2.5});
    s.timeout = oneOf(random, {0.0, 1.5, 3.0});
    s.holdoff = oneOf(random, {0.0, 0.0, 1.0, 5.0});
    return s;
}

} // namespace tracery
