#include "trigger/LevelCrossing.h"
#include "trigger/allOrNothing.h"

#include <tracery/EdgeTimeDomainTrigger.h>

namespace tracery {

EdgeTimeDomainTrigger::EdgeTimeDomainTrigger(TDTC::PolarityEnum polarity, bool autoLevel, double level,
                                             double hysteresis, double holdoff)
    : AbstractTimeDomainTrigger(polarity, autoLevel, level, hysteresis, holdoff)
{}

void EdgeTimeDomainTrigger::reset()
{
    resetEvents();
    armedPositive_ = armedNegative_ = false;
    processImagPart_ = false;
}

template <class Element, class Crossing>
void EdgeTimeDomainTrigger::pushCrossings(std::span<const Element> pairs, Crossing crosses, EventQueue& queue)
{
    scanCrossings(pairs, processImagPart_, {lastSampleTime_, lastSampleValue_}, crosses,
                  [&](TimedSample before, TimedSample now) { push(queue, crossingTime(before, now, level_)); });
}

template <class Element>
void EdgeTimeDomainTrigger::updatePosEventQueue(std::span<const Element> pairs, EventQueue& queue)
{
    pushCrossings(pairs, RisingCrossing{armedPositive_, level_, level_ - hysteresis_}, queue);
}

template <class Element>
void EdgeTimeDomainTrigger::updateNegEventQueue(std::span<const Element> pairs, EventQueue& queue)
{
    pushCrossings(pairs, FallingCrossing{armedNegative_, level_, level_ + hysteresis_}, queue);
}

template <class Element>
void EdgeTimeDomainTrigger::updateAnyEventQueue(std::span<const Element> pairs, EventQueue& queue)
{
    pushCrossings(pairs,
                  EitherCrossing{armedPositive_, armedNegative_, level_, level_ - hysteresis_, level_ + hysteresis_},
                  queue);
}

template <class Element>
void EdgeTimeDomainTrigger::update(std::span<const Element> pairs, const double* extrema, EventQueue& queue)
{
    if (pairs.empty())
        return;
    followLevel(extrema);
    if (polarity_ == TDTC::PolarityEnum::Positive)
        updatePosEventQueue(pairs, queue);
    else if (polarity_ == TDTC::PolarityEnum::Negative)
        updateNegEventQueue(pairs, queue);
    else
        updateAnyEventQueue(pairs, queue);
    cacheLastSample(pairs.data(), pairs.size() / 2);
}

void EdgeTimeDomainTrigger::updateEventQueue(const std::complex<double>* samples, std::uint64_t n,
                                             const double* extrema, double /*time*/, EventQueue& queue)
{
    allOrNothing(*this, queue, [&] { update(std::span(samples, 2 * n), extrema, queue); });
}

void EdgeTimeDomainTrigger::updateEventQueue(const double* samples, std::uint64_t n, const double* extrema,
                                             double /*time*/, EventQueue& queue)
{
    allOrNothing(*this, queue, [&] { update(std::span(samples, 2 * n), extrema, queue); });
}

} // namespace tracery
