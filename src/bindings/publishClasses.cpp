#include "bindings/classes.h"

#include <tracery/host/Publish.h>

#include <new>

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
        package.addClass(timeDomainTriggerControllerClass());
        package.addClass(timeScopeLineClass());
        package.addClass(oneShotTimerClass());
    }
};

ClassInfoPtr orNone(ClassInfoPtr (*make)())
{
    try {
        return make();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace

std::unique_ptr<const hostobj::COSPackageInfo> traceryPackage()
{
    return std::unique_ptr<const hostobj::COSPackageInfo>(new (std::nothrow) traceryPackageInfo);
}

void addBaseClasses(hostobj::ObjectSystem& objects)
{
    hostobj::COSPackage& visual = objects.rootPackage()
                                      .findOrCreatePackage("veltrashared")
                                      .findOrCreatePackage("scopes")
                                      .findOrCreatePackage("visual");
    for (const auto make : {&abstractLinePlotterClass, &abstractFramePlotterClass, &abstractTimeDomainPlotterClass,
                            &wrappingTimeDomainControllerClass, &scrollingTimeDomainControllerClass})
        visual.addClass(orNone(make));
}

} // namespace binding

void publishClasses(hostobj::ObjectSystem& objects)
{
    objects.addPackage(binding::traceryPackage());
    binding::addBaseClasses(objects);
}

} // namespace tracery
