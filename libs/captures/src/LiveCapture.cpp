#include "CaptureSource.h"
#include "TimeRuns.h"

#include <tracery/captures/LiveCapture.h>

#include <cstring>
#include <deque>
#include <mutex>
#include <stdexcept>

namespace tracery::captures {

namespace {

constexpr auto kSteps = static_cast<std::size_t>(kChunkSteps);

/// A chunk's memory, all of it from the start, so that what is in it stays where it is. What is behind the steps that a
/// view knows of is the writer's.
struct Chunk {
    std::unique_ptr<std::byte[]> steps, overview;
    std::unique_ptr<std::int64_t[]> offsets;
};

struct HeldChunk {
    std::shared_ptr<const Chunk> chunk;
    std::shared_ptr<const std::vector<TimeRun>> runs;
};

class LiveView final : public CaptureView {
public:
    LiveView(const StepFormat& steps, const TimeAxis* even, std::int64_t first, std::int64_t behind,
             std::vector<HeldChunk> held)
        : CaptureView(steps, even), chunks_(std::move(held))
    {
        begin = first;
        end = behind;
    }

    void read(std::int64_t first, std::size_t count, std::byte* into) const override
    {
        copy(first, count, format.stepBytes, into, [](const Chunk& chunk) { return chunk.steps.get(); });
    }
    void readOffsets(std::int64_t first, std::size_t count, std::int64_t* into) const override
    {
        copy(first, count, sizeof *into, reinterpret_cast<std::byte*>(into),
             [](const Chunk& chunk) { return reinterpret_cast<const std::byte*>(chunk.offsets.get()); });
    }
    const std::byte* overview(std::int64_t chunk) const override { return at(chunk).chunk->overview.get(); }
    std::span<const TimeRun> runs(std::int64_t chunk) const override { return *at(chunk).runs; }

private:
    const HeldChunk& at(std::int64_t chunk) const
    {
        return chunks_[static_cast<std::size_t>(chunk - begin / kChunkSteps)];
    }

    template <class BytesOf>
    void copy(std::int64_t first, std::size_t count, std::size_t size, std::byte* into, BytesOf&& bytesOf) const
    {
        while (count > 0) {
            const auto offset = static_cast<std::size_t>(first % kChunkSteps);
            const std::size_t here = std::min(count, kSteps - offset);
            std::memcpy(into, bytesOf(*at(first / kChunkSteps).chunk) + offset * size, here * size);
            into += here * size;
            first += static_cast<std::int64_t>(here);
            count -= here;
        }
    }

    std::vector<HeldChunk> chunks_;
};

} // namespace

/// Only the writer changes things: chunks before it says so under the lock, and only behind the steps that are known.
class LiveSource final : public CaptureSource {
public:
    LiveSource(recordings::RecordingInfo about, const LiveSettings& settings)
        : CaptureSource(std::move(about), StepFormat(settings.layout, settings.channels.size(), settings.complex),
                        settings.axis),
          table_(format), most_(std::max<std::int64_t>(settings.mostSteps, 1))
    {}

    std::shared_ptr<const CaptureView> view() const override
    {
        const std::lock_guard lock(mutex_);
        return std::make_shared<LiveView>(format, axisOrNone(), begin_, end_,
                                          std::vector<HeldChunk>(chunks_.begin(), chunks_.end()));
    }

    void requireTimes(std::size_t count, std::span<const Time> times) const
    {
        if (times.size() != (axis ? 0 : count))
            throw std::invalid_argument(axis ? "a capture at an even rate takes no times"
                                             : "a capture takes a time for each step");
        for (std::size_t i = 0; i < times.size(); ++i) {
            const Time& before = i > 0 ? times[i - 1] : last_;
            if ((i > 0 || end_ > 0) && (times[i] < before || times[i].utc != before.utc))
                throw std::invalid_argument("the time steps back from " + before.text() + " to " + times[i].text());
        }
    }

    /// fill  puts the bytes of so many steps, from one of those that are appended on
    template <class Fill>
    void append(std::size_t count, std::span<const Time> times, Fill&& fill)
    {
        for (std::size_t done = 0; done < count;) {
            const auto offset = static_cast<std::size_t>(end_ % kChunkSteps);
            const std::size_t here = std::min(count - done, kSteps - offset);
            if (offset == 0)
                newest_ = makeChunk();
            Chunk& chunk = *newest_;
            std::byte* const steps = chunk.steps.get() + offset * format.stepBytes;
            fill(done, here, steps);
            const std::byte* const block = steps - offset % format.blockSteps * format.stepBytes;
            table_.update(chunk.overview.get(), block, offset, offset + here);
            std::shared_ptr<const std::vector<TimeRun>> runs = axis ? nullptr : enterTimes(times.subspan(done, here));
            publish(here, std::move(runs));
            done += here;
        }
    }

private:
    std::shared_ptr<Chunk> makeChunk() const
    {
        auto chunk = std::make_shared<Chunk>();
        chunk->steps = std::make_unique_for_overwrite<std::byte[]>(kSteps * format.stepBytes);
        chunk->overview = std::make_unique_for_overwrite<std::byte[]>(table_.bytes());
        if (!axis)
            chunk->offsets = std::make_unique_for_overwrite<std::int64_t[]>(kSteps);
        return chunk;
    }

    std::shared_ptr<const std::vector<TimeRun>> enterTimes(std::span<const Time> times)
    {
        const auto offset = static_cast<std::size_t>(end_ % kChunkSteps);
        if (offset == 0)
            newestRuns_.clear();
        const std::size_t before = newestRuns_.size();
        for (std::size_t i = 0; i < times.size(); ++i)
            newest_->offsets[offset + i] = runs_.enter(end_ + static_cast<std::int64_t>(i), times[i], newestRuns_);
        last_ = times.back();
        if (newestRuns_.size() == before)
            return nullptr;
        return std::make_shared<const std::vector<TimeRun>>(newestRuns_);
    }

    void publish(std::size_t count, std::shared_ptr<const std::vector<TimeRun>> runs)
    {
        HeldChunk gone; // freed without the lock
        const std::lock_guard lock(mutex_);
        if (end_ % kChunkSteps == 0)
            chunks_.push_back({newest_, nullptr});
        if (runs)
            chunks_.back().runs.swap(runs);
        end_ += static_cast<std::int64_t>(count);
        if (end_ - begin_ - kChunkSteps >= most_) {
            gone = std::move(chunks_.front());
            chunks_.pop_front();
            begin_ += kChunkSteps;
        }
    }

    const ChunkTable table_;
    const std::int64_t most_;
    mutable std::mutex mutex_; ///< of what views are made of
    std::deque<HeldChunk> chunks_;
    std::int64_t begin_ = 0, end_ = 0;
    // The writer's alone.
    std::shared_ptr<Chunk> newest_;
    std::vector<TimeRun> newestRuns_;
    TimeRuns runs_;
    Time last_;
};

namespace {

recordings::RecordingInfo infoOf(const LiveSettings& settings)
{
    if (settings.channels.empty())
        throw std::invalid_argument("a capture has one channel or more");
    recordings::RecordingInfo info;
    info.format = "live";
    info.channels = settings.channels;
    info.complex = settings.complex;
    if (settings.axis)
        info.rate = settings.axis->rate.toDouble();
    return info;
}

} // namespace

LiveCapture::LiveCapture(LiveSettings settings) : source_(std::make_shared<LiveSource>(infoOf(settings), settings)) {}

Capture LiveCapture::capture() const { return Capture(source_); }

void LiveCapture::append(std::span<const std::byte> steps, std::span<const Time> times)
{
    const std::size_t stepBytes = source_->format.stepBytes, count = steps.size() / stepBytes;
    if (steps.size() % stepBytes != 0)
        throw std::invalid_argument("a step has " + std::to_string(stepBytes) + " bytes");
    source_->requireTimes(count, times);
    source_->append(count, times, [&](std::size_t first, std::size_t some, std::byte* into) {
        std::memcpy(into, steps.data() + first * stepBytes, some * stepBytes);
    });
}

void LiveCapture::appendValues(std::span<const double> values, std::span<const Time> times)
{
    const StepFormat& format = source_->format;
    const std::size_t lines = format.lines(), count = values.size() / lines;
    if (values.size() % lines != 0)
        throw std::invalid_argument("a step has " + std::to_string(lines) + " values");
    source_->requireTimes(count, times);
    std::vector<std::byte> steps(count * format.stepBytes);
    for (std::size_t line = 0; line < lines; ++line)
        if (!format.store(line, values.data() + line, lines, count, steps.data()))
            throw std::invalid_argument("a value has no number of the capture's type");
    append(steps, times);
}

} // namespace tracery::captures
