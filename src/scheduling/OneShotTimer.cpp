#include <tracery/OneShotTimer.h>
#include <tracery/host/Error.h>

#include <boost/chrono/system_clocks.hpp>
#include <boost/thread/condition_variable.hpp>
#include <boost/thread/mutex.hpp>
#include <boost/thread/thread.hpp>

#include <algorithm>
#include <atomic>

namespace tracery {

namespace {

using Clock = boost::chrono::steady_clock;

constexpr double kLongestTimeoutSeconds = 100.0 * 365 * 86400; // the clock's nanoseconds count 292 years

} // namespace

/// The flag and the thread that raises it. Each period has a number: a thread that wakes late from one period sees
/// that it is no longer the current one, and leaves the flag of the new one alone.
class OneShotTimer::Waiter {
public:
    Waiter()
    try : thread_([this] { run(); }) {
    } catch (const boost::thread_resource_error& error) {
        throw Error(errors::NoThread, error.what());
    }
    ~Waiter()
    {
        {
            const Lock lock(mutex_);
            quit_ = true;
        }
        changed_.notify_all();
        thread_.join();
    }
    Waiter(const Waiter&) = delete;
    Waiter& operator=(const Waiter&) = delete;

    bool isTimeUp() const { return timeUp_.load(std::memory_order_acquire); }

    void stopWith(boost::chrono::microseconds timeout)
    {
        stop();
        const Lock lock(mutex_);
        timeout_ = timeout;
    }

    void stop()
    {
        {
            const Lock lock(mutex_);
            timeUp_.store(true, std::memory_order_release);
        }
        changed_.notify_all();
    }

    void start()
    {
        Lock lock(mutex_);
        ++period_;
        timeUp_.store(false, std::memory_order_release);
        changed_.notify_all();
        changed_.wait(lock, [this] { return waitedOut_ == period_; });
    }

private:
    using Lock = boost::unique_lock<boost::mutex>;

    void run()
    {
        Lock lock(mutex_);
        while (!quit_) {
            if (timeUp_) {
                changed_.wait(lock, [this] { return quit_ || !timeUp_; });
                continue;
            }
            const std::uint64_t mine = waitedOut_ = period_;
            const Clock::time_point end = Clock::now() + timeout_;
            changed_.notify_all();
            changed_.wait_until(lock, end, [&] { return quit_ || timeUp_ || period_ != mine; });
            if (period_ == mine)
                timeUp_.store(true, std::memory_order_release);
        }
    }

    std::atomic<bool> timeUp_{false}; ///< changes under the mutex, is read without
    boost::mutex mutex_;
    boost::condition_variable changed_;
    boost::chrono::microseconds timeout_{0};
    std::uint64_t period_ = 0;    ///< number of the current period
    std::uint64_t waitedOut_ = 0; ///< number of the period that the thread has taken up
    bool quit_ = false;
    boost::thread thread_; ///< last: it starts when all else is there
};

OneShotTimer::OneShotTimer() : waiter_(std::make_unique<Waiter>()) {}
OneShotTimer::~OneShotTimer() = default;

void OneShotTimer::setTimeout(double seconds)
{
    if (!(seconds > 0))
        return;
    timeoutSeconds_ = seconds;
    const double microseconds = std::min(seconds, kLongestTimeoutSeconds) * 1e6;
    waiter_->stopWith(boost::chrono::microseconds(static_cast<std::int64_t>(microseconds)));
}

void OneShotTimer::start()
{
    counterAtStart_ = counter_;
    waiter_->start();
}

void OneShotTimer::stop() { waiter_->stop(); }

bool OneShotTimer::isTimeUp()
{
    const bool timeUp = waiter_->isTimeUp();
    if (timeUp && counter_ == counterAtStart_)
        ++counter_;
    return timeUp;
}

} // namespace tracery
