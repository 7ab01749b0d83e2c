#pragma once

#include <tracery/AbstractTimeDomainController.h>

namespace tracery {

/// The window slides so that the newest data stay at its right edge.
class TRACERY_EXPORT ScrollingTimeDomainController : public AbstractTimeDomainController {
public:
    using AbstractTimeDomainController::AbstractTimeDomainController;

    /// One span before the last sample of the newest frame, not before the origin time.
    double calculateStartTime() override;
    /// The end time itself, with or without a plotter.
    double calculateAsynchronousEndTime(double endTime) override;
    /// One span before the time, not before the origin time.
    double calculateTimeOffset(double time) override;
    /// What setCOSInterface was given.
    HostObjectRef getCOSInterface() const override { return hostObject(); }
};

} // namespace tracery
