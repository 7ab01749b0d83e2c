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
        return static_cast<BufferType>(
            *types->getEnumeration()->valueOf(Value<std::string>::read(types->convert(array).get())));
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
    std::uint64_t ports = numberOfPorts.value_or(1);
    std::uint64_t extentsPerPort = 1;
    Counts extents(ports, 1);
    if (maxDimensions) {
        const HostArray* matrix = *maxDimensions;
        if (matrix == nullptr || !isReal2dMatrix(matrix))
            throw Error(errors::InitializeError, "maximum extents are a real matrix, a row a port");
        const std::uint64_t rows = getDimensions(matrix)[0];
        ports = numberOfPorts.value_or(static_cast<std::uint32_t>(std::min<std::uint64_t>(rows, UINT32_MAX)));
        if (rows != ports)
            throw Error(errors::InvalidMaxDimensionsForNPorts);
        extentsPerPort = getDimensions(matrix)[1];
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
