#include "support/Expect.h"
#include "trigger/NaiveController.h"

#include <map>
#include <random>

using namespace tracery;
using namespace tracery::TDTC;
using tracery::test::failure;

namespace {

using Controller = TimeDomainTriggerController;
using Fate = Controller::EventFate;
using Window = std::pair<double, double>;
using Windows = std::vector<Window>;
using Values = std::vector<std::complex<double>>;

constexpr double kInf = naive::inf;
constexpr Window kNone{-kInf, -kInf};

/// A controller at level 0, fed sample by sample or from a port of complex steps.
struct Fed : Controller {
    explicit Fed(ModeEnum mode, const TimeBuffer::Counts& extents = {1})
        : buffer({99}, extents, {extents.size()}, 1, BufferType::SingleRate, {HostComplexity::complex}, false)
    {
        setMode(mode);
        setAutoLevel(false);
    }
    void feed(const naive::Signal& signal)
    {
        for (const naive::Sample sample : signal)
            processSample(sample.t, sample.x, sample.t, 1);
    }
    Window ask(double now, double span, bool partial = false)
    {
        Window window;
        getTriggerWindow(0, now, span, partial, window.first, window.second);
        return window;
    }
    /// Twenty samples a second apart, rising half a second after the second, sixth, ... of them.
    Windows run(double from, double span)
    {
        Windows windows;
        for (double t = from; t < from + 20; ++t) {
            feed({{t, std::fmod(t, 4) < 2 ? -1.0 : 1.0}});
            if (const Window window = ask(t, span); window != kNone)
                windows.push_back(window);
        }
        return windows;
    }
    EventQueue events() const { return getPendingEvents(); }
    void add(double t, const Values& values) { naive::addStep(buffer, 0, t, values); }
    /// Reads what is new in a channel; returns the pending events.
    EventQueue read(std::uint64_t channel = 0, bool framed = false, double period = 1)
    {
        processBuffer(buffer, framed, period, 0, channel, 0, 1);
        return events();
    }

    TimeBuffer buffer;
};

TEST(TimeDomainTriggerControllerTest, PositionAndDelayPlaceTheWindowWhichIsGivenOutOnceFull)
{
    const auto check = [](double position, double delay, Window expected) {
        for (const bool partial : {false, true}) {
            Fed controller(ModeEnum::Normal);
            controller.setPosition(position);
            controller.setDelay(delay);
            controller.processSample(79, -1, 0, 1);
            controller.processSample(81, 1, 0, 1);
            const double due = partial ? expected.first : expected.second;
            EXPECT_EQ(controller.ask(std::nextafter(due, 0), 10, partial), kNone);
            EXPECT_EQ(controller.ask(due, 10, partial), expected);
            EXPECT_EQ(controller.ask(due, 10, partial), kNone) << "shown already";
        }
    };
    check(0.5, 0, {75, 85});
    check(1, 2, {72, 82});
    check(0, 4, {84, 94});
}

TEST(TimeDomainTriggerControllerTest, WindowsNeverOverlapAndFatesReconcile)
{
    for (const ModeEnum mode : {ModeEnum::Normal, ModeEnum::Once}) {
        Fed controller(mode);
        std::mt19937 random(7);
        std::map<Fate, std::uint64_t> fates;
        std::uint64_t windows = 0;
        for (double t = 0, shownUpTo = -kInf; t < 1000; t += 0.5) {
            controller.feed({{t, random() % 2 ? 1.0 : -1.0}});
            if (random() % 8)
                continue;
            const Window window = controller.ask(t, 4);
            for (const auto& event : controller.getConsumedEvents())
                ++fates[event.fate];
            if (window == kNone)
                continue;
            EXPECT_GE(window.first, shownUpTo);
            EXPECT_LE(window.second, t);
            shownUpTo = window.second;
            ++windows;
        }
        EXPECT_EQ(fates[Fate::Shown], windows);
        EXPECT_EQ(fates[Fate::Shown] + fates[Fate::Superseded] + fates[Fate::Overlap] + fates[Fate::Disarmed] +
                      controller.events().size(),
                  controller.getDetector().getNumAcceptedEvents());
        EXPECT_EQ(fates[Fate::Disarmed] > 0, mode == ModeEnum::Once);
        EXPECT_EQ(fates[Fate::Superseded] > 0 && fates[Fate::Overlap] > 0, mode == ModeEnum::Normal);
    }
}

TEST(TimeDomainTriggerControllerTest, OnlyStepsBackBeyondTheToleranceRestart)
{
    Fed controller(ModeEnum::Normal);
    controller.setStepBackTolerance(0.5);
    controller.feed({{0, -1}, {2, 1}});
    controller.ask(1, 100);
    EXPECT_EQ(controller.events(), EventQueue{1});
    controller.ask(0.499, 100);
    EXPECT_TRUE(controller.events().empty());
}

TEST(TimeDomainTriggerControllerTest, OnceGivesOneWindowUntilArmedAgain)
{
    Fed controller(ModeEnum::Once);
    EXPECT_EQ(controller.run(0, 2), (Windows{{0.5, 2.5}}));
    EXPECT_EQ(controller.run(20, 2), Windows{});
    controller.setMode(ModeEnum::Once);
    EXPECT_EQ(controller.run(40, 2), (Windows{{40.5, 42.5}}));
    controller.setEnableOnceMode(true);
    EXPECT_EQ(controller.run(60, 2), (Windows{{60.5, 62.5}}));
    controller.reset();
    EXPECT_EQ(controller.run(80, 2), (Windows{{80.5, 82.5}}));
    EXPECT_EQ(controller.run(0, 2), (Windows{{0.5, 2.5}})) << "time stepped back";
}

TEST(TimeDomainTriggerControllerTest, AutoRunsFreeOnceAWholeFurtherWindowPassedWithoutAnEvent)
{
    Fed controller(ModeEnum::Auto);
    EXPECT_EQ(controller.ask(10, 10), kNone) << "not later than the span";
    EXPECT_EQ(controller.ask(10.5, 10), Window(0.5, 10.5));
    EXPECT_EQ(controller.ask(25.5, 10), kNone);
    EXPECT_EQ(controller.ask(26, 10), Window(16, 26));
    controller.feed({{35, -1}, {37, 1}});
    EXPECT_EQ(controller.ask(41, 10), Window(31, 41)) << "an event again";
    EXPECT_EQ(controller.ask(kInf, 10), Window(kInf, kInf));
    EXPECT_EQ(controller.ask(kInf, 10), kNone) << "no time is later than the last window";
}

TEST(TimeDomainTriggerControllerTest, OffProducesNothing)
{
    Fed controller(ModeEnum::Normal);
    controller.feed({{0, -1}, {2, 1}, {3, -1}, {5, 1}});
    EXPECT_EQ(controller.ask(6, 4), Window(2, 6));
    controller.feed({{7, -1}, {8, 1}});
    EXPECT_EQ(controller.ask(10, 4), kNone) << "too close to the last window, so it stays the last ready event";
    controller.setMode(ModeEnum::Off);
    EXPECT_EQ(controller.run(12, 2), Windows{});
    EXPECT_EQ(controller.ask(40, 4, true), kNone);
    EXPECT_TRUE(controller.events().empty());
}

TEST(TimeDomainTriggerControllerTest, TwoSignalsNeverMakeOneCrossing)
{
    const auto eventsAcross = [](auto change, bool detectFirst) {
        Fed controller(ModeEnum::Normal);
        controller.feed({{0, -1}});
        if (detectFirst)
            controller.ask(0, 100);
        change(controller);
        controller.feed({{1, 1}});
        controller.ask(1, 100);
        return controller.events().size();
    };
    for (const bool detectFirst : {false, true}) {
        EXPECT_EQ(eventsAcross([](Fed& c) { c.setSourcePort(2); }, detectFirst), 0U);
        EXPECT_EQ(eventsAcross([](Fed& c) { c.setSourcePortChannel(2); }, detectFirst), 0U);
        EXPECT_EQ(eventsAcross([](Fed& c) { c.setComplexity(ComplexityEnum::Real); }, detectFirst), 0U);
        EXPECT_EQ(eventsAcross([](Fed& c) { c.setSourcePort(1); }, detectFirst), 1U) << "the same source";
    }
    Fed reading(ModeEnum::Normal, {2});
    for (unsigned i = 0; i < 20; ++i) {
        reading.add(i, {{-1, 1}, {1, -1}});
        EXPECT_TRUE(reading.read(i / 2 % 2).empty());
        reading.setComplexity(i % 5 < 3 ? ComplexityEnum::Imaginary : ComplexityEnum::Real);
    }
    EXPECT_EQ(failure([&] { reading.setSourcePort(0); }), "InvalidPortID");
    EXPECT_EQ(failure([&] { reading.setSourcePortChannel(0); }), "InvalidChannelID");
}

TEST(TimeDomainTriggerControllerTest, ANewTypeKeepsEventsAndTakesAllSettings)
{
    Fed controller(ModeEnum::Normal);
    controller.setLevel(1);
    controller.setUpperLevel(7);
    controller.setLowerLevel(5);
    controller.feed({{0, 0}, {2, 2}});
    controller.ask(2, 100);
    for (int type = 0; type < 6; ++type) {
        controller.setType(static_cast<TypeEnum>(type));
        EXPECT_EQ(controller.getLevel(), 1.0);
        EXPECT_EQ(controller.getUpperLevel(), 7.0);
        EXPECT_EQ(controller.getLowerLevel(), 5.0);
        EXPECT_EQ(controller.events(), EventQueue{1});
    }
}

TEST(TimeDomainTriggerControllerTest, StepsAtTheTimeOfTheLastReadOneAreNotDeliveredAgain)
{
    Fed reading(ModeEnum::Normal);
    reading.add(0, {-1});
    reading.add(1, {-1});
    reading.read();
    reading.add(1, {1});
    EXPECT_TRUE(reading.read().empty());
    reading.add(2, {1});
    EXPECT_EQ(reading.read(), EventQueue{1.5});

    Fed controller(ModeEnum::Normal); // samples handed in one by one may come again, and replace the old extremes
    controller.setAutoLevel(true);
    controller.feed({{0, 0}, {1, 10}});
    controller.ask(1, 100);
    EXPECT_EQ(controller.getLevel(), 5.0);
    controller.feed({{1, 4}});
    controller.ask(1, 100);
    EXPECT_EQ(controller.getLevel(), 2.0);
}

TEST(TimeDomainTriggerControllerTest, ChannelsOfFramesAndPartsOfComplexValuesAreReadAsAsked)
{
    const auto event = [](const TimeBuffer::Counts& extents, const Values& first, const Values& second,
                          ComplexityEnum complexity, double level, std::uint64_t channel = 0, bool framed = false,
                          double period = 1) {
        Fed reading(ModeEnum::Normal, extents);
        reading.setComplexity(complexity);
        reading.setLevel(level);
        reading.add(10, first);
        reading.add(11, second);
        const EventQueue found = reading.read(channel, framed, period);
        return found.size() == 1 ? found[0] : -1;
    };
    using enum ComplexityEnum;
    EXPECT_EQ(event({4, 2}, {1, 1, 1, 1, -1, -1, 1, 1}, Values(8, 1), Scalar, 0, 1, true), 10.375);
    EXPECT_EQ(event({4}, {-1, -1, 1, 1}, Values(4, 1), Real, 0, 0, true, kInf), 10);
    EXPECT_EQ(event({4}, {1, 1, -1, 1}, Values(4, 1), Real, 0, 2), 10.5);
    EXPECT_EQ(event({1}, {{1, -1}}, {{1, 3}}, Imaginary, 0), 10.25);
    EXPECT_EQ(event({1}, {0}, {{-3, 4}}, Magnitude, 2.5), 10.5);
    EXPECT_EQ(event({1}, {1}, {{0, 1}}, Phase, 45), 10.5) << "degrees";
}

} // namespace
