#include "bindings/TimeBufferConstructor.h"
#include "bindings/classNames.h"
#include "bindings/classes.h"
#include "host/ClassTable.h"

#include <tracery/TimeBuffer.h>

#include <algorithm>
#include <exception>
#include <optional>
#include <tuple>

namespace tracery::binding {

namespace {

/// A port argument, counted from 1 and checked when it is used.
struct PortArgument {
    const HostArray* array = nullptr;

    /// Counted from 0. throws  InvalidPortID, also for what is no whole number
    std::uint64_t in(const TimeBuffer& buffer) const
    {
        std::uint32_t port = 0;
        try {
            port = Value<std::uint32_t>::read(array);
        } catch (const Error&) {
            throw Error(errors::InvalidPortID, "ports are whole numbers from 1");
        }
        if (port == 0 || port > buffer.GetNPorts())
            throw Error(errors::InvalidPortID, "there is no port " + std::to_string(port));
        return port - 1;
    }
    static std::uint64_t in(const TimeBuffer& buffer, const std::optional<PortArgument>& port)
    {
        if (port)
            return port->in(buffer);
        if (buffer.GetNPorts() == 0)
            throw Error(errors::InvalidPortID, "there is no port 1");
        return 0;
    }
};

/// A port argument that is stated as any number.
struct PortNumber : PortArgument {};
/// Yes for every number but 0, NaN too.
struct NonZero {
    bool value;
};

} // namespace

template <>
struct Value<PortArgument> {
    static std::string type() { return "uint32 scalar"; }
    static PortArgument read(const HostArray* array) { return {array}; }
};
template <>
struct Value<PortNumber> {
    static std::string type() { return "double scalar"; }
    static PortNumber read(const HostArray* array) { return {{array}}; }
};
template <>
struct Value<NonZero> {
    static std::string type() { return "logical scalar"; }
    static NonZero read(const HostArray* array) { return {Value<double>::read(array) != 0}; }
};

namespace {

using Port = std::optional<PortArgument>;

void requireTimes(const HostArray* times)
{
    if (times == nullptr || !isDouble(times))
        throw Error(errors::AddTimeError);
    if (isEmpty(times) || getRealData(times) == nullptr)
        throw Error(errors::EmptyInput);
}

void requireValues(const HostArray* values)
{
    if (values == nullptr || isEmpty(values))
        throw Error(errors::EmptyInput);
    if (!isDouble(values))
        throw Error(errors::AddValueDataTypeError);
    if (getRealData(values) == nullptr)
        throw Error(errors::EmptyInput);
}

void addTimeAndValue(TimeBuffer& buffer, const HostArray* times, const HostArray* values, Port port)
{
    requireTimes(times);
    requireValues(values);
    buffer.addTimeAndValue(times, values, PortArgument::in(buffer, port), true);
}

void addTime(TimeBuffer& buffer, const HostArray* times, Port port)
{
    requireTimes(times);
    buffer.AddTime(getRealData(times), getNumberOfElements(times), PortArgument::in(buffer, port));
}

void addValue(TimeBuffer& buffer, const HostArray* values, Port port)
{
    requireValues(values);
    buffer.AddValue(values, PortArgument::in(buffer, port), true);
}

/// Runs a clearing operation; hosts see any failure of it as one kind.
template <class Clearing>
void clearing(const ErrorKind& kind, Clearing&& clear)
{
    try {
        clear();
    } catch (const std::exception&) {
        throw Error(kind);
    }
}

void clearBackTo(TimeBuffer& buffer, double time)
{
    clearing(errors::ClearBackToError, [&] { buffer.ClearBackTo(time); });
}
void clear(TimeBuffer& buffer)
{
    clearing(errors::ClearError, [&] { buffer.Clear(); });
}
void clearUptoLastTime(TimeBuffer& buffer)
{
    clearing(errors::ClearError, [&] { buffer.clearUptoLastTime(); });
}

struct TBAddTimeAndValueMethodInfo : Method<"addTimeAndValue", &addTimeAndValue> {};
struct TBAddTimeMethodInfo : Method<"AddTime", &addTime> {};
struct TBAddValueMethodInfo : Method<"AddValue", &addValue> {};
struct TBClearBackToMethodInfo : Method<"ClearBackTo", &clearBackTo> {};
struct TBClearMethodInfo : Method<"Clear", &clear> {};
struct TBClearUptoLastTimeMethodInfo : Method<"clearUptoLastTime", &clearUptoLastTime> {};
struct TBGetLastTimeMethodInfo : Method<"GetLastTime", &TimeBuffer::GetLastTime, Output<"time">> {};

using Steps = std::tuple<HostArrayPtr, HostArrayPtr>;

/// What a read gave; empty arrays where there is nothing.
template <class Read>
Steps steps(Read&& read)
{
    HostArray* time = nullptr;
    HostArray* value = nullptr;
    read(time, value);
    Steps found{HostArrayPtr(time), HostArrayPtr(value)};
    for (HostArrayPtr* array : {&std::get<0>(found), &std::get<1>(found)})
        if (*array == nullptr)
            array->reset(createDoubleMatrix(0, 0, HostComplexity::real));
    return found;
}
Steps getAll(TimeBuffer& buffer, std::optional<PortNumber> port)
{
    const std::uint64_t index = PortArgument::in(buffer, port);
    return steps([&](HostArray*& time, HostArray*& value) { buffer.GetTimeAndValue(index, time, value); });
}
Steps getWindowOf(TimeBuffer& buffer, std::optional<PortArgument> port, double tStart, double tEnd, NonZero widen)
{
    const std::uint64_t index = PortArgument::in(buffer, port);
    return steps([&](HostArray*& time, HostArray*& value) {
        buffer.GetTimeAndValue(index, time, value, tStart, tEnd, widen.value);
    });
}
Steps getWindowOfPort(TimeBuffer& buffer, PortNumber port, double tStart, double tEnd, NonZero widen)
{
    return getWindowOf(buffer, port, tStart, tEnd, widen);
}
Steps getWindow(TimeBuffer& buffer, double tStart, double tEnd, NonZero widen)
{
    return getWindowOf(buffer, {}, tStart, tEnd, widen);
}

template <auto operation>
using GetTimeAndValue = Method<"GetTimeAndValue", operation, Output<"time">, Output<"value">>;
struct TBGetTimeAndValueMethodInfo
    : Overloaded<GetTimeAndValue<&getAll>, GetTimeAndValue<&getWindow>, GetTimeAndValue<&getWindowOfPort>> {
    std::string getDescription() const override
    {
        return "port [1]; tStart, tEnd, widen; or port, tStart, tEnd, widen";
    }
    /// One result at least, the second when it is wanted.
    hostobj::HostOutputs invoke(hostobj::HostInputs inputs, std::size_t wanted) const override
    {
        hostobj::HostOutputs outputs = Overloaded::invoke(inputs, wanted);
        outputs.resize(std::clamp<std::size_t>(wanted, 1, outputs.size()));
        return outputs;
    }
};

/// (object, maxNumTimeSteps, maxDimensions, numberOfPorts, type, complexity, threadSafe), all but the object optional.
struct TimeBufferCOSConstructor : Constructor<&setUpTimeBuffer> {};

constexpr auto getMaxDimensions = [](const TimeBuffer& buffer) { return buffer.GetMaxDimensions(); };
constexpr auto setMaxDimensions = [](TimeBuffer& buffer, const HostArray* extents) {
    buffer.SetMaxDimensions(extents);
};
constexpr auto getSampleTimes = [](const TimeBuffer& buffer) { return buffer.GetSampleTimes(); };

struct TimeBufferCOSClassInfo : ClassInfo<TimeBuffer> {
    void defineClass(hostobj::ClassDefinition& c) const override
    {
        c.superclass("handle");
        // clang-format off
        c.addProperty(property<getMaxDimensions, setMaxDimensions>("MaxDimensions", kPublic, kPublic, kStored, "The maximum dimension of data in the buffer"));
        c.addProperty(property<&TimeBuffer::GetMaxNumTimeSteps, &TimeBuffer::SetMaxNumTimeSteps>("MaxNumTimeSteps", kPublic, kPublic, kStored, "The maximum time steps supported by the buffer"));
        c.addProperty(property<&TimeBuffer::GetNPorts>("NPorts", kPublic, kReadOnly, kComputed, "Number of ports supported by the buffer"));
        c.addProperty(property<&TimeBuffer::GetType>("Type", kPublic, kReadOnly, kComputed, "The buffer mType tag"));
        c.addProperty(property<&TimeBuffer::GetIsReady>("IsReady", kPublic, kReadOnly, kComputed, "True if the buffer is ready for read"));
        c.addProperty(property<&TimeBuffer::GetIsFull>("IsFull", kPublic, kReadOnly, kComputed, "True is the TimeBuffer is full"));
        c.addProperty(property<&TimeBuffer::GetComplexityFlags>("Complexity", kPublic, kReadOnly, kComputed, "Return the complexity Flags a string"));
        c.addProperty(property<getSampleTimes>("SampleTimes", kPublic, kReadOnly, kComputed, "Return the sample times"));
        c.addProperty(property<&TimeBuffer::getIsThreadSafe>("IsThreadSafe", kPublic, kReadOnly, kComputed, "True when the time buffer is thread safe."));
        c.addProperty(property<&TimeBuffer::getIsLinearInterpolation, &TimeBuffer::setIsLinearInterpolation>("IsLinearInterpolation", kPublic, kPublic, kStored, "True when the data is continuous."));
        // clang-format on
        c.addConstructor(std::make_unique<TimeBufferCOSConstructor>());
        addMethods<TBAddTimeAndValueMethodInfo, TBAddTimeMethodInfo, TBAddValueMethodInfo, TBClearBackToMethodInfo,
                   TBClearMethodInfo, TBClearUptoLastTimeMethodInfo, TBGetLastTimeMethodInfo,
                   TBGetTimeAndValueMethodInfo>(c);
    }
};

} // namespace

ClassInfoPtr timeBufferClass() { return std::make_unique<TimeBufferCOSClassInfo>(); }

} // namespace tracery::binding
