#pragma once

#include "support/Expect.h"
#include "trigger/NaiveController.h"

#include <array>
#include <random>

namespace naive {

inline constexpr std::array kModes{ModeEnum::Auto, ModeEnum::Normal, ModeEnum::Once, ModeEnum::Off};

template <class Random>
double oneOf(Random& random, std::initializer_list<double> values)
{
    return values.begin()[random() % values.size()];
}

template <class Random>
double hostileNumber(Random& random)
{
    return oneOf(random, {std::numeric_limits<double>::quiet_NaN(), inf, -inf, 0, -0.0, -1, 1e308, -1e308, 5e-324, 1});
}

inline std::vector<double> listed(const auto& numbers) { return {numbers.begin(), numbers.end()}; }

/// How often a run gave a window, by mode, and then how often an event met each fate.
using Seen = std::array<unsigned, 8>;

/// A controller and the naive one, which are asked the same; `Random` generates the choices.
template <class Random>
class RandomController {
    using Controller = tracery::TimeDomainTriggerController;
    using TimeBuffer = tracery::TimeBuffer;
    using HostComplexity = tracery::HostComplexity;

public:
    /// kind  a number from 0: 12 kinds of run follow each other
    RandomController(Random& random, unsigned kind, Seen& seen)
        : seen_(seen), random_(random), fromBuffer_(kind % 3 > 0), inBlocks_(kind % 3 == 0 && chance(0.5)),
          framed_(chance(0.5)), hostile_(kind % 4 == 3), usualPort_(chance(0.5)),
          period_(oneOf(random_, {0.5, 0.5, inf}))
    {}

    void step()
    {
        const auto choice = random_() % 100;
        if (choice < 40)
            write();
        else if (choice < 80)
            ask(!fromBuffer_);
        else
            change();
        EXPECT_TRUE(tracery::test::sameBits(listed(real_.getPendingEvents()), listed(naive_.events)));
        const Detector& detector = *naive_.detector;
        EXPECT_TRUE(tracery::test::sameBits({real_.getLevel(), real_.getUpperLevel(), real_.getLowerLevel()},
                                            {detector.getLevel(), detector.getUpperLevel(), detector.getLowerLevel()}));
        EXPECT_EQ(real_.getEnableOnceMode(), naive_.armed);
    }

private:
    bool chance(double p) { return static_cast<double>(random_()) < p * static_cast<double>(Random::max()); }
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
        const bool byHand = !fromBuffer_ || chance(0.05);
        std::vector<double> pairs;
        for (auto n = random_() % (!fromBuffer_ && chance(0.3) ? 900 : 30); n > 0; --n) {
            const double jitter = std::uniform_real_distribution<>(0.01, 0.3)(random_);
            clock_ += framed_ && fromBuffer_
                          ? oneOf(random_, {0.5, 1, 0.5 + jitter})
                          : oneOf(random_, {0.25, 0.25, jitter, fromBuffer_ || inBlocks_ ? 0.0 : 1.0});
            const double re = value(heldReal_), im = value(heldImag_);
            if (fromBuffer_ && !byHand) {
                addStep(buffer_, port, clock_, {{re, im}, {im, re}});
                continue;
            }
            const double time = !fromBuffer_ && chance(0.01) ? NAN : clock_;
            if (inBlocks_) {
                pairs.insert(pairs.end(), {time, re});
                continue;
            }
            const double t = chance(0.001) ? now() : clock_, look = span();
            real_.processSample(time, re, t, look);
            naive_.takeSample(time, re, t, look);
        }
        if (!pairs.empty()) {
            const double t = now(), look = span();
            real_.processSamples(pairs, t, look);
            naive_.takeBlock(pairs, t, look);
        }
        if (byHand && fromBuffer_)
            ask(byHand); // none may wait while later ones are read
    }

    void ask(bool byHand)
    {
        const double look = span(), first = number({0, 20});
        const bool partial = chance(0.3), only = !byHand && chance(0.2);
        const std::uint64_t port = usualPort_ != chance(0.1), channel = framed_ ? 0 : chance(0.1);
        double t = now();
        if (!partial && !naive_.events.empty() && chance(0.3)) { // just when a window is full
            const double full = naive_.events.front() + look - look * naive_.position + naive_.delay;
            if (full > clock_ && full < clock_ + 20)
                t = clock_ = full;
        }
        std::pair<double, double> got;
        if (!byHand && naive_.mode != ModeEnum::Off && chance(0.05)) { // refused before it can reset anything
            const auto wrong = [&] {
                real_.processBuffer(buffer_, framed_, period_, 2 + port, channel, clock_ - 1, look);
            };
            EXPECT_EQ(tracery::test::failure(wrong), "InvalidPortID");
        }
        if (only)
            real_.processBuffer(buffer_, framed_, period_, port, channel, t, look);
        else if (!byHand)
            real_.getTriggerWindow(buffer_, framed_, period_, port, channel, first, t, look, partial, got.first,
                                   got.second);
        else
            real_.getTriggerWindow(first, t, look, partial, got.first, got.second);
        if (!byHand)
            naive_.takeSteps(buffer_, framed_, period_, {port, channel}, t, look);
        else
            naive_.takePending(t, look);
        if (only)
            return;
        const auto expected = naive_.window(first, t, look, partial);
        EXPECT_TRUE(tracery::test::sameBits({got.first, got.second}, {expected.first, expected.second}));
        if (expected.first > -inf) {
            real_.getLastTriggerWindow(got.first, got.second);
            EXPECT_TRUE(tracery::test::sameBits({got.first, got.second}, {expected.first, expected.second}));
        }
        std::vector<std::pair<double, Fate>> consumed;
        for (const auto& event : real_.getConsumedEvents())
            consumed.emplace_back(event.time, event.fate), ++seen_[4 + static_cast<std::size_t>(event.fate)];
        EXPECT_EQ(consumed, naive_.consumed);
        seen_[static_cast<std::size_t>(naive_.mode)] += expected.first > -inf;
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
        for (const auto& [setReal, setDetector, field, values] : kSettings)
            if (chance(0.03))
                set(setReal, setDetector, naive_.s.*field, number({values[0], values[1]}));
        if (chance(0.1)) {
            const auto type = random_() % 6;
            real_.setType(static_cast<TypeEnum>(type));
            naive_.detector = kNewDetector[type](naive_.s);
        }
        if (chance(0.1)) {
            const auto complexity = static_cast<ComplexityEnum>(1 + random_() % 5);
            real_.setComplexity(complexity);
            if (std::exchange(naive_.complexity, complexity) != complexity)
                naive_.newSignal();
        }
        for (const bool channel : {false, true})
            if (chance(0.05)) {
                const auto place = static_cast<std::uint32_t>(random_() % 4);
                const auto set = [&] { channel ? real_.setSourcePortChannel(place) : real_.setSourcePort(place); };
                EXPECT_EQ(tracery::test::failure(set), place > 0 ? "none"
                                                       : channel ? "InvalidChannelID"
                                                                 : "InvalidPortID");
                if (place > 0 && std::exchange(naive_.source[channel], place) != place)
                    naive_.newSignal();
            }
        EXPECT_EQ(real_.getSourcePort(), naive_.source[0]);
        EXPECT_EQ(real_.getSourcePortChannel(), naive_.source[1]);
        if (chance(0.05))
            real_.setStepBackTolerance(naive_.tolerance = number({0x1p-52, 0.5, 0}));
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
    Random& random_;
    bool fromBuffer_, inBlocks_, framed_, hostile_, usualPort_;
    double period_;
    Controller real_;
    naive::Controller naive_;
    TimeBuffer buffer_{
        {60}, {2, 2}, {1, 1}, 2, tracery::BufferType::MultipleRate, {HostComplexity::complex, HostComplexity::complex},
        false};
    double clock_ = -3, heldReal_ = 0, heldImag_ = 0;
};

} // namespace naive
