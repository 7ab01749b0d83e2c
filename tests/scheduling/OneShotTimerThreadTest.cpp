#include <tracery/OneShotTimer.h>

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <limits>
#include <random>
#include <thread>
#include <vector>

using namespace tracery;

namespace {

using Clock = std::chrono::steady_clock;
constexpr double kHour = 3600;

double secondsSince(Clock::time_point begin) { return std::chrono::duration<double>(Clock::now() - begin).count(); }

void awaitTimeUp(OneShotTimer& timer)
{
    while (!timer.isTimeUp())
        std::this_thread::yield();
}

TEST(OneShotTimerThreadTest, TimeIsUpOnceTheTimeoutHasPassedAndCountsOnce)
{
    OneShotTimer timer;
    timer.setTimeout(0.05);
    const double before = timer.getCounter();
    const auto begin = Clock::now();
    timer.start();
    const bool upAtOnce = timer.isTimeUp();
    EXPECT_TRUE(!upAtOnce || secondsSince(begin) >= 0.05); // this thread may have been held up
    awaitTimeUp(timer);
    EXPECT_GE(secondsSince(begin), 0.05);
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(timer.isTimeUp() && timer.isTimeUpCOS());
    EXPECT_EQ(timer.getCounter(), before + 1);
}

TEST(OneShotTimerThreadTest, ANewTimerIsUpWithoutAPeriodOfItsOwn)
{
    OneShotTimer timer;
    EXPECT_EQ(timer.getTimeout(), 0);
    awaitTimeUp(timer); // its period of 0 s
    EXPECT_EQ(timer.getCounter(), 1);
    timer.start(); // likewise
    awaitTimeUp(timer);
    EXPECT_EQ(timer.getCounter(), 2);
}

TEST(OneShotTimerThreadTest, TimeoutsThatAreNotPositiveChangeNothing)
{
    OneShotTimer timer;
    timer.setTimeout(kHour);
    timer.start();
    for (const double ignored : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
        timer.setTimeout(ignored);
        EXPECT_EQ(timer.getTimeout(), kHour);
        EXPECT_FALSE(timer.isTimeUp()); // a taken one would have stopped it
    }
    for (const double huge : {1e300, std::numeric_limits<double>::infinity()}) {
        timer.setTimeout(huge);
        EXPECT_EQ(timer.getTimeout(), huge);
        EXPECT_TRUE(timer.isTimeUp());
        timer.start();
        OneShotTimer other;
        other.setTimeout(0.002);
        other.start();
        awaitTimeUp(other);
        EXPECT_FALSE(timer.isTimeUp());
    }
}

TEST(OneShotTimerThreadTest, RestartAndStopCountAPeriodOnlyWhenItWasSeenOver)
{
    OneShotTimer timer;
    timer.setTimeout(kHour);
    timer.start();
    timer.start(); // the period cut short does not count
    EXPECT_FALSE(timer.isTimeUp());
    EXPECT_EQ(timer.getCounter(), 0);
    timer.stop();
    EXPECT_TRUE(timer.isTimeUp());
    timer.stop();
    EXPECT_TRUE(timer.isTimeUp());
    EXPECT_EQ(timer.getCounter(), 1);
    timer.start();
    timer.stop();
    timer.start(); // nobody asked in between
    EXPECT_EQ(timer.getCounter(), 1);
}

/// Timers that one thread starts, stops, changes and destroys at random: the flag is down while a long period runs, up
/// once it is stopped or changed, and never up before the time of a short one, which may run out at any moment.
std::size_t driveAtRandom(unsigned seed)
{
    struct Driven {
        std::unique_ptr<OneShotTimer> timer = std::make_unique<OneShotTimer>();
        double timeout = 0;
        bool running = true; // with a period of 0 s
        Clock::time_point begin = Clock::now();
    };
    std::mt19937 random(seed);
    std::vector<Driven> driven(8);
    std::size_t failures = 0;
    for (int i = 0; i < 20000; ++i) {
        Driven& d = driven[random() % driven.size()];
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
        case 3:
            d.timeout = random() % 2 == 0 ? kHour : 1e-6 * static_cast<double>(1 + random() % 200);
            d.running = false;
            d.timer->setTimeout(d.timeout);
            break;
        case 4:
        case 5:
            if (d.timeout > 0) {
                d.running = true;
                d.begin = Clock::now();
                d.timer->start();
            }
            break;
        default:
            break;
        }
        const bool up = d.timer->isTimeUp();
        const bool mayBeUp = !d.running || secondsSince(d.begin) >= d.timeout;
        failures += up && !mayBeUp ? 1 : 0;
        failures += !up && !d.running ? 1 : 0;
    }
    for (Driven& d : driven)
        if (d.timeout < kHour)
            awaitTimeUp(*d.timer); // or the test runs out of its own time
    return failures;
}

TEST(OneShotTimerThreadTest, ManyTimersKeepTheirFlagsWhateverIsDoneToThem)
{
    std::vector<std::future<std::size_t>> threads;
    for (unsigned seed = 1; seed <= 3; ++seed)
        threads.push_back(std::async(std::launch::async, driveAtRandom, seed));
    for (std::future<std::size_t>& thread : threads)
        EXPECT_EQ(thread.get(), 0U);
}

} // namespace
