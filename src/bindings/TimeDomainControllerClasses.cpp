#include "bindings/classNames.h"
#include "bindings/classes.h"
#include "host/ScopeMembers.h"

#include <tracery/AbstractTimeDomainPlotter.h>
#include <tracery/ScrollingTimeDomainController.h>
#include <tracery/WrappingTimeDomainController.h>

namespace tracery::binding {

namespace {

using Plotter = AbstractTimeDomainPlotter;

template <class C>
HostObjectRef getPlotter(C& controller)
{
    const Plotter* plotter = controller.getPlotter();
    return plotter != nullptr ? plotter->getCOSInterface() : nullptr;
}
/// Null and an empty array take the plotter away.
template <class C>
void setPlotter(C& controller, const HostArray* plotter)
{
    const bool none = plotter == nullptr || isEmpty(plotter);
    controller.setPlotter(none ? nullptr : payloadOf<Plotter>(plotter).get());
}
template <class C>
double calculateStartTime(C& controller)
{
    return controller.calculateStartTime();
}
template <class C>
double calculateAsynchronousEndTime(C& controller, double endTime)
{
    return controller.calculateAsynchronousEndTime(endTime);
}
template <class C>
void start(C& controller)
{
    controller.start();
}
template <class C>
void construct(C& controller, std::optional<std::shared_ptr<Plotter>> plotter)
{
    if (plotter)
        controller.setPlotter(plotter->get());
}

// clang-format off
template <class C> using PlotterPropInfo = AbstractScopeCOSPropInfo<"Plotter", &getPlotter<C>, &setPlotter<C>>;
template <class C> using CalculateStartTimeMethodInfo = Method<"calculateStartTime", &calculateStartTime<C>, Output<"startTime">>;
template <class C> using CalculateAsynchronousEndTimeMethodInfo = Method<"calculateAsynchronousEndTime", &calculateAsynchronousEndTime<C>, Output<"endTime">>;
template <class C> using StartMethodInfo = Method<"start", &start<C>>;

using Scrolling = ScrollingTimeDomainController;
struct STDCPlotterPropInfo : PlotterPropInfo<Scrolling> {};
struct STDCCalculateStartTimeMethodInfo : CalculateStartTimeMethodInfo<Scrolling> {};
struct STDCCalculateAsynchronousEndTimeMethodInfo : CalculateAsynchronousEndTimeMethodInfo<Scrolling> {};
struct STDCStartMethodInfo : StartMethodInfo<Scrolling> {};
struct ScrollingTimeDomainControllerCOSConstructor : Constructor<&construct<Scrolling>> {};

using Wrapping = WrappingTimeDomainController;
struct WTDCPlotterPropInfo : PlotterPropInfo<Wrapping> {};
struct WTDCCalculateStartTimeMethodInfo : CalculateStartTimeMethodInfo<Wrapping> {};
struct WTDCCalculateAsynchronousEndTimeMethodInfo : CalculateAsynchronousEndTimeMethodInfo<Wrapping> {};
struct WTDCStartMethodInfo : StartMethodInfo<Wrapping> {};
struct WrappingTimeDomainControllerCOSConstructor : Constructor<&construct<Wrapping>> {};
// clang-format on

struct ScrollingTimeDomainControllerCOSCI : ClassInfo<Scrolling, AbstractTimeDomainController> {
    void defineClass(hostobj::ClassDefinition& c) const override
    {
        c.superclass("handle");
        addProperties<STDCPlotterPropInfo>(c);
        c.addConstructor(std::make_unique<ScrollingTimeDomainControllerCOSConstructor>());
        addMethods<STDCCalculateStartTimeMethodInfo, STDCCalculateAsynchronousEndTimeMethodInfo, STDCStartMethodInfo>(
            c);
    }
};

struct WrappingTimeDomainControllerCOSCI : ClassInfo<Wrapping, AbstractTimeDomainController> {
    void defineClass(hostobj::ClassDefinition& c) const override
    {
        c.superclass("handle");
        addProperties<WTDCPlotterPropInfo>(c);
        c.addConstructor(std::make_unique<WrappingTimeDomainControllerCOSConstructor>());
        addMethods<WTDCCalculateStartTimeMethodInfo, WTDCCalculateAsynchronousEndTimeMethodInfo, WTDCStartMethodInfo>(
            c);
        c.addInheritedMethod("enable");
        c.addInheritedMethod("disable");
    }
};

} // namespace

ClassInfoPtr scrollingTimeDomainControllerClass() { return std::make_unique<ScrollingTimeDomainControllerCOSCI>(); }
ClassInfoPtr wrappingTimeDomainControllerClass() { return std::make_unique<WrappingTimeDomainControllerCOSCI>(); }

} // namespace tracery::binding
