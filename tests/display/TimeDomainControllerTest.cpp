#include "support/Expect.h"

#include <tracery/AbstractTimeDomainPlotter.h>
#include <tracery/ScrollingTimeDomainController.h>
#include <tracery/WrappingTimeDomainController.h>

#include <cmath>
#include <random>

using namespace tracery;
using test::failure;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

double naiveMax(double origin, double x) { return origin < x ? x : origin; }

/// The rules written out.
struct Naive {
    double O, S, Wset, E, M, width, last;
    bool partial;

    double W() const { return Wset != 0 ? Wset : S; }
    double wrap(double e) const
    {
        const double s = std::floor((e - O) / W()) * W() + O;
        const double eps = std::isfinite(e) ? std::nextafter(std::fabs(e), kInf) - std::fabs(e) : kNaN;
        return e - s <= 10 * eps && s != O && W() == S ? s - W() : s;
    }
    double offset(double t) const { return wrap(t) < O ? std::floor(O / W()) * W() : wrap(t); }
    double asynchronousEnd(double t)
    {
        const double r = (t - last) / W();
        last = t;
        if (r < 0.2)
            return std::exchange(partial, true) ? t : t - W();
        if (r < 0.3 && partial)
            return t;
        partial = false;
        return naiveMax(O, t - W());
    }
};

::testing::AssertionResult same(double actual, double expected)
{
    return std::isnan(expected) && std::isnan(actual) ? ::testing::AssertionSuccess()
                                                      : test::sameBits(&actual, &expected, 1);
}

TEST(TimeDomainControllerTest, AgreesWithTheRulesOnAnyTimes)
{
    std::mt19937 random(7);
    const auto below = [&](unsigned n) { return static_cast<unsigned>(random() % n); };
    const auto pick = [&](std::initializer_list<double> from) { return from.begin()[below(unsigned(from.size()))]; };
    const auto odd = [&](double x) {
        return below(40) == 0 ? pick({kNaN, kInf, -kInf, 0.0, -0.0, 5e-324, -1, 1e300, -1e300}) : x;
    };
    for (int round = 0; round < 20000; ++round) {
        const double period = odd(pick({10, 4, 0.1, 1.0 / 3, 1e-9}));
        const double origin = odd(pick({0, -0.0, 3.7, -25, 0.1}));
        const auto time = [&] { // at, just after and between boundaries
            double t = origin + (below(60) - 20.0) * period * pick({1, 1, 1, 0.25, 0.1});
            for (unsigned steps = below(3) == 0 ? below(14) : 0; steps-- > 0;)
                t = std::nextafter(t, kInf);
            return odd(t);
        };
        const double sampleTimes[] = {0.5, odd(pick({0.1, 0.7}))}, length = odd(pick({3, 4, 7})),
                     width = (length - 1) * sampleTimes[1] / length;
        Naive naive{origin,
                    odd(below(2) ? period : 10),
                    odd(below(2) ? 0 : period),
                    time(),
                    odd(pick({0, 0.25})),
                    std::isfinite(width) ? naiveMax(0, width) : 0,
                    pick({time(), -kInf}),
                    below(2) == 0};
        AbstractTimeDomainPlotter plotter;
        plotter.setOriginTime(naive.O);
        plotter.setTimeSpan(naive.S);
        plotter.setTimeWrap(naive.Wset);
        plotter.setEndTime(naive.E);
        plotter.setMaxSiblingTimeStepWidth(naive.M);
        plotter.getLengthOfChannelsWriteable() = {1, length, 2}; // the last has no sample time
        plotter.setSampleTimes(sampleTimes, 2);
        WrappingTimeDomainController wrapping(&plotter);
        wrapping.setLastAsynchronousEndTime(naive.last);
        wrapping.setLastUpdateWasPartial(naive.partial);
        ScrollingTimeDomainController scrolling(&plotter);
        ASSERT_TRUE(same(wrapping.calculateStartTime(), naiveMax(naive.O, naive.wrap(naive.M + naive.E)))) << round;
        ASSERT_TRUE(same(scrolling.calculateStartTime(), naiveMax(naive.O, naive.E + naive.width - naive.S))) << round;
        for (int i = 0; i < 6; ++i) {
            const double t = below(2) ? time() : naive.last + naive.W() * pick({0.1, 0.2, 0.25, 0.3, 0.5});
            ASSERT_TRUE(same(wrapping.calculateTimeOffset(t), naive.offset(t))) << round;
            ASSERT_TRUE(same(wrapping.calculateAsynchronousEndTime(t), naive.asynchronousEnd(t))) << round;
            ASSERT_EQ(wrapping.getLastUpdateWasPartial(), naive.partial) << round;
            ASSERT_TRUE(same(scrolling.calculateTimeOffset(t), naiveMax(naive.O, t - naive.S))) << round;
            ASSERT_TRUE(same(scrolling.calculateAsynchronousEndTime(t), t)) << round;
        }
    }
}

TEST(TimeDomainControllerTest, CopiesCarryAllStateAndOutliveThePlotter)
{
    auto plotter = std::make_unique<AbstractTimeDomainPlotter>();
    plotter->setOriginTime(13);
    WrappingTimeDomainController original(plotter.get()), unbound;
    EXPECT_EQ(original.calculateTimeOffset(2), 10) << "whole periods from 0, the origin is not added back";
    EXPECT_EQ(original.calculateAsynchronousEndTime(50), 40) << "the first update is a sweep of its own";
    original.start();
    WrappingTimeDomainController copy(original), moved(WrappingTimeDomainController{original});
    EXPECT_EQ(copy.calculateAsynchronousEndTime(52.5), 52.5) << "between the thresholds, after a partial update";
    EXPECT_EQ(moved.calculateAsynchronousEndTime(51), 51);
    const auto askWhenReleased = [&](hostobj::COSInterface*) { EXPECT_EQ(copy.getPlotter(), nullptr); };
    plotter->addTransformToCache(HostObjectRef(nullptr, askWhenReleased));
    plotter.reset();
    ScrollingTimeDomainController scrolling(copy.getPlotter());
    for (AbstractTimeDomainController* each :
         std::initializer_list<AbstractTimeDomainController*>{&original, &copy, &moved, &unbound, &scrolling}) {
        EXPECT_EQ(each->getPlotter(), nullptr);
        EXPECT_EQ(failure([&] { each->calculateStartTime(); }), "NoPlotter");
        EXPECT_EQ(failure([&] { each->calculateTimeOffset(1); }), "NoPlotter");
        EXPECT_EQ(failure([&] { each->calculateAsynchronousEndTime(1); }), each == &scrolling ? "none" : "NoPlotter");
    }
    EXPECT_EQ(original.getLastAsynchronousEndTime(), 50);
}

} // namespace
