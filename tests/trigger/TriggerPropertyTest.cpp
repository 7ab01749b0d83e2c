// What holds between the events of a detector's runs; that the events are right, fuzz/triggers.cpp compares.

#include "trigger/TriggerFixtures.h"

#include <gtest/gtest.h>

#include <bit>
#include <functional>

using namespace tracery;
using naive::Settings;
using naive::Signal;

namespace {

constexpr unsigned kSeeds = 400;

using Random = std::mt19937;

std::vector<std::uint64_t> bits(const auto& events)
{
    std::vector<std::uint64_t> result;
    for (const double event : events)
        result.push_back(std::bit_cast<std::uint64_t>(event));
    return result;
}

using Detectors = testing::Types<EdgeTimeDomainTrigger, TimeoutTimeDomainTrigger, PulseWidthTimeDomainTrigger,
                                 RuntTimeDomainTrigger, TransitionTimeDomainTrigger, WindowTimeDomainTrigger>;

template <class Detector>
struct TriggerPropertyTest : testing::Test {
    /// Calls `check(signal, settings, events of the signal as one block, random)` on many signals.
    template <class Check>
    void forManySignals(Check check)
    {
        std::size_t found = 0;
        for (unsigned seed = 0; seed < kSeeds && !this->HasFailure(); ++seed) {
            SCOPED_TRACE(seed);
            Random random(seed);
            const Signal signal = hostileSignal(random);
            const Settings settings = anySettings(random);
            EventQueue events;
            auto detector = make<Detector>(settings);
            feed(detector, signal, 0, signal.size(), events);
            check(signal, settings, events, random);
            found += events.size();
        }
        EXPECT_GT(found, kSeeds) << "the signals should hold events";
    }
};
TYPED_TEST_SUITE(TriggerPropertyTest, Detectors);

TYPED_TEST(TriggerPropertyTest, BlocksGiveWhatTheirSamplesGiveOneByOneThoughLevelsMoveBetweenThem)
{
    this->forManySignals([](const Signal& signal, Settings settings, const EventQueue& whole, Random& random) {
        settings.autoLevel = random() % 2;
        auto detector = make<TypeParam>(settings), single = detector;
        EventQueue events, singly;
        for (std::size_t first = 0, last = 0; first < signal.size(); first = last) {
            last =
                std::min<std::size_t>(signal.size(), first + random() % oneOf(random, {20U, 150U})); // empty ones too
            const double least = oneOf(random, {-1.0, -0.5, 0.0});
            const double extrema[] = {least, least + oneOf(random, {-1.0, 0.0, 1.0, 2.0})};
            auto copy = detector;
            feed(copy, signal, first, last, events, extrema);
            detector = std::move(copy);
            for (std::size_t i = first; i < last; ++i)
                feed(single, signal, i, i + 1, singly, extrema);
        }
        EXPECT_EQ(bits(events), bits(singly));
        if (!settings.autoLevel) {
            EXPECT_EQ(bits(events), bits(whole));
        }
    });
}

TYPED_TEST(TriggerPropertyTest, EverySetterForgetsTheSignal)
{
    const std::function<void(AbstractTimeDomainTrigger&, const Settings&)> setters[] = {
        [](auto& d, auto&) { d.reset(); },
        [](auto& d, auto& s) { d.setPolarity(s.tdtcPolarity()); },
        [](auto& d, auto& s) { d.setAutoLevel(s.autoLevel); },
        [](auto& d, auto& s) { d.setLevel(s.level); },
        [](auto& d, auto& s) { d.setHysteresis(s.hysteresis); },
        [](auto& d, auto& s) { d.setUpperLevel(s.upper); },
        [](auto& d, auto& s) { d.setLowerLevel(s.lower); },
        [](auto& d, auto& s) { d.setMinTime(s.minTime); },
        [](auto& d, auto& s) { d.setMaxTime(s.maxTime); },
        [](auto& d, auto& s) { d.setTimeout(s.timeout); },
        [](auto& d, auto& s) { d.setHoldoff(s.holdoff); },
        [](auto& d, auto&) { d.setSettings(d.getSettings()); },
    };
    this->forManySignals([&](const Signal& signal, const Settings& settings, const EventQueue& events, Random& random) {
        const Settings otherSettings = anySettings(random);
        auto detector = make<TypeParam>(otherSettings);
        for (const auto& set : setters)
            set(detector, settings);
        const std::size_t cut = random() % signal.size();
        for (const auto& set : setters) {
            EventQueue ignored, again;
            feed(detector, signal, cut, signal.size(), ignored);
            set(detector, settings);
            EXPECT_EQ(detector.getNumAcceptedEvents() + detector.getNumHoldoffRefusals() +
                          detector.getNumOutOfTimeBounds(),
                      0U);
            feed(detector, signal, 0, signal.size(), again);
            EXPECT_EQ(bits(again), bits(events)) << "setter " << &set - setters;
        }
    });
}

TYPED_TEST(TriggerPropertyTest, ResetForgetsTheChoiceOfPartInEdgeAndTimeoutOnlyOnPurpose)
{
    auto detector = make<TypeParam>({});
    detector.shouldProcessImagPart(true);
    detector.reset();
    const std::complex<double> samples[] = {{0, 0}, {0, 0}, {1, 2}, {1, 1}};
    const bool forgets =
        std::is_same_v<TypeParam, EdgeTimeDomainTrigger> || std::is_same_v<TypeParam, TimeoutTimeDomainTrigger>;
    EXPECT_EQ(detector.interpTime(samples, 1, 1), forgets ? 1 : 2);
}

} // namespace
