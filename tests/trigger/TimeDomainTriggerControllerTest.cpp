// Where the model (ControllerModel.h, driven by fuzz/controller.cpp) does not go.

#include "trigger/ControllerModel.h"

using namespace tracery;

namespace {

TEST(TimeDomainTriggerControllerTest, SamplesHandedInAgainReplaceTheExtremes)
{
    TimeDomainTriggerController controller;
    controller.setMode(TDTC::ModeEnum::Normal);
    const auto levelAfter = [&](const naive::Signal& signal) {
        for (const naive::Sample sample : signal)
            controller.processSample(sample.t, sample.x, sample.t, 1);
        double start = 0, end = 0;
        controller.getTriggerWindow(0, 1, 100, false, start, end);
        return controller.getLevel();
    };
    EXPECT_EQ(levelAfter({{0, 0}, {1, 10}}), 5.0);
    EXPECT_EQ(levelAfter({{1, 4}}), 2.0);
}

} // namespace
