#pragma once

#include "stream/sources.h"

#include <string>
#include <vector>

namespace scope {

/// Why a channel has nothing to show, for what follows its name.
inline constexpr const char* kOnlyMissing = "has only missing or infinite values";
inline constexpr const char* kZero = "is zero throughout";
inline constexpr const char* kTooLarge = "has values too large to square";
inline constexpr const char* kTooSmall = "has values too small to square";

/// The places in `channels` of those that have something to show. One line on stderr about the others.
/// faults  by channel, why it has nothing to show; empty when it has
/// throws  UsageError when none is left
std::vector<std::size_t> liveChannels(const std::vector<ChosenChannel>& channels,
                                      const std::vector<std::string>& faults);

} // namespace scope
