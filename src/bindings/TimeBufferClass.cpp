#include "bindings/TimeBufferConstructor.h"
#include "bindings/classNames.h"
#include "bindings/classes.h"
#include "host/ClassTable.h"

#include <tracery/TimeBuffer.h>

#include <algorithm>
#include <exception>
#include <optional>

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

} // namespace

template <>
struct Value<PortArgument> {
    static std::string type() { return "uint32 scalar"; }
    static PortArgument read(const HostArray* array) { return {array}; }
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

/// (object), (object, port), (object, tStart, tEnd, widen) or (object, port, tStart, tEnd, widen).
class TBGetTimeAndValueMethodInfo : public hostobj::COSMethodInfo {
public:
    hostobj::COSNameID getName() const override { return "GetTimeAndValue"; }
    hostobj::COSMethodSignaturePtr getSignature() const override
    {
        const auto& number = dataTypeOf<Value<double>>();
        const auto& any = dataTypeOf<Value<HostArray*>>();
        return hostobj::COSMethodSignature::createMethodSignature(dataTypeOf<Value<std::shared_ptr<TimeBuffer>>>(),
                                                                  {number, number, number, dataTypeOf<Value<bool>>()},
                                                                  {{"time", any}, {"value", any}}, 4);
    }
    hostobj::HostOutputs invoke(hostobj::HostInputs inputs, std::size_t wanted) const override
    {
        return guarded([&] {
            const std::shared_ptr<TimeBuffer> buffer = payloadOf<TimeBuffer>(inputs.empty() ? nullptr : inputs[0]);
            const std::size_t count = inputs.size();
            requireCounts(count, 1, 5, wanted, 2);
            if (count == 3)
                throw Error(errors::InvalidNumberOfArguments, "tStart and tEnd come with widen");
            Port port;
            if (count == 2 || count == 5)
                port = PortArgument{inputs[1]};
            const std::uint64_t index = PortArgument::in(*buffer, port);
            HostArray* time = nullptr;
            HostArray* value = nullptr;
            if (count < 4) {
                buffer->GetTimeAndValue(index, time, value);
            } else {
                const double tStart = Value<double>::read(inputs[count - 3]);
                const double tEnd = Value<double>::read(inputs[count - 2]);
                const bool widen = Value<double>::read(inputs[count - 1]) != 0;
                buffer->GetTimeAndValue(index, time, value, tStart, tEnd, widen);
            }
            HostArrayPtr owned[] = {HostArrayPtr(time), HostArrayPtr(value)};
            hostobj::HostOutputs outputs;
            for (HostArrayPtr& array : owned)
                outputs.push_back(array != nullptr ? std::move(array)
                                                   : HostArrayPtr(createDoubleMatrix(0, 0, HostComplexity::real)));
            outputs.resize(std::max<std::size_t>(1, std::min<std::size_t>(wanted, 2)));
            return outputs;
        });
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
