#pragma once

#include <tracery/measures/TriggerScan.h>
#include <tracery/measures/TriggerSettings.h>

#include <string>

namespace tracery::measures {

/// Why no window was shown, in one line for a person.
/// controller  as the run left it; range  of the trigger signal over the run
std::string explainNothingShown(const TriggerSettings& settings, const tracery::TimeDomainTriggerController& controller,
                                const TriggerTotals& totals, const SignalRange& range, double span);

} // namespace tracery::measures
