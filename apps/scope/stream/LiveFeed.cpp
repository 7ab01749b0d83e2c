#include "stream/LiveFeed.h"

#include <algorithm>
#include <limits>
#include <new>
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
    : pace_(pace), reader_(openReader(std::move(recording), pace)), capacity_(kFirstCapacity)
{
    const RecordingInfo& info = reader_.info();
    const std::uint64_t stepBytes = sizeof(double) * (1 + info.channels.size() * (info.complex ? 2 : 1));
    mostSteps_ = std::max(capacity_, pace.mostBytes / stepBytes);
    buffer_.ResetBuffer({capacity_}, {info.channels.size()}, {1}, 1, BufferType::SingleRate,
                        {info.complex ? HostComplexity::complex : HostComplexity::real}, true);
    try {
        buffer_.reserveCapacity();    // the source does not wait for a ring to grow
    } catch (const std::bad_alloc&) { // then it grows as steps come
    }
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
        for (Steps batch = reader_.next(); batch.count() > 0 && awaitTime(batch); batch = reader_.next())
            writeBatch(batch);
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
bool LiveFeed::awaitTime(const Steps& batch)
{
    if (!start_) {
        start_ = Clock::now();
        firstTime_ = batch.times.front();
    }
    const std::chrono::duration<double> after(std::min((batch.lastTime() - firstTime_) / pace_.factor, kLongestWait));
    std::unique_lock lock(mutex_);
    return !changed_.wait_until(lock, *start_ + std::chrono::duration_cast<Clock::duration>(after),
                                [this] { return stop_; });
}

void LiveFeed::writeBatch(const Steps& batch)
{
    const Clock::time_point begin = Clock::now();
    makeRoom(batch);
    bufferWriter_.write(buffer_, 0, batch);
    const std::chrono::nanoseconds spent = Clock::now() - begin;
    const std::lock_guard lock(mutex_);
    totals_.written += batch.count();
    totals_.longestWrite = std::max(totals_.longestWrite, spent);
    changed_.notify_all();
}

/// Enlarges the buffer when what has to stay in it, steps to be taken and history, fills more than half of it.
void LiveFeed::makeRoom(const Steps& batch)
{
    const auto [written, seen] = [this] {
        const std::lock_guard lock(mutex_);
        return std::pair(totals_.written, seen_);
    }();
    history_.push_back({written + batch.count(), batch.lastTime()});
    while (history_.size() > 1 && history_[1].lastTime <= batch.lastTime() - pace_.history)
        history_.pop_front();
    const std::uint64_t kept = written + batch.count() - std::min(seen, history_.front().steps);
    const std::uint64_t before = capacity_;
    while (kept > capacity_ / 2 && capacity_ < mostSteps_)
        capacity_ = std::min(2 * capacity_, mostSteps_);
    if (capacity_ == before)
        return;
    try {
        buffer_.SetMaxNumTimeSteps({capacity_});
    } catch (const std::bad_alloc&) { // it is as large as it gets
        mostSteps_ = capacity_ = before;
    }
}

Steps LiveFeed::take()
{
    // Steps that are in the buffer but not counted yet may be taken: a reading that finds nothing is noted, too.
    const std::uint64_t seen = totals().written;
    const Steps steps = display_.read(buffer_, 0);
    const std::lock_guard lock(mutex_);
    totals_.taken += steps.count();
    seen_ = seen;
    return steps;
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
