#include "display/FrameWriter.h"
#include "recordings/TableRecording.h"
#include "stream/LiveFeed.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <random>

using namespace scope;
using namespace tracery;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

double valueAt(std::size_t step, std::size_t channel) { return static_cast<double>(step * 10 + channel); }

std::unique_ptr<Recording> open(std::size_t steps, std::function<double(std::size_t)> time, std::size_t channels = 2)
{
    return std::make_unique<TableRecording>(Table{channels, false, steps, std::move(time), valueAt});
}

TEST(LiveFeedThreadTest, DeliversEveryStepOnceAndInOrder)
{
    std::mt19937 random(11);
    std::vector<double> times{0};
    while (times.size() < 200000)
        times.push_back(times.back() + (random() % 5 == 0 ? 0 : 1e-3)); // runs of equal times, too
    LiveFeed feed(open(times.size(), [&](std::size_t i) { return times[i]; }), {.factor = 1e6});
    std::size_t step = 0;
    std::size_t wrong = 0;
    for (bool ended = false; !ended;) {
        ended = feed.finished();
        const FeedSteps steps = feed.take();
        for (std::size_t i = 0; i < steps.count(); ++i, ++step) {
            wrong += getRealData(steps.times.get())[i] != times.at(step);
            wrong += getRealData(steps.values.get())[2 * i + 1] != valueAt(step, 1);
        }
        if (random() % 3 == 0)
            feed.waitForSteps(1ms);
    }
    EXPECT_EQ(wrong, 0U);
    EXPECT_EQ(step, times.size());
    EXPECT_EQ(feed.totals().written, times.size());
    EXPECT_EQ(feed.totals().lost(), 0U);
}

TEST(LiveFeedThreadTest, KeepsTheNewestAndCountsTheRestWhenItMayNotGrow)
{
    constexpr std::size_t kSteps = 100000, kKept = 16384;
    LiveFeed feed(open(kSteps, [](std::size_t i) { return static_cast<double>(i); }), {.factor = 1e9, .mostBytes = 1});
    while (!feed.finished())
        std::this_thread::sleep_for(1ms);
    const FeedSteps steps = feed.take();
    EXPECT_EQ(steps.count(), kKept);
    EXPECT_EQ(steps.lastTime(), kSteps - 1.0);
    EXPECT_EQ(feed.totals().written, kSteps);
    EXPECT_EQ(feed.totals().lost(), kSteps - kKept);
}

TEST(LiveFeedThreadTest, WritesNothingBeforeItsTimeKeepsItsHistoryAndStopsAtOnce)
{
    const auto time = [](std::size_t i) { return static_cast<double>(i) * 1e-3; };
    const Clock::time_point start = Clock::now();
    LiveFeed feed(open(100000, time), {.factor = 100, .history = 40});
    while (Clock::now() - start < 600ms) {
        const std::optional<double> newest = feed.pass();
        const double now = std::chrono::duration<double>(Clock::now() - start).count() * 100;
        EXPECT_LE(newest.value_or(0), now);
        std::this_thread::sleep_for(1ms);
    }
    const double newest = feed.buffer().GetLastTime();
    EXPECT_GT(newest, 41);
    EXPECT_GE(readSteps(feed.buffer(), 0, newest - 40, newest, false).count(), 40000U)
        << "taken steps stay for a while";
    const Clock::time_point stop = Clock::now();
    feed.stop();
    EXPECT_TRUE(feed.finished());
    EXPECT_LT(Clock::now() - stop, 5s);
    EXPECT_LT(feed.totals().written, 100000U);
}

TEST(LiveFeedThreadTest, LetsTheDisplayRestUntilThereIsMoreAndKeepsWhatCameBeforeAnError)
{
    Table table{1, false, 600, [](std::size_t i) { return static_cast<double>(i); }, valueAt};
    table.failAt = 500;
    LiveFeed feed(std::make_unique<TableRecording>(table), {.factor = 1000});
    std::size_t taken = 0;
    std::size_t batches = 0;
    std::size_t idle = 0;
    const auto take = [&] {
        const std::size_t got = feed.take().count();
        taken += got;
        batches += got > 0 ? 1 : 0;
        return got > 0 || feed.finished();
    };
    while (!feed.finished()) {
        while (!take()) {
        } // so that the reading meets the middle of a write
        for (feed.waitForSteps(5s); !take(); feed.waitForSteps(5s))
            ++idle;
    }
    taken += feed.take().count();
    EXPECT_GT(batches, 10U);
    EXPECT_LE(idle, batches) << "one for the steps that were taken early";
    EXPECT_EQ(taken, feed.totals().written);
    EXPECT_GT(taken, 400U);
    EXPECT_THROW(feed.check(), InputError);
}

TEST(FrameWriterThreadTest, DropsFramesAndNothingElseWhenTheSinkIsSlow)
{
    std::promise<void> release;
    std::vector<double> seen;
    FrameWriter frames([&, released = release.get_future().share()](const Figure& figure, std::uint64_t number) {
        released.wait();
        seen.push_back(figure.xMin);
        EXPECT_EQ(number, seen.size());
    });
    int made = 0;
    const auto offer = [&](double name, FrameWriter::IfBusy ifBusy) {
        const auto make = [&] {
            ++made;
            Figure figure;
            figure.xMin = name;
            return figure;
        };
        frames.offer(make, ifBusy);
    };
    for (int i = 0; i < 5; ++i)
        offer(i, FrameWriter::IfBusy::Drop);
    EXPECT_EQ(frames.totals().accepted, 1U);
    EXPECT_EQ(frames.totals().dropped, 4U);
    release.set_value();
    offer(9, FrameWriter::IfBusy::Wait);
    frames.finish();
    EXPECT_EQ(seen, (std::vector<double>{0, 9}));
    EXPECT_EQ(made, 2) << "frames that are dropped are not even made";
    EXPECT_EQ(frames.totals().written, 2U);

    FrameWriter failing([](const Figure&, std::uint64_t) { throw std::runtime_error("full"); });
    failing.offer([] { return Figure(); }, FrameWriter::IfBusy::Drop);
    EXPECT_THROW(failing.finish(), std::runtime_error);
    EXPECT_THROW(failing.totals(), std::runtime_error);
}

} // namespace
