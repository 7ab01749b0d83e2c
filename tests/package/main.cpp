// Uses the library and the embedded host as a program of somebody else's does.

#include <tracery/TimeBuffer.h>
#include <tracery/embedded/EmbeddedHost.h>
#include <tracery/host/Arrays.h>
#include <tracery/host/Publish.h>

#include <cstdio>

int main()
{
    tracery::TimeBuffer buffer({10}, {1}, 1);
    const double times[] = {0, 1, 2};
    buffer.AddTime(times, 3, 0);
    buffer.AddValue(times, {1, 3}, 0, tracery::HostComplexity::real);
    int first = 0, last = 0;
    buffer.GetIndexRange(0, 1, 2, false, first, last);

    tracery::embedded::EmbeddedHost host;
    const tracery::HostScope attached(host);
    tracery::publishClasses(host.objects());
    const auto timer = host.construct("tracery.OneShotTimer");
    host.set(timer, "TimeoutDuration", tracery::makeScalar(2.5).get());
    const double seconds = tracery::realValues(host.get(timer, "TimeoutDuration").get())[0];
    std::printf("steps %d to %d, %g s\n", first, last, seconds);
    return first == 1 && last == 2 && seconds == 2.5 ? 0 : 1;
}
