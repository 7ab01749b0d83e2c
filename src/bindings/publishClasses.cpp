#include "bindings/classes.h"

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
    objects.addPackage(std::make_unique<traceryPackageInfo>());
    hostobj::COSPackage& visual = objects.rootPackage()
                                      .findOrCreatePackage("veltrashared")
                                      .findOrCreatePackage("scopes")
                                      .findOrCreatePackage("visual");
    visual.addClass(binding::abstractLinePlotterClass());
    visual.addClass(binding::abstractFramePlotterClass());
    visual.addClass(binding::abstractTimeDomainPlotterClass());
    visual.addClass(binding::wrappingTimeDomainControllerClass());
    visual.addClass(binding::scrollingTimeDomainControllerClass());
}

} // namespace tracery
