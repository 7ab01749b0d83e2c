#include "bindings/classNames.h"
#include "bindings/classes.h"
#include "host/ClassTable.h"

#include <tracery/OneShotTimer.h>

namespace tracery::binding {

namespace {

struct OneShotTimerCOSConstructor : Constructor<[](OneShotTimer&) {}> {};

struct OneShotTimerCOSClassInfo : ClassInfo<OneShotTimer> {
    bool isHidden() const override { return true; }
    void defineClass(hostobj::ClassDefinition& c) const override
    {
        c.superclass("handle");
        // clang-format off
        c.addProperty(property<&OneShotTimer::isTimeUpCOS>("isTimeUp", kPublic, kReadOnly, kComputed, "true if the Timer is up"));
        c.addProperty(property<&OneShotTimer::getTimeout, &OneShotTimer::setTimeout>("TimeoutDuration", kPublic, kPublic, kStored, "The timeout of the timer"));
        c.addProperty(property<&OneShotTimer::getCounter>("Counter", kPublic, kReadOnly, kComputed, "Number of times timer expired"));
        // clang-format on
        c.addConstructor(std::make_unique<OneShotTimerCOSConstructor>());
    }
};

} // namespace

ClassInfoPtr oneShotTimerClass() { return std::make_unique<OneShotTimerCOSClassInfo>(); }

} // namespace tracery::binding
