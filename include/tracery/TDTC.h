#pragma once

#include <cstdint>

/// The choices of the time-domain trigger controller. Hosts show the enumerators by these names and values.
namespace tracery::TDTC {

/// Which direction of the signal counts. Detectors test for Positive and Negative; any other value means
/// either.
enum class PolarityEnum : std::int32_t { Negative = -1, Either = 0, Positive = 1 };

/// When a display window is produced: free-running where events are missing, on every event, on one event,
/// never.
enum class ModeEnum : std::int32_t { Auto = 0, Normal = 1, Once = 2, Off = 3 };

/// The kind of detector, and the names of the kinds, in the order of their values.
enum class TypeEnum : std::int32_t { Edge = 0, PulseWidth = 1, Transition = 2, Runt = 3, Window = 4, Timeout = 5 };
inline constexpr const char* kTypeNames[] = {"Edge", "PulseWidth", "Transition", "Runt", "Window", "Timeout"};

/// Which real quantity of the channel is triggered on. There is no value 0.
enum class ComplexityEnum : std::int32_t { Scalar = 1, Real = 2, Imaginary = 3, Magnitude = 4, Phase = 5 };

} // namespace tracery::TDTC
