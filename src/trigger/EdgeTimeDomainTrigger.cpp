#include "trigger/LevelCrossing.h"
#include "trigger/takeBlock.h"

#include <tracery/EdgeTimeDomainTrigger.h>

namespace tracery {

EdgeTimeDomainTrigger::EdgeTimeDomainTrigger(const DetectorSettings& settings) : DetectorOf(settings) {}

EdgeTimeDomainTrigger::EdgeTimeDomainTrigger(TDTC::PolarityEnum polarity, bool autoLevel, double level,
                                             double hysteresis, double holdoff)
    : DetectorOf(
          {.polarity = polarity, .autoLevel = autoLevel, .level = level, .hysteresis = hysteresis, .holdoff = holdoff})
{}

void EdgeTimeDomainTrigger::reset()
{
    DetectorOf::reset();
    processImagPart_ = false;
}

template <class Crossing>
void EdgeTimeDomainTrigger::pushCrossings(SampleView pairs, Crossing crosses, EventQueue& queue)
{
    scanCrossings(pairs, lastSample_, crosses, [&](TimedSample before, TimedSample now) {
        push(queue, crossingTime(before, now, settings_.level));
    });
}

void EdgeTimeDomainTrigger::updatePosEventQueue(SampleView pairs, EventQueue& queue)
{
    pushCrossings(pairs, risingCrossing(seen_, settings_), queue);
}

void EdgeTimeDomainTrigger::updateNegEventQueue(SampleView pairs, EventQueue& queue)
{
    pushCrossings(pairs, fallingCrossing(seen_, settings_), queue);
}

void EdgeTimeDomainTrigger::updateAnyEventQueue(SampleView pairs, EventQueue& queue)
{
    pushCrossings(pairs, eitherCrossing(seen_, settings_), queue);
}

void EdgeTimeDomainTrigger::examine(SampleView pairs, EventQueue& queue)
{
    using Edge = EdgeTimeDomainTrigger;
    (this->*byPolarity(&Edge::updatePosEventQueue, &Edge::updateNegEventQueue, &Edge::updateAnyEventQueue))(pairs,
                                                                                                            queue);
}

template class DetectorOf<EdgeTimeDomainTrigger>;

} // namespace tracery
