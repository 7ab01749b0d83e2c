#include "display/FrameWriter.h"

#include <utility>

namespace scope {

FrameWriter::FrameWriter(Sink sink) : sink_(std::move(sink)), thread_([this] { run(); }) {}

FrameWriter::~FrameWriter()
{
    {
        const std::lock_guard lock(mutex_);
        stop_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void FrameWriter::run()
{
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return stop_ || (slot_ && !failure_); });
        if (!slot_ || failure_)
            return;
        const std::uint64_t number = totals_.written + 1;
        lock.unlock();
        std::exception_ptr failure;
        try {
            sink_(*slot_, number); // nobody touches the slot while it is full
        } catch (...) {
            failure = std::current_exception();
        }
        lock.lock();
        slot_.reset();
        failure_ = failure;
        totals_.written += failure ? 0 : 1;
        changed_.notify_all();
    }
}

void FrameWriter::awaitSlot(std::unique_lock<std::mutex>& lock)
{
    changed_.wait(lock, [this] { return !slot_; });
    check();
}

void FrameWriter::check() const
{
    if (failure_)
        std::rethrow_exception(failure_);
}

void FrameWriter::offer(const std::function<Figure()>& make, IfBusy ifBusy)
{
    std::unique_lock lock(mutex_);
    if (slot_ && ifBusy == IfBusy::Drop) {
        ++totals_.dropped;
        return;
    }
    awaitSlot(lock);
    lock.unlock();
    Figure figure = make();
    lock.lock();
    slot_ = std::move(figure);
    ++totals_.accepted;
    changed_.notify_all();
}

void FrameWriter::finish()
{
    std::unique_lock lock(mutex_);
    awaitSlot(lock);
}

FrameWriter::Totals FrameWriter::totals()
{
    const std::lock_guard lock(mutex_);
    check();
    return totals_;
}

} // namespace scope
