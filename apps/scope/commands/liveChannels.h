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

/// Refuses more channels than are measured at once: 4096, and 2^23 values that are kept of them.
/// each    values that are kept of a channel
/// option  what says how many those are
void requireMeasurable(std::size_t channels, std::size_t each, const char* option);

/// A list for one line: its first entries, and how many there are beyond.
class ShortList {
public:
    explicit ShortList(const char* separator) : separator_(separator) {}
    void add(const std::string& entry);
    bool empty() const { return count_ == 0; }
    std::string text() const;

private:
    const char* separator_;
    std::string first_;
    std::size_t count_ = 0;
};

/// The places in `channels` of those that have something to show. One line on stderr about the others.
/// faults  by channel, why it has nothing to show; empty when it has
/// throws  UsageError when none is left
std::vector<std::size_t> liveChannels(const std::vector<ChosenChannel>& channels,
                                      const std::vector<std::string>& faults);

} // namespace scope
