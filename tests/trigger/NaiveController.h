#pragma once

#include "trigger/TriggerFixtures.h"

#include <tracery/TimeBuffer.h>
#include <tracery/TimeDomainTriggerController.h>

#include <memory>
#include <optional>
#include <utility>

/// The controller's rules over plain lists, written as plainly as they are told. The detectors and
/// the buffer's read are the real ones, which have tests of their own.
namespace naive {

using namespace tracery::TDTC;
using Detector = tracery::AbstractTimeDomainTrigger;
using Real = tracery::TimeDomainTriggerController;
using Fate = Real::EventFate;

/// Writes a step to a complex port.
inline void addStep(tracery::TimeBuffer& buffer, std::uint64_t port, double t,
                    const std::vector<std::complex<double>>& values)
{
    buffer.AddTime(&t, 1, port);
    for (const tracery::HostComplexity part : {tracery::HostComplexity::real, tracery::HostComplexity::complex})
        buffer.AddValue(values.data(), {values.size()}, port, part);
}

/// A setting of the detectors, and values worth trying.
struct Setting {
    void (Real::*set)(double);
    void (Detector::*setDetector)(double);
    double Settings::*field;
    double values[2];
};
constexpr double inf = std::numeric_limits<double>::infinity();
constexpr Setting kSettings[] = {
    {&Real::setLevel, &Detector::setLevel, &Settings::level, {0, 0.25}},
    {&Real::setHysteresis, &Detector::setHysteresis, &Settings::hysteresis, {0, 0.5}},
    {&Real::setUpperLevel, &Detector::setUpperLevel, &Settings::upper, {2.1, 0.75}},
    {&Real::setLowerLevel, &Detector::setLowerLevel, &Settings::lower, {0.2, -0.5}},
    {&Real::setMinTime, &Detector::setMinTime, &Settings::minTime, {0, 0.5}},
    {&Real::setMaxTime, &Detector::setMaxTime, &Settings::maxTime, {inf, 3}},
    {&Real::setTimeout, &Detector::setTimeout, &Settings::timeout, {0, 1.5}},
    {&Real::setHoldoff, &Detector::setHoldoff, &Settings::holdoff, {0, -8}},
};

template <class Kind>
std::unique_ptr<Detector> newDetector(const Settings& s)
{
    auto detector = std::make_unique<Kind>(tracery::make<Kind>(s));
    detector->setAutoLevel(s.autoLevel);
    for (const Setting& setting : kSettings)
        ((*detector).*setting.setDetector)(s.*setting.field);
    return detector;
}

/// In the order of TypeEnum.
constexpr std::unique_ptr<Detector> (*kNewDetector[])(const Settings&) = {
    newDetector<tracery::EdgeTimeDomainTrigger>,       newDetector<tracery::PulseWidthTimeDomainTrigger>,
    newDetector<tracery::TransitionTimeDomainTrigger>, newDetector<tracery::RuntTimeDomainTrigger>,
    newDetector<tracery::WindowTimeDomainTrigger>,     newDetector<tracery::TimeoutTimeDomainTrigger>};

struct Controller {
    using Window = std::pair<double, double>;
    using Channel = std::pair<std::uint64_t, std::uint64_t>; // port and channel

    ModeEnum mode = ModeEnum::Off;
    bool armed = true;
    double position = 0.5, delay = 0, tolerance = 0x1p-52;
    std::uint32_t source[2] = {1, 1}; ///< port and channel
    ComplexityEnum complexity = ComplexityEnum::Scalar;
    Settings s{.autoLevel = true};
    std::unique_ptr<Detector> detector = kNewDetector[0](s);
    std::deque<double> events;
    std::vector<std::pair<double, Fate>> consumed;
    Signal pending, inWindow;
    std::optional<Channel> channelRead;
    double last = -inf, lastRead = -inf, lastReady = -inf, lastTrigger = -inf;

    void arm(bool flag)
    {
        armed = flag;
        events.clear();
    }
    void newSignal()
    {
        detector->reset();
        pending.clear();
        inWindow.clear();
    }
    void reset()
    {
        last = lastRead = lastReady = lastTrigger = -inf;
        arm(true);
        channelRead.reset();
        newSignal();
    }
    void stepTo(double now)
    {
        if ((last - now) / std::abs(last) > tolerance)
            reset();
        last = now;
    }

    void takeSample(double t, double x, double now, double span)
    {
        stepTo(now);
        if (mode != ModeEnum::Off)
            pending.push_back({t, x});
        if (pending.size() == 1024)
            detect(std::exchange(pending, {}), now, span);
    }
    void takePending(double now, double span)
    {
        stepTo(now);
        if (mode != ModeEnum::Off)
            detect(std::exchange(pending, {}), now, span);
    }
    void takeSteps(const tracery::TimeBuffer& buffer, bool framed, double period, Channel channel, double now,
                   double span)
    {
        using enum tracery::TimeBuffer::SamplePart;
        constexpr tracery::TimeBuffer::SamplePart parts[] = {real, real, real, imaginary, magnitude, phase};
        stepTo(now);
        std::vector<double> pairs;
        buffer.GetSamplesAfter(lastRead, channel.first, channel.second, framed, period,
                               parts[static_cast<std::size_t>(complexity)], pairs);
        if (pairs.empty() || mode == ModeEnum::Off)
            return;
        if (std::exchange(channelRead, channel).value_or(channel) != channel)
            newSignal();
        takeBlock(pairs, now, span, true);
    }
    void takeBlock(const std::vector<double>& pairs, double now, double span, bool mayRepeat = false)
    {
        stepTo(now);
        Signal block;
        for (std::size_t i = 0; mode != ModeEnum::Off && i < pairs.size(); i += 2)
            block.push_back({pairs[i], pairs[i + 1]});
        detect(block, now, span, mayRepeat);
    }

    Window window(double first, double now, double span, bool partial)
    {
        const double offset = partial ? 0 : span;
        double event = -inf;
        bool found = false;
        consumed.clear();
        while (mode != ModeEnum::Off && !events.empty() && now >= events.front() + offset - span * position + delay &&
               !(mode == ModeEnum::Once && found)) {
            event = lastReady = events.front();
            events.pop_front();
            const bool allowed = mode != ModeEnum::Once || armed, clear = event >= lastTrigger + offset;
            consumed.emplace_back(event, !allowed ? Fate::Disarmed : clear ? Fate::Superseded : Fate::Overlap);
            found = allowed && clear;
        }
        if (found)
            consumed.back().second = Fate::Shown;
        if (!found && partial && lastReady > lastTrigger && (mode != ModeEnum::Once || armed))
            event = lastReady, found = true;
        if (!found && mode == ModeEnum::Auto) {
            event = now - delay - (1 - position) * span;
            found = (lastTrigger == -inf && now > offset + first) ||
                    (std::isfinite(lastTrigger) && event > lastTrigger + (2 - position) * span);
        }
        if (!found || mode == ModeEnum::Off)
            return {-inf, -inf};
        armed = armed && mode != ModeEnum::Once;
        lastTrigger = event;
        const double start = event + delay - span * position;
        return {start, start + span};
    }

    void detect(const Signal& block, double now, double span, bool mayRepeat = true)
    {
        if (block.empty())
            return;
        double extrema[] = {inf, -inf};
        if (s.autoLevel) {
            if (mayRepeat) // samples from before that come again
                std::erase_if(inWindow, [&](Sample x) { return x.t >= block.front().t; });
            inWindow.insert(inWindow.end(), block.begin(), block.end());
            std::erase_if(inWindow,
                          [&](Sample x) { return x.t < now - span || std::isnan(x.t) || !std::isfinite(x.x); });
            for (const Sample sample : inWindow) {
                extrema[0] = sample.x < extrema[0] ? sample.x : extrema[0];
                extrema[1] = sample.x > extrema[1] ? sample.x : extrema[1];
            }
        }
        tracery::feed(*detector, block, 0, block.size(), events, extrema);
        lastRead = block.back().t;
    }
};

} // namespace naive
