#include <tracery/OneShotTimer.h>

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <thread>

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

TEST(OneShotTimerThreadTest, AShortPeriodNeverEndsTheLongOneStartedAfterIt)
{
    OneShotTimer timer;
    int falseAlarms = 0;
    for (int i = 0; i < 50000; ++i) {
        timer.setTimeout(1e-6);
        timer.start(); // may run out before, while or after the next lines run
        if (i % 3 == 0)
            timer.start();
        timer.setTimeout(kHour);
        timer.start();
        falseAlarms += timer.isTimeUp() ? 1 : 0;
        if (i % 100 == 0) {
            std::this_thread::yield();
            falseAlarms += timer.isTimeUp() ? 1 : 0;
        }
    }
    EXPECT_EQ(falseAlarms, 0);
    EXPECT_EQ(timer.getCounter(), 0);
}

} // namespace
