#include "support/timeSpacing.h"

#include <tracery/AbstractTimeDomainPlotter.h>
#include <tracery/WrappingTimeDomainController.h>

#include <algorithm>
#include <cmath>

namespace tracery {

namespace {

/// The start of the sweep that `time` is in; at a boundary, of the sweep that ends there.
double sweepStart(const AbstractTimeDomainPlotter& plotter, double time)
{
    const double origin = plotter.getOriginTime();
    const double period = plotter.getTimeWrap();
    const double start = std::floor((time - origin) / period) * period + origin;
    const bool atBoundary = time - start <= 10 * timeSpacing(time);
    return atBoundary && start != origin && period == plotter.getTimeSpan() ? start - period : start;
}

} // namespace

double WrappingTimeDomainController::calculateStartTime()
{
    const AbstractTimeDomainPlotter& plotter = requirePlotter();
    // In this order a start that is NaN gives the origin.
    return std::max(plotter.getOriginTime(),
                    sweepStart(plotter, plotter.getMaxSiblingTimeStepWidth() + plotter.getEndTime()));
}

double WrappingTimeDomainController::calculateTimeOffset(double time)
{
    const AbstractTimeDomainPlotter& plotter = requirePlotter();
    const double start = sweepStart(plotter, time);
    const double origin = plotter.getOriginTime();
    const double period = plotter.getTimeWrap();
    return start < origin ? std::floor(origin / period) * period : start;
}

double WrappingTimeDomainController::calculateAsynchronousEndTime(double endTime)
{
    const AbstractTimeDomainPlotter& plotter = requirePlotter();
    const double period = plotter.getTimeWrap();
    const double periodsPassed = (endTime - lastAsynchronousEndTime_) / period;
    lastAsynchronousEndTime_ = endTime;
    if (periodsPassed < 0.2) {
        const bool wasPartial = lastUpdateWasPartial_;
        lastUpdateWasPartial_ = true;
        return wasPartial ? endTime : endTime - period;
    }
    if (!(periodsPassed < 0.3) || !lastUpdateWasPartial_) { // NaN too is a sweep of its own
        lastUpdateWasPartial_ = false;
        return std::max(plotter.getOriginTime(), endTime - period);
    }
    return endTime;
}

} // namespace tracery
