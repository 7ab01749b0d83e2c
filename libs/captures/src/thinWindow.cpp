#include "thinWindow.h"

#include "StepTimes.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace tracery::captures {

namespace {

/// A line's numbers, a stretch at a time: from block to block, and far ahead where they are read one behind the other.
template <class Held>
class Numbers {
public:
    Numbers(const CaptureView& view, const LineWindow& window)
        : view_(view), line_(window.line), end_(window.end), block_(static_cast<std::int64_t>(view.format.blockSteps))
    {}

    /// The numbers of [first, end), which are in one block. Good until the next call.
    const Held* of(std::int64_t first, std::int64_t end)
    {
        if (first < first_ || end > first_ + static_cast<std::int64_t>(numbers_.size()))
            load(first);
        return numbers_.data() + (first - first_);
    }

private:
    void load(std::int64_t step)
    {
        const std::int64_t start = std::max(step / block_ * block_, view_.begin);
        const bool more =
            start == behind_ && 2 * ahead_ * block_ * static_cast<std::int64_t>(view_.format.stepBytes) <= kMostBytes;
        ahead_ = start == behind_ ? (more ? 2 * ahead_ : ahead_) : 1;
        const std::int64_t stop = std::min((start / block_ + ahead_) * block_, std::max(end_, step + 1));
        const auto count = static_cast<std::size_t>(stop - start);
        numbers_.clear();
        bytes_.resize(count * view_.format.stepBytes);
        view_.read(start, count, bytes_.data());
        numbers_.resize(count);
        heldOf(view_.format, line_, bytes_.data(), count, numbers_.data());
        first_ = start;
        behind_ = stop;
    }

    static constexpr std::int64_t kMostBytes = 1 << 16;

    const CaptureView& view_;
    std::size_t line_;
    std::int64_t end_, block_;
    std::int64_t first_ = 0, behind_ = -1, ahead_ = 1;
    std::vector<std::byte> bytes_;
    std::vector<Held> numbers_;
};

/// Where a number is: a step, or below an entry of the overview.
struct Place {
    std::int64_t chunk = 0;
    std::size_t entry = 0; ///< among its level
    int level = -1;        ///< a step: `step`
    std::int64_t step = 0;
};

template <class Held, class Times>
class WindowThinner {
public:
    WindowThinner(const CaptureView& view, const LineWindow& window, std::vector<double>& points)
        : view_(view), window_(window), times_(view, window.origin), numbers_(view, window), points_(points),
          block_(static_cast<std::int64_t>(view.format.blockSteps))
    {}

    void run()
    {
        expectColumns();
        std::int64_t opening = window_.first;
        for (std::int64_t next = columnEnd(opening, 1); opening < window_.end;) {
            const std::int64_t after = columnEnd(next, next - opening);
            fetchEntries(after);
            thinColumn(opening, next);
            opening = std::exchange(next, after);
        }
    }

private:
    /// The step that opens the column after the one that `opening` opens.
    std::int64_t columnEnd(std::int64_t opening, std::int64_t lastLength)
    {
        if (opening >= window_.end)
            return window_.end;
        return times_.first(opening + 1, window_.end, opening + lastLength,
                            [start = times_(opening), ratio = window_.columnsPerSecond](double time) {
                                return (time - start) * ratio >= 0.5;
                            });
    }

    /// Has the entries around a step on their way from memory when they are looked at.
    void fetchEntries(std::int64_t step) const
    {
        if (step >= window_.end)
            return;
        const std::int64_t chunk = step / kChunkSteps;
        const auto* const entries = entriesOf(chunk);
        for (std::size_t k = 0; k < view_.table.levels(); ++k) {
            const auto entry = static_cast<std::size_t>((step - chunk * kChunkSteps) / view_.table.span(k));
            const auto* const group = entries + view_.table.first(k) + entry / kChildren * kChildren;
            constexpr std::size_t kLine = 64;
            for (std::size_t at = 0; at < kChildren * sizeof *group; at += kLine)
                __builtin_prefetch(reinterpret_cast<const char*>(group) + at);
        }
    }

    void thinColumn(std::int64_t opening, std::int64_t next)
    {
        start_ = times_(opening);
        put(start_, valueAt(opening));
        std::int64_t first = opening + 1;
        for (; first < next && times_(first) == start_; ++first) // as they are
            points_.insert(points_.end(), {start_, valueAt(first)});
        if (first == next || (next == window_.end && !window_.finish))
            return;
        best_ = {};
        foldSteps(first, next);
        std::int64_t lowAt = stepOf(best_.lowAt, false), highAt = stepOf(best_.highAt, true);
        double low = valueOfHeld(view_.format, best_.low), high = valueOfHeld(view_.format, best_.high);
        if (view_.format.falls) {
            std::swap(low, high);
            std::swap(lowAt, highAt);
        }
        const double lowTime = times_(lowAt), highTime = times_(highAt);
        const bool highFirst = highTime < lowTime;
        put(highFirst ? highTime : lowTime, highFirst ? high : low);
        if (lowTime != highTime)
            put(highFirst ? lowTime : highTime, highFirst ? low : high);
    }

    void put(double time, double value)
    {
        points_.insert(points_.end(), {time, std::isinf(value) ? std::numeric_limits<double>::quiet_NaN() : value});
    }

    double valueAt(std::int64_t step) { return valueOfHeld(view_.format, *numbers_.of(step, step + 1)); }

    /// Folds steps by the largest entries of the overview that lie among them.
    void foldSteps(std::int64_t first, std::int64_t end)
    {
        while (first < end) {
            const std::int64_t chunk = first / kChunkSteps, offset = first - chunk * kChunkSteps;
            int level = -1;
            for (std::size_t k = 0; k < view_.table.levels(); ++k) {
                const std::int64_t span = view_.table.span(k);
                if (offset % span != 0 || first + span > end)
                    break;
                level = static_cast<int>(k);
            }
            if (level < 0) {
                const std::int64_t stop = std::min(end, (first / block_ + 1) * block_);
                const auto found = extremesOf(numbers_.of(first, stop), static_cast<std::size_t>(stop - first));
                const auto at = [first](std::size_t i) {
                    return Place{0, 0, -1, first + static_cast<std::int64_t>(i)};
                };
                best_.fold(found.low, at(found.lowAt), found.high, at(found.highAt));
                first = stop;
                continue;
            }
            const auto k = static_cast<std::size_t>(level);
            const std::int64_t span = view_.table.span(k);
            const auto* const entries = entriesOf(chunk);
            const auto stop = std::min((end - chunk * kChunkSteps) / span, kChunkSteps / span);
            auto entry = static_cast<std::size_t>(offset / span);
            // Up to where larger ones begin.
            const std::size_t most = std::min(static_cast<std::size_t>(stop), (entry / kChildren + 1) * kChildren);
            for (; entry < most; ++entry) {
                const std::size_t at = view_.table.first(k) + entry;
                const Place place{chunk, entry, level, 0};
                best_.fold(entries[at].low, place, entries[at].high, place);
            }
            first = chunk * kChunkSteps + static_cast<std::int64_t>(entry) * span;
        }
    }

    std::int64_t stepOf(const Place& place, bool high)
    {
        if (place.level < 0)
            return place.step;
        const auto* const entries = entriesOf(place.chunk);
        const auto placeIn = [&](std::size_t at) -> std::size_t {
            return high ? entries[at].highAt : entries[at].lowAt;
        };
        std::size_t entry = place.entry;
        for (int k = place.level; k > 0; --k)
            entry = entry * kChildren + placeIn(view_.table.first(static_cast<std::size_t>(k)) + entry) % kChildren;
        const std::int64_t step = place.chunk * kChunkSteps + static_cast<std::int64_t>(entry) * block_ +
                                  static_cast<std::int64_t>(placeIn(entry)) % block_;
        return std::min(step, window_.end - 1); // whatever a file says
    }

    const ChunkTable::Entry<Held>* entriesOf(std::int64_t chunk) const
    {
        return view_.table.template entries<Held>(view_.overview(chunk), window_.line);
    }

    /// Has the blocks in which columns begin fetched all at once, where each would be waited for.
    void expectColumns()
    {
        if (!view_.expects(window_.first))
            return;
        std::int64_t length = 1;
        for (std::int64_t opening = window_.first, columns = 0; opening < window_.end && columns < kMostExpected;
             ++columns) {
            view_.expect(opening / block_ * block_, static_cast<std::size_t>(block_));
            const std::int64_t next = columnEnd(opening, length);
            length = next - opening;
            opening = next;
        }
    }

    static constexpr std::int64_t kMostExpected = 16384;

    const CaptureView& view_;
    const LineWindow& window_;
    Times times_;
    Numbers<Held> numbers_;
    std::vector<double>& points_;
    std::int64_t block_;
    double start_ = 0;
    Extremes<Held, Place> best_;
};

} // namespace

void thinWindow(const CaptureView& view, const LineWindow& window, std::vector<double>& points)
{
    withHeld(view.format, [&](auto number) {
        using Held = decltype(number);
        if (view.axis != nullptr)
            WindowThinner<Held, EvenTimes>(view, window, points).run();
        else
            WindowThinner<Held, OwnTimes>(view, window, points).run();
    });
}

} // namespace tracery::captures
