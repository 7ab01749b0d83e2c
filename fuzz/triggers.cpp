// Each detector beside its naive rule, on signals of any samples that come in blocks of any size.

#include "Bytes.h"
#include "Floor.h"
#include "support/Expect.h"
#include "trigger/TriggerFixtures.h"

#include <cmath>
#include <random>
#include <type_traits>

using namespace tracery;
using fuzz::Bytes;

namespace {

/// Levels on a grid that samples meet, spaced times that now and then repeat, go back or are missing.
naive::Signal anySignal(Bytes& bytes)
{
    naive::Signal signal;
    double t = 0;
    while (!bytes.isEmpty() && signal.size() < 2000) {
        const std::uint8_t choice = bytes.byte();
        t += 0.25 * (choice % 4);
        if (choice == 255)
            t = bytes.number();
        signal.push_back({t, choice < 250 ? (choice / 4 - 31) * 0.125 : bytes.number()});
    }
    return signal;
}

naive::Settings anySettings(Bytes& bytes)
{
    naive::Settings s;
    s.polarity = static_cast<int>(bytes.below(4)) - 1;
    for (double* setting :
         {&s.level, &s.hysteresis, &s.upper, &s.lower, &s.minTime, &s.maxTime, &s.timeout, &s.holdoff})
        if (bytes.flag())
            *setting = bytes.number() * 0.5;
    return s;
}

template <class T>
T oneOf(std::mt19937& random, std::initializer_list<T> values)
{
    return values.begin()[random() % values.size()];
}

/// Stretches, some of them long, of random walk, square wave, spikes, gaps, noise and hum, on a grid that meets the levels
/// exactly; times that repeat, jump and go missing.
naive::Signal hostileSignal(std::mt19937& random)
{
    naive::Signal signal;
    double t = oneOf(random, {-3.0, 0.0, 1e6}), x = 0;
    const double jitter = std::uniform_real_distribution(0.1, 1.0)(random);
    while (signal.size() < 400) {
        const auto kind = random() % 6;
        for (auto i = random() % 30 * oneOf(random, {1U, 1U, 1U, 8U}); i > 0; --i) {
            const double walk = (std::isfinite(x) ? x : 0) + 0.25 * static_cast<double>(random() % 9) - 1.0;
            const double noise = std::normal_distribution(0.5, 1.5)(random);
            const double next[] = {
                walk,  i / 4 % 2 ? 1.0 : -1.0, oneOf<double>(random, {0, 0, 3, -3, INFINITY, -INFINITY}), NAN,
                noise, 0.3 + 0.01 * noise};
            x = next[kind];
            t += oneOf(random, {0.0, 0.5, 0.5, 0.5, jitter, jitter, 4.0});
            signal.push_back({random() % 300 ? t : NAN, x});
        }
    }
    return signal;
}

naive::Settings usualSettings(std::mt19937& random)
{
    naive::Settings s;
    s.polarity = oneOf(random, {-1, 0, 1, 1, 7});
    s.level = oneOf(random, {0.0, 0.25, -0.5});
    s.hysteresis = oneOf(random, {0.0, 0.25, 0.5, -0.25});
    s.lower = oneOf(random, {-0.75, -0.5, 0.0});
    s.upper = oneOf(random, {0.75, 1.0, 1.0, 0.5, -0.5});
    s.minTime = oneOf(random, {0.0, 0.0, 0.5});
    s.maxTime = oneOf(random, {HUGE_VAL, HUGE_VAL, 2.5});
    s.timeout = oneOf(random, {0.0, 1.5, 3.0});
    s.holdoff = oneOf(random, {0.0, 0.0, 1.0, 5.0});
    return s;
}

/// Edge and timeout have none.
template <class Detector>
constexpr bool hasDurations =
    !std::is_same_v<Detector, EdgeTimeDomainTrigger> && !std::is_same_v<Detector, TimeoutTimeDomainTrigger>;

using Setter = void (*)(AbstractTimeDomainTrigger&, const naive::Settings&);
constexpr Setter kSetters[] = {
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

/// One that has seen samples under other settings, and forgotten them as it was given these.
template <class Detector>
Detector usedDetector(const naive::Settings& settings, const naive::Signal& samples, std::mt19937& random)
{
    auto detector = make<Detector>(usualSettings(random));
    EventQueue ignored;
    const std::size_t cut = random() % (samples.size() + 1);
    feed(detector, samples, cut, samples.size(), ignored);
    for (const Setter set : kSetters)
        set(detector, settings);
    feed(detector, samples, 0, cut, ignored);
    kSetters[random() % std::size(kSetters)](detector, settings);
    EXPECT_EQ(detector.getNumAcceptedEvents() + detector.getNumHoldoffRefusals() + detector.getNumOutOfTimeBounds(),
              0U);
    return detector;
}

template <class Detector>
void compare(Bytes& bytes, naive::Outcome (naive::Rules::*rule)(), const std::string& kind)
{
    static fuzz::Floor found(kind + ": events", 10000), heldOff(kind + ": held off", 5000);
    static fuzz::Floor ofComplex(kind + ": events of complex samples", 3000);
    static fuzz::Floor outOfBounds(kind + ": out of bounds", hasDurations<Detector> ? 2000 : 0);
    const bool hostile = bytes.flag();
    std::mt19937 random(bytes());
    const naive::Settings settings = hostile ? usualSettings(random) : anySettings(bytes);
    const std::size_t longest = oneOf(random, {2U, 20U, 150U, 5000U});
    const bool asComplex = bytes.flag(), imagPart = asComplex && bytes.flag();
    const naive::Signal signal = hostile ? hostileSignal(random) : anySignal(bytes);
    auto detector = usedDetector<Detector>(settings, signal, random);
    detector.shouldProcessImagPart(imagPart);
    EventQueue events;
    for (std::size_t at = 0, next = 0; at < signal.size(); at = next) {
        next = std::min(signal.size(), at + random() % longest); // empty blocks, too
        if (!asComplex) {
            feed(detector, signal, at, next, events);
            continue;
        }
        std::vector<std::complex<double>> pairs;
        for (const double number : block(signal, at, next)) {
            const double other = oneOf(random, {-number, 0.0, 3.0});
            pairs.push_back(imagPart ? std::complex(other, number) : std::complex(number, other));
        }
        detector.updateEventQueue(pairs.data(), next - at, nullptr, 0, events);
    }
    const naive::Outcome expected = (naive::Rules(signal, settings).*rule)();
    EXPECT_TRUE(test::sameBits({events.begin(), events.end()}, expected.events));
    EXPECT_EQ(detector.getNumAcceptedEvents(), expected.events.size());
    EXPECT_EQ(detector.getNumHoldoffRefusals(), expected.heldOff);
    EXPECT_EQ(detector.getNumOutOfTimeBounds(), expected.outOfBounds);
    found += expected.events.size(), heldOff += expected.heldOff, outOfBounds += expected.outOfBounds;
    ofComplex += asComplex ? expected.events.size() : 0;
}

/// Levels that follow the extremes of each block, but of no empty one, and blocks that give what their samples give one
/// by one.
template <class Detector>
void followLevels(Bytes& bytes, const std::string& kind)
{
    static fuzz::Floor found(kind + ": events at levels that follow", 1000);
    std::mt19937 random(bytes());
    const naive::Signal signal = hostileSignal(random);
    naive::Settings settings = usualSettings(random);
    settings.autoLevel = true;
    auto detector = make<Detector>(settings), single = detector;
    detector.setAutoLevel(true);
    EventQueue events, singly;
    const auto levelsOf = [](const Detector& d) {
        return std::vector{d.getLevel(), d.getLowerLevel(), d.getUpperLevel()};
    };
    for (std::size_t first = 0, last = 0; first < signal.size(); first = last) {
        last = std::min<std::size_t>(signal.size(), first + random() % oneOf(random, {20U, 150U}));
        const double least = oneOf(random, {-1.0, -0.5, 0.0, 0.1, 1e308});
        const double greatest = least + oneOf(random, {-1.0, 0.0, 0.7, 1.0, 2.0, 1e307});
        const double extrema[] = {least, greatest};
        std::vector<double> levels = levelsOf(detector);
        if (last > first && hasDurations<Detector>)
            levels = {levels[0], least + (greatest - least) * 0.1, least + (greatest - least) * 0.9};
        else if (last > first && std::is_same_v<Detector, EdgeTimeDomainTrigger>)
            levels[0] = (least + greatest) * 0.5;
        auto copy = detector;
        feed(copy, signal, first, last, events, extrema);
        detector = std::move(copy);
        EXPECT_TRUE(test::sameBits(levelsOf(detector), levels));
        for (std::size_t i = first; i < last; ++i)
            feed(single, signal, i, i + 1, singly, extrema);
    }
    EXPECT_TRUE(test::sameBits({events.begin(), events.end()}, {singly.begin(), singly.end()}));
    found += events.size();
}

template <class Detector>
void tryDetector(Bytes& bytes, naive::Outcome (naive::Rules::*rule)(), const std::string& kind)
{
    bytes.below(4) == 0 ? followLevels<Detector>(bytes, kind) : compare<Detector>(bytes, rule, kind);
}

} // namespace

void fuzz::runInput(Bytes& bytes)
{
    switch (bytes.below(6)) {
    case 0:
        return tryDetector<EdgeTimeDomainTrigger>(bytes, &naive::Rules::edge, "Edge");
    case 1:
        return tryDetector<TimeoutTimeDomainTrigger>(bytes, &naive::Rules::timeout, "Timeout");
    case 2:
        return tryDetector<PulseWidthTimeDomainTrigger>(bytes, &naive::Rules::pulseWidth, "PulseWidth");
    case 3:
        return tryDetector<RuntTimeDomainTrigger>(bytes, &naive::Rules::runt, "Runt");
    case 4:
        return tryDetector<TransitionTimeDomainTrigger>(bytes, &naive::Rules::transition, "Transition");
    default:
        return tryDetector<WindowTimeDomainTrigger>(bytes, &naive::Rules::window, "Window");
    }
}
