#include <tracery/OneShotTimer.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <future>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace tracery;

namespace {

using Clock = std::chrono::steady_clock;
constexpr double kLong = 10; // seconds: longer than any of these tests, and what is stuck is told of after as long

double secondsSince(Clock::time_point begin) { return std::chrono::duration<double>(Clock::now() - begin).count(); }

bool comesUp(OneShotTimer& timer)
{
    const auto begin = Clock::now();
    while (!timer.isTimeUp() && secondsSince(begin) < kLong)
        std::this_thread::yield();
    return timer.isTimeUp();
}

TEST(OneShotTimerThreadTest, AStartCutsShortThePeriodBeforeAndTheNextHasItsOwnEnd)
{
    OneShotTimer timer;
    EXPECT_TRUE(comesUp(timer)) << "a new timer has a period of 0 s";
    timer.setTimeout(kLong);
    timer.start();
    const auto begin = Clock::now();
    timer.start();
    EXPECT_LT(secondsSince(begin), kLong / 2) << "it waited for the period before";
    EXPECT_FALSE(timer.isTimeUp());
    timer.setTimeout(0.05);
    timer.start();
    EXPECT_TRUE(comesUp(timer) && timer.isTimeUpCOS());
    EXPECT_GE(secondsSince(begin), 0.05);
    EXPECT_LT(secondsSince(begin), kLong / 2);
}

/// A timer and what it must say: the flag is down while a long period runs, up once it is stopped or changed, and never
/// up before the time of a short one, which may run out at any moment; a period counts once it was seen to be over.
struct Driven {
    std::unique_ptr<OneShotTimer> timer = std::make_unique<OneShotTimer>();
    double timeout = 0;
    bool running = true, seenOver = false; // with a period of 0 s
    int periodsOver = 0;
    Clock::time_point begin = Clock::now();

    void setTimeout(double seconds)
    {
        timer->setTimeout(seconds);
        if (!(seconds > 0))
            return; // ignored
        timeout = seconds;
        running = false;
    }
    void start()
    {
        running = true;
        seenOver = false;
        begin = Clock::now();
        timer->start();
    }
    /// What is wrong; nothing at best.
    std::string check()
    {
        const bool up = timer->isTimeUp();
        if (up && running && secondsSince(begin) < timeout)
            return "up before its time";
        if (!up && !running)
            return "not up, though it is stopped";
        if (up && !std::exchange(seenOver, true))
            ++periodsOver;
        return timer->getCounter() != periodsOver ? "periods are not counted once each"
               : timer->getTimeout() != timeout   ? "another timeout"
                                                  : "";
    }
};

std::string driveAtRandom(unsigned seed)
{
    std::mt19937 random(seed);
    std::vector<Driven> driven(8);
    const double odd[] = {0, -1, NAN, 1e300, INFINITY};
    for (int i = 0; i < 20000; ++i) {
        Driven& d = driven[random() % driven.size()];
        const auto begin = Clock::now();
        switch (random() % 8) {
        case 0:
            d.running = false;
            d.timer->stop();
            break;
        case 1:
            if (random() % 16 == 0)
                d = Driven();
            break;
        case 2:
            d.setTimeout(random() % 4 == 0 ? odd[random() % std::size(odd)] : kLong);
            break;
        case 3:
            d.setTimeout(1e-6 * static_cast<double>(1 + random() % 200));
            break;
        case 4:
        case 5:
            if (d.timeout > 0)
                d.start();
            break;
        default:
            break;
        }
        if (secondsSince(begin) > kLong / 2)
            return "a call that waits for a period";
        if (const std::string wrong = d.check(); !wrong.empty())
            return wrong;
    }
    for (Driven& d : driven)
        if (d.timeout < kLong && !comesUp(*d.timer))
            return "a short period that does not end";
    return "";
}

TEST(OneShotTimerThreadTest, ManyTimersKeepTheirFlagsWhateverIsDoneToThem)
{
    std::vector<std::future<std::string>> outcomes;
    for (unsigned seed = 1; seed <= 3; ++seed) {
        std::packaged_task<std::string(unsigned)> drive(driveAtRandom);
        outcomes.push_back(drive.get_future());
        std::thread(std::move(drive), seed).detach(); // one that is stuck is not waited for
    }
    for (std::future<std::string>& outcome : outcomes) {
        ASSERT_EQ(outcome.wait_for(std::chrono::seconds(100)), std::future_status::ready) << "stuck in a call";
        EXPECT_EQ(outcome.get(), "");
    }
}

} // namespace
