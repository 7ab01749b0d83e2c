#include <tracery/AbstractTimeDomainPlotter.h>
#include <tracery/ScrollingTimeDomainController.h>

#include <algorithm>

namespace tracery {

double ScrollingTimeDomainController::calculateStartTime()
{
    const AbstractTimeDomainPlotter& plotter = requirePlotter();
    const std::vector<double> widths = plotter.getTimeStepWidth();
    const double width = *std::max_element(widths.begin(), widths.end());
    return std::max(plotter.getOriginTime(), plotter.getEndTime() + width - plotter.getTimeSpan());
}

double ScrollingTimeDomainController::calculateAsynchronousEndTime(double endTime) { return endTime; }

double ScrollingTimeDomainController::calculateTimeOffset(double time)
{
    const AbstractTimeDomainPlotter& plotter = requirePlotter();
    return std::max(plotter.getOriginTime(), time - plotter.getTimeSpan());
}

} // namespace tracery
