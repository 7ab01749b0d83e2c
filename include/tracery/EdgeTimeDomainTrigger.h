#pragma once

#include <tracery/AbstractTimeDomainTrigger.h>

#include <span>

namespace tracery {

/// Reports each crossing of the level in the chosen direction, at the interpolated time. A rising crossing is
/// armed below level - hysteresis and fires above the level; a falling one is armed above level + hysteresis
/// and fires below the level. All strict: a sample on the level neither arms nor crosses.
class TRACERY_EXPORT EdgeTimeDomainTrigger : public AbstractTimeDomainTrigger {
public:
    /// A detector with these settings (see the setters of its base).
    EdgeTimeDomainTrigger(TDTC::PolarityEnum polarity, bool autoLevel, double level, double hysteresis, double holdoff);

    void updateEventQueue(const std::complex<double>* samples, std::uint64_t n, const double* extrema, double time,
                          EventQueue& queue) override;
    void updateEventQueue(const double* samples, std::uint64_t n, const double* extrema, double time,
                          EventQueue& queue) override;

    /// Also goes back to the real part of complex blocks.
    void reset() override;

private:
    template <class Element>
    void update(std::span<const Element> pairs, const double* extrema, EventQueue& queue);
    template <class Element>
    void updatePosEventQueue(std::span<const Element> pairs, EventQueue& queue);
    template <class Element>
    void updateNegEventQueue(std::span<const Element> pairs, EventQueue& queue);
    template <class Element>
    void updateAnyEventQueue(std::span<const Element> pairs, EventQueue& queue);
    template <class Element, class Crossing>
    void pushCrossings(std::span<const Element> pairs, Crossing crosses, EventQueue& queue);

    bool armedPositive_ = false; // below level - hysteresis since the last rising crossing
    bool armedNegative_ = false; // above level + hysteresis since the last falling crossing
};

} // namespace tracery
