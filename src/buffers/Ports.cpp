#include "buffers/Ports.h"

#include <tracery/host/Error.h>

#include <algorithm>

namespace tracery {

Ports::Ports(const Counts& capacities, const Counts& maxDimensions, const Counts& nDim, std::uint64_t nPorts,
             BufferType bufferType, const std::vector<HostComplexity>& complexity, bool isThreadSafe)
    : initialized(true), type(bufferType), oneTimeForAll(bufferType == BufferType::SingleRate && !isThreadSafe),
      numPorts(nPorts)
{
    if (capacities.size() != 1 && capacities.size() < nPorts)
        throw Error(errors::InvalidMaxNumTimeStepsSize);
    if (nDim.size() < nPorts)
        throw Error(errors::InvalidMaxDimensions);
    if (complexity.size() < nPorts)
        throw Error(errors::InvalidComplexityDimension);
    std::uint64_t numExtents = 0;
    for (const std::uint64_t count : nDim)
        if (__builtin_add_overflow(numExtents, count, &numExtents))
            throw Error(errors::InvalidMaxDimensions);
    if (maxDimensions.size() != numExtents)
        throw Error(errors::InvalidMaxDimensions);

    maxNumTimeSteps = capacities.size() == 1
                          ? Counts(nPorts, capacities[0])
                          : Counts(capacities.begin(), capacities.begin() + static_cast<std::ptrdiff_t>(nPorts));
    sharedTime = oneTimeForAll && std::adjacent_find(maxNumTimeSteps.begin(), maxNumTimeSteps.end(),
                                                     std::not_equal_to<>()) == maxNumTimeSteps.end();
    ports.reserve(nPorts);
    Counts widths;
    std::shared_ptr<TimeLine> line;
    auto extents = maxDimensions.begin();
    for (std::uint64_t k = 0; k < nPorts; ++k) {
        const auto end = extents + static_cast<std::ptrdiff_t>(nDim[k]);
        if (line == nullptr || !sharedTime)
            line = std::make_shared<TimeLine>(maxNumTimeSteps[k]);
        ports.push_back({PortRings(StepLayout(Counts(extents, end)), complexity[k] == HostComplexity::complex,
                                   maxNumTimeSteps[k], line)});
        widths.push_back(ports[k].rings.layout().elements());
        extents = end;
    }
    pattern = patternFor(widths);
    sampleTimes.assign(2 * nPorts, 0.0);
}

DataPattern Ports::patternFor(const Counts& elementsPerStep)
{
    std::uint64_t elements = 0;
    for (const std::uint64_t width : elementsPerStep)
        if (__builtin_add_overflow(elements, width, &elements))
            throw Error(errors::InvalidMaxDimensions);
    if (elements > kMaximumElements)
        throw Error(errors::InvalidMaxDimensions, "the ports' steps have too many elements together");
    return DataPattern(static_cast<int>(elements));
}

void Ports::requirePort(std::uint64_t port) const
{
    if (port >= numPorts)
        throw Error(errors::InvalidPortID);
}

void Ports::changeCapacities(const Counts& stepsOfPorts, bool hold)
{
    // All rings are made ready before the first one changes, as a ring that stays behind would pair values with the
    // wrong times.
    Counts steps(stepsOfPorts);
    std::vector<Ring::Change> changes;
    const TimeLine* changed = nullptr;
    for (std::uint64_t k = 0; k < numPorts; ++k) {
        PortRings& rings = ports[k].rings;
        const std::uint64_t capacity = PortRings::capacityOf(rings.layout(), steps[k]);
        if (std::exchange(changed, &rings.times()) != &rings.times())
            changes.emplace_back(rings.times().ring, steps[k], hold);
        rings.forEachLine([&](PortRings::ValueLine& line) { changes.emplace_back(line.ring, capacity, hold); });
    }

    for (Ring::Change& change : changes)
        change.apply();
    for (Port& port : ports)
        port.rings.dropValuesWithoutTimes();
    maxNumTimeSteps.swap(steps);
    held = hold;
}

void Ports::reshape(const std::map<std::uint64_t, Counts>& extentsOfPorts)
{
    // Everything new is made aside, so that a refusal leaves the old rings.
    std::vector<std::optional<Port>> fresh(numPorts);
    std::shared_ptr<TimeLine> line;
    Counts widths;
    for (std::uint64_t k = 0; k < numPorts; ++k) {
        const Port& old = ports[k];
        const StepLayout& layout = old.rings.layout();
        const auto found = extentsOfPorts.find(k);
        widths.push_back(layout.elements());
        if (found == extentsOfPorts.end() && !sharedTime)
            continue;
        if (line == nullptr || !sharedTime) {
            line = std::make_shared<TimeLine>(maxNumTimeSteps[k]);
            line->clearings = clearings + k + 1;
            if (held)
                line->ring.hold();
        }
        PortRings rings(found != extentsOfPorts.end() ? StepLayout(found->second) : layout, old.rings.complex(),
                        maxNumTimeSteps[k], line);
        if (held)
            rings.forEachLine([](PortRings::ValueLine& values) { values.ring.hold(); });
        widths.back() = rings.layout().elements();
        // Where only the steps restart, arrays still come in the shape that the last one had.
        const bool sameShape = rings.layout().extents() == layout.extents();
        fresh[k] = {std::move(rings), sameShape ? old.arrayExtents : Counts(), !sameShape || old.takeArrayExtents,
                    old.linear};
    }
    DataPattern newPattern = patternFor(widths);

    for (std::uint64_t k = 0; k < numPorts; ++k)
        if (fresh[k])
            std::swap(ports[k], *fresh[k]);
    pattern = std::move(newPattern);
    hasNaNPattern = false;
    clearings += numPorts;
}

void Ports::beginAt(std::uint64_t clearing) noexcept
{
    clearings = clearing;
    forEachTimeLine([clearing](TimeLine& line, std::span<Port>) { line.clearings = clearing; });
}

void Ports::clear() noexcept
{
    forEachTimeLine([this](TimeLine& line, std::span<Port> portsOfLine) {
        if (!line.ring.empty())
            noteClearing(line);
        for (Port& port : portsOfLine)
            port.rings.forEachLine([&line](PortRings::ValueLine& values) { values.steps = line.steps; });
    });
    forEachRing([](Ring& ring) { ring.clear(); });
}

void Ports::clearBackTo(double time) noexcept
{
    forEachTimeLine([this, time](TimeLine& line, std::span<Port> portsOfLine) {
        const TimeLine::Drop drop = line.dropAfter(time);
        if (drop.newest > 0)
            noteClearing(line);
        for (Port& port : portsOfLine)
            port.rings.follow(drop);
    });
    forEachRing([](Ring& ring) { ring.giveBack(); });
}

void Ports::clearUptoLastTime() noexcept
{
    forEachTimeLine([this](TimeLine& line, std::span<Port> portsOfLine) {
        // A port with exactly two times keeps both on purpose: displays start from such a pair.
        if (line.ring.empty() || line.ring.size() == 2)
            return;
        if (line.ring.size() > 1)
            noteClearing(line);
        line.ring.keepNewest(1);
        for (Port& port : portsOfLine)
            port.rings.keepNewest();
    });
    forEachRing([](Ring& ring) { ring.giveBack(); });
}

} // namespace tracery
