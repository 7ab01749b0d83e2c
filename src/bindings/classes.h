#pragma once

#include <tracery/host/ClassInfo.h>

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

} // namespace tracery::binding
