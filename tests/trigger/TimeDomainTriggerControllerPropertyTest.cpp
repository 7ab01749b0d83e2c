// The controller beside a naive double, and alone under hostile numbers.

#include "support/Expect.h"
#include "trigger/NaiveController.h"

#include <array>
#include <random>

using namespace tracery;
using namespace tracery::TDTC;
using naive::Detector;
using tracery::test::sameBits;

namespace {

using Controller = TimeDomainTriggerController;
using Fate = Controller::EventFate;
using Window = std::pair<double, double>;
using Random = std::mt19937;

constexpr double kInf = naive::inf;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr std::array kModes{ModeEnum::Auto, ModeEnum::Normal, ModeEnum::Once, ModeEnum::Off};

double oneOf(Random& random, std::initializer_list<double> values) { return values.begin()[random() % values.size()]; }

double hostileNumber(Random& random)
{
    return oneOf(random, {kNaN, kInf, -kInf, 0, -0.0, -1, 1e308, -1e308, 5e-324, 1});
}

std::vector<double> listed(const auto& numbers) { return {numbers.begin(), numbers.end()}; }

/// How often a run gave a window, by mode, and then how often an event met each fate.
using Seen = std::array<unsigned, 8>;

class RandomRun {
public:
    RandomRun(unsigned seed, Seen& seen)
        : seen_(seen), random_(seed), fromBuffer_(seed % 3 > 0), framed_(chance(0.5)), hostile_(seed % 4 == 3),
          period_(oneOf(random_, {0.5, 0.5, kInf}))
    {}

    void step()
    {
        const auto choice = random_() % 100;
        if (choice < 40)
            write();
        else if (choice < 80)
            ask();
        else
            change();
        EXPECT_TRUE(sameBits(listed(real_.getPendingEvents()), listed(naive_.events)));
        const Detector& detector = *naive_.detector;
        EXPECT_TRUE(sameBits({real_.getLevel(), real_.getUpperLevel(), real_.getLowerLevel()},
                             {detector.getLevel(), detector.getUpperLevel(), detector.getLowerLevel()}));
        EXPECT_EQ(real_.getEnableOnceMode(), naive_.armed);
    }

private:
    bool chance(double p) { return std::uniform_real_distribution<>(0, 1)(random_) < p; }
    double number(std::initializer_list<double> values)
    {
        return hostile_ && chance(0.05) ? hostileNumber(random_) : oneOf(random_, values);
    }
    double span() { return number({1, 2, 3.3, 8, 7.1, 0}); }
    double now() { return chance(0.02) ? clock_ - 1 : number({clock_}); }
    double value(double& held)
    {
        if (chance(0.5))
            held = oneOf(random_, {-3, -1, -1, 0, 0.2, 1, 1, 2.1, 3, std::normal_distribution<>()(random_)});
        return chance(0.02) ? hostileNumber(random_) : held;
    }

    void write()
    {
        const std::uint64_t port = random_() % 2;
        for (auto n = random_() % (!fromBuffer_ && chance(0.3) ? 900 : 30); n > 0; --n) {
            const double jitter = std::uniform_real_distribution<>(0.01, 0.3)(random_);
            clock_ += framed_ && fromBuffer_ ? oneOf(random_, {0.5, 1, 0.5 + jitter})
                                             : oneOf(random_, {0.25, 0.25, jitter, fromBuffer_ ? 0.0 : 1.0});
            const double re = value(heldReal_), im = value(heldImag_);
            if (fromBuffer_) {
                naive::addStep(buffer_, port, clock_, {{re, im}, {im, re}});
                continue;
            }
            const double t = chance(0.001) ? now() : clock_, look = span();
            real_.processSample(clock_, re, t, look);
            naive_.takeSample(clock_, re, t, look);
        }
    }

    void ask()
    {
        const double look = span(), first = number({0, 20});
        const bool partial = chance(0.3), only = fromBuffer_ && chance(0.2);
        const std::uint64_t port = chance(0.1), channel = framed_ ? 0 : chance(0.1);
        double t = now();
        if (!partial && !naive_.events.empty() && chance(0.3)) { // just when a window is full
            const double full = naive_.events.front() + look - look * naive_.position + naive_.delay;
            if (full > clock_ && full < clock_ + 20)
                t = clock_ = full;
        }
        Window got;
        if (only)
            real_.processBuffer(buffer_, framed_, period_, port, channel, t, look);
        else if (fromBuffer_)
            real_.getTriggerWindow(buffer_, framed_, period_, port, channel, first, t, look, partial, got.first,
                                   got.second);
        else
            real_.getTriggerWindow(first, t, look, partial, got.first, got.second);
        if (fromBuffer_)
            naive_.takeSteps(buffer_, framed_, period_, {port, channel}, t, look);
        else
            naive_.takePending(t, look);
        if (only)
            return;
        const Window expected = naive_.window(first, t, look, partial);
        EXPECT_TRUE(sameBits({got.first, got.second}, {expected.first, expected.second}));
        std::vector<std::pair<double, Fate>> consumed;
        for (const auto& event : real_.getConsumedEvents())
            consumed.emplace_back(event.time, event.fate), ++seen_[4 + static_cast<std::size_t>(event.fate)];
        EXPECT_EQ(consumed, naive_.consumed);
        seen_[static_cast<std::size_t>(naive_.mode)] += expected.first > -kInf;
    }

    template <class Value>
    void set(void (Controller::*setReal)(Value), void (Detector::*setDetector)(Value), auto& field, auto value)
    {
        field = static_cast<std::remove_reference_t<decltype(field)>>(value);
        (real_.*setReal)(static_cast<Value>(value));
        ((*naive_.detector).*setDetector)(static_cast<Value>(value));
    }
    void change()
    {
        if (chance(0.2))
            real_.setPosition(naive_.position = number({0, 0.3, 0.5, 1}));
        if (chance(0.2))
            real_.setDelay(naive_.delay = number({0, 2, -1, 0.1}));
        if (chance(0.2))
            set(&Controller::setAutoLevel, &Detector::setAutoLevel, naive_.s.autoLevel, !naive_.s.autoLevel);
        if (chance(0.1))
            set(&Controller::setPolarity, &Detector::setPolarity, naive_.s.polarity, oneOf(random_, {-1, 0, 1}));
        for (const auto& [setReal, setDetector, field, values] : naive::kSettings)
            if (chance(0.03))
                set(setReal, setDetector, naive_.s.*field, number({values[0], values[1]}));
        if (chance(0.1)) {
            const auto type = random_() % 6;
            real_.setType(static_cast<TypeEnum>(type));
            naive_.detector = naive::kNewDetector[type](naive_.s);
        }
        if (chance(0.1)) {
            const auto complexity = static_cast<ComplexityEnum>(1 + random_() % 5);
            real_.setComplexity(complexity);
            if (std::exchange(naive_.complexity, complexity) != complexity)
                naive_.newSignal();
        }
        if (chance(0.1)) {
            const auto place = 3 - real_.getSourcePort();
            real_.setSourcePort(place);
            real_.setSourcePortChannel(place);
            naive_.newSignal();
        }
        if (chance(0.2)) {
            real_.setMode(naive_.mode = chance(0.1) ? ModeEnum::Off : kModes[random_() % 3]);
            naive_.arm(true);
        }
        if (chance(0.2)) {
            naive_.arm(chance(0.7));
            real_.setEnableOnceMode(naive_.armed);
        }
        if (chance(0.1)) { // a new simulation
            clock_ = oneOf(random_, {-3, 0, 1e6});
            buffer_.Clear();
            real_.reset();
            naive_.reset();
        }
    }

    Seen& seen_;
    Random random_;
    bool fromBuffer_, framed_, hostile_;
    double period_;
    Controller real_;
    naive::Controller naive_;
    TimeBuffer buffer_{
        {60}, {2, 2}, {1, 1}, 2, BufferType::MultipleRate, {HostComplexity::complex, HostComplexity::complex}, false};
    double clock_ = -3, heldReal_ = 0, heldImag_ = 0;
};

TEST(TimeDomainTriggerControllerPropertyTest, RandomRunsAgreeWithTheNaiveRulesBitForBit)
{
    Seen seen{};
    for (unsigned seed = 0; seed < 600 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        RandomRun run(seed, seen);
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
        Random random(seed);
        const auto any = [&] { return hostileNumber(random); };
        TimeBuffer buffer({50}, {2, 2}, {2}, 1, BufferType::SingleRate, {HostComplexity::complex}, false);
        Controller controller;
        controller.setMode(kModes[seed % 4]);
        controller.setType(static_cast<TypeEnum>(random() % 6));
        controller.setComplexity(static_cast<ComplexityEnum>(random() % 7));
        for (int i = 0; i < 200; ++i) {
            naive::addStep(buffer, 0, any(), {{any(), any()}, any(), 1, -1});
            controller.processSample(any(), any(), any(), any());
            Window window, last;
            if (random() % 2)
                controller.getTriggerWindow(any(), any(), any(), random() % 2, window.first, window.second);
            else
                controller.getTriggerWindow(buffer, random() % 2, any(), 0, random() % 2, any(), any(), any(),
                                            random() % 2, window.first, window.second);
            controller.getLastTriggerWindow(last.first, last.second);
            EXPECT_TRUE(window == Window(-kInf, -kInf) ||
                        sameBits({window.first, window.second}, {last.first, last.second}));
            if (random() % 4 == 0) {
                controller.setPosition(any()), controller.setDelay(any()), controller.setAutoLevel(random() % 2);
                controller.setHoldoff(any()), controller.setStepBackTolerance(any()), controller.setTimeout(any());
            }
        }
    }
}

} // namespace
