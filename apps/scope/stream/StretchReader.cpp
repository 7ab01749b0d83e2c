#include "stream/StretchReader.h"

#include "UsageError.h"
#include "libraries.h"
#include "stream/sources.h"

#include <tracery/basics/quantity.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace scope {

namespace {

constexpr std::size_t kBlockSteps = 8192;
// How far a step may differ from the mean, as a share of it, and from how far on that is told.
constexpr double kEven = 0.5;
constexpr double kToldEven = 0.1;

/// Keeps `count` steps from `first` on.
void cut(std::vector<double>& values, std::size_t first, std::size_t count, std::size_t width)
{
    if (values.empty())
        return;
    values.resize((first + count) * width);
    values.erase(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(first * width));
}

} // namespace

StretchReader::StretchReader(Recording& recording, const Stretch& stretch)
    : recording_(recording), range_(recording.range()), from_(stretch.from.value_or(range_.first)),
      to_(stretch.span ? from_ + *stretch.span : std::numeric_limits<double>::infinity())
{
    if (from_ > range_.last)
        throw UsageError(nothingAfter(from_, range_));
    recording_.seek(from_);
}

bool StretchReader::next(Block& block)
{
    while (!ended_) {
        recording_.read(block, kBlockSteps);
        const auto first = std::lower_bound(block.times.begin(), block.times.end(), from_);
        const auto last = std::lower_bound(first, block.times.end(), to_);
        ended_ = block.steps() == 0 || last != block.times.end();
        const auto before = static_cast<std::size_t>(first - block.times.begin());
        const auto count = static_cast<std::size_t>(last - first);
        if (count == 0)
            continue;
        any_ = true;
        if (count < block.steps()) {
            const std::size_t width = recording_.info().channels.size();
            cut(block.real, before, count, width);
            cut(block.imag, before, count, width);
            cut(block.times, before, count, 1);
        }
        progress_.show((block.times.back() - from_) / (std::min(to_, range_.last) - from_));
        return true;
    }
    if (!any_)
        throw UsageError("no samples between " + formatQuantity(from_, "s") + " and " +
                         formatQuantity(std::min(to_, range_.last), "s"));
    return false;
}

Sampling measureSampling(Recording& recording, const Stretch& stretch)
{
    const RecordingInfo& info = recording.info();
    if (info.rate && info.steps && stretch.whole())
        return {.steps = *info.steps, .rate = *info.rate, .uneven = {}};

    Sampling sampling;
    double first = 0, last = 0;
    struct Step {
        double length;
        double from;
    };
    const auto shorter = [](const Step& a, const Step& b) { return a.length < b.length; };
    Step shortest{std::numeric_limits<double>::infinity(), 0}, longest{0, 0};
    Block block;
    for (StretchReader reader(recording, stretch); reader.next(block);)
        for (const double time : block.times) {
            if (sampling.steps++ == 0) {
                first = time;
            } else {
                shortest = std::min(shortest, {time - last, last}, shorter);
                longest = std::max(longest, {time - last, last}, shorter);
            }
            last = time;
        }
    if (info.rate) {
        sampling.rate = *info.rate;
        return sampling;
    }
    sampling.measured = true;
    sampling.rate = static_cast<double>(sampling.steps - 1) / (last - first);
    if (sampling.steps < 2)
        return sampling;
    const double mean = (last - first) / static_cast<double>(sampling.steps - 1);
    const double below = mean - shortest.length, above = longest.length - mean;
    const std::string lengths =
        formatQuantity(shortest.length, "s", 6) + " to " + formatQuantity(longest.length, "s", 6);
    if (!(std::max(below, above) <= kEven * mean && mean > 0))
        throw InputError(info.path, "",
                         "the time steps are uneven, " + lengths + ", the " + (below > above ? "shortest" : "longest") +
                             " after " + formatQuantity((below > above ? shortest : longest).from, "s") +
                             ": a spectrum needs an even rate");
    if (std::max(below, above) > kToldEven * mean)
        sampling.uneven = lengths;
    return sampling;
}

EvenTimes::EvenTimes(std::string path, const Sampling& sampling, std::uint64_t segment)
    : path_(std::move(path)), sampling_(sampling), segment_(segment)
{}

void EvenTimes::check(const std::vector<double>& times)
{
    if (!sampling_.measured)
        return;
    for (const double time : times) {
        if (steps_ == 0)
            first_ = time;
        // The step that leads to the next segment belongs to this one.
        if (!(std::abs((time - first_) * sampling_.rate - static_cast<double>(steps_)) <= kEven))
            throw InputError(path_, "",
                             "the time steps are uneven: at " + formatQuantity(time, "s", 6) +
                                 " they are more than half a step off the mean rate of " +
                                 formatQuantity(sampling_.rate, "Hz", 6) + ", which a spectrum needs");
        if (steps_++ == segment_) {
            first_ = time;
            steps_ = 1;
        }
    }
}

} // namespace scope
