#pragma once

#include "support/SampleScan.h"

#include <tracery/DetectorOf.h>

/// The members of DetectorOf, for the sources of the detectors.
namespace tracery {

template <class Detector>
void DetectorOf<Detector>::update(SampleView pairs, const double* extrema, EventQueue& queue)
{
    if (pairs.count == 0)
        return;
    auto& detector = static_cast<Detector&>(*this);
    const Detector before = detector;
    const std::size_t events = queue.size();
    try {
        if constexpr (Detector::kAutoLevels == 1)
            followLevel(extrema);
        else if constexpr (Detector::kAutoLevels == 2)
            followTwoLevels(extrema);
        detector.examine(pairs, queue);
        lastSample_ = sampleAt(pairs, countPairs(pairs) - 1);
    } catch (...) {
        queue.erase(queue.begin() + static_cast<std::ptrdiff_t>(events), queue.end());
        detector = before;
        throw;
    }
}

template <class Detector>
void DetectorOf<Detector>::updateEventQueue(const std::complex<double>* samples, std::uint64_t n, const double* extrema,
                                            double /*time*/, EventQueue& queue)
{
    update(partOf(samples, n), extrema, queue);
}

template <class Detector>
void DetectorOf<Detector>::updateEventQueue(const double* samples, std::uint64_t n, const double* extrema,
                                            double /*time*/, EventQueue& queue)
{
    update(partOf(samples, n), extrema, queue);
}

template <class Detector>
void DetectorOf<Detector>::reset()
{
    resetEvents();
    auto& seen = static_cast<Detector&>(*this).seen_;
    seen = {};
}

} // namespace tracery
