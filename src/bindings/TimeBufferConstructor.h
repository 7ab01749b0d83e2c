#pragma once

#include <tracery/TimeBuffer.h>
#include <tracery/host/HostArray.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tracery::binding {

/// Sets up a buffer as the host's constructor asks. Arguments may be left out from the end; with none the buffer awaits
/// set-up.
/// maxNumTimeSteps  steps each port keeps: one for all ports, or one a port
/// maxDimensions    maximum extents, a row a port [one port of single values]
/// type             "SingleRate" or "MultipleRate" in any letter case [SingleRate]
/// complexity       one flag for all ports, or one a port [real]
/// throws  InvalidNumTimeSteps, InvalidMaxDimensionsForNPorts, InvalidBufferType, InvalidComplexityDimension,
///         InitializeError for any other failure of the set-up; arguments of another type than the class table says are
///         InvalidArgumentType
void setUpTimeBuffer(TimeBuffer& buffer, std::optional<const HostArray*> maxNumTimeSteps,
                     std::optional<const HostArray*> maxDimensions, std::optional<std::uint32_t> numberOfPorts,
                     std::optional<const HostArray*> type, std::optional<std::vector<std::uint8_t>> complexity,
                     std::optional<bool> threadSafe);

} // namespace tracery::binding
