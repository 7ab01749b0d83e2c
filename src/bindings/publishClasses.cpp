#include "bindings/classes.h"

#include <tracery/host/Error.h>
#include <tracery/host/Publish.h>

namespace tracery {

namespace {

/// The package of the library's own classes.
class traceryPackageInfo : public hostobj::COSPackageInfo {
public:
    hostobj::COSNameID getName() const override { return "tracery"; }
    void addClasses(hostobj::COSPackage& package) const override
    {
        package.addClass(binding::timeBufferClass());
        package.addClass(binding::timeDomainTriggerControllerClass());
        package.addClass(binding::timeScopeLineClass());
        package.addClass(binding::oneShotTimerClass());
    }
};

} // namespace

void publishClasses(hostobj::ObjectSystem& objects)
{
    binding::ClassInfoPtr visualClasses[] = {binding::abstractLinePlotterClass(), binding::abstractFramePlotterClass(),
                                             binding::abstractTimeDomainPlotterClass(),
                                             binding::wrappingTimeDomainControllerClass(),
                                             binding::scrollingTimeDomainControllerClass()};
    for (const binding::ClassInfoPtr& info : visualClasses)
        if (objects.findClass("veltrashared.scopes.visual." + info->getName().text()) != nullptr)
            throw Error(errors::DuplicateClass);
    objects.addPackage(std::make_unique<traceryPackageInfo>());
    hostobj::COSPackage& visual = objects.rootPackage()
                                      .findOrCreatePackage("veltrashared")
                                      .findOrCreatePackage("scopes")
                                      .findOrCreatePackage("visual");
    for (binding::ClassInfoPtr& info : visualClasses)
        visual.addClass(std::move(info));
}

} // namespace tracery
