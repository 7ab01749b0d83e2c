#pragma once

#include <tracery/AbstractTimeDomainController.h>

#include <limits>

namespace tracery {

/// The window jumps ahead by whole wrap periods, so that drawing starts again at its left edge, like a sweep.
class TRACERY_EXPORT WrappingTimeDomainController : public AbstractTimeDomainController {
public:
    using AbstractTimeDomainController::AbstractTimeDomainController;

    /// The start of the sweep that the newest data are in, not before the origin time. While the wrap period is the
    /// time span, data at a wrap boundary (within rounding) belong to the sweep that ends there.
    double calculateStartTime() override;
    /// Whether to draw a part of a sweep. An update less than 0.2 periods after the last one draws back by a period once,
    /// later ones to the end time; from 0.3 periods on it is a sweep of its own again. The band between is a
    /// hysteresis: the two thresholds differ on purpose.
    double calculateAsynchronousEndTime(double endTime) override;
    /// The start of the sweep that `time` is in, by the same rule. Before the origin time it is the origin rounded down
    /// to whole periods, counted from 0 and not from the origin on purpose.
    double calculateTimeOffset(double time) override;
    /// The next update counts as partial.
    void start() override { lastUpdateWasPartial_ = true; }
    /// What setCOSInterface was given.
    HostObjectRef getCOSInterface() const override { return hostObject(); }

    /// What calculateAsynchronousEndTime remembers: when the last update came, and whether it was a partial one.
    double getLastAsynchronousEndTime() const { return lastAsynchronousEndTime_; }
    void setLastAsynchronousEndTime(double endTime) { lastAsynchronousEndTime_ = endTime; }
    bool getLastUpdateWasPartial() const { return lastUpdateWasPartial_; }
    void setLastUpdateWasPartial(bool partial) { lastUpdateWasPartial_ = partial; }

private:
    double lastAsynchronousEndTime_ = -std::numeric_limits<double>::infinity();
    bool lastUpdateWasPartial_ = false;
};

} // namespace tracery
