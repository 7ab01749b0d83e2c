#include "bindings/classNames.h"
#include "bindings/classes.h"
#include "bindings/hostCalls.h"
#include "host/ScopeMembers.h"

#include <tracery/AbstractTimeDomainPlotter.h>
#include <tracery/ScrollingTimeDomainController.h>
#include <tracery/WrappingTimeDomainController.h>

namespace tracery::binding {

namespace {

using Plotter = AbstractTimeDomainPlotter;

auto overrunModeEnum()
{
    return hostobj::TypedEnumStringType::createCaseInsensitiveInstance("TimeOverrunModeEnum",
                                                                       {{0, "Wrap"}, {1, "Scroll"}});
}
/// Whatever is not Wrap scrolls.
TimeOverrunModeEnum getTimeOverrunMode(const Plotter& plotter)
{
    return plotter.getTimeOverrunMode() == TimeOverrunModeEnum::Wrap ? TimeOverrunModeEnum::Wrap
                                                                     : TimeOverrunModeEnum::Scroll;
}

/// A new host object around the controller; null unless it is of class C.
template <class C>
HostObjectRef wrapAs(const std::shared_ptr<AbstractTimeDomainController>& controller)
{
    auto known = std::dynamic_pointer_cast<C>(controller);
    if (known == nullptr)
        return nullptr;
    return Host::require().objects().wrapPayload(
        Published<C>::name, std::make_unique<PayloadOf<C, AbstractTimeDomainController>>(std::move(known)));
}

/// The controller's host object, which a controller of the plotter's own making gets when it is first asked for.
HostObjectRef getController(Plotter& plotter)
{
    const std::shared_ptr<AbstractTimeDomainController> controller = plotter.getTimeOverrunModeController();
    if (controller == nullptr)
        return nullptr;
    HostObjectRef object = controller->getOwnCOSInterface();
    if (object != nullptr)
        return object;
    object = wrapAs<WrappingTimeDomainController>(controller);
    if (object == nullptr)
        object = wrapAs<ScrollingTimeDomainController>(controller);
    controller->setCOSInterface(object);
    plotter.keepTimeOverrunModeControllerObject();
    return object;
}
/// Null and an empty array take the controller away.
void setController(Plotter& plotter, const HostArray* controller)
{
    if (controller == nullptr || isEmpty(controller))
        plotter.setTimeOverrunModeController(nullptr);
    else
        plotter.setTimeOverrunModeController(payloadOf<AbstractTimeDomainController>(controller));
}

std::vector<double> getYExtents(const Plotter& plotter)
{
    return {plotter.getYExtents().begin(), plotter.getYExtents().end()};
}
void setYExtents(Plotter& plotter, std::vector<double> extents)
{
    if (extents.size() != 4)
        throw Error(errors::InvalidArgumentType, "needed: four y extents");
    plotter.setYExtents(extents.data());
}
void setSampleTimes(Plotter& plotter, std::vector<double> times) { plotter.setSampleTimes(times.data(), times.size()); }
void setTimeDisplayOffset(Plotter& plotter, std::vector<double> offsets)
{
    plotter.setTimeDisplayOffset(offsets.data(), offsets.size());
}

// clang-format off
template <FixedText name, auto get, auto set, FixedText label = name>
using DoublePropInfo = ScopePropInfo<name, "double scalar", kStored, get, set, label>;
template <FixedText name, auto get, auto set>
using VectorPropInfo = ScopePropInfo<name, "double vector", kStored, get, set>;
template <FixedText name, auto get, auto set>
using LogicalPropInfo = ScopePropInfo<name, "logical scalar", kStored, get, set>;

struct ATDPStartTimePropInfo : Reacting<DoublePropInfo<"StartTime", &Plotter::getStartTime, &Plotter::setStartTime>, "startTimeSetFcnUpdateLines", "updateTimeOffsetReadout"> {};
struct ATDPSampleTimesPropInfo : Reacting<VectorPropInfo<"SampleTimes", &Plotter::getSampleTimes, &setSampleTimes>, "reactToSampleTimes"> {};
struct ATDPTimeSpanPropInfo : Reacting<DoublePropInfo<"TimeSpan", &Plotter::getTimeSpan, &Plotter::setTimeSpan>, "onNewTimeSpan"> {};
struct ATDPTimeWrapPropInfo : DoublePropInfo<"TimeWrap", &Plotter::getTimeWrap, &Plotter::setTimeWrap> {};
struct ATDPTimeOverrunModePropInfo : EnumerationPropInfo<"TimeOverrunMode", &overrunModeEnum, &getTimeOverrunMode, &Plotter::setTimeOverrunMode> {};
struct ATDPEndTimePropInfo : DoublePropInfo<"EndTime", &Plotter::getEndTime, &Plotter::setEndTime> {};
struct ATDPTimeOverrunModeControllerPropInfo : AbstractScopeCOSPropInfo<"TimeOverrunModeController", &getController, &setController> {};
struct ATDPSettingPropertiesPropInfo : LogicalPropInfo<"SettingProperties", &Plotter::getSettingProperties, &Plotter::setSettingProperties> {};
struct ATDPTimeDisplayOffsetPropInfo : Reacting<VectorPropInfo<"TimeDisplayOffset", &Plotter::getTimeDisplayOffset, &setTimeDisplayOffset>, "updateTimeOffsetReadout"> {};
struct ATDPPlotMagPhasePropInfo : Reacting<LogicalPropInfo<"PlotMagPhase", &Plotter::getPlotMagPhase, &Plotter::setPlotMagPhase>, "onSetPlotMagPhase", "resetLines"> {};
struct ATDPOriginTimePropInfo : DoublePropInfo<"OriginTime", &Plotter::getOriginTime, &Plotter::setOriginTime, "Origin time"> {};
struct ATDPMaxSiblingTimeStepWidthPropInfo : DoublePropInfo<"MaxSiblingTimeStepWidth", &Plotter::getMaxSiblingTimeStepWidth, &Plotter::setMaxSiblingTimeStepWidth> {};
struct ATDPEnableOverrunModePropInfo : LogicalPropInfo<"EnableOverrunMode", &Plotter::getEnableOverrunMode, &Plotter::setEnableOverrunMode> {};
struct ATDPIsComplexPropInfo : Reacting<LogicalPropInfo<"IsComplex", &Plotter::getIsComplex, &Plotter::setIsComplex>, "resetLines", "updateLineProperties"> {};
struct ATDPYExtentsPropInfo : VectorPropInfo<"YExtents", &getYExtents, &setYExtents> {};
struct ATDPTimeStepWidthPropInfo : ScopePropInfo<"TimeStepWidth", "double vector", kComputed, &Plotter::getTimeStepWidth, nullptr> {};

template <FixedText name, FixedText when = "">
using Supplied = AbstractScopeProtectedAbstractMethodInfo<Plotter, name, when>;
struct ATDPOnNewTimeSpanMethodInfo : Supplied<"onNewTimeSpan", "called when TimeSpan has changed"> {};
struct ATDPInitializeTimeAxisMethodInfo : Supplied<"initializeTimeAxis"> {};
struct ATDPGetDefaultChannelNamesMethodInfo : Supplied<"getDefaultChannelNames"> {};
struct ATDPUpdateXLabelMethodInfo : Supplied<"updateXLabel"> {};
struct ATDPUpdateShowTimeAxisLabelsMethodInfo : Supplied<"updateShowTimeAxisLabels"> {};
struct ATDPUpdateTickListenersMethodInfo : Supplied<"updateTickListeners"> {};
struct ATDPUpdateTimeUnitsMethodInfo : Supplied<"updateTimeUnits"> {};
struct ATDPStartTimeSetFcnUpdateLinesMethodInfo : ReactionMethodInfo<Plotter, "startTimeSetFcnUpdateLines", "called when StartTime has changed"> {};
struct ATDPUpdateTimeOffsetReadoutMethodInfo : ReactionMethodInfo<Plotter, "updateTimeOffsetReadout", "called when StartTime or TimeDisplayOffset has changed"> {};
struct ATDPReactToSampleTimesMethodInfo : ReactionMethodInfo<Plotter, "reactToSampleTimes", "called when SampleTimes has changed"> {};
struct ATDPOnSetPlotMagPhaseMethodInfo : ReactionMethodInfo<Plotter, "onSetPlotMagPhase", "called when PlotMagPhase has changed"> {};
struct ATDPResetLinesMethodInfo : ReactionMethodInfo<Plotter, "resetLines", "called when PlotMagPhase or IsComplex has changed"> {};
struct ATDPUpdateLinePropertiesMethodInfo : ReactionMethodInfo<Plotter, "updateLineProperties", "called when IsComplex has changed"> {};
// clang-format on

/// A run starts or stops: the controller is told, when there is one.
void start(Plotter& plotter)
{
    if (const auto controller = plotter.getTimeOverrunModeController())
        controller->start();
}
void stop(Plotter& plotter)
{
    if (const auto controller = plotter.getTimeOverrunModeController())
        controller->stop();
}

struct ATDPStartMethodInfo : Method<"start", &start> {};
struct ATDPStopMethodInfo : Method<"stop", &stop> {};
struct ATDPResetYExtentsMethodInfo : Method<"resetYExtents", &Plotter::resetYExtents> {};
/// Only stores the time: nothing of what setting the property StartTime brings about.
struct ATDPSetStartTimeMethodInfo : Method<"setStartTime", &Plotter::setStartTime> {};
struct ATDPInitAbstractTimeDomainPlotterMethodInfo : Method<"InitAbstractTimeDomainPlotter", &Plotter::initPlotter> {};

struct AbstractTimeDomainPlotterCOSCI : ClassInfo<Plotter, AbstractFramePlotter, AbstractLinePlotter> {
    bool isAbstract() const override { return true; }
    void defineClass(hostobj::ClassDefinition& c) const override
    {
        c.superclass(Published<AbstractFramePlotter>::name);
        addProperties<ATDPStartTimePropInfo, ATDPSampleTimesPropInfo, ATDPTimeSpanPropInfo, ATDPTimeWrapPropInfo,
                      ATDPTimeOverrunModePropInfo, ATDPEndTimePropInfo, ATDPTimeOverrunModeControllerPropInfo,
                      ATDPSettingPropertiesPropInfo, ATDPTimeDisplayOffsetPropInfo, ATDPPlotMagPhasePropInfo,
                      ATDPOriginTimePropInfo, ATDPMaxSiblingTimeStepWidthPropInfo, ATDPEnableOverrunModePropInfo,
                      ATDPIsComplexPropInfo, ATDPYExtentsPropInfo, ATDPTimeStepWidthPropInfo>(c);
        addMethods<
            ATDPOnNewTimeSpanMethodInfo, ATDPInitializeTimeAxisMethodInfo, ATDPGetDefaultChannelNamesMethodInfo,
            ATDPUpdateXLabelMethodInfo, ATDPUpdateShowTimeAxisLabelsMethodInfo, ATDPUpdateTickListenersMethodInfo,
            ATDPUpdateTimeUnitsMethodInfo, ATDPStartTimeSetFcnUpdateLinesMethodInfo,
            ATDPUpdateTimeOffsetReadoutMethodInfo, ATDPReactToSampleTimesMethodInfo, ATDPOnSetPlotMagPhaseMethodInfo,
            ATDPResetLinesMethodInfo, ATDPUpdateLinePropertiesMethodInfo, ATDPStartMethodInfo, ATDPStopMethodInfo,
            ATDPResetYExtentsMethodInfo, ATDPSetStartTimeMethodInfo, ATDPInitAbstractTimeDomainPlotterMethodInfo>(c);
    }
};

} // namespace

ClassInfoPtr abstractTimeDomainPlotterClass() { return std::make_unique<AbstractTimeDomainPlotterCOSCI>(); }

} // namespace tracery::binding
