#include <tracery/AbstractTimeDomainController.h>
#include <tracery/AbstractTimeDomainPlotter.h>
#include <tracery/host/Error.h>

namespace tracery {

AbstractTimeDomainController::~AbstractTimeDomainController() = default;
void AbstractTimeDomainController::start() {}
void AbstractTimeDomainController::stop() {}

void AbstractTimeDomainController::setPlotter(AbstractTimeDomainPlotter* plotter)
{
    plotter_ = plotter != nullptr ? plotter->self_ : nullptr;
}

HostObjectRef AbstractTimeDomainController::getOwnCOSInterface() const
{
    HostObjectRef object = getCOSInterface();
    const auto payload = object != nullptr ? object->payload() : nullptr;
    const bool own = payload != nullptr && payload->as(typeid(AbstractTimeDomainController)).get() == this;
    return own ? object : nullptr;
}

const AbstractTimeDomainPlotter& AbstractTimeDomainController::requirePlotter() const
{
    const AbstractTimeDomainPlotter* plotter = getPlotter();
    if (plotter == nullptr)
        throw Error(errors::NoPlotter);
    return *plotter;
}

} // namespace tracery
