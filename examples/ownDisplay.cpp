// A display of the host's own: a class defined in the host that derives from the library's time-domain plotter. The
// library keeps its window and tells it of changes by calling its methods; the scrolling controller says where the
// window starts as data come in.
// Prints:
//    onNewTimeSpan
//    data at  4 s: window  0 to  5 s
//    data at 12 s: window  7 to 12 s
//    data at 25 s: window 20 to 25 s
#include <tracery/embedded/EmbeddedHost.h>
#include <tracery/host/Arrays.h>
#include <tracery/host/Publish.h>

#include <cstdio>

using namespace tracery;

namespace {
const char* const kMethods[] = {"onNewLines",          "onNewAxesColor",     "onNewAxesTickColor",      "updateLabels",
                                "onNewTimeSpan",       "initializeTimeAxis", "getDefaultChannelNames",  "updateXLabel",
                                "updateTickListeners", "updateTimeUnits",    "updateShowTimeAxisLabels"};
} // namespace

int main()
{
    embedded::EmbeddedHost host;
    const HostScope attached(host);
    publishClasses(host.objects());

    std::string called;
    embedded::HostClass display{"my.Display", "veltrashared.scopes.visual.AbstractTimeDomainPlotter"};
    for (const char* method : kMethods) // all eleven are needed: the base declares them only
        display.methods.push_back({.name = method, .body = [&called, method](auto, auto) {
                                       called += method;
                                       return embedded::HostOutputs();
                                   }});
    host.defineClass(display);
    const HostObjectRef scope = host.construct("my.Display");

    host.set(scope, "TimeSpan", makeScalar(5).get());
    std::printf("%s\n", called.c_str());
    host.set(scope, "TimeOverrunMode", HostArrayPtr(createString("Scroll")).get());
    const HostArrayPtr reference = host.get(scope, "TimeOverrunModeController");
    const HostObjectRef controller = hostobj::omGetArrayElement(reference.get(), 0);
    for (const double now : {4.0, 12.0, 25.0}) {
        host.set(scope, "EndTime", makeScalar(now).get());
        const hostobj::HostOutputs start = host.call(controller, "calculateStartTime");
        host.set(scope, "StartTime", start[0].get());
        const double from = realValues(start[0].get())[0];
        std::printf("data at %2g s: window %2g to %2g s\n", now, from, from + 5);
        called += from == (now > 5 ? now - 5 : 0) ? "" : " wrong";
    }
    return called == "onNewTimeSpan" ? 0 : 1;
}
