#include "bindings/TimeBufferConstructor.h"

#include "host/Value.h"

#include <tracery/host/Error.h>

#include <algorithm>
#include <exception>
#include <new>

namespace tracery::binding {

namespace {

using Counts = TimeBuffer::Counts;

Counts readCapacities(const HostArray* array, std::uint64_t ports)
{
    Counts counts;
    try {
        counts = Value<Counts>::read(array);
    } catch (const Error&) {
        throw Error(errors::InvalidNumTimeSteps, "capacities are whole numbers from 1");
    }
    if ((counts.size() != 1 && counts.size() != ports) || std::ranges::count(counts, 0U) > 0)
        throw Error(errors::InvalidNumTimeSteps, "one capacity from 1 on is needed, or one a port");
    return counts;
}

BufferType readType(const HostArray* array)
{
    static const hostobj::COSDataTypePtr types =
        hostobj::COSDataType::fromEnumeration(hostobj::TypedEnumStringType::createCaseInsensitiveInstance(
            "TimeBufferType", {{static_cast<int>(BufferType::SingleRate), "SingleRate"},
                               {static_cast<int>(BufferType::MultipleRate), "MultipleRate"}}));
    try {
        return static_cast<BufferType>(readEnumeration(*types, array));
    } catch (const Error&) {
        throw Error(errors::InvalidBufferType);
    }
}

} // namespace

void setUpTimeBuffer(TimeBuffer& buffer, std::optional<const HostArray*> maxNumTimeSteps,
                     std::optional<const HostArray*> maxDimensions, std::optional<std::uint32_t> numberOfPorts,
                     std::optional<const HostArray*> type, std::optional<std::vector<std::uint8_t>> complexity,
                     std::optional<bool> threadSafe)
{
    if (!maxNumTimeSteps)
        return;
    std::uint64_t ports = 1;
    std::uint64_t extentsPerPort = 1;
    Counts extents{1};
    if (maxDimensions) {
        const HostArray* matrix = *maxDimensions;
        if (matrix == nullptr || !isReal2dMatrix(matrix))
            throw Error(errors::InitializeError, "maximum extents are a real matrix, a row a port");
        ports = getDimensions(matrix)[0];
        extentsPerPort = getDimensions(matrix)[1];
        if (numberOfPorts && *numberOfPorts != ports)
            throw Error(errors::InvalidMaxDimensionsForNPorts);
        if (ports > 0 && extentsPerPort == 0)
            throw Error(errors::InitializeError, "no extents");
        try {
            TimeBuffer::TransposeMaxDimensions(matrix, extents);
        } catch (const Error& error) {
            throw Error(errors::InitializeError, error.what());
        }
        if (std::ranges::count(extents, 0U) > 0)
            throw Error(errors::InitializeError, "an extent of 0");
    }
    const Counts capacities = readCapacities(*maxNumTimeSteps, ports);
    const BufferType bufferType = type ? readType(*type) : BufferType::SingleRate;
    std::vector<std::uint8_t> flags = complexity.value_or(std::vector<std::uint8_t>(1));
    if (flags.size() != 1 && flags.size() != ports)
        throw Error(errors::InvalidComplexityDimension);
    flags.resize(ports, flags.empty() ? std::uint8_t{0} : flags[0]);
    std::vector<HostComplexity> complexities(ports);
    std::ranges::transform(flags, complexities.begin(), [](std::uint8_t flag) {
        return flag != 0 ? HostComplexity::complex : HostComplexity::real;
    });
    try {
        buffer.ResetBuffer(capacities, extents, Counts(ports, extentsPerPort), ports, bufferType, complexities,
                           threadSafe.value_or(false));
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        throw Error(errors::InitializeError, error.what());
    }
}

} // namespace tracery::binding
