#include "stream/Feed.h"

#include <algorithm>
#include <limits>

namespace scope {

using namespace tracery;

namespace {

constexpr std::size_t kValuesPerBlock = 4096;
constexpr std::size_t kValuesOfAllPorts = 32 * kValuesPerBlock; // in the blocks of many recordings together
constexpr std::size_t kLeastValues = 256;
constexpr std::uint64_t kBlocksKept = 32;
constexpr std::uint64_t kBlocksTaken =
    8; ///< how many the display waits for, so that the threads seldom wake each other

} // namespace

void StepsWriter::write(TimeBuffer& buffer, std::size_t port, const Steps& steps)
{
    if (times_ == nullptr || getNumberOfElements(times_.get()) != steps.count()) {
        times_.reset(createDoubleMatrix(1, steps.count(), HostComplexity::real));
        values_.reset(createDoubleMatrix(steps.real.size() / steps.count(), steps.count(),
                                         steps.imag.empty() ? HostComplexity::real : HostComplexity::complex));
    }
    std::ranges::copy(steps.times, getRealData(times_.get()));
    std::ranges::copy(steps.real, getRealData(values_.get()));
    std::ranges::copy(steps.imag, getImagData(values_.get()));
    buffer.addTimeAndValue(times_.get(), values_.get(), port, true);
}

Steps StepsReader::read(const TimeBuffer& buffer, std::size_t port)
{
    buffer.readAfter(port, position_, steps_);
    return {steps_.times, steps_.real, steps_.imag};
}

struct Feed::Port {
    BatchReader reader;
    StepsWriter writer;

    // Guarded by the mutex.
    std::uint64_t capacity = 0;
    std::uint64_t written = 0;
    std::uint64_t taken = 0;

    // The display side's own.
    StepsReader display{};
    double takenTime = std::numeric_limits<double>::lowest();
};

Feed::Feed(std::vector<std::unique_ptr<Recording>> recordings, double from, double to)
    : reached_(-std::numeric_limits<double>::infinity())
{
    TimeBuffer::Counts capacities;
    TimeBuffer::Counts channels;
    std::vector<HostComplexity> complexity;
    const std::size_t values =
        std::clamp(kValuesOfAllPorts / std::max<std::size_t>(1, recordings.size()), kLeastValues, kValuesPerBlock);
    for (std::unique_ptr<Recording>& recording : recordings) {
        const std::size_t width = recording->info().channels.size();
        const std::size_t blockSteps = std::max<std::size_t>(1, values / width);
        complexity.push_back(recording->info().complex ? HostComplexity::complex : HostComplexity::real);
        channels.push_back(width);
        capacities.push_back(kBlocksKept * blockSteps);
        ports_.push_back({BatchReader(std::move(recording), from, to, blockSteps), {}, capacities.back()});
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
        while (true) {
            // The port that is furthest behind goes next.
            const auto behind = std::min_element(ports_.begin(), ports_.end(), [](const Port& a, const Port& b) {
                return a.reader.ended() != b.reader.ended() ? b.reader.ended()
                                                            : a.reader.reached() < b.reader.reached();
            });
            if (behind == ports_.end() || behind->reader.ended())
                break;
            const Steps batch = behind->reader.next();
            if (batch.count() > 0 && !writeBatch(static_cast<std::size_t>(behind - ports_.begin()), batch))
                break;
        }
    } catch (...) {
        failure = std::current_exception();
    }
    const std::lock_guard lock(mutex_);
    failure_ = failure;
    finished_ = true;
    changed_.notify_all();
}

/// Returns false when the feed is to stop.
bool Feed::writeBatch(std::size_t index, const Steps& batch)
{
    Port& port = ports_[index];
    std::unique_lock lock(mutex_);
    const auto hasRoom = [&] { return stop_ || port.written + batch.count() <= port.capacity + port.taken; };
    if (!hasRoom()) {
        writerWaits_ = true;
        changed_.notify_all();
        changed_.wait(lock, hasRoom);
        writerWaits_ = false;
    }
    if (stop_)
        return false;
    lock.unlock();
    port.writer.write(buffer_, index, batch);
    lock.lock();
    port.written += batch.count();
    if (portWithNewSteps() < ports_.size())
        changed_.notify_all();
    return true;
}

/// The port with enough new steps (any, once the writer waits or has finished) that is furthest behind; the number of
/// ports when there is none.
std::size_t Feed::portWithNewSteps() const
{
    std::size_t chosen = ports_.size();
    for (std::size_t k = 0; k < ports_.size(); ++k) {
        const Port& port = ports_[k];
        // The display may have taken steps that are in the buffer already and not yet in the writer's count.
        const std::uint64_t enough = finished_ || writerWaits_ ? 1 : port.capacity / kBlocksKept * kBlocksTaken;
        if (port.written >= port.taken + enough &&
            (chosen == ports_.size() || port.takenTime < ports_[chosen].takenTime))
            chosen = k;
    }
    return chosen;
}

std::optional<FeedSteps> Feed::next()
{
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return finished_ || portWithNewSteps() < ports_.size(); });
    const std::size_t index = portWithNewSteps();
    if (index == ports_.size()) {
        if (failure_)
            std::rethrow_exception(failure_);
        return std::nullopt;
    }
    lock.unlock();
    Port& port = ports_[index];
    const FeedSteps steps{port.display.read(buffer_, index), index};
    port.takenTime = steps.lastTime();
    reached_ = std::max(reached_, port.takenTime);
    lock.lock();
    port.taken += steps.count();
    changed_.notify_all();
    return steps;
}

} // namespace scope
