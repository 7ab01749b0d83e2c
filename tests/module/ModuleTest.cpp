#include "support/Expect.h"
#include "support/TemporaryFolder.h"
#include "support/TestHost.h"

#include <tracery/DrawScheduler.h>
#include <tracery/embedded/EmbeddedHost.h>
#include <tracery/host/Publish.h>

#include <pthread.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>

using namespace tracery;
using embedded::EmbeddedHost;
using test::failure;

/// Two copies of the library in one process are what one of these tests is about.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() { return "detect_odr_violation=0"; }

namespace {

std::string listing(const EmbeddedHost& host)
{
    std::string text;
    for (const embedded::ClassListing& cls : host.listClasses())
        text += formatClass(cls);
    return text;
}

std::string published()
{
    EmbeddedHost host;
    publishClasses(host.objects());
    return listing(host);
}

/// A host whose every call may fail, in a way of its own.
struct FailingHost : test::TestHost {
    struct Failure {};
    explicit FailingHost(bool keeps)
    {
        keepsClasses = keeps;
        whenAsked = [this](const std::string&) {
            if (callsLeft-- == 0)
                throw Failure();
        };
    }
    /// Whether the call got through.
    bool succeeds(void (*entry)(), int calls)
    {
        callsLeft = calls;
        try {
            entry();
        } catch (const Failure&) {
            return callsLeft = -1, false;
        }
        return callsLeft = -1, true;
    }
    int callsLeft = -1;
};

/// In its life the system gives no threads: their stacks would be too large.
struct NoThreads {
    NoThreads() { pthread_getattr_default_np(&before), stacks(std::size_t{1} << 50); }
    ~NoThreads() { pthread_setattr_default_np(&before); }
    static void stacks(std::size_t size)
    {
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        EXPECT_EQ(pthread_attr_setstacksize(&attributes, size) | pthread_setattr_default_np(&attributes), 0);
        pthread_attr_destroy(&attributes);
    }
    pthread_attr_t before;
};

TEST(ModuleTest, WithoutAThreadForATimerWhatNeedsOneIsRefusedAndCanBeTriedAgain)
{
    EmbeddedHost host;
    host.loadModule(TRACERY_LIBRARY);
    for (const bool threads : {false, true}) {
        const std::optional<NoThreads> none = threads ? std::nullopt : std::optional<NoThreads>(std::in_place);
        EXPECT_EQ(failure([&] { host.construct("tracery.OneShotTimer"); }), threads ? "none" : "NoThread");
        EXPECT_EQ(failure([&] { host.construct("tracery.SpectrumBuffer"); }),
                  threads ? "InvalidNumberOfArguments" : "NoThread");
    }
}

const bool usesSLAAtFirst = timeScopeBlockUsesSLA();

TEST(ModuleTest, EachStepIsTakenOnceInItsOrder)
{
    EXPECT_TRUE(usesSLAAtFirst);
    test::TestHost host;
    host.whenAsked = [](const std::string&) { VTInitialize_tracery(); }; // whatever it is asked for
    const HostScope attached(host);
    VTInitialize_tracery();
    DrawScheduler::getInstance()->Init(7, 0);
    VTInitialize_tracery();
    EXPECT_EQ(DrawScheduler::getInstance()->getIntervalMicroseconds(), 7e6);
    VTTerminate_tracery();
    VTTerminate_tracery();
    VTInitialize_tracery();
    std::string bases, looks;
    for (const std::string base : {"AbstractLinePlotter", "AbstractFramePlotter", "AbstractTimeDomainPlotter",
                                   "WrappingTimeDomainController", "ScrollingTimeDomainController"})
        bases += base + ' ', looks += "class veltrashared.scopes.visual." + base + ' ';
    EXPECT_EQ(host.takeLog(),
              looks +
                  "package tracery TimeBuffer SpectrumBuffer TimeDomainTriggerController TimeScopeLine OneShotTimer "
                  "whole root veltrashared scopes visual " +
                  bases +
                  "TimeScopeBlockUsesSLA=1! feature TimeScopeBlockUsesSLA UseTaskMgrToLaunchScope=0 "
                  "FlushTaskMgrOnUELoadForTests=0 hook tracery? left ");
}

TEST(ModuleTest, WhatAHostFailsAtArrivesAsItIsAndIsTriedAgain)
{
    for (const bool keeps : {false, true}) {
        int longest = 0;
        for (int first = 0, second = 0; first <= longest; second = second < longest ? second + 1 : (++first, 0)) {
            FailingHost host(keeps);
            const HostScope attached(host);
            double interval = 0.1;
            DrawScheduler::setTimeInterval(interval);
            EXPECT_FALSE(host.succeeds([] { SetScopeRefreshRateImpl(0, nullptr, 0, nullptr); }, 0));
            EXPECT_EQ(DrawScheduler::getTimeInterval(), 0.1) << "as before";
            for (const int calls : {first, second}) {
                if (!host.succeeds(&VTInitialize_tracery, calls))
                    longest = std::max(longest, calls + 1);
                if (!keeps && host.featureNames.empty()) {
                    EXPECT_TRUE(host.classes.empty() || host.classes.size() == 10) << first << ' ' << second;
                    for (const char* foreign : {"AbstractLinePlotter", "TimeBuffer"})
                        if (host.classes.empty()) {
                            host.classes = {foreign};
                            EXPECT_EQ(failure(&VTInitialize_tracery), "DuplicateClass") << first << ' ' << second;
                            host.classes.clear();
                        }
                }
            }
            for (int i = 0; i < 2; ++i)
                ASSERT_TRUE(host.succeeds(&VTInitialize_tracery, -1)) << first << ' ' << second;
            EXPECT_EQ(host.classes.size(), 10U);
            EXPECT_EQ(host.featureNames.size(), 3U);
            EXPECT_EQ(DrawScheduler::getInstance()->getCommitHost(), &host);
            host.takeLog();
            host.succeeds(&VTTerminate_tracery, first % 3);
            for (int i = 0; i < 2; ++i)
                EXPECT_TRUE(host.succeeds(&VTTerminate_tracery, -1));
            const std::string log = host.takeLog();
            EXPECT_TRUE(log.find("left") != log.npos && log.find("left") == log.rfind("left")) << log;
        }
        EXPECT_GT(longest, 20);
    }
}

TEST(ModuleTest, LoadingPublishesOnceWhatTheLibraryHas)
{
    EmbeddedHost host;
    host.setFeature("TimeScopeBlockUsesSLA", 0); // the user's choice comes first
    const embedded::Module& module = host.loadModule(TRACERY_LIBRARY);
    EXPECT_EQ(module.getVersion(), tracery_version);
    EXPECT_EQ(Host::current(), &host) << "without a scope";
    VTInitialize_tracery();
    EXPECT_EQ(listing(host), published());
    EXPECT_FALSE(timeScopeBlockUsesSLA());
    for (const int value : {5, 0, 1}) {
        host.setFeature("TimeScopeBlockUsesSLA", value);
        EXPECT_EQ(timeScopeBlockUsesSLA(), value != 0);
    }
    EXPECT_EQ(failure([&] { host.loadModule(TRACERY_LIBRARY); }), "DuplicateModule");
    EXPECT_NE(host.construct("tracery.OneShotTimer"), nullptr);
}

TEST(ModuleTest, TheRefreshRateIsTheFirstDoubleOfASingleInput)
{
    EmbeddedHost host;
    host.loadModule(TRACERY_LIBRARY);
    const HostArrayPtr rate = test::row({0.1, 7}), none = test::row({}), flag(createLogicalScalar(true)),
                       text(createString("0.1"));
    const std::vector<std::vector<const HostArray*>> bad{
        {}, {rate.get(), rate.get()}, {none.get()}, {flag.get()}, {text.get()}, {nullptr}};
    for (const auto& inputs : bad) {
        const HostArray* good[] = {rate.get()};
        EXPECT_TRUE(host.functions().call("SetScopeRefreshRateImpl", good, 0).empty());
        EXPECT_EQ(DrawScheduler::getTimeInterval(), 0.1);
        EXPECT_EQ(DrawScheduler::getInstance()->getIntervalMicroseconds(), 0.1 * 1e6);
        host.functions().call("SetScopeRefreshRateImpl", inputs, 0);
        EXPECT_EQ(DrawScheduler::getTimeInterval(), 0.05);
        EXPECT_EQ(DrawScheduler::getInstance()->getIntervalMicroseconds(), 0.05 * 1e6);
    }
}

TEST(ModuleTest, TerminationEndsTheUseOfThePackageAndLeavesWhatLives)
{
    EmbeddedHost host;
    VTTerminate_tracery(); // before there is anything to end
    embedded::Module& module = host.loadModule(TRACERY_LIBRARY);
    host.defineClass({.name = "my.Timer", .superclass = "tracery.OneShotTimer"});
    host.defineClass({.name = "tracery.Mine"});
    const HostObjectRef timer = host.construct("tracery.OneShotTimer");
    const HostObjectRef mine = host.construct("my.Timer");

    DrawScheduler* scheduler = DrawScheduler::getInstance();
    int draws = 0;
    scheduler->Bind({[&] { ++draws; }});
    scheduler->Init(3600, 0.5);
    EXPECT_EQ(scheduler->getCommitHost(), &host);
    module.terminate();
    EXPECT_EQ(scheduler->getCommitHost(), nullptr);
    scheduler->TaskComplete(false);
    EXPECT_EQ(draws, 1) << "the hour is over";
    scheduler->Init();
    module.terminate();
    VTTerminate_tracery();
    EXPECT_EQ(scheduler->getCommitHost(), &host) << "once is enough";
    scheduler->Unbind(0);

    EXPECT_EQ(hostobj::COSPackage::getPackageInterface("tracery"), nullptr);
    EXPECT_NE(hostobj::COSPackage::getPackageInterface("veltrashared.scopes.visual"), nullptr);
    EXPECT_EQ(failure([&] { host.construct("tracery.OneShotTimer"); }), "UnknownClass");
    EXPECT_EQ(failure([&] { host.functions().call("SetScopeRefreshRateImpl", {}, 0); }), "UnknownFunction");
    EXPECT_NE(host.objects().findClass("veltrashared.scopes.visual.AbstractLinePlotter"), nullptr);
    EXPECT_NE(host.construct("tracery.Mine"), nullptr);
    EXPECT_NE(host.construct("my.Timer"), nullptr) << "the class was in use before";
    for (const HostObjectRef& object : {timer, mine})
        EXPECT_EQ(test::realOf(host.get(object, "TimeoutDuration").get()), std::vector<double>{0});
}

TEST(ModuleTest, TheSchedulerGoesOnWithAHostThatStays)
{
    DrawScheduler* scheduler = DrawScheduler::getInstance();
    EmbeddedHost stays, later;
    stays.loadModule(TRACERY_LIBRARY);
    {
        EmbeddedHost goes;
        goes.loadModule(TRACERY_LIBRARY);
        scheduler->Init();
        EXPECT_EQ(scheduler->getCommitHost(), &goes);
    }
    EXPECT_EQ(scheduler->getCommitHost(), &stays);
    later.loadModule(TRACERY_LIBRARY).terminate();
    EXPECT_EQ(scheduler->getCommitHost(), &stays) << "it did not listen to the later one";
    stays.findModule("tracery")->terminate();
    EXPECT_EQ(scheduler->getCommitHost(), nullptr);
}

TEST(ModuleTest, FunctionsOfTheProgramAreItsOwn)
{
    EmbeddedHost host;
    const char* name = "SetScopeRefreshRateImpl";
    const auto define = [&] { host.defineFunction(name, [](auto...) { return hostobj::HostOutputs(3); }); };
    define();
    EXPECT_EQ(failure([&] { host.loadModule(TRACERY_LIBRARY); }), "DuplicateFunction");
    EXPECT_EQ(host.objects().findPackage("tracery"), nullptr);
    host.defineFunction(name, nullptr);
    embedded::Module& module = host.loadModule(TRACERY_LIBRARY);
    define();
    module.terminate();
    EXPECT_EQ(host.functions().call(name, {}, 0).size(), 3u);
}

TEST(ModuleTest, AFailedInitialisationIsReportedAndCanBeTriedAgain)
{
    EmbeddedHost host;
    host.defineClass({.name = "veltrashared.scopes.visual.AbstractLinePlotter"});
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(failure([&] { host.loadModule(TRACERY_LIBRARY); }), "DuplicateClass");
    EXPECT_EQ(Host::current(), nullptr);
    EXPECT_EQ(host.findModule("tracery"), nullptr);
    EXPECT_EQ(host.objects().findPackage("tracery"), nullptr);
    EXPECT_EQ(failure([&] { host.functions().call("SetScopeRefreshRateImpl", {}, 0); }), "UnknownFunction");
    EXPECT_FALSE(host.features().getFeature("UseTaskMgrToLaunchScope").has_value());
}

TEST(ModuleTest, AModuleOfAnotherMakeWorksWithItsObjectsToTheEnd)
{
    HostObjectRef kept;
    EmbeddedHost other;
    other.loadModule(DEMO_MODULE, "demo");
    {
        EmbeddedHost host;
        host.loadModule(TRACERY_LIBRARY);
        EXPECT_EQ(host.loadModule(DEMO_MODULE, "demo").getVersion(), "1.2.3.4");
        kept = host.construct("demo.Counter");
        const HostArrayPtr two = test::row({2}), three = test::row({3});
        const HostArray* inputs[] = {two.get(), three.get(), nullptr};
        const hostobj::HostOutputs outputs = host.functions().call("demoSum", std::span(inputs).first(2), 2);
        ASSERT_EQ(outputs.size(), 2u);
        EXPECT_EQ(realValues(outputs[0].get())[0], 1);
        EXPECT_EQ(realValues(outputs[1].get())[0], 5);
        EXPECT_EQ(host.functions().call("demoSum", {}, 0).size(), 1u);
        const std::size_t arrays = getNumberOfLiveArrays();
        EXPECT_EQ(failure([&] { host.functions().call("demoSum", inputs, 2); }), "EmptyInput");
        EXPECT_EQ(getNumberOfLiveArrays(), arrays);
    }
    EXPECT_EQ(Host::current(), &other) << "the one that is left";
    EXPECT_EQ(kept->payload(), nullptr);
    EXPECT_EQ(realValues(other.functions().call("demoSum", {}, 1)[0].get())[0], 0);
    kept = other.construct("demo.Counter"); // outlives its host and module
}

TEST(ModuleTest, WhatIsNoSuchModuleIsRefusedByName)
{
    EmbeddedHost host;
    const struct {
        const char* path;
        const char* name;
        const char* error;
        const char* word;
    } cases[] = {{"/nowhere/libscope.so", "tracery", "ModuleNotFound", "/nowhere/libscope.so"},
                 {TRACERY_CLASS_LISTING, "tracery", "ModuleNotFound", TRACERY_CLASS_LISTING},
                 {"", "tracery", "ModuleNotFound", "empty"},
                 {"libm.so.6", "tracery", "InvalidModule", "libm.so.6"},
                 {TRACERY_LIBRARY, "other", "InvalidModule", "QueryVTFcnTable_other"},
                 {DEMO_MODULE, "tracery", "InvalidModule", DEMO_MODULE}, // though it is linked with that library
                 {DEMO_MODULE, "renamed", "InvalidModule", "name"},
                 {DEMO_MODULE, "nameless", "InvalidModule", "name"},
                 {DEMO_MODULE, "loose", "InvalidModule", "attached"},
                 {DEMO_MODULE, "bodiless", "InvalidModule", "functions"},
                 {OLD_MODULE, "demo", "ModuleVersion", OLD_MODULE},
                 {NEW_MODULE, "demo", "ModuleVersion", NEW_MODULE}};
    for (const auto& [path, name, error, word] : cases) {
        try {
            host.loadModule(path, name);
            ADD_FAILURE() << path;
        } catch (const Error& e) {
            EXPECT_STREQ(e.name(), error);
            EXPECT_NE(std::string(e.what()).find(word), std::string::npos) << e.what();
            EXPECT_EQ(std::string(e.what()).find('\n'), std::string::npos);
        }
    }
    EXPECT_EQ(Host::current(), nullptr);
}

TEST(ModuleTest, ACopyOfTheLibraryElsewhereWorks)
{
    const test::TemporaryFolder folder;
    const std::string copy = folder.path("tracery copy.so");
    std::filesystem::copy_file(TRACERY_LIBRARY, copy);
    HostObjectRef kept;
    {
        EmbeddedHost host;
        host.loadModule(copy);
        EXPECT_EQ(listing(host), published());
        kept = host.construct("tracery.OneShotTimer");
        host.functions().call("SetScopeRefreshRateImpl", {}, 0);
    }
}

/// Runs when the variables of all libraries are gone.
void (*atTheVeryEnd)() = nullptr;
[[gnu::destructor]] void runAtTheVeryEnd()
{
    if (atTheVeryEnd != nullptr)
        atTheVeryEnd();
}

/// Each order ends the process; leaks and uses of what is gone make the exit status another one.
TEST(ModuleDeathTest, TheProcessEndsCleanlyInEveryOrder)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    static std::optional<EmbeddedHost> host; // goes after main
    const std::function<void()> orders[] = {
        [] { host.emplace().loadModule(TRACERY_LIBRARY); },
        [] { host.emplace().loadModule(TRACERY_LIBRARY).terminate(); },
        [] { host.emplace().loadModule(DEMO_MODULE, "demo"); },
        [] {
            static HostObjectRef object;
            host.emplace().loadModule(TRACERY_LIBRARY);
            object = host->construct("tracery.OneShotTimer");
            host.reset();
            VTTerminate_tracery();
        },
        [] { // never terminated, hooked to a host that is gone
            EmbeddedHost local;
            const HostScope attached(local);
            VTInitialize_tracery();
            DrawScheduler::getInstance()->Bind({[] { std::abort(); }});
        },
        [] { // terminated by nobody's host, then by another's
            std::optional<EmbeddedHost> first(std::in_place);
            Host::attach(*first);
            VTInitialize_tracery();
            first.reset();
            VTTerminate_tracery();
            const HostScope attached(host.emplace());
            VTTerminate_tracery();
            VTInitialize_tracery();
            DrawScheduler::getInstance()->TaskComplete(true);
        },
        [] { // a host without memory that goes last
            static test::TestHost& last = *new test::TestHost;
            last.whenAsked = [](const std::string&) { throw std::bad_alloc(); };
            Host::attach(last);
            atTheVeryEnd = [] {
                if (failure(&VTInitialize_tracery) != "OutOfMemory")
                    std::_Exit(1);
            };
        },
    };
    for (const auto& order : orders)
        EXPECT_EXIT((order(), std::exit(0)), testing::ExitedWithCode(0), "^$");
}

} // namespace
