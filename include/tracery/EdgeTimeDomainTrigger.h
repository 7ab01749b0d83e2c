#pragma once

#include <tracery/DetectorOf.h>

namespace tracery {

/// Reports each crossing of the level in the chosen direction, at the interpolated time. A rising crossing is
/// armed below level - hysteresis and fires above the level; a falling one is armed above level + hysteresis
/// and fires below the level. All strict: a sample on the level neither arms nor crosses.
class TRACERY_EXPORT EdgeTimeDomainTrigger : public DetectorOf<EdgeTimeDomainTrigger> {
public:
    /// A detector with these settings.
    explicit EdgeTimeDomainTrigger(const DetectorSettings& settings);
    EdgeTimeDomainTrigger(TDTC::PolarityEnum polarity, bool autoLevel, double level, double hysteresis, double holdoff);

    /// Also goes back to the real part of complex blocks.
    void reset() override;

private:
    friend DetectorOf;
    static constexpr int kAutoLevels = 1;
    void examine(SampleView pairs, EventQueue& queue);
    void updatePosEventQueue(SampleView pairs, EventQueue& queue);
    void updateNegEventQueue(SampleView pairs, EventQueue& queue);
    void updateAnyEventQueue(SampleView pairs, EventQueue& queue);
    template <class Crossing>
    void pushCrossings(SampleView pairs, Crossing crosses, EventQueue& queue);

    struct Seen {
        bool armedPositive = false; // below level - hysteresis since the last rising crossing
        bool armedNegative = false; // above level + hysteresis since the last falling crossing
    } seen_;
};

extern template class DetectorOf<EdgeTimeDomainTrigger>;

} // namespace tracery
