#include "bindings/hostCalls.h"

#include "bindings/classNames.h"

#include <tracery/AbstractTimeDomainPlotter.h>

#include <algorithm>
#include <cstring>

namespace tracery::binding {

void callIfPresent(const HostObjectRef& object, std::initializer_list<const char*> methods)
{
    Host* host = Host::current();
    for (const char* method : methods)
        if (host != nullptr && host->objects().hasMethod(object, method))
            host->objects().callMethod(object, method, {}, 0);
}

HostArrayPtr callNeeded(const HostObjectRef& object, const char* method, const HostArray* argument)
{
    hostobj::ObjectSystem& objects = Host::require().objects();
    if (!objects.hasMethod(object, method))
        throwNoBody(method);
    const HostArray* inputs[] = {argument};
    hostobj::HostOutputs outputs = objects.callMethod(
        object, method, hostobj::HostInputs(inputs, argument != nullptr ? 1 : 0), argument != nullptr ? 0 : 1);
    return outputs.empty() ? nullptr : std::move(outputs[0]);
}

bool sameValue(const HostArray* a, const HostArray* b)
{
    if (a == nullptr || b == nullptr)
        return a == b;
    if (getClassID(a) != getClassID(b) || isComplex(a) != isComplex(b) ||
        !std::equal(getDimensions(a), getDimensions(a) + getNumberOfDimensions(a), getDimensions(b),
                    getDimensions(b) + getNumberOfDimensions(b)))
        return false;
    const std::size_t count = getNumberOfElements(a);
    const auto same = [](const void* x, const void* y, std::size_t bytes) {
        return x == nullptr || y == nullptr ? x == y : std::memcmp(x, y, bytes) == 0;
    };
    switch (getClassID(a)) {
    case HostClassID::double_:
        return same(getRealData(a), getRealData(b), count * sizeof(double)) &&
               same(getImagData(a), getImagData(b), count * sizeof(double));
    case HostClassID::logical:
        return same(getLogicals(a), getLogicals(b), count);
    case HostClassID::char_:
        return same(getChars(a), getChars(b), count);
    case HostClassID::object:
        for (std::size_t i = 0; i < count; ++i)
            if (hostobj::omGetArrayElement(a, i) != hostobj::omGetArrayElement(b, i))
                return false;
        return true;
    case HostClassID::cell:
        break;
    }
    return false;
}

bool isSettingProperties(const HostObjectRef& object)
{
    const std::shared_ptr<hostobj::InstancePayload> payload = object != nullptr ? object->payload() : nullptr;
    const std::shared_ptr<void> plotter = payload != nullptr ? payload->as(typeid(AbstractTimeDomainPlotter)) : nullptr;
    return plotter != nullptr && static_cast<const AbstractTimeDomainPlotter*>(plotter.get())->getSettingProperties();
}

} // namespace tracery::binding
