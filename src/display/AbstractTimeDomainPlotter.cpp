#include <tracery/AbstractTimeDomainPlotter.h>
#include <tracery/ScrollingTimeDomainController.h>
#include <tracery/WrappingTimeDomainController.h>
#include <tracery/host/ObjectSystem.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tracery {

namespace {

/// The values as a vector of their own, because they may be those that it is to replace.
std::vector<double> copyOf(const double* values, std::size_t n)
{
    return values != nullptr ? std::vector<double>(values, values + n) : std::vector<double>();
}

/// The line behind a host object, kept alive by the result; null when there is none.
std::shared_ptr<TimeScopeLine> lineBehind(const HostObjectRef& object)
{
    const auto payload = object != nullptr ? object->payload() : nullptr;
    return payload != nullptr ? std::static_pointer_cast<TimeScopeLine>(payload->as(typeid(TimeScopeLine))) : nullptr;
}

} // namespace

AbstractTimeDomainPlotter::AbstractTimeDomainPlotter() : self_(this, [](AbstractTimeDomainPlotter*) {}) {}

AbstractTimeDomainPlotter::~AbstractTimeDomainPlotter()
{
    self_.reset(); // first, as what is released next may run code of the host that asks a controller
}

void AbstractTimeDomainPlotter::initPlotter()
{
    initAllPreviousEndTimes();
    clearTransformCache();
    clearTimeScopeLineObjs();
}

void AbstractTimeDomainPlotter::setTimeOverrunMode(TimeOverrunModeEnum mode)
{
    std::shared_ptr<AbstractTimeDomainController> controller;
    if (mode == TimeOverrunModeEnum::Wrap)
        controller = std::make_shared<WrappingTimeDomainController>(this);
    else
        controller = std::make_shared<ScrollingTimeDomainController>(this);
    timeOverrunMode_ = mode;
    setTimeOverrunModeController(std::move(controller));
}

void AbstractTimeDomainPlotter::setTimeOverrunModeController(std::shared_ptr<AbstractTimeDomainController> controller,
                                                             HostObjectRef object)
{
    if (controller != nullptr && controller->getPlotter() == nullptr)
        controller->setPlotter(this);
    // What was there goes last, as its end may run code of the host.
    controller_.swap(controller);
    controllerObject_.swap(object);
}

void AbstractTimeDomainPlotter::setSampleTimes(const double* values, std::size_t n)
{
    if (values != nullptr && n > 0)
        sampleTimes_ = copyOf(values, n);
}

void AbstractTimeDomainPlotter::setTimeDisplayOffset(const double* values, std::size_t n)
{
    timeDisplayOffset_ = copyOf(values, n);
}

std::vector<double> AbstractTimeDomainPlotter::getTimeStepWidth() const
{
    const std::vector<double>& lengths = getLengthOfChannels();
    std::vector<double> widths(std::max<std::size_t>(lengths.size(), 1));
    for (std::size_t i = 0; i < std::min(lengths.size(), sampleTimes_.size()); ++i) {
        const double width = (lengths[i] - 1) * sampleTimes_[i] / lengths[i];
        if (std::isfinite(width))
            widths[i] = width;
    }
    return widths;
}

void AbstractTimeDomainPlotter::setYExtents(const double* values)
{
    if (values != nullptr)
        yExtents_ = {values[0], values[1], values[2], values[3]};
}

void AbstractTimeDomainPlotter::initAllPreviousEndTimes()
{
    previousEndTimes_.assign(getNumLines(), -std::numeric_limits<double>::infinity());
}

double AbstractTimeDomainPlotter::getPreviousEndTimeForLine(std::size_t i) const
{
    return i < previousEndTimes_.size() ? previousEndTimes_[i] : 0;
}

void AbstractTimeDomainPlotter::setPreviousEndTimeForLine(std::size_t i, double time)
{
    if (i < previousEndTimes_.size())
        previousEndTimes_[i] = time;
}

void AbstractTimeDomainPlotter::setTimeScopeLine(std::size_t i)
{
    while (lineCache_.size() <= i && lineCache_.size() < getNumLines())
        lineCache_.push_back(lineBehind(hostobj::omGetArrayElement(lines(), lineCache_.size())));
}

std::shared_ptr<TimeScopeLine> AbstractTimeDomainPlotter::getTimeScopeLine(std::size_t i)
{
    setTimeScopeLine(i);
    return i < lineCache_.size() ? lineCache_[i].lock() : nullptr;
}

HostObjectRef AbstractTimeDomainPlotter::getTransform(std::size_t i)
{
    if (transformIsInCache(i) || i >= getNumLines())
        return getTransformFromCache(i);
    const std::shared_ptr<TimeScopeLine> line = getTimeScopeLine(i);
    HostObjectRef transform = line != nullptr ? line->getTransform() : nullptr;
    addTransformToCache(transform);
    return transform;
}

HostObjectRef AbstractTimeDomainPlotter::getTransformFromCache(std::size_t i) const
{
    return i < transformCache_.size() ? transformCache_[i] : nullptr;
}

void AbstractTimeDomainPlotter::clearTransformCache()
{
    // Emptied before they are released, which may run code of the host.
    const std::vector<HostObjectRef> released = std::exchange(transformCache_, {});
}

} // namespace tracery
