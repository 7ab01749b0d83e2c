#pragma once

#include "CaptureView.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

namespace tracery::captures {

/// The first of the numbers from `from` on that `opens`, or `end`, if all behind it do. Found fastest near `guess`.
template <class Opens>
std::int64_t firstThat(std::int64_t from, std::int64_t end, std::int64_t guess, Opens&& opens)
{
    std::int64_t low = from, high = end; // the answer is one of low to high
    const auto probe = [&](std::int64_t at) { opens(at) ? high = at : low = at + 1; };
    for (std::int64_t reach = 1; low < high; reach *= 2) {
        const std::int64_t at = std::clamp(guess, low, high - 1);
        probe(at);
        guess = high == at ? at - reach : at + reach;
        if (reach > (end - from) / 4)
            break;
    }
    while (low < high)
        probe(low + (high - low) / 2);
    return low;
}

/// Times of even steps, in seconds from an origin.
class EvenTimes {
public:
    EvenTimes(const CaptureView& view, const Time& origin) : times_(*view.axis, origin) {}
    double operator()(std::int64_t step) const { return times_(step); }

    /// The first step of [from, end) at a time that `opens`, as do all behind it, or `end`.
    template <class Opens>
    std::int64_t first(std::int64_t from, std::int64_t end, std::int64_t guess, Opens&& opens) const
    {
        return firstThat(from, end, guess, [&](std::int64_t step) { return opens(times_(step)); });
    }

private:
    RelativeTimes times_;
};

/// The same of steps that have their own: one run at a time is at hand.
class OwnTimes {
public:
    OwnTimes(const CaptureView& view, const Time& origin) : view_(view), origin_(origin) {}
    double operator()(std::int64_t step)
    {
        if (step < first_ || step >= end_)
            load(step);
        return (*times_)(offsets_[static_cast<std::size_t>(step - first_)]);
    }

    template <class Opens>
    std::int64_t first(std::int64_t from, std::int64_t end, std::int64_t /*guess*/, Opens&& opens)
    {
        if (from >= end)
            return end;
        const auto runOpens = [&](const TimeRun& run) {
            return run.first > from && (run.first >= end || opens((run.axis.start - origin_).toDouble()));
        };
        // The first chunk that begins with an opening time, then such a run of the one before, then a step.
        const std::int64_t chunk =
            firstThat(from / kChunkSteps + 1, (end - 1) / kChunkSteps + 1, from / kChunkSteps + 1,
                      [&](std::int64_t c) { return runOpens(view_.runs(c).front()); }) -
            1;
        const std::span<const TimeRun> runs = view_.runs(chunk);
        const auto run = firstThat(0, static_cast<std::int64_t>(runs.size()), 0,
                                   [&](std::int64_t i) { return runOpens(runs[static_cast<std::size_t>(i)]); });
        const std::int64_t behind = static_cast<std::size_t>(run) < runs.size()
                                        ? runs[static_cast<std::size_t>(run)].first
                                        : (chunk + 1) * kChunkSteps;
        const std::int64_t before = run > 0 ? runs[static_cast<std::size_t>(run - 1)].first : from;
        const std::int64_t least = std::max(before, from), most = std::min(behind, end);
        return firstThat(least, most, (least + most) / 2, [&](std::int64_t step) { return opens((*this)(step)); });
    }

    /// The exact time of a step.
    Time exactly(std::int64_t step)
    {
        (*this)(step);
        return axis_.timeOf(offsets_[static_cast<std::size_t>(step - first_)]);
    }

private:
    static constexpr std::int64_t kMostOffset = std::int64_t{1} << 62;

    void load(std::int64_t step)
    {
        const std::int64_t chunk = step / kChunkSteps;
        const std::span<const TimeRun> runs = view_.runs(chunk);
        const auto next = std::ranges::upper_bound(runs, step, {}, &TimeRun::first);
        const TimeRun& run = *(next - 1);
        const std::int64_t behind = next != runs.end() ? next->first : (chunk + 1) * kChunkSteps;
        end_ = 0; // until all is well
        offsets_.resize(static_cast<std::size_t>(std::min(behind, view_.end) - run.first));
        view_.readOffsets(run.first, offsets_.size(), offsets_.data());
        if (std::ranges::any_of(offsets_, [](std::int64_t offset) { return offset < 0 || offset > kMostOffset; }))
            throw TimeError("a step has no sensible time");
        times_.emplace(run.axis, origin_);
        axis_ = run.axis;
        first_ = run.first;
        end_ = first_ + static_cast<std::int64_t>(offsets_.size());
    }

    const CaptureView& view_;
    Time origin_;
    TimeAxis axis_;
    std::optional<RelativeTimes> times_;
    std::vector<std::int64_t> offsets_;
    std::int64_t first_ = 0, end_ = 0;
};

} // namespace tracery::captures
