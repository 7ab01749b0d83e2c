#pragma once

#include <tracery/host/ObjectSystem.h>

#include <memory>

namespace tracery::binding {

using ClassInfoPtr = std::unique_ptr<const hostobj::COSClassInfo>;

// The published classes, each with its table in a file of its own.

ClassInfoPtr abstractFramePlotterClass();
ClassInfoPtr abstractLinePlotterClass();
ClassInfoPtr abstractTimeDomainPlotterClass();
ClassInfoPtr oneShotTimerClass();
ClassInfoPtr scrollingTimeDomainControllerClass();
ClassInfoPtr spectrumBufferClass();
ClassInfoPtr timeBufferClass();
ClassInfoPtr timeDomainTriggerControllerClass();
ClassInfoPtr timeScopeLineClass();
ClassInfoPtr wrappingTimeDomainControllerClass();

/// The package "tracery"; null when there is no memory for it.
std::unique_ptr<const hostobj::COSPackageInfo> traceryPackage();
/// Adds the classes of "veltrashared.scopes.visual", all or none; one that there is no memory for is left out.
/// throws  DuplicateClass
void addBaseClasses(hostobj::ObjectSystem& objects);

} // namespace tracery::binding
