#include "support/Expect.h"
#include "support/TestHost.h"

#include <tracery/ScopesVisualInit.h>
#include <tracery/embedded/EmbeddedHost.h>

#include <optional>

using namespace tracery;
using namespace std::chrono_literals;

namespace {

constexpr const char* kGraphics = "Brevant.scopes.ScopeInitVELTRAGraphics";
constexpr const char* kRest = "Brevant.scopes.ScopeInitVELTRA";

/// A host whose clock goes on a microsecond at each call of a warm-up function and whenever a class is looked for.
struct Fixture : testing::Test {
    std::optional<embedded::EmbeddedHost> host{std::in_place};
    std::optional<HostScope> attached{std::in_place, *host};
    std::chrono::steady_clock::time_point now;
    std::string calls; ///< g, r: calls of the functions; G: one with true

    Fixture() { prepareHost(); }
    void prepareHost()
    {
        host->setTaskClock([this] { return now; });
        defineFunction(kGraphics, 'g');
        defineFunction(kRest, 'r');
        for (const char* task : {"ExtMgr", "VarnWidgets", "ScopeExt", "ScopesGfx2Phase1"})
            host->setWarmUpClasses(task, {});
    }
    void defineFunction(const char* name, char letter)
    {
        host->defineFunction(name, [this, letter](hostobj::HostInputs inputs, std::size_t wanted) {
            EXPECT_EQ(wanted, 0u);
            now += 1us;
            calls += letter;
            if (inputs.size() == 1 && getLogicals(inputs[0]) != nullptr && *getLogicals(inputs[0]) == 1)
                calls.back() = 'G';
            return hostobj::HostOutputs();
        });
    }
    /// What one run prints.
    std::string run(std::chrono::microseconds slice)
    {
        testing::internal::CaptureStdout();
        host->runTasks(slice);
        return testing::internal::GetCapturedStdout();
    }
};
using ScopesVisualInitTest = Fixture;

TEST(ScopesVisualInitSessionTest, WhatAHostFailsToQueueLeavesNothingToDo)
{
    for (const std::size_t queued : {1U, 2U, 3U, 4U, 5U, 6U}) {
        test::TestHost host;
        const HostScope attached(host);
        host.whenAsked = [&](const std::string& what) {
            if (what.starts_with('+') && host.session->tasks.size() == queued)
                throw 7;
        };
        EXPECT_THROW(ScopesVisualInit(), int);
        for (const auto& task : host.session->tasks)
            EXPECT_FALSE(task->isEnabled());
    }
}

TEST(ScopesVisualInitSessionTest, OneSessionServesAllObjectsUntilItIsFinished)
{
    const std::string queued = "session ScopesVisualInitializer +ExtMgr +VarnWidgets +ScopeExt +ScopesGfx2Phase1 "
                               "+ScopesVELTRAGraphics2Phase2 +ScopesVELTRATasks ";
    test::TestHost host;
    host.knownClass = "half";
    const HostScope attached(host);
    ScopesVisualInit first;
    const ScopesVisualInit second;
    EXPECT_EQ(host.takeLog(), queued + queued.substr(queued.find('+')));
    testing::internal::CaptureStdout();
    for (const int look : {0, 1}) { // an array and no class, and the other way round
        host.looks = 0;
        host.knownLook = look;
        EXPECT_TRUE(host.session->tasks[static_cast<std::size_t>(look)]->run(*host.session));
        EXPECT_EQ(host.looks, 2) << "both are tried";
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "half failed to load\nhalf failed to load\n");
    EXPECT_FALSE(host.session->tasks.at(4)->run(*host.session));
    first.removeAllTasks();
    const std::string flush = "feature FlushTaskMgrOnUELoadForTests ";
    EXPECT_EQ(host.takeLog(), flush + "class half class half " + flush + "class half class half " + flush +
                                  "call0 -ExtMgr -VarnWidgets -ScopeExt -ScopesGfx2Phase1 call1 "
                                  "-ScopesVELTRAGraphics2Phase2 -ScopesVELTRATasks ");
    host.session->finished = true;
    const ScopesVisualInit third;
    EXPECT_EQ(host.takeLog(), queued);
}

TEST_F(ScopesVisualInitTest, TasksRunInTheirOrderInSlices)
{
    // Classes take no time of the clock: the lists end in the first slice, together with three calls.
    host->setWarmUpClasses("VarnWidgets", {"no.Widget"});
    host->setWarmUpClasses("ExtMgr", {"handle", "no.Set", "handle"}); // after a failure all are named
    host->setWarmUpClasses("ScopesGfx2Phase1", {"no.Figure"});
    host->setWarmUpClasses("ScopeExt", {"handle"});
    ScopesVisualInit init;
    EXPECT_EQ(run(3us), "no.Set failed to load\nhandle failed to load\nno.Widget failed to load\n"
                        "no.Figure failed to load\n");
    EXPECT_EQ(calls, "ggg");
    EXPECT_FALSE(init.done());
    run(3us);
    EXPECT_EQ(calls, "gggggg");
    run(3us); // a task that ends makes way for the next at once
    EXPECT_EQ(calls, "gggggggrr");
    run(1ms);
    EXPECT_EQ(calls, "gggggggrrrr");
    EXPECT_TRUE(init.done());
}

TEST_F(ScopesVisualInitTest, AClassListGoesOnWhereItsSliceEnded)
{
    host->setTaskClock([this, i = 0]() mutable { return now + std::chrono::microseconds(i++); });
    host->setWarmUpClasses("ExtMgr", {"no.A", "no.B", "no.C"});
    host->setFeature("FlushTaskMgrOnUELoadForTests", 0);
    const ScopesVisualInit init;
    for (const char* expected : {"no.A failed to load\n", "no.B failed to load\n"})
        EXPECT_EQ(run(3us), expected);
    host->setFeature("FlushTaskMgrOnUELoadForTests", 1); // ends every task, begun or not
    EXPECT_EQ(run(1ms), "");
    EXPECT_EQ(calls, "");
    EXPECT_TRUE(init.done());
}

TEST_F(ScopesVisualInitTest, HalfDoneGraphicsAreFinishedByTheHost)
{
    using Operation = void (ScopesVisualInit::*)();
    for (const Operation stop : {&ScopesVisualInit::disableAllTasks, &ScopesVisualInit::disableVELTRAGraphicsTasks,
                                 &ScopesVisualInit::removeAllTasks})
        for (int done = 0; done <= 8; ++done) {
            ScopesVisualInit init;
            run(std::chrono::microseconds(done));
            calls.clear();
            {
                embedded::EmbeddedHost other; // it is not asked
                const HostScope elsewhere(other);
                (init.*stop)();
            }
            EXPECT_EQ(calls, done > 0 && done < 7 ? "G" : "") << done;
            calls.clear();
            const bool removed = stop == &ScopesVisualInit::removeAllTasks;
            EXPECT_EQ(init.done(), removed) << done;
            run(1ms);
            EXPECT_EQ(calls, removed ? "" : std::string("gggggggrrrr").substr(static_cast<std::size_t>(done))) << done;
        }
}

TEST_F(ScopesVisualInitTest, DisabledTasksLoadNothing)
{
    host->setWarmUpClasses("ExtMgr", {"no.Set"});
    host->setWarmUpClasses("ScopesGfx2Phase1", {"no.Figure"});
    ScopesVisualInit all, graphics;
    ScopesVisualInit moved = std::move(all);
    ScopesVisualInit copy = moved;
    all.disableAllTasks(); // nothing is left in it
    all.disableVELTRAGraphicsTasks();
    all.removeAllTasks();
    copy.disableAllTasks();
    graphics.disableVELTRAGraphicsTasks();
    EXPECT_EQ(run(1ms), "no.Set failed to load\n");
    EXPECT_EQ(calls, "gggggggrrrrgggggggrrrr");
}

TEST_F(ScopesVisualInitTest, WithoutAHostOrItsFunctionsNothingIsRaised)
{
    host->defineFunction(kGraphics, nullptr);
    ScopesVisualInit here;
    run(1ms);
    EXPECT_EQ(calls, "rrrr");
    ScopesVisualInit unfinished;
    attached.reset();
    ScopesVisualInit nowhere;
    for (ScopesVisualInit* init : {&unfinished, &nowhere}) {
        init->disableAllTasks();
        init->removeAllTasks();
        EXPECT_TRUE(init->done());
    }
    attached.emplace(*host);
    ScopesVisualInit left;
    defineFunction(kGraphics, 'g');
    EXPECT_TRUE((run(1us), calls == "rrrrg") && !left.done());
    attached.reset();
    host.reset();
    EXPECT_TRUE(left.done());
    attached.emplace(host.emplace());
    prepareHost();
    left.disableAllTasks();       // another host cannot finish it
    const ScopesVisualInit again; // in a session of the new host
    run(1ms);
    EXPECT_EQ(calls, "rrrrggggggggrrrr");
}

} // namespace
