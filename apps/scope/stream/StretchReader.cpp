#include "stream/StretchReader.h"

#include "UsageError.h"
#include "libraries.h"
#include "stream/StandardInput.h"
#include "stream/sources.h"

#include <tracery/basics/quantity.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <utility>

namespace scope {

namespace {

constexpr std::size_t kBlockSteps = 8192;
// How far a step may differ from the mean, as a share of it, and from how far on that is told.
constexpr double kEven = 0.5;
constexpr double kToldEven = 0.1;
constexpr double kWholeDigits = 0.02;

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

void StepLengths::add(const std::vector<double>& times)
{
    const auto shorter = [](const Step& a, const Step& b) { return a.length < b.length; };
    for (const double time : times) {
        if (steps_++ == 0) {
            first_ = time;
        } else {
            shortest_ = std::min(shortest_, {time - last_, last_}, shorter);
            longest_ = std::max(longest_, {time - last_, last_}, shorter);
        }
        last_ = time;
    }
}

double StepLengths::deviation() const { return std::max(mean() - shortest_.length, longest_.length - mean()); }

double StepLengths::rounding(const Recording& recording) const
{
    const double latest = std::max(std::abs(first_), std::abs(last_));
    const double spacing = std::nextafter(latest, std::numeric_limits<double>::infinity()) - latest;
    // Where the steps are a whole number of last digits, rounding does not explain that some are longer.
    const double digits = mean() / recording.lastDigit(latest);
    const bool whole = std::round(digits) >= 1 && std::abs(digits - std::round(digits)) < kWholeDigits;
    return spacing + (whole ? 0 : recording.lastDigit(latest));
}

std::string StepLengths::requireEven(const Recording& recording, const std::string& purpose) const
{
    if (steps_ < 2)
        return {};
    if (!(deviation() <= std::max(kEven * mean(), rounding(recording)) && mean() > 0)) {
        const bool tooShort = mean() - shortest_.length > longest_.length - mean();
        throw InputError(recording.info().path, "",
                         "the time steps are uneven, " + text() + ", the " + (tooShort ? "shortest" : "longest") +
                             " after " + formatQuantity((tooShort ? shortest_ : longest_).from, "s") + ": " + purpose);
    }
    return deviation() > kToldEven * mean() ? text() : "";
}

bool StepLengths::areEven(const Recording& recording) const
{
    return deviation() <= std::max(kToldEven * mean(), rounding(recording)) && mean() > 0;
}

std::string StepLengths::text() const
{
    return formatQuantity(shortest_.length, "s", 6) + " to " + formatQuantity(longest_.length, "s", 6);
}

void tellTakenAsEven(const Recording& recording, const std::string& lengths)
{
    std::fprintf(stderr, "tracery-scope: %s: the time steps, %s, are taken as even\n",
                 nameStandardInput(recording.info().path).c_str(), lengths.c_str());
}

Sampling measureSampling(Recording& recording, const Stretch& stretch)
{
    const RecordingInfo& info = recording.info();
    if (info.rate && info.steps && stretch.whole())
        return {.steps = *info.steps, .rate = *info.rate, .uneven = {}};

    StepLengths lengths;
    Block block;
    for (StretchReader reader(recording, stretch); reader.next(block);)
        lengths.add(block.times);
    if (info.rate)
        return {.steps = lengths.steps(), .rate = *info.rate, .uneven = {}};
    return {.steps = lengths.steps(),
            .rate = lengths.rate(),
            .measured = true,
            .rounding = lengths.rounding(recording),
            .uneven = lengths.requireEven(recording, "a spectrum needs an even rate")};
}

EvenTimes::EvenTimes(std::string path, const Sampling& sampling, std::uint64_t segment)
    : path_(std::move(path)), sampling_(sampling), segment_(segment)
{}

void EvenTimes::check(const std::vector<double>& times)
{
    if (!sampling_.measured)
        return;
    // A segment's first time is rounded as well as the others.
    const double most = std::max(kEven, 2 * sampling_.rounding * sampling_.rate);
    for (const double time : times) {
        if (steps_ == 0)
            first_ = time;
        // The step that leads to the next segment belongs to this one.
        if (!(std::abs((time - first_) * sampling_.rate - static_cast<double>(steps_)) <= most))
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
