#include "commands/liveChannels.h"

#include "UsageError.h"

#include <algorithm>
#include <cstdio>

namespace scope {

namespace {

constexpr std::size_t kMostChannels = 4096;
constexpr std::size_t kMostKept = 1U << 23U;
constexpr std::size_t kMostListed = 10;

} // namespace

void requireMeasurable(std::size_t channels, std::size_t each, const char* option)
{
    const std::size_t most = std::min(kMostChannels, kMostKept / each);
    if (channels > most)
        throw UsageError(std::to_string(channels) + " channels are too many" +
                         (most < kMostChannels ? " for " + std::string(option) + " " + std::to_string(each) : "") +
                         ": at most " + std::to_string(most) + " are measured; choose some with --channels" +
                         (most < kMostChannels ? ", or a smaller " + std::string(option) : ""));
}

void ShortList::add(const std::string& entry)
{
    if (count_++ < kMostListed)
        first_ += (first_.empty() ? "" : separator_) + entry;
}

std::string ShortList::text() const
{
    return first_ + (count_ > kMostListed ? " and " + std::to_string(count_ - kMostListed) + " more" : "");
}

std::vector<std::size_t> liveChannels(const std::vector<ChosenChannel>& channels,
                                      const std::vector<std::string>& faults)
{
    std::vector<std::size_t> live;
    ShortList list("; ");
    for (std::size_t i = 0; i < channels.size(); ++i)
        if (faults[i].empty())
            live.push_back(i);
        else
            list.add("channel '" + channels[i].label + "' " + faults[i]);
    if (live.empty())
        throw UsageError("nothing to measure: " + list.text());
    if (!list.empty())
        std::fprintf(stderr, "tracery-scope: left out: %s\n", list.text().c_str());
    return live;
}

} // namespace scope
