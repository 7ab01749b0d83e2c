// The controller beside a naive double, and alone under hostile numbers.

#include "trigger/ControllerModel.h"

using namespace tracery;
using namespace tracery::TDTC;
using naive::hostileNumber;
using tracery::test::sameBits;

namespace {

constexpr double kInf = naive::inf;

TEST(TimeDomainTriggerControllerPropertyTest, RandomRunsAgreeWithTheNaiveRulesBitForBit)
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

TEST(TimeDomainTriggerControllerPropertyTest, NoNumberMakesItCrash)
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

} // namespace
