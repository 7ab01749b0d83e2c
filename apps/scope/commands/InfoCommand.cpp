#include "commands/commands.h"
#include "libraries.h"
#include "stream/Progress.h"
#include "stream/StandardInput.h"
#include "stream/StretchReader.h"

#include <tracery/basics/Interval.h>
#include <tracery/basics/Text.h>
#include <tracery/basics/quantity.h>
#include <tracery/recordings/Recording.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace scope {

namespace {

struct ChannelStatistics : Interval {
    double sum = 0;
    std::uint64_t finite = 0;
    std::uint64_t missing = 0;
    double integral = 0; ///< of the finite values, each over the time that is nearest to its own
    double time = 0;     ///< all of that

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
    void addTime(double value, double seconds)
    {
        if (!std::isfinite(value))
            return;
        integral += value * seconds;
        time += seconds;
    }
    double mean(bool byTime) const { return byTime && time > 0 ? integral / time : sum / static_cast<double>(finite); }
};

/// Hands each value the halves of the steps on both sides of it.
class TimeShares {
public:
    void add(const Block& block, std::size_t channels, std::vector<ChannelStatistics>& statistics)
    {
        for (std::size_t i = 0; i < block.steps(); ++i) {
            const double* values = &block.real[i * channels];
            const double half = last_.empty() ? 0 : (block.times[i] - lastTime_) / 2;
            for (std::size_t c = 0; c < channels; ++c) {
                if (!last_.empty())
                    statistics[c].addTime(last_[c], half);
                statistics[c].addTime(values[c], half);
            }
            last_.assign(values, values + channels);
            lastTime_ = block.times[i];
        }
    }

private:
    std::vector<double> last_;
    double lastTime_ = 0;
};

/// Statistics of every channel; for complex recordings of the in-phase part and then of the quadrature part.
std::vector<ChannelStatistics> scan(Recording& recording, const TimeRange& range, StepLengths& lengths)
{
    const RecordingInfo& info = recording.info();
    const std::size_t channels = info.channels.size();
    std::vector<ChannelStatistics> statistics(channels * (info.complex ? 2 : 1));
    Progress progress;
    TimeShares shares;
    Block block;
    for (recording.read(block, 8192); block.steps() > 0; recording.read(block, 8192)) {
        for (std::size_t i = 0; i < block.real.size(); ++i)
            statistics[i % channels].add(block.real[i]);
        for (std::size_t i = 0; i < block.imag.size(); ++i)
            statistics[channels + i % channels].add(block.imag[i]);
        lengths.add(block.times);
        if (!info.rate)
            shares.add(block, channels, statistics);
        progress.show((block.times.back() - range.first) / (range.last - range.first));
    }
    return statistics;
}

/// As many digits of a mean as tell it from the extremes; six at least.
std::string meanText(double mean, double low, double high)
{
    const double ratio = std::max(std::abs(low), std::abs(high)) / (high - low);
    const int more = std::isfinite(ratio) && ratio > 1 ? static_cast<int>(std::log10(ratio)) : 0;
    char text[32];
    std::snprintf(text, sizeof text, "%.*g", std::min(6 + more, 15), mean);
    return text;
}

void printChannels(const RecordingInfo& info, const std::vector<ChannelStatistics>& statistics, bool byTime)
{
    using Row = std::array<std::string, 5>;
    std::vector<Row> rows = {{"channel", "minimum", "maximum", byTime ? "mean by time" : "mean", "missing"}};
    std::array<int, 5> widths = {18, 12, 12, 12, 10};
    for (std::size_t i = 0; i < statistics.size(); ++i) {
        const Channel& channel = info.channels[i % info.channels.size()];
        std::string name = std::to_string(i % info.channels.size() + 1) + " " + channel.name;
        if (info.complex)
            name += i < info.channels.size() ? " I" : " Q";
        if (!channel.unit.empty())
            name += " [" + channel.unit + "]";
        const ChannelStatistics& s = statistics[i];
        const auto [low, high] = rangeText(s.low, s.high);
        const std::string mean = meanText(s.mean(byTime), s.low, s.high);
        const std::string missing = std::to_string(s.missing);
        rows.push_back(s.finite > 0 ? Row{name, low, high, mean, missing} : Row{name, "-", "-", "-", missing});
    }
    for (const Row& row : rows)
        for (std::size_t k = 1; k < row.size(); ++k)
            widths[k] = std::max(widths[k], static_cast<int>(row[k].size()));
    for (const Row& row : rows)
        std::printf("  %-*s %*s %*s %*s %*s\n", widths[0], row[0].c_str(), widths[1], row[1].c_str(), widths[2],
                    row[2].c_str(), widths[3], row[3].c_str(), widths[4], row[4].c_str());
}

void printInfo(Recording& recording)
{
    const RecordingInfo& info = recording.info();
    const TimeRange range = recording.range();
    StepLengths lengths;
    const std::vector<ChannelStatistics> statistics = scan(recording, range, lengths);
    const bool byTime = !info.rate && lengths.steps() > 1 && !lengths.areEven(recording);

    std::printf("%s\n  format    %s\n", nameStandardInput(info.path).c_str(), info.format.c_str());
    if (info.rate)
        std::printf("  rate      %s\n", formatExactly(*info.rate, "Hz").c_str());
    if (info.centerFrequency)
        std::printf("  center    %s\n", formatExactly(*info.centerFrequency, "Hz").c_str());
    // Times of an even rate are computed.
    const auto timeText = info.rate ? computedText : numberText;
    std::printf("  steps     %llu\n  time      %s s to %s s (%s)\n", static_cast<unsigned long long>(lengths.steps()),
                timeText(range.first).c_str(), timeText(range.last).c_str(),
                formatQuantity(range.last - range.first, "s").c_str());
    printChannels(info, statistics, byTime);
}

} // namespace

void runInfo(const InfoOptions& options)
{
    for (const std::string& file : options.files)
        printInfo(*openInput(file, {options.rate}));
}

} // namespace scope
