#include "EvenRecording.h"

#include <tracery/basics/Text.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tracery::recordings {

using namespace basics;

double chooseRate(const std::string& path, std::optional<double> own, const OpenOptions& options)
{
    if (!own && !options.rate)
        throw InputError(path, "", "gives neither times nor a rate", InputError::Kind::RateMissing);
    if (own && options.rate)
        throw InputError(path, "", "has its own rate, " + numberText(*own) + " steps per second",
                         InputError::Kind::RateKnown);
    const double rate = own ? *own : *options.rate;
    // Far beyond what is recorded, and far from where times or their differences are no numbers any more.
    if (!(rate >= 1e-12 && rate <= 1e15))
        throw InputError(path, "",
                         "the rate must be a positive number of steps per second, 1e-12 to 1e15, found " +
                             numberText(rate));
    return rate;
}

void EvenRecording::describe(RecordingInfo info)
{
    if (info.steps.value() == 0)
        throw InputError(info.path, "", "holds no samples");
    info_ = std::move(info);
}

TimeRange EvenRecording::range() { return {0.0, stepTime(*info_.steps - 1, *info_.rate)}; }

void EvenRecording::seek(double time)
{
    // The times never decrease, so halving finds the step by comparing the very times that reading gives.
    std::uint64_t notBefore = *info_.steps; // first step known not to be before `time`
    for (next_ = 0; notBefore - next_ > 1;) {
        const std::uint64_t middle = next_ + (notBefore - next_) / 2;
        (stepTime(middle, *info_.rate) < time ? next_ : notBefore) = middle;
    }
}

void EvenRecording::read(Block& block, std::size_t maxSteps)
{
    const std::uint64_t left = *info_.steps - next_;
    const std::size_t count = static_cast<std::size_t>(std::min<std::uint64_t>(maxSteps, left));
    block.times.resize(count);
    const double first = static_cast<double>(next_);
    const double rate = *info_.rate;
    for (std::size_t i = 0; i < count; ++i)
        block.times[i] = (first + static_cast<double>(static_cast<std::int32_t>(i))) / rate; // stepTime, vectorised
    readValues(next_, count, block);
    next_ += count;
}

std::string channelName(std::size_t index) { return "ch" + std::to_string(index + 1); }

std::vector<Channel> numberedChannels(std::size_t count)
{
    std::vector<Channel> channels(count);
    for (std::size_t i = 0; i < count; ++i)
        channels[i].name = channelName(i);
    return channels;
}

} // namespace tracery::recordings
