#include "support/Expect.h"
#include "support/FakeTimer.h"

#include <tracery/DrawScheduler.h>
#include <tracery/embedded/EmbeddedHost.h>

#include <cmath>
#include <optional>

using namespace tracery;
using namespace std::chrono_literals;

namespace {

struct StoppedTimer : test::FakeTimer {
    ~StoppedTimer() override { EXPECT_TRUE(up) << "it is stopped before it goes"; }
};

struct DrawSchedulerTest : testing::Test {
    test::FakeTimer* timer = new StoppedTimer;
    std::chrono::steady_clock::time_point now;
    std::optional<DrawScheduler> scheduler{std::in_place, std::unique_ptr<Timer>(timer), [this] { return now; }};
    std::string drawn; ///< names of the tasks drawn

    std::size_t bind(char name, std::function<void()> further = {})
    {
        return scheduler->Bind({[this, name, further] {
            drawn += name;
            if (further)
                further();
        }});
    }
    std::string takeDrawn() { return std::exchange(drawn, ""); }
    std::string drawNow()
    {
        scheduler->TaskComplete(true);
        return takeDrawn();
    }
};

TEST_F(DrawSchedulerTest, ARoundNeedsTimeAndSomethingToDrawOrForce)
{
    embedded::EmbeddedHost host;
    const HostScope attached(host);
    scheduler->Init();
    bind('a');
    for (int bits = 0; bits < 16; ++bits) {
        const bool timeUp = bits & 1, force = bits & 2, pending = bits & 4, data = bits & 8;
        timer->up = timeUp;
        host.graphics().commitDatabaseUpdates(pending ? 7 : 1);
        scheduler->DataAddedToLine(data);
        const int starts = timer->starts;
        const std::size_t commits = host.getNumberOfCommits();
        const unsigned draws = scheduler->getDrawCount();
        scheduler->TaskComplete(force);
        const bool draw = force || (timeUp && (pending || data));
        EXPECT_EQ(takeDrawn(), draw ? "a" : "") << bits;
        EXPECT_EQ(host.getNumberOfCommits() - commits, draw ? 1u : 0u) << bits;
        EXPECT_EQ(scheduler->getDrawCount() - draws, draw ? 1u : 0u) << bits;
        EXPECT_EQ(scheduler->LineHasData(), data && !draw) << bits;
        EXPECT_EQ(timer->starts - starts, timeUp || force ? 1 : 0) << bits << ": an interval ends in a new one";
    }
}

TEST_F(DrawSchedulerTest, IdsStayUntilTheLastTaskIsUnbound)
{
    embedded::EmbeddedHost host;
    const HostScope attached(host);
    scheduler->Init();
    for (std::size_t id = 0; id < 3; ++id)
        EXPECT_EQ(bind(static_cast<char>('a' + id)), id);
    scheduler->Unbind(3);
    scheduler->Unbind(1);
    scheduler->Unbind(1);
    EXPECT_EQ(drawNow(), "ac");
    EXPECT_EQ(bind('d'), 3u);
    scheduler->Unbind(0);
    scheduler->Unbind(2);
    EXPECT_EQ(drawNow(), "d");
    scheduler->Unbind(3);
    EXPECT_EQ(scheduler->getNumberOfTasks(), 0u);
    EXPECT_EQ(scheduler->getDrawCount(), 0u);
    host.graphics().commitDatabaseUpdates(1); // no longer heard: updates stay pending
    EXPECT_EQ(bind('e'), 0u);
    timer->up = true;
    scheduler->TaskComplete(false);
    EXPECT_EQ(takeDrawn(), "e");
}

TEST_F(DrawSchedulerTest, ARoundDrawsTheTasksThatWereBoundWhenItBeganAndStillAre)
{
    bind('a', [this] {
        scheduler->Unbind(1);
        scheduler->Unbind(0); // itself
        bind('d');
    });
    bind('b');
    bind('c');
    EXPECT_EQ(drawNow(), "ac");
    EXPECT_EQ(drawNow(), "cd");

    scheduler->Bind({[this] {
        for (std::size_t id = 0; id < 5; ++id)
            scheduler->Unbind(id);
        for (const char name : {'v', 'w', 'x', 'y', 'z'}) // ids 0 to 4 again
            bind(name);
    }});
    EXPECT_EQ(drawNow(), "cd");
    EXPECT_EQ(drawNow(), "vwxyz");
}

TEST_F(DrawSchedulerTest, ARoundIsCountedTimedAndProtectedToItsEnd)
{
    embedded::EmbeddedHost host;
    {
        const HostScope attached(host);
        scheduler->Init();
    }
    std::string types;
    const auto hook = host.graphics().addCommitHook([&](int type) {
        types += std::to_string(type);
        scheduler->TaskComplete(true);
    });
    bind('a', [this] {
        EXPECT_EQ(scheduler->getDrawCount(), 1u);
        scheduler->DataAddedToLine(true); // for the next round
        scheduler->TaskComplete(true);
        now += 3us;
    });
    now += 5us;
    testing::internal::CaptureStdout();
    scheduler->TaskComplete(true);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "DrawScheduler callback re-entry \nDrawScheduler callback re-entry \n");
    EXPECT_EQ(takeDrawn(), "a");
    EXPECT_EQ(types, "0") << "of the host that it listens to, attached or not";
    EXPECT_TRUE(scheduler->LineHasData());
    EXPECT_EQ(scheduler->DrawToc(), 3000);
}

TEST_F(DrawSchedulerTest, ATaskThatChangesTheRateEndsTheProtectionAndRoundsKeepTheirTasks)
{
    bind('a', [this] { scheduler->TaskComplete(true); });
    bind('c', [this, depth = 0]() mutable {
        scheduler->Init();
        if (++depth == 1) {
            scheduler->Unbind(0);
            bind('d');
            scheduler->TaskComplete(true);
        }
    });
    testing::internal::CaptureStdout();
    scheduler->TaskComplete(true);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "DrawScheduler callback re-entry \n") << "of a alone";
    EXPECT_EQ(takeDrawn(), "accd");
}

TEST_F(DrawSchedulerTest, AThrowingTaskOrCommitEndsTheRoundAndTheErrorGoesOn)
{
    embedded::EmbeddedHost host;
    const HostScope attached(host);
    const auto hook = host.graphics().addCommitHook([](int) { throw Error(errors::NoPlotter); });
    const std::size_t bad = bind('a', [] { throw Error(errors::EmptyInput); });
    bind('b');
    for (const char* expected : {"EmptyInput", "NoPlotter"}) {
        const int starts = timer->starts;
        EXPECT_EQ(test::failure([&] { scheduler->TaskComplete(true); }), expected);
        EXPECT_EQ(timer->starts, starts + 1);
        scheduler->Unbind(bad);
    }
    EXPECT_EQ(takeDrawn(), "ab") << "no re-entry";
}

TEST_F(DrawSchedulerTest, InitTakesUpTheIntervalUnlessItCannotBeUsed)
{
    scheduler->Init();
    EXPECT_EQ(timer->timeout, 0.05);
    for (double interval : {0.1, 0.0, -1.0, std::nan("")}) {
        DrawScheduler::setTimeInterval(interval);
        drawNow();
        scheduler->Init();
        EXPECT_EQ(timer->timeout, 0.1);
        EXPECT_TRUE(test::sameBits({scheduler->getIntervalMicroseconds()}, {interval * 1e6}));
        EXPECT_EQ(scheduler->getDrawCount(), 0u);
        EXPECT_FALSE(timer->up);
    }
    double interval = DrawScheduler::kDefaultInterval;
    DrawScheduler::setTimeInterval(interval);
    EXPECT_EQ(scheduler->getSecondSetting(), 0.5);
}

TEST_F(DrawSchedulerTest, InitListensToTheHostThatIsAttachedThen)
{
    bind('a');
    const auto drawsAfterCommit = [this](Host& host) {
        host.graphics().commitDatabaseUpdates(1);
        timer->up = true;
        scheduler->TaskComplete(false);
        return takeDrawn() == "a";
    };
    embedded::EmbeddedHost first;
    {
        std::optional<embedded::EmbeddedHost> gone(std::in_place);
        for (int i = 0; i < 2; ++i) { // the second is at the address of the first
            const HostScope attached(gone.emplace());
            scheduler->Init();
            EXPECT_FALSE(drawsAfterCommit(*gone));
        }
    }
    scheduler->Init(); // none is attached
    EXPECT_TRUE(drawsAfterCommit(first));
    const HostScope attached(first);
    scheduler->Init();
    scheduler->Init();
    EXPECT_FALSE(drawsAfterCommit(first));
    {
        embedded::EmbeddedHost second;
        const HostScope inner(second);
        scheduler->Init();
        EXPECT_FALSE(drawsAfterCommit(second));
        scheduler->Init();
        EXPECT_TRUE(drawsAfterCommit(first));
    }
    scheduler->Init();
    scheduler->Clear();
    EXPECT_TRUE(drawsAfterCommit(first));
    scheduler->Init();
    const auto lookBack = [all = &*scheduler](void*) { EXPECT_EQ(all->getNumberOfTasks(), 0u); };
    scheduler->Bind({[last = std::shared_ptr<void>(this, lookBack)] {}});
    scheduler.reset();
    first.graphics().commitDatabaseUpdates(1);
}

} // namespace
