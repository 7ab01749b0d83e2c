#include "bindings/classNames.h"
#include "bindings/classes.h"
#include "host/ClassTable.h"

#include <tracery/TimeBuffer.h>
#include <tracery/TimeDomainTriggerController.h>
#include <tracery/host/Host.h>

#include <algorithm>

namespace tracery::binding {

namespace {

using Controller = TimeDomainTriggerController;
using hostobj::TypedEnumStringType;

auto modeEnum()
{
    return TypedEnumStringType::createCaseInsensitiveInstance("TimeDomainTriggerControllerModeEnum",
                                                              {{0, "Auto"}, {1, "Normal"}, {2, "Once"}, {3, "Off"}});
}
auto typeEnum()
{
    std::vector<std::pair<std::int32_t, std::string>> kinds;
    for (const char* name : TDTC::kTypeNames)
        kinds.emplace_back(static_cast<std::int32_t>(kinds.size()), name);
    return TypedEnumStringType::createCaseInsensitiveInstance("TimeDomainTriggerControllerTypeEnum", std::move(kinds));
}
auto polarityEnum()
{
    return TypedEnumStringType::createCaseInsensitiveInstance("TimeDomainTriggerControllerPolarityEnum",
                                                              {{-1, "Negative"}, {0, "Either"}, {1, "Positive"}});
}
auto complexityEnum()
{
    return TypedEnumStringType::createCaseInsensitiveInstance(
        "TimeDomainTriggerControllerComplexityEnum",
        {{1, "Scalar"}, {2, "Real"}, {3, "Imaginary"}, {4, "Magnitude"}, {5, "Phase"}});
}

// clang-format off
struct TDTCModePropInfo : EnumerationPropInfo<"Mode", &modeEnum, &Controller::getMode, &Controller::setMode> {};
struct TDTCTypePropInfo : EnumerationPropInfo<"Type", &typeEnum, &Controller::getType, &Controller::setType> {};
struct TDTCPolarityPropInfo : EnumerationPropInfo<"Polarity", &polarityEnum, &Controller::getPolarity, &Controller::setPolarity> {};
struct TDTCComplexityPropInfo : EnumerationPropInfo<"SourceChannelComplexity", &complexityEnum, &Controller::getComplexity, &Controller::setComplexity> {};
// clang-format on

using WindowEdges = std::tuple<double, double>;

/// Ports and channels count from 1; 0 is the controller's own setting.
WindowEdges getTriggerWindow(Controller& controller, std::shared_ptr<TimeBuffer> buffer, bool isFrameBased,
                             double framePeriod, std::uint32_t port, std::uint32_t channel, double firstDisplayableTime,
                             double currentTime, double span, bool partialWindow)
{
    WindowEdges window;
    controller.getTriggerWindow(*buffer, isFrameBased, framePeriod, (port != 0 ? port : controller.getSourcePort()) - 1,
                                (channel != 0 ? channel : controller.getSourcePortChannel()) - 1, firstDisplayableTime,
                                currentTime, span, partialWindow, std::get<0>(window), std::get<1>(window));
    return window;
}

WindowEdges getLastTriggerWindow(Controller& controller)
{
    WindowEdges window;
    controller.getLastTriggerWindow(std::get<0>(window), std::get<1>(window));
    return window;
}

struct TDTCGetTriggerWindowMethodInfo
    : Method<"getTriggerWindow", &getTriggerWindow, Output<"startTime">, Output<"endTime">> {};
struct TDTCGetLastTriggerWindowMethodInfo
    : Method<"getLastTriggerWindow", &getLastTriggerWindow, Output<"startTime">, Output<"endTime">> {};
struct TDTCResetMethodInfo : Method<"reset", &Controller::reset> {};

/// Takes any inputs, only to say on the console that they are too many; they change nothing, on purpose.
struct TimeDomainTriggerControllerCOSConstructor : Constructor<[](Controller&) {}> {
    hostobj::HostOutputs invoke(hostobj::HostInputs inputs, std::size_t wanted) const override
    {
        return guarded([&] {
            Host* host = inputs.size() > 1 ? Host::current() : nullptr;
            if (host != nullptr)
                host->console().print("Error out here - too many inputs");
            return Constructor::invoke(inputs.first(std::min<std::size_t>(inputs.size(), 1)), wanted);
        });
    }
};

struct TimeDomainTriggerControllerCOSClassInfo : ClassInfo<Controller> {
    void defineClass(hostobj::ClassDefinition& c) const override;
};

void TimeDomainTriggerControllerCOSClassInfo::defineClass(hostobj::ClassDefinition& c) const
{
    c.superclass("handle");
    addProperties<TDTCModePropInfo, TDTCTypePropInfo, TDTCPolarityPropInfo, TDTCComplexityPropInfo>(c);
    // clang-format off
    c.addProperty(property<&Controller::getEnableOnceMode, &Controller::setEnableOnceMode>("EnableOnceMode", kPublic, kPublic, kStored, "enable once mode (true = armed, false = disarmed"));
    c.addProperty(property<&Controller::getPosition, &Controller::setPosition>("Position", kPublic, kPublic, kStored, "Trigger position between 0-1.  (0 = left edge, 1 = right edge)"));
    c.addProperty(property<&Controller::getDelay, &Controller::setDelay>("Delay", kPublic, kPublic, kStored, "additional delay after trigger event"));
    c.addProperty(property<&Controller::getSourcePort, &Controller::setSourcePort>("SourcePort", kPublic, kPublic, kStored, "select the source port for the trigger"));
    c.addProperty(property<&Controller::getSourcePortChannel, &Controller::setSourcePortChannel>("SourcePortChannel", kPublic, kPublic, kStored, "select the source channel of the port for the trigger"));
    c.addProperty(property<&Controller::getAutoLevel, &Controller::setAutoLevel>("AutoLevel", kPublic, kPublic, kStored, "enable auto leveling from input source"));
    c.addProperty(property<&Controller::getLevel, &Controller::setLevel>("Level", kPublic, kPublic, kStored, "Level for edge, pulse width, and timeout triggers"));
    c.addProperty(property<&Controller::getHysteresis, &Controller::setHysteresis>("Hysteresis", kPublic, kPublic, kStored, "Hysteresis value for edge, pulse width, and timeout triggers"));
    c.addProperty(property<&Controller::getUpperLevel, &Controller::setUpperLevel>("UpperLevel", kPublic, kPublic, kStored, "Upper level for transition, runt and window triggers"));
    c.addProperty(property<&Controller::getLowerLevel, &Controller::setLowerLevel>("LowerLevel", kPublic, kPublic, kStored, "Lower level for transition, runt and window triggers"));
    c.addProperty(property<&Controller::getMinTime, &Controller::setMinTime>("MinTime", kPublic, kPublic, kStored, "Minimum required elapsed time"));
    c.addProperty(property<&Controller::getMaxTime, &Controller::setMaxTime>("MaxTime", kPublic, kPublic, kStored, "Maximum required elapsed time"));
    c.addProperty(property<&Controller::getTimeout, &Controller::setTimeout>("Timeout", kPublic, kPublic, kStored, "Minimum time without an edge trigger"));
    c.addProperty(property<&Controller::getHoldoff, &Controller::setHoldoff>("Holdoff", kPublic, kPublic, kStored, "Holdoff time between trigger events"));
    // clang-format on
    c.addConstructor(std::make_unique<TimeDomainTriggerControllerCOSConstructor>());
    addMethods<TDTCGetTriggerWindowMethodInfo, TDTCGetLastTriggerWindowMethodInfo, TDTCResetMethodInfo>(c);
}

} // namespace

ClassInfoPtr timeDomainTriggerControllerClass() { return std::make_unique<TimeDomainTriggerControllerCOSClassInfo>(); }

} // namespace tracery::binding
