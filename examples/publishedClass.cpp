// A published class through the object system alone, as a host's own language uses it: constructed by name, set and
// read by property, called by method. Nothing of the class's C++ is included. Ports count from 1 here.
// Prints:
//    tracery.TimeBuffer of type SingleRate, capacity 100
//    the steps from 2 s to 4 s: 20 30 40
//    Cindrel:tracery:InvalidPortID
#include <tracery/embedded/EmbeddedHost.h>
#include <tracery/host/Arrays.h>
#include <tracery/host/Publish.h>

#include <cstdio>

using namespace tracery;

int main()
{
    embedded::EmbeddedHost host;
    const HostScope attached(host);
    publishClasses(host.objects());

    const HostArrayPtr capacity = makeRow({50}), more = makeRow({100}), port = makeRow({1}), wrongPort = makeRow({2});
    const HostArrayPtr times = makeRow({1, 2, 3, 4, 5}), values = makeRow({10, 20, 30, 40, 50});
    const HostArrayPtr from = makeRow({2}), to = makeRow({4}), no(createLogicalScalar(false));

    const HostArray* construction[] = {capacity.get()};
    const HostObjectRef buffer = host.construct("tracery.TimeBuffer", construction);
    host.set(buffer, "MaxNumTimeSteps", more.get());
    const HostArrayPtr type = host.get(buffer, "Type"), steps = host.get(buffer, "MaxNumTimeSteps");
    const std::string typeText(getChars(type.get()), getNumberOfElements(type.get()));
    std::printf("%s of type %s, capacity %g\n", buffer->className(), typeText.c_str(), realValues(steps.get())[0]);

    const HostArray* adding[] = {times.get(), values.get(), port.get()};
    host.call(buffer, "addTimeAndValue", adding, 0);
    const HostArray* reading[] = {port.get(), from.get(), to.get(), no.get()}; // no neighbours
    const hostobj::HostOutputs found = host.call(buffer, "GetTimeAndValue", reading, 2);
    const std::span<const double> v = realValues(found[1].get());
    std::printf("the steps from 2 s to 4 s: %g %g %g\n", v[0], v[1], v[2]);

    try {
        const HostArray* addingElsewhere[] = {times.get(), values.get(), wrongPort.get()};
        host.call(buffer, "addTimeAndValue", addingElsewhere, 0);
    } catch (const Error& error) {
        std::printf("%s\n", error.identifier().c_str());
        return v.size() == 3 && v[0] == 20 && v[2] == 40 ? 0 : 1;
    }
    return 1;
}
