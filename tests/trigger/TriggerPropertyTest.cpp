#include "trigger/TriggerFixtures.h"

#include <gtest/gtest.h>

#include <bit>
#include <functional>
#include <random>

using namespace tracery;
using naive::Settings;
using naive::Signal;

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr unsigned kSeeds = 400;

using Random = std::mt19937;

template <class T>
T oneOf(Random& random, std::initializer_list<T> values)
{
    return values.begin()[random() % values.size()];
}

/// Stretches, some of them long, of random walk, square wave, spikes, gaps, noise and hum, on a grid that meets the levels
/// exactly; times that repeat, jump and go missing.
Signal hostileSignal(Random& random)
{
    Signal signal;
    double t = oneOf(random, {-3.0, 0.0, 1e6}), x = 0;
    const double jitter = std::uniform_real_distribution(0.1, 1.0)(random);
    while (signal.size() < 400) {
        const auto kind = random() % 6;
        for (auto i = random() % 30 * oneOf(random, {1U, 1U, 1U, 8U}); i > 0; --i) {
            const double walk = (std::isfinite(x) ? x : 0) + 0.25 * static_cast<double>(random() % 9) - 1.0;
            const double noise = std::normal_distribution(0.5, 1.5)(random);
            const double next[] = {
                walk,  i / 4 % 2 ? 1.0 : -1.0, oneOf(random, {0.0, 0.0, 3.0, -3.0, kInf, -kInf}), kNaN,
                noise, 0.3 + 0.01 * noise};
            x = next[kind];
            t += oneOf(random, {0.0, 0.5, 0.5, 0.5, jitter, jitter, 4.0});
            signal.push_back({random() % 300 ? t : kNaN, x});
        }
    }
    return signal;
}

Settings anySettings(Random& random)
{
    Settings s;
    s.polarity = oneOf(random, {-1, 0, 1, 1, 7});
    s.level = oneOf(random, {0.0, 0.25, -0.5});
    s.hysteresis = oneOf(random, {0.0, 0.25, 0.5, -0.25});
    s.lower = oneOf(random, {-0.75, -0.5, 0.0});
    s.upper = oneOf(random, {0.75, 1.0, 1.0, 0.5, -0.5});
    s.minTime = oneOf(random, {0.0, 0.0, 0.5});
    s.maxTime = oneOf(random, {kInf, kInf, 2.5});
    s.timeout = oneOf(random, {0.0, 1.5, 3.0});
    s.holdoff = oneOf(random, {0.0, 0.0, 1.0, 5.0});
    return s;
}

std::vector<std::uint64_t> bits(const auto& events)
{
    std::vector<std::uint64_t> result;
    for (const double event : events)
        result.push_back(std::bit_cast<std::uint64_t>(event));
    return result;
}

template <class DetectorType, naive::Outcome (naive::Rules::*Rule)()>
struct Case {
    using Detector = DetectorType;
    static Detector make(const Settings& settings) { return tracery::make<Detector>(settings); }
    static naive::Outcome naively(const Signal& signal, const Settings& settings)
    {
        return (naive::Rules(signal, settings).*Rule)();
    }
};
using Cases = testing::Types<
    Case<EdgeTimeDomainTrigger, &naive::Rules::edge>, Case<TimeoutTimeDomainTrigger, &naive::Rules::timeout>,
    Case<PulseWidthTimeDomainTrigger, &naive::Rules::pulseWidth>, Case<RuntTimeDomainTrigger, &naive::Rules::runt>,
    Case<TransitionTimeDomainTrigger, &naive::Rules::transition>, Case<WindowTimeDomainTrigger, &naive::Rules::window>>;

template <class Case>
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
            auto detector = Case::make(settings);
            feed(detector, signal, 0, signal.size(), events);
            check(signal, settings, events, random);
            found += events.size();
        }
        EXPECT_GT(found, kSeeds) << "the signals should hold events";
    }
};
TYPED_TEST_SUITE(TriggerPropertyTest, Cases);

TYPED_TEST(TriggerPropertyTest, AgreesWithTheNaiveRulesBitForBit)
{
    this->forManySignals([](const Signal& signal, const Settings& settings, const EventQueue&, Random&) {
        auto detector = TypeParam::make(settings);
        EventQueue events;
        feed(detector, signal, 0, signal.size(), events);
        const naive::Outcome expected = TypeParam::naively(signal, settings);
        EXPECT_EQ(bits(events), bits(expected.events));
        EXPECT_EQ(detector.getNumAcceptedEvents(), expected.events.size());
        EXPECT_EQ(detector.getNumHoldoffRefusals(), expected.heldOff);
        EXPECT_EQ(detector.getNumOutOfTimeBounds(), expected.outOfBounds);
    });
}

TYPED_TEST(TriggerPropertyTest, BlocksGiveWhatTheirSamplesGiveOneByOneThoughLevelsMoveBetweenThem)
{
    this->forManySignals([](const Signal& signal, Settings settings, const EventQueue& whole, Random& random) {
        settings.autoLevel = random() % 2;
        auto detector = TypeParam::make(settings), single = detector;
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

TYPED_TEST(TriggerPropertyTest, ComplexBlocksAreReadThroughTheChosenPart)
{
    this->forManySignals([](const Signal& signal, const Settings& settings, const EventQueue& real, Random& random) {
        const Signal other = hostileSignal(random);
        for (const bool imagPart : {false, true}) {
            std::vector<std::complex<double>> pairs;
            for (std::size_t i = 0; i < signal.size(); ++i) {
                const naive::Sample wanted = signal[i], noise = other[i % other.size()];
                const naive::Sample re = imagPart ? noise : wanted, im = imagPart ? wanted : noise;
                pairs.insert(pairs.end(), {{re.t, im.t}, {re.x, im.x}});
            }
            EventQueue events;
            auto detector = TypeParam::make(settings);
            detector.shouldProcessImagPart(imagPart);
            const std::size_t cut = random() % signal.size();
            detector.updateEventQueue(pairs.data(), cut, nullptr, 0, events);
            detector.updateEventQueue(pairs.data() + 2 * cut, signal.size() - cut, nullptr, 0, events);
            EXPECT_EQ(bits(events), bits(real));
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
        auto detector = TypeParam::make(otherSettings);
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
    auto detector = TypeParam::make({});
    detector.shouldProcessImagPart(true);
    detector.reset();
    const std::complex<double> samples[] = {{0, 0}, {0, 0}, {1, 2}, {1, 1}};
    const bool forgets = std::is_same_v<typename TypeParam::Detector, EdgeTimeDomainTrigger> ||
                         std::is_same_v<typename TypeParam::Detector, TimeoutTimeDomainTrigger>;
    EXPECT_EQ(detector.interpTime(samples, 1, 1), forgets ? 1 : 2);
}

} // namespace
