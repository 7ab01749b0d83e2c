#pragma once

#include "host/Payload.h"

namespace tracery {
class AbstractFramePlotter;
class AbstractLinePlotter;
class AbstractTimeDomainController;
class AbstractTimeDomainPlotter;
class OneShotTimer;
class ScrollingTimeDomainController;
class SpectrumBuffer;
class TimeBuffer;
class TimeDomainTriggerController;
class TimeScopeLine;
class WrappingTimeDomainController;
} // namespace tracery

namespace tracery::binding {

// clang-format off
template <> struct Published<AbstractFramePlotter> { static constexpr const char* name = "veltrashared.scopes.visual.AbstractFramePlotter"; };
template <> struct Published<AbstractLinePlotter> { static constexpr const char* name = "veltrashared.scopes.visual.AbstractLinePlotter"; };
template <> struct Published<AbstractTimeDomainPlotter> { static constexpr const char* name = "veltrashared.scopes.visual.AbstractTimeDomainPlotter"; };
template <> struct Published<AbstractTimeDomainController> { static constexpr const char* name = "time-domain controller"; }; // no class of its own
template <> struct Published<OneShotTimer> { static constexpr const char* name = "tracery.OneShotTimer"; };
template <> struct Published<ScrollingTimeDomainController> { static constexpr const char* name = "veltrashared.scopes.visual.ScrollingTimeDomainController"; };
template <> struct Published<SpectrumBuffer> { static constexpr const char* name = "tracery.SpectrumBuffer"; };
template <> struct Published<TimeBuffer> { static constexpr const char* name = "tracery.TimeBuffer"; };
template <> struct Published<TimeDomainTriggerController> { static constexpr const char* name = "tracery.TimeDomainTriggerController"; };
template <> struct Published<TimeScopeLine> { static constexpr const char* name = "tracery.TimeScopeLine"; };
template <> struct Published<WrappingTimeDomainController> { static constexpr const char* name = "veltrashared.scopes.visual.WrappingTimeDomainController"; };
// clang-format on

} // namespace tracery::binding
