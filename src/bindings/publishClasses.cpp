#include "bindings/classes.h"

#include <tracery/host/Error.h>
#include <tracery/host/Publish.h>

#include <array>
#include <new>
#include <utility>

namespace tracery {

namespace binding {

namespace {

/// The package of the library's own classes.
class traceryPackageInfo : public hostobj::COSPackageInfo {
public:
    hostobj::COSNameID getName() const override { return "tracery"; }
    void addClasses(hostobj::COSPackage& package) const override
    {
        package.addClass(timeBufferClass());
        package.addClass(spectrumBufferClass());
        package.addClass(timeDomainTriggerControllerClass());
        package.addClass(timeScopeLineClass());
        package.addClass(oneShotTimerClass());
    }
};

template <class Make>
auto orNone(Make make) -> decltype(make())
{
    try {
        return make();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

using BaseClasses = std::array<ClassInfoPtr, 5>;

/// throws  DuplicateClass when the host has one of them
BaseClasses makeBaseClasses(const hostobj::ObjectSystem& objects)
{
    BaseClasses classes{orNone(&abstractLinePlotterClass), orNone(&abstractFramePlotterClass),
                        orNone(&abstractTimeDomainPlotterClass), orNone(&wrappingTimeDomainControllerClass),
                        orNone(&scrollingTimeDomainControllerClass)};
    for (const ClassInfoPtr& info : classes)
        if (info != nullptr && objects.findClass("veltrashared.scopes.visual." + info->getName().text()) != nullptr)
            throw Error(errors::DuplicateClass);
    return classes;
}

void add(BaseClasses classes, hostobj::ObjectSystem& objects)
{
    hostobj::COSPackage& visual = objects.rootPackage()
                                      .findOrCreatePackage("veltrashared")
                                      .findOrCreatePackage("scopes")
                                      .findOrCreatePackage("visual");
    for (ClassInfoPtr& info : classes)
        visual.addClass(std::move(info));
}

} // namespace

std::unique_ptr<const hostobj::COSPackageInfo> traceryPackage()
{
    return orNone([]() -> std::unique_ptr<const hostobj::COSPackageInfo> {
        return std::make_unique<const traceryPackageInfo>();
    });
}

void addBaseClasses(hostobj::ObjectSystem& objects) { add(makeBaseClasses(objects), objects); }

} // namespace binding

void publishClasses(hostobj::ObjectSystem& objects)
{
    binding::BaseClasses baseClasses = binding::makeBaseClasses(objects);
    objects.addPackage(binding::traceryPackage());
    binding::add(std::move(baseClasses), objects);
}

} // namespace tracery
