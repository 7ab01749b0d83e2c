// The controller beside a naive double, alone under hostile numbers, and where neither goes.

#include "trigger/ControllerModel.h"

using namespace tracery;
using namespace tracery::TDTC;
using naive::hostileNumber;
using tracery::test::sameBits;

namespace {

constexpr double kInf = naive::inf;

TEST(TimeDomainTriggerControllerTest, RandomRunsAgreeWithTheNaiveRulesBitForBit)
{
    naive::Seen seen{};
    for (unsigned seed = 0; seed < 600 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        naive::RandomController run(random, seed, seen);
        for (int i = 0; i < 150 && !HasFailure(); ++i)
            run.step();
    }
    for (std::size_t i = 0; i < seen.size(); ++i)
        EXPECT_TRUE(i == static_cast<std::size_t>(ModeEnum::Off) ? seen[i] == 0 : seen[i] > 200)
            << i << ": " << seen[i];
}

TEST(TimeDomainTriggerControllerTest, NoNumberMakesItCrash)
{
    for (unsigned seed = 0; seed < 300; ++seed) {
        std::mt19937 random(seed);
        const auto any = [&] { return hostileNumber(random); };
        TimeBuffer buffer({50}, {2, 2}, {2}, 1, BufferType::SingleRate, {HostComplexity::complex}, false);
        TimeDomainTriggerController controller;
        controller.setMode(naive::kModes[seed % 4]);
        controller.setType(static_cast<TypeEnum>(random() % 6));
        controller.setComplexity(static_cast<ComplexityEnum>(random() % 7));
        for (int i = 0; i < 200; ++i) {
            naive::addStep(buffer, 0, any(), {{any(), any()}, any(), 1, -1});
            controller.processSample(any(), any(), any(), any());
            std::pair<double, double> window, last;
            if (random() % 2)
                controller.getTriggerWindow(any(), any(), any(), random() % 2, window.first, window.second);
            else
                controller.getTriggerWindow(buffer, random() % 2, any(), 0, random() % 2, any(), any(), any(),
                                            random() % 2, window.first, window.second);
            controller.getLastTriggerWindow(last.first, last.second);
            EXPECT_TRUE(window == std::pair(-kInf, -kInf) ||
                        sameBits({window.first, window.second}, {last.first, last.second}));
            if (random() % 4 == 0) {
                controller.setPosition(any()), controller.setDelay(any()), controller.setAutoLevel(random() % 2);
                controller.setHoldoff(any()), controller.setStepBackTolerance(any()), controller.setTimeout(any());
            }
        }
    }
}

using Events = TimeDomainTriggerController::EventQueue;

/// A controller at level 0 that takes the samples in at once.
struct Fed : TimeDomainTriggerController {
    Fed()
    {
        setMode(ModeEnum::Normal);
        setAutoLevel(false);
    }
    Events feed(const naive::Signal& signal, double now)
    {
        for (const naive::Sample sample : signal)
            processSample(sample.t, sample.x, sample.t, 1);
        double start = 0, end = 0;
        getTriggerWindow(0, now, 100, false, start, end);
        return getPendingEvents();
    }
};

TEST(TimeDomainTriggerControllerTest, OnlyStepsBackBeyondTheToleranceRestart)
{
    Fed controller;
    controller.setStepBackTolerance(0.5);
    EXPECT_EQ(controller.feed({{0, -1}, {2, 1}}, 1), Events{1});
    EXPECT_EQ(controller.feed({}, 0.499), Events{});
}

TEST(TimeDomainTriggerControllerTest, SamplesHandedInAgainReplaceTheExtremes)
{
    Fed controller;
    controller.setAutoLevel(true);
    controller.feed({{0, 0}, {1, 10}}, 1);
    EXPECT_EQ(controller.getLevel(), 5.0);
    controller.feed({{1, 4}}, 1);
    EXPECT_EQ(controller.getLevel(), 2.0);
}

TEST(TimeDomainTriggerControllerTest, OnlyAnotherSourceMakesANewSignal)
{
    for (const std::uint32_t port : {1U, 2U}) {
        Fed controller;
        controller.feed({{0, -1}}, 0);
        controller.setSourcePort(port);
        EXPECT_EQ(controller.feed({{1, 1}}, 1).size(), port == 1 ? 1U : 0U);
        EXPECT_EQ(test::failure([&] { controller.setSourcePort(0); }), "InvalidPortID");
        EXPECT_EQ(test::failure([&] { controller.setSourcePortChannel(0); }), "InvalidChannelID");
    }
}

} // namespace
