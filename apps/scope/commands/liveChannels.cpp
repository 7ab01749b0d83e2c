#include "commands/liveChannels.h"

#include "UsageError.h"

#include <cstdio>

namespace scope {

std::vector<std::size_t> liveChannels(const std::vector<ChosenChannel>& channels,
                                      const std::vector<std::string>& faults)
{
    std::vector<std::size_t> live;
    std::string list;
    for (std::size_t i = 0; i < channels.size(); ++i)
        if (faults[i].empty())
            live.push_back(i);
        else
            list += (list.empty() ? "channel '" : "; channel '") + channels[i].label + "' " + faults[i];
    if (live.empty())
        throw UsageError("nothing to measure: " + list);
    if (!list.empty())
        std::fprintf(stderr, "tracery-scope: left out: %s\n", list.c_str());
    return live;
}

} // namespace scope
