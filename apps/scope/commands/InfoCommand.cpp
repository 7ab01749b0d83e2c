#include "commands/commands.h"
#include "libraries.h"
#include "stream/Progress.h"
#include "stream/StandardInput.h"

#include <tracery/basics/Interval.h>
#include <tracery/basics/quantity.h>
#include <tracery/recordings/Recording.h>

#include <cmath>
#include <cstdio>

namespace scope {

namespace {

struct ChannelStatistics : Interval {
    double sum = 0;
    std::uint64_t finite = 0;
    std::uint64_t missing = 0;

    void add(double value)
    {
        if (!std::isfinite(value)) {
            ++missing;
            return;
        }
        extend(value);
        sum += value;
        ++finite;
    }
};

/// Statistics of every channel; for complex recordings of the in-phase part and then of the quadrature part.
std::vector<ChannelStatistics> scan(Recording& recording, const TimeRange& range, std::uint64_t& steps)
{
    const RecordingInfo& info = recording.info();
    const std::size_t channels = info.channels.size();
    std::vector<ChannelStatistics> statistics(channels * (info.complex ? 2 : 1));
    Progress progress;
    Block block;
    for (recording.read(block, 8192); block.steps() > 0; recording.read(block, 8192)) {
        for (std::size_t i = 0; i < block.real.size(); ++i)
            statistics[i % channels].add(block.real[i]);
        for (std::size_t i = 0; i < block.imag.size(); ++i)
            statistics[channels + i % channels].add(block.imag[i]);
        steps += block.steps();
        progress.show((block.times.back() - range.first) / (range.last - range.first));
    }
    return statistics;
}

void printInfo(Recording& recording)
{
    const RecordingInfo& info = recording.info();
    const TimeRange range = recording.range();
    std::uint64_t steps = 0;
    const std::vector<ChannelStatistics> statistics = scan(recording, range, steps);

    std::printf("%s\n  format    %s\n", nameStandardInput(info.path).c_str(), info.format.c_str());
    if (info.rate)
        std::printf("  rate      %s\n", formatQuantity(*info.rate, "Hz").c_str());
    if (info.centerFrequency)
        std::printf("  center    %.9g Hz\n", *info.centerFrequency);
    std::printf("  steps     %llu\n  time      %.15g s to %.15g s (%s)\n", static_cast<unsigned long long>(steps),
                range.first, range.last, formatQuantity(range.last - range.first, "s").c_str());
    std::printf("  channel                  minimum      maximum         mean    missing\n");
    for (std::size_t i = 0; i < statistics.size(); ++i) {
        const Channel& channel = info.channels[i % info.channels.size()];
        std::string name = std::to_string(i % info.channels.size() + 1) + " " + channel.name;
        if (info.complex)
            name += i < info.channels.size() ? " I" : " Q";
        if (!channel.unit.empty())
            name += " [" + channel.unit + "]";
        const ChannelStatistics& s = statistics[i];
        std::printf("  %-18s", name.c_str());
        if (s.finite > 0)
            std::printf(" %12.6g %12.6g %12.6g", s.low, s.high, s.sum / static_cast<double>(s.finite));
        else
            std::printf(" %12s %12s %12s", "-", "-", "-");
        std::printf(" %10llu\n", static_cast<unsigned long long>(s.missing));
    }
}

} // namespace

void runInfo(const InfoOptions& options)
{
    for (const std::string& file : options.files)
        printInfo(*openInput(file, {options.rate}));
}

} // namespace scope
