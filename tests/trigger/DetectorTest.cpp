// What fuzz/triggers.cpp, which compares detectors with their rules, does not ask for.

#include "trigger/TriggerFixtures.h"

#include <gtest/gtest.h>

using namespace tracery;

namespace {

TEST(DetectorTest, ResetForgetsTheChoiceOfPartInEdgeAndTimeoutOnlyOnPurpose)
{
    const std::complex<double> samples[] = {{0, 0}, {0, 0}, {1, 2}, {1, 1}};
    const auto timeAfterReset = [&](auto detector) {
        detector.shouldProcessImagPart(true);
        detector.reset();
        return detector.interpTime(samples, 1, 1);
    };
    EXPECT_EQ(timeAfterReset(make<EdgeTimeDomainTrigger>({})) + timeAfterReset(make<TimeoutTimeDomainTrigger>({})),
              1 + 1);
    EXPECT_EQ(timeAfterReset(make<PulseWidthTimeDomainTrigger>({})) + timeAfterReset(make<RuntTimeDomainTrigger>({})),
              2 + 2);
    EXPECT_EQ(timeAfterReset(make<TransitionTimeDomainTrigger>({})) + timeAfterReset(make<WindowTimeDomainTrigger>({})),
              2 + 2);
}

TEST(DetectorTest, InterpolationReachesBackToTheCachedSample)
{
    const auto check = []<class Element>(Element) {
        auto detector = make<EdgeTimeDomainTrigger>({});
        const Element before[] = {0., 7., 1., -1., 2., -3.}, now[] = {3., 1.};
        EXPECT_EQ(detector.interpTime(before, 1, 5), 0.25);
        EXPECT_TRUE(std::isnan(detector.interpTime(now, 0, 0)));
        detector.cacheLastSample(before, 2);
        detector.cacheLastSample(before + 2, 0);
        EXPECT_EQ(detector.interpTime(now, 0, 0), 2.0);
        detector.resetEvents();
        EXPECT_TRUE(std::isnan(detector.interpTime(now, 0, 0)));
    };
    check(double{});
    check(std::complex<double>{});
}

} // namespace
