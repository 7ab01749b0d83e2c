#include "Harness.h"

#include <algorithm>
#include <cmath>
#include <ctime>

namespace tracery::bench {

namespace {

constexpr double kSecondsPerRound = 4e-3;
constexpr double kNoRatio = std::numeric_limits<double>::quiet_NaN();

double secondsOf(const std::function<void()>& call, long times)
{
    const double begin = processorTime();
    for (long i = 0; i < times; ++i)
        call();
    return processorTime() - begin;
}

/// A case, and how often it is called a round.
class Timed {
public:
    explicit Timed(const std::function<void()>& call) : call_(call)
    {
        if (!call_)
            return;
        call_(); // page faults and cold caches
        for (double seconds = 0; seconds < kSecondsPerRound / 4; times_ *= 2)
            seconds = secondsOf(call_, times_);
    }
    /// Seconds a call, in one round.
    double round() const { return call_ ? secondsOf(call_, times_) / static_cast<double>(times_) : kNoRatio; }

private:
    const std::function<void()>& call_;
    long times_ = 1;
};

double median(std::vector<double> values)
{
    if (values.empty() || std::isnan(values[0]))
        return kNoRatio;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace

double processorTime()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

Measured measure(const Work& work, int rounds)
{
    const Timed ours(work.ours), limit(work.limit), plain(work.plain);
    std::vector<double> seconds, ofLimit, timesPlain;
    for (int i = 0; i < rounds; ++i) {
        const double own = ours.round();
        seconds.push_back(own / work.items);
        ofLimit.push_back(limit.round() / own);
        timesPlain.push_back(plain.round() / own);
    }
    return {median(seconds), median(ofLimit), median(timesPlain)};
}

} // namespace tracery::bench
