#include "Subjects.h"

#include <tracery/DataThinner.h>
#include <tracery/EdgeTimeDomainTrigger.h>
#include <tracery/PulseWidthTimeDomainTrigger.h>
#include <tracery/RuntTimeDomainTrigger.h>
#include <tracery/TimeoutTimeDomainTrigger.h>
#include <tracery/TransitionTimeDomainTrigger.h>
#include <tracery/WindowTimeDomainTrigger.h>
#include <tracery/host/Arrays.h>

#include <algorithm>
#include <limits>
#include <memory>

namespace tracery::bench {

namespace {

using TDTC::PolarityEnum;
constexpr double kInf = std::numeric_limits<double>::infinity();

std::unique_ptr<AbstractTimeDomainTrigger> makeDetector(const std::string& name)
{
    const auto kind = name.substr(0, name.find(' '));
    const PolarityEnum polarity = name == kind ? PolarityEnum::Positive : PolarityEnum::Either;
    if (kind == "edge")
        return std::make_unique<EdgeTimeDomainTrigger>(polarity, false, 0, 0.1, 0);
    if (kind == "timeout")
        return std::make_unique<TimeoutTimeDomainTrigger>(polarity, 0, 0.1, 0, 1e-3);
    if (kind == "pulse-width")
        return std::make_unique<PulseWidthTimeDomainTrigger>(polarity, false, 0.5, -0.25, 0, kInf, 0);
    if (kind == "runt")
        return std::make_unique<RuntTimeDomainTrigger>(polarity, false, 0.5, -0.25, 0, kInf, 0);
    if (kind == "transition")
        return std::make_unique<TransitionTimeDomainTrigger>(polarity, false, 0.5, -0.25, 0, kInf, 0);
    return std::make_unique<WindowTimeDomainTrigger>(polarity, false, 0.5, -0.25, 0, kInf, 0);
}

} // namespace

std::function<void()> detection(const std::string& name, std::span<const double> pairs)
{
    return [pairs, detector = std::shared_ptr(makeDetector(name)),
            queue = std::make_shared<AbstractTimeDomainTrigger::EventQueue>()] {
        detector->resetEvents(); // time starts again
        queue->clear();
        detector->updateEventQueue(pairs.data(), pairs.size() / 2, nullptr, 0, *queue);
    };
}

std::function<void()> thinning(std::span<const double> pairs, double columnsPerSecond)
{
    const std::shared_ptr<HostArray> line = makeMatrix(2, pairs.size() / 2, pairs);
    return [line, columnsPerSecond, points = static_cast<int>(pairs.size() / 2), thinner = DataThinner()]() mutable {
        HostArrayPtr(thinner.getArrayThinData(line.get(), points, columnsPerSecond, false));
    };
}

} // namespace tracery::bench
