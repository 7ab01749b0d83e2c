#pragma once

#include <tracery/AbstractTimeDomainTrigger.h>

#include <memory>

namespace tracery {

std::unique_ptr<AbstractTimeDomainTrigger> makeDetector(TDTC::TypeEnum type, const DetectorSettings& settings);

} // namespace tracery
