#include "trigger/makeDetector.h"

#include <tracery/EdgeTimeDomainTrigger.h>
#include <tracery/PulseWidthTimeDomainTrigger.h>
#include <tracery/RuntTimeDomainTrigger.h>
#include <tracery/TimeoutTimeDomainTrigger.h>
#include <tracery/TransitionTimeDomainTrigger.h>
#include <tracery/WindowTimeDomainTrigger.h>

namespace tracery {

namespace {

template <class Detector>
std::unique_ptr<AbstractTimeDomainTrigger> make(const DetectorSettings& settings)
{
    return std::make_unique<Detector>(settings);
}

/// In the order of TypeEnum.
constexpr std::unique_ptr<AbstractTimeDomainTrigger> (*kMake[])(const DetectorSettings&) = {
    make<EdgeTimeDomainTrigger>, make<PulseWidthTimeDomainTrigger>, make<TransitionTimeDomainTrigger>,
    make<RuntTimeDomainTrigger>, make<WindowTimeDomainTrigger>,     make<TimeoutTimeDomainTrigger>};
static_assert(std::size(kMake) == std::size(TDTC::kTypeNames));

} // namespace

std::unique_ptr<AbstractTimeDomainTrigger> makeDetector(TDTC::TypeEnum type, const DetectorSettings& settings)
{
    const auto kind = static_cast<std::size_t>(type);
    return kMake[kind < std::size(kMake) ? kind : 0](settings);
}

} // namespace tracery
