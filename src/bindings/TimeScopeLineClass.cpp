#include "bindings/classNames.h"
#include "bindings/classes.h"
#include "host/ClassTable.h"

#include <tracery/TimeScopeLine.h>

#include <algorithm>
#include <limits>

namespace tracery::binding {

namespace {

/// A number of points, truncated and kept within what an int holds; NaN is none.
int asCount(double value)
{
    constexpr double kMost = std::numeric_limits<int>::max();
    return value > 0 ? static_cast<int>(std::min(value, kMost)) : 0;
}

HostArray* getThinData(TimeScopeLine& line, const HostArray* data, double count, double pixelTimeRatio)
{
    return line.getLineThinData(data, asCount(count), pixelTimeRatio, false);
}

struct TSLGetThinDataMethodInfo : Method<"getThinData", &getThinData, Output<"thinData">> {};
struct TSLGetSLAMethodInfo : Method<"getSLA", &TimeScopeLine::getSLA, Output<"line">> {};

void construct(TimeScopeLine& line, std::optional<const HostArray*> hostLine)
{
    if (hostLine && (*hostLine == nullptr || getClassID(*hostLine) != HostClassID::object))
        throw Error(errors::InvalidArgumentType, "needed: the host's line, an object");
    if (hostLine)
        line.setLine(*hostLine);
}

/// (object, line): the host's line, an object array; without it the line stays empty. What follows is not read.
struct TimeScopeLineCOSConstructor : Constructor<&construct> {
    hostobj::HostOutputs invoke(hostobj::HostInputs inputs, std::size_t wanted) const override
    {
        return Constructor::invoke(inputs.first(std::min<std::size_t>(inputs.size(), 2)), wanted);
    }
};

struct TimeScopeLineCOSClassInfo : ClassInfo<TimeScopeLine> {
    void defineClass(hostobj::ClassDefinition& c) const override
    {
        c.superclass("handle");
        // clang-format off
        c.addProperty(property<&TimeScopeLine::getDisplayID, &TimeScopeLine::setDisplayID>("DisplayID", kPublic, kPublic, kStored, ""));
        c.addProperty(property<&TimeScopeLine::getLineID, &TimeScopeLine::setLineID>("LineID", kPublic, kPublic, kStored, ""));
        c.addProperty(property<&TimeScopeLine::getIsFrameBased, &TimeScopeLine::setIsFrameBased>("FrameBased", kPublic, kPublic, kStored, ""));
        c.addProperty(property<&TimeScopeLine::getFrameRate, &TimeScopeLine::setFrameRate>("FrameRate", kPublic, kPublic, kStored, ""));
        c.addProperty(property<&TimeScopeLine::getSampleTime, &TimeScopeLine::setSampleTime>("SampleTime", kPublic, kPublic, kStored, ""));
        c.addProperty(property<&TimeScopeLine::getShouldThinData, &TimeScopeLine::setShouldThinData>("ShouldThinData", kPublic, kPublic, kStored, ""));
        // clang-format on
        c.addConstructor(std::make_unique<TimeScopeLineCOSConstructor>());
        addMethods<TSLGetThinDataMethodInfo, TSLGetSLAMethodInfo>(c);
    }
};

} // namespace

ClassInfoPtr timeScopeLineClass() { return std::make_unique<TimeScopeLineCOSClassInfo>(); }

} // namespace tracery::binding
