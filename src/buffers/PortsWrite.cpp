#include "buffers/Ports.h"

#include <tracery/host/Error.h>

#include <algorithm>

namespace tracery {

template <class Use>
void Ports::forWrittenTimeLines(Port& port, Use&& use)
{
    if (oneTimeForAll)
        forEachTimeLine([&](TimeLine& line, std::span<Port>) { use(line); });
    else
        use(port.rings.times());
}

void Ports::appendTimes(Port& port, const double* times, std::uint64_t count) noexcept
{
    forWrittenTimeLines(port, [times, count](TimeLine& line) { line.append(times, count); });
}

void Ports::addTime(Port& port, const double* times, std::uint64_t count)
{
    forWrittenTimeLines(port, [count](TimeLine& line) { line.ring.reserveFor(count); });
    appendTimes(port, times, count);
}

void Ports::write(Port& port, PortRings::ValueLine& line, StepLayout::Input& input, const double* values) noexcept
{
    if (input.steps == 0)
        return;
    if (!hasNaNPattern)
        hasNaNPattern = pattern.addValueAndCheckPattern(values[0]);
    port.rings.append(line, input, values);
}

void Ports::addValue(Port& port, const double* values, const Counts& dims, HostComplexity part)
{
    PortRings::ValueLine& line = port.rings.line(part);
    StepLayout::Input input = port.rings.inputOf(dims, line, port.rings.times().steps);
    if (values == nullptr && input.elements > 0)
        throw Error(errors::EmptyInput);
    port.rings.layout().reserve(line.ring, input);
    write(port, line, input, values);
}

void Ports::addValue(Port& port, const std::complex<double>* values, const Counts& dims, HostComplexity part)
{
    PortRings::ValueLine& line = port.rings.line(part);
    StepLayout::Input input = port.rings.inputOf(dims, line, port.rings.times().steps);
    if (values == nullptr && input.elements > 0)
        throw Error(errors::EmptyInput);
    std::vector<double> ofPart(input.elements);
    std::transform(values, values + input.elements, ofPart.begin(), [part](std::complex<double> value) {
        return part == HostComplexity::real ? value.real() : value.imag();
    });
    port.rings.layout().reserve(line.ring, input);
    write(port, line, input, ofPart.data());
}

void Ports::addArray(Port& port, const HostArray* times, const HostArray* values, bool refresh)
{
    const std::uint64_t elements = getNumberOfElements(values);
    const bool takeExtents = elements > 0 && (refresh || port.takeArrayExtents);
    std::span<const std::uint64_t> extents = port.arrayExtents;
    if (takeExtents || elements == 0)
        extents = {getDimensions(values), getNumberOfDimensions(values)};
    if (elements > 0 && elementsOf(extents) > elements)
        throw Error(errors::AddValueInputFormatError);

    const std::uint64_t newSteps = times != nullptr ? getNumberOfElements(times) : 0;
    const std::uint64_t timeSteps = port.rings.times().steps + newSteps;
    PortRings::ValueLine& real = port.rings.line(HostComplexity::real);
    PortRings::ValueLine* const imag = port.rings.complex() ? &port.rings.line(HostComplexity::complex) : nullptr;
    StepLayout::Input realInput = port.rings.inputOf(extents, real, timeSteps);
    StepLayout::Input imagInput = imag != nullptr ? port.rings.inputOf(extents, *imag, timeSteps) : StepLayout::Input();
    std::vector<double> zeros;
    if (getRealData(values) == nullptr || (imag != nullptr && getImagData(values) == nullptr))
        zeros.resize(elements);
    Counts newExtents;
    const bool otherExtents =
        takeExtents && !std::equal(extents.begin(), extents.end(), port.arrayExtents.begin(), port.arrayExtents.end());
    if (otherExtents)
        newExtents.assign(extents.begin(), extents.end());
    if (times != nullptr)
        forWrittenTimeLines(port, [newSteps](TimeLine& line) { line.ring.reserveFor(newSteps); });
    port.rings.layout().reserve(real.ring, realInput);
    if (imag != nullptr)
        port.rings.layout().reserve(imag->ring, imagInput);

    // From here on nothing can fail.
    if (times != nullptr)
        appendTimes(port, getRealData(times), newSteps);
    if (otherExtents)
        port.arrayExtents.swap(newExtents);
    port.takeArrayExtents &= !takeExtents;
    const auto orZeros = [&zeros](const double* part) { return part != nullptr ? part : zeros.data(); };
    write(port, real, realInput, orZeros(getRealData(values)));
    if (imag != nullptr)
        write(port, *imag, imagInput, orZeros(getImagData(values)));
}

} // namespace tracery
