#include "stream/LiveFeed.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace scope {

using namespace tracery;

namespace {

constexpr double kBatchSeconds = 0.01; // of the clock
constexpr std::size_t kMostValues = std::size_t{1} << 16;
constexpr std::uint64_t kFirstCapacity = std::uint64_t{1} << 14;
constexpr double kLongestWait = 1e8; // seconds; the clock's nanoseconds end at 9e9

BatchReader openReader(std::unique_ptr<Recording> recording, const LiveFeed::Pace& pace)
{
    constexpr double kEnd = std::numeric_limits<double>::infinity();
    const RecordingInfo& info = recording->info();
    const std::size_t most = std::max<std::size_t>(1, kMostValues / info.channels.size());
    const double seconds = kBatchSeconds * pace.factor;
    if (!info.rate)
        return {std::move(recording), pace.from, kEnd, most / 16 + 1, seconds};
    const double steps = std::clamp(*info.rate * seconds, 1.0, static_cast<double>(most));
    return {std::move(recording), pace.from, kEnd, static_cast<std::size_t>(steps)};
}

} // namespace

LiveFeed::LiveFeed(std::unique_ptr<Recording> recording, const Pace& pace)
    : pace_(pace), reader_(openReader(std::move(recording), pace)), capacity_(kFirstCapacity),
      takenTime_(std::numeric_limits<double>::lowest())
{
    const RecordingInfo& info = reader_.info();
    const std::uint64_t stepBytes = sizeof(double) * (1 + info.channels.size() * (info.complex ? 2 : 1));
    mostSteps_ = std::max(capacity_, pace.mostBytes / stepBytes);
    buffer_.ResetBuffer({capacity_}, {info.channels.size()}, {1}, 1, BufferType::SingleRate,
                        {info.complex ? HostComplexity::complex : HostComplexity::real}, true);
    writer_ = std::thread([this] { write(); });
}

LiveFeed::~LiveFeed()
{
    stop();
    writer_.join();
}

void LiveFeed::stop()
{
    {
        const std::lock_guard lock(mutex_);
        stop_ = true;
    }
    reader_.stop();
    changed_.notify_all();
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return finished_; });
}

void LiveFeed::write()
{
    std::exception_ptr failure;
    try {
        while (const std::optional<Batch> batch = reader_.next()) {
            if (!awaitTime(*batch))
                break;
            writeBatch(*batch);
        }
    } catch (...) {
        failure = std::current_exception();
    }
    const std::lock_guard lock(mutex_);
    if (!stop_) // reading fails when it is stopped
        failure_ = failure;
    finished_ = true;
    changed_.notify_all();
}

/// Waits until the last step of the batch is due. Returns false when the feed is to stop.
bool LiveFeed::awaitTime(const Batch& batch)
{
    if (!start_) {
        start_ = Clock::now();
        firstTime_ = *getRealData(batch.times.get());
    }
    const std::chrono::duration<double> after(std::min((batch.lastTime - firstTime_) / pace_.factor, kLongestWait));
    std::unique_lock lock(mutex_);
    return !changed_.wait_until(lock, *start_ + std::chrono::duration_cast<Clock::duration>(after),
                                [this] { return stop_; });
}

void LiveFeed::writeBatch(const Batch& batch)
{
    const Clock::time_point begin = Clock::now();
    makeRoom(batch);
    buffer_.addTimeAndValue(batch.times.get(), batch.values.get(), 0, true);
    const std::chrono::nanoseconds spent = Clock::now() - begin;
    const std::lock_guard lock(mutex_);
    totals_.written += batch.count;
    totals_.longestWrite = std::max(totals_.longestWrite, spent);
    changed_.notify_all();
}

/// Enlarges the buffer when what has to stay in it, steps to be taken and history, fills more than half of it.
void LiveFeed::makeRoom(const Batch& batch)
{
    const auto [written, seen] = [this] {
        const std::lock_guard lock(mutex_);
        return std::pair(totals_.written, seen_);
    }();
    history_.push_back({written + batch.count, batch.lastTime});
    while (history_.size() > 1 && history_[1].lastTime < batch.lastTime - pace_.history)
        history_.pop_front();
    const std::uint64_t kept = written + batch.count - std::min(seen, history_.front().steps);
    const std::uint64_t before = capacity_;
    while (kept > capacity_ / 2 && capacity_ < mostSteps_)
        capacity_ = std::min(2 * capacity_, mostSteps_);
    if (capacity_ != before)
        buffer_.SetMaxNumTimeSteps({capacity_});
}

/// Steps written at least before a reading that begins now.
std::uint64_t LiveFeed::noteReading()
{
    const std::lock_guard lock(mutex_);
    return totals_.written;
}

/// Notes a reading, one that found nothing, too: the steps that it was to find may have been taken by the one before,
/// when they were in the buffer but not yet counted.
void LiveFeed::count(std::uint64_t taken, std::uint64_t seen)
{
    const std::lock_guard lock(mutex_);
    totals_.taken += taken;
    seen_ = seen;
}

FeedSteps LiveFeed::take()
{
    const std::uint64_t seen = noteReading();
    FeedSteps steps = readSteps(buffer_, 0, justAfter(takenTime_), std::numeric_limits<double>::max(), false);
    if (steps.count() > 0)
        takenTime_ = steps.lastTime();
    count(steps.count(), seen);
    return steps;
}

std::optional<double> LiveFeed::pass()
{
    const std::uint64_t seen = noteReading();
    const double last = buffer_.GetLastTime();
    int first = -1;
    int end = -1;
    const bool found = buffer_.GetIndexRange(0, justAfter(takenTime_), last, false, first, end);
    count(found ? static_cast<std::uint64_t>(end - first) + 1 : 0, seen);
    if (!found)
        return std::nullopt;
    return takenTime_ = last;
}

void LiveFeed::waitForSteps(std::chrono::milliseconds most)
{
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, most, [this] { return finished_ || totals_.written > seen_; });
}

bool LiveFeed::finished()
{
    const std::lock_guard lock(mutex_);
    return finished_;
}

void LiveFeed::check()
{
    const std::lock_guard lock(mutex_);
    if (failure_)
        std::rethrow_exception(failure_);
}

LiveFeed::Totals LiveFeed::totals()
{
    const std::lock_guard lock(mutex_);
    return totals_;
}

} // namespace scope
