#include "buffers/PortRings.h"

namespace tracery {

std::uint64_t PortRings::capacityOf(const StepLayout& layout, std::uint64_t steps)
{
    std::uint64_t capacity = 0;
    if (__builtin_mul_overflow(layout.elements(), steps, &capacity) || capacity > Ring::largestCapacity() ||
        steps > Ring::largestCapacity())
        throw Error(errors::InvalidMaxNumTimeStepsValue);
    return capacity;
}

PortRings::PortRings(StepLayout layout, bool complex, std::uint64_t steps, std::shared_ptr<TimeLine> times)
    : layout_(std::move(layout)), times_(std::move(times)), real_{Ring(capacityOf(layout_, steps))},
      imag_(complex ? std::optional(ValueLine{Ring(real_.ring.capacity())}) : std::nullopt)
{}

PortRings::ValueLine& PortRings::line(HostComplexity part)
{
    if (part == HostComplexity::real)
        return real_;
    if (!imag_)
        throw Error(errors::AddComplexDataError);
    return *imag_;
}

void PortRings::follow(TimeLine::Drop drop) noexcept
{
    forEachLine([&](ValueLine& line) {
        // The newest times whose values are still to come go first; only the rest takes values along.
        const std::uint64_t lag = drop.stepsBefore - line.steps;
        const std::uint64_t dropped = drop.newest - std::min(drop.newest, lag);
        line.ring.dropNewest(dropped * layout_.elements());
        line.steps -= dropped;
    });
    dropValuesWithoutTimes();
}

void PortRings::keepNewest() noexcept
{
    forEachLine([&](ValueLine& line) {
        const bool came = line.steps == times_->steps;
        line.steps = times_->steps - (came ? 0 : 1);
        line.ring.keepNewest(came ? layout_.elements() : 0);
    });
}

bool PortRings::isLevel() const { return real_.steps == times_->steps && (!imag_ || imag_->steps == times_->steps); }

bool PortRings::readable() const
{
    if (real_.steps != times_->steps)
        throw Error(errors::AddValueError);
    if (times_->ring.empty() || real_.ring.empty())
        return false;
    if (!isLevel())
        throw Error(errors::GetComplexDataError);
    return !imag_ || !imag_->ring.empty();
}

FoundSteps PortRings::find(double tStart, double tEnd, bool widen) const
{
    return readable() ? times_->find(tStart, tEnd, widen) : FoundSteps();
}

std::optional<StepRange> PortRings::all() const
{
    return readable() ? std::optional(StepRange{0, times_->ring.size() - 1}) : std::nullopt;
}

StepsView PortRings::view() const
{
    return {times_->ring.view(), real_.ring.view(), imag_ ? std::optional(imag_->ring.view()) : std::nullopt,
            layout_.elements()};
}

} // namespace tracery
