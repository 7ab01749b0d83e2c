#include "Feed.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace scope {

using namespace tracery;

namespace {

constexpr std::size_t kValuesPerBlock = 16384;
constexpr std::uint64_t kBlocksKept = 4;

/// A distance that a window of the buffer, whose edges are widened by the spacing of doubles, tells apart from none.
double smallestStep(double time) { return 4 * std::numeric_limits<double>::epsilon() * std::abs(time) + 1e-300; }

bool apart(double before, double after)
{
    return after - before > 2 * smallestStep(std::max(std::abs(before), std::abs(after)));
}

/// Start of the window that holds everything after `time`, when the next step is apart from it.
double justAfter(double time) { return time + smallestStep(time); }

} // namespace

struct Feed::Port {
    std::unique_ptr<Recording> recording;
    std::size_t channels = 0;
    std::size_t blockSteps = 0;
    bool complex = false;

    // The writer's own.
    Block block;
    Block held; ///< the newest steps, kept back until a step at a later time follows
    double lastTime = -std::numeric_limits<double>::infinity();
    bool ended = false;

    // Guarded by the mutex.
    std::uint64_t capacity = 0;
    std::uint64_t written = 0;
    std::uint64_t taken = 0;

    // The reader's own.
    double takenTime = std::numeric_limits<double>::lowest();
};

Feed::Feed(std::vector<std::unique_ptr<Recording>> recordings, double from, double to)
    : from_(from), to_(to), reached_(-std::numeric_limits<double>::infinity())
{
    TimeBuffer::Counts capacities;
    TimeBuffer::Counts channels;
    std::vector<HostComplexity> complexity;
    for (std::unique_ptr<Recording>& recording : recordings) {
        Port port;
        port.channels = recording->info().channels.size();
        port.complex = recording->info().complex;
        port.blockSteps = std::max<std::size_t>(1, kValuesPerBlock / port.channels);
        port.capacity = kBlocksKept * port.blockSteps;
        port.recording = std::move(recording);
        capacities.push_back(port.capacity);
        channels.push_back(port.channels);
        complexity.push_back(port.complex ? HostComplexity::complex : HostComplexity::real);
        ports_.push_back(std::move(port));
    }
    buffer_.ResetBuffer(capacities, channels, TimeBuffer::Counts(ports_.size(), 1), ports_.size(),
                        BufferType::MultipleRate, complexity, true);
    writer_ = std::thread([this] { write(); });
}

Feed::~Feed()
{
    {
        const std::lock_guard lock(mutex_);
        stop_ = true;
    }
    changed_.notify_all();
    writer_.join();
}

void Feed::write()
{
    std::exception_ptr failure;
    try {
        for (Port& port : ports_)
            port.recording->seek(from_);
        bool more = true;
        while (more) {
            // The port that is furthest behind goes next.
            const auto behind = std::min_element(ports_.begin(), ports_.end(), [](const Port& a, const Port& b) {
                return a.ended != b.ended ? b.ended : a.lastTime < b.lastTime;
            });
            more = behind != ports_.end() && !behind->ended &&
                   writeBlock(static_cast<std::size_t>(behind - ports_.begin()));
        }
    } catch (...) {
        failure = std::current_exception();
    }
    const std::lock_guard lock(mutex_);
    failure_ = failure;
    finished_ = true;
    changed_.notify_all();
}

namespace {

/// Moves steps [first, end) of one block's vector with `width` values a step to another's end.
void moveSteps(std::vector<double>& from, std::vector<double>& to, std::size_t first, std::size_t width)
{
    const auto begin = from.begin() + static_cast<std::ptrdiff_t>(std::min(first * width, from.size()));
    to.insert(to.end(), begin, from.end());
    from.erase(begin, from.end());
}

HostDoubles join(const std::vector<double>& head, const std::vector<double>& tail)
{
    HostDoubles joined(static_cast<double*>(allocateMemory((head.size() + tail.size()) * sizeof(double))));
    std::copy(head.begin(), head.end(), joined.get());
    std::copy(tail.begin(), tail.end(), joined.get() + head.size());
    return joined;
}

void clear(Block& block)
{
    block.times.clear();
    block.real.clear();
    block.imag.clear();
}

} // namespace

bool Feed::writeBlock(std::size_t index)
{
    Port& port = ports_[index];
    port.recording->read(port.block, port.blockSteps);
    Block& block = port.block;
    port.ended = block.steps() == 0;
    // One step past the window's end is the last that is wanted.
    const auto past = std::upper_bound(block.times.begin(), block.times.end(), to_);
    if (past != block.times.end()) {
        const auto kept = static_cast<std::size_t>(past - block.times.begin()) + 1;
        block.times.resize(kept);
        block.real.resize(kept * port.channels);
        block.imag.resize(port.complex ? kept * port.channels : 0);
        port.ended = true;
    }
    if (!block.times.empty())
        port.lastTime = block.times.back();

    // Steps that may share their time with steps still to come wait for them: the display asks for "later than the
    // last one", so steps of one time must come together.
    Block rest;
    if (!port.ended) {
        std::size_t cut = block.steps() - 1;
        while (cut > 0 && !apart(block.times[cut - 1], block.times[cut]))
            --cut;
        if (cut == 0 && (port.held.times.empty() || !apart(port.held.times.back(), block.times[0]))) {
            moveSteps(block.times, port.held.times, 0, 1);
            moveSteps(block.real, port.held.real, 0, port.channels);
            moveSteps(block.imag, port.held.imag, 0, port.channels);
            return true;
        }
        moveSteps(block.times, rest.times, cut, 1);
        moveSteps(block.real, rest.real, cut, port.channels);
        moveSteps(block.imag, rest.imag, cut, port.channels);
    }

    const std::uint64_t count = port.held.steps() + block.steps();
    if (count > 0) {
        if (count > port.capacity) {
            // Thousands of steps at one time: the port needs more room.
            const std::lock_guard lock(mutex_);
            port.capacity = 2 * count;
            TimeBuffer::Counts capacities;
            for (const Port& each : ports_)
                capacities.push_back(each.capacity);
            buffer_.SetMaxNumTimeSteps(capacities);
        }
        const HostArrayPtr times(adoptDoubleMatrix(1, count, join(port.held.times, block.times), nullptr));
        const HostArrayPtr values(adoptDoubleMatrix(port.channels, count, join(port.held.real, block.real),
                                                    port.complex ? join(port.held.imag, block.imag) : nullptr));
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return stop_ || port.written - port.taken + count <= port.capacity; });
        if (stop_)
            return false;
        lock.unlock();
        buffer_.addTimeAndValue(times.get(), values.get(), index, true);
        lock.lock();
        port.written += count;
        changed_.notify_all();
    }
    clear(port.held);
    std::swap(port.held, rest);
    return true;
}

std::optional<FeedSteps> Feed::next()
{
    while (true) {
        std::optional<std::size_t> ready;
        {
            std::unique_lock lock(mutex_);
            const auto findReady = [&] {
                ready.reset();
                for (std::size_t k = 0; k < ports_.size(); ++k)
                    if (ports_[k].written > ports_[k].taken &&
                        (!ready || ports_[k].takenTime < ports_[*ready].takenTime))
                        ready = k;
                return ready || finished_;
            };
            changed_.wait(lock, findReady);
            if (!ready) {
                if (failure_)
                    std::rethrow_exception(failure_);
                return std::nullopt;
            }
        }
        Port& port = ports_[*ready];
        HostArray* times = nullptr;
        HostArray* values = nullptr;
        buffer_.GetTimeAndValue(*ready, times, values, justAfter(port.takenTime), std::numeric_limits<double>::max(),
                                false);
        FeedSteps steps{*ready, HostArrayPtr(times), HostArrayPtr(values)};
        if (!steps.times)
            continue;
        port.takenTime = getRealData(times)[steps.count() - 1];
        reached_ = std::max(reached_, port.takenTime);
        const std::lock_guard lock(mutex_);
        port.taken += steps.count();
        changed_.notify_all();
        return steps;
    }
}

} // namespace scope
