// Each detector beside its naive rule, on signals of any samples that come in blocks of any size.

#include "Bytes.h"
#include "Floor.h"
#include "support/Expect.h"
#include "trigger/TriggerFixtures.h"

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

/// Edge and timeout have none.
template <class Detector>
constexpr bool hasDurations =
    !std::is_same_v<Detector, EdgeTimeDomainTrigger> && !std::is_same_v<Detector, TimeoutTimeDomainTrigger>;

template <class Detector>
void compare(Bytes& bytes, naive::Outcome (naive::Rules::*rule)(), const std::string& kind)
{
    static fuzz::Floor found(kind + ": events", 10000), heldOff(kind + ": held off", 5000);
    static fuzz::Floor ofComplex(kind + ": events of complex samples", 5000);
    static fuzz::Floor outOfBounds(kind + ": out of bounds", hasDurations<Detector> ? 2000 : 0);
    const bool hostile = bytes.flag();
    std::mt19937 random(bytes());
    const naive::Settings settings = hostile ? tracery::anySettings(random) : anySettings(bytes);
    const std::size_t cuts = 1 + bytes.below(16);
    const bool asComplex = bytes.flag(), imagPart = asComplex && bytes.flag();
    const naive::Signal signal = hostile ? hostileSignal(random) : anySignal(bytes);
    auto detector = make<Detector>(settings);
    detector.shouldProcessImagPart(imagPart);
    EventQueue events;
    for (std::size_t at = 0, next = 0; at < signal.size(); at = next) {
        next = at + std::min(signal.size() - at, 1 + cuts * at % 29);
        feed(detector, signal, at, at, events); // nothing changes nothing
        if (!asComplex) {
            feed(detector, signal, at, next, events);
            continue;
        }
        std::vector<std::complex<double>> pairs;
        for (const double number : block(signal, at, next))
            pairs.push_back(imagPart ? std::complex(-number, number) : std::complex(number, -number));
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

} // namespace

void fuzz::runInput(Bytes& bytes)
{
    switch (bytes.below(6)) {
    case 0:
        return compare<EdgeTimeDomainTrigger>(bytes, &naive::Rules::edge, "Edge");
    case 1:
        return compare<TimeoutTimeDomainTrigger>(bytes, &naive::Rules::timeout, "Timeout");
    case 2:
        return compare<PulseWidthTimeDomainTrigger>(bytes, &naive::Rules::pulseWidth, "PulseWidth");
    case 3:
        return compare<RuntTimeDomainTrigger>(bytes, &naive::Rules::runt, "Runt");
    case 4:
        return compare<TransitionTimeDomainTrigger>(bytes, &naive::Rules::transition, "Transition");
    default:
        return compare<WindowTimeDomainTrigger>(bytes, &naive::Rules::window, "Window");
    }
}
