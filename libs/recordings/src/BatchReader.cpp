#include <tracery/recordings/BatchReader.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tracery::recordings {

using namespace tracery;

namespace {

/// A distance that a window of the buffer, whose edges are widened by the spacing of doubles, tells apart from none.
double smallestStep(double time) { return 4 * std::numeric_limits<double>::epsilon() * std::abs(time) + 1e-300; }

bool apart(double before, double after)
{
    return after - before > 2 * smallestStep(std::max(std::abs(before), std::abs(after)));
}

/// Moves the values of steps from `first` on, `width` values a step, to another vector's end.
void moveSteps(std::vector<double>& from, std::vector<double>& to, std::size_t first, std::size_t width)
{
    const auto begin = from.begin() + static_cast<std::ptrdiff_t>(std::min(first * width, from.size()));
    to.insert(to.end(), begin, from.end());
    from.erase(begin, from.end());
}

void moveSteps(Block& from, Block& to, std::size_t first, std::size_t channels)
{
    moveSteps(from.times, to.times, first, 1);
    moveSteps(from.real, to.real, first, channels);
    moveSteps(from.imag, to.imag, first, channels);
}

HostDoubles join(const std::vector<double>& head, const std::vector<double>& tail)
{
    HostDoubles joined(static_cast<double*>(allocateMemory((head.size() + tail.size()) * sizeof(double))));
    std::copy(head.begin(), head.end(), joined.get());
    std::copy(tail.begin(), tail.end(), joined.get() + head.size());
    return joined;
}

} // namespace

double justAfter(double time) { return time + smallestStep(time); }

BatchReader::BatchReader(std::unique_ptr<Recording> recording, double from, double to, std::size_t steps,
                         double seconds)
    : recording_(std::move(recording)), channels_(recording_->info().channels.size()), from_(from), to_(to),
      steps_(std::max<std::size_t>(steps, 1)), seconds_(seconds)
{}

std::optional<Batch> BatchReader::next()
{
    while (!ended_) {
        readBlock();
        Block rest;
        if (!ended_) {
            holdBackNewest(rest);
            const bool oneTime = held_.times.empty() || !apart(held_.times.back(), rest.times.front());
            if (block_.steps() == 0 && oneTime) {
                moveSteps(rest, held_, 0, channels_);
                continue;
            }
        }
        if (held_.steps() + block_.steps() == 0)
            break;
        Batch batch = joinHeldAndBlock();
        std::swap(held_, rest);
        return batch;
    }
    if (failure_)
        std::rethrow_exception(failure_);
    return std::nullopt;
}

/// Reads a block; an error ends the recording there, and comes when all before it is handed out.
void BatchReader::readOn()
{
    try {
        recording_->read(block_, steps_);
    } catch (const InputError&) {
        block_ = Block();
        failure_ = std::current_exception();
    }
}

void BatchReader::readBlock()
{
    if (!std::exchange(sought_, true))
        recording_->seek(from_);
    if (ahead_.steps() > 0)
        block_ = std::exchange(ahead_, {});
    else
        readOn();
    ended_ = block_.steps() == 0;
    if (!ended_) {
        const auto late = std::upper_bound(block_.times.begin() + 1, block_.times.end(), block_.times[0] + seconds_);
        moveSteps(block_, ahead_, static_cast<std::size_t>(late - block_.times.begin()), channels_);
    }
    // One step past the window's end is the last that is wanted.
    const auto past = std::upper_bound(block_.times.begin(), block_.times.end(), to_);
    if (past != block_.times.end()) {
        Block unwanted;
        moveSteps(block_, unwanted, static_cast<std::size_t>(past - block_.times.begin()) + 1, channels_);
        ended_ = true;
    }
    if (!block_.times.empty())
        reached_ = block_.times.back();
}

/// Moves the newest steps of the block, all that may share their time with steps still to come, to `rest`.
void BatchReader::holdBackNewest(Block& rest)
{
    std::size_t cut = block_.steps() - 1;
    while (cut > 0 && !apart(block_.times[cut - 1], block_.times[cut]))
        --cut;
    moveSteps(block_, rest, cut, channels_);
}

Batch BatchReader::joinHeldAndBlock()
{
    const std::uint64_t count = held_.steps() + block_.steps();
    const double lastTime = block_.steps() > 0 ? block_.times.back() : held_.times.back();
    Batch batch{HostArrayPtr(adoptDoubleMatrix(1, count, join(held_.times, block_.times), nullptr)),
                HostArrayPtr(adoptDoubleMatrix(channels_, count, join(held_.real, block_.real),
                                               info().complex ? join(held_.imag, block_.imag) : nullptr)),
                count, lastTime};
    held_ = Block();
    return batch;
}

} // namespace tracery::recordings
