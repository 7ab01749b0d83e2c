// A running display, driven as a host drives it, while its settings change at random to valid and odd values. The
// environment variable TRACERY_SETTING_CHANGES says how many of them.

#include "scheduling/RandomValues.h"
#include "support/FakeTimer.h"
#include "support/LineDisplay.h"

#include <tracery/DrawScheduler.h>
#include <tracery/TimeBuffer.h>
#include <tracery/TimeDomainTriggerController.h>
#include <tracery/host/Error.h>
#include <tracery/host/Publish.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <string>

using namespace tracery;
using namespace tracery::test;

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kStep = 1.0 / 1024; // seconds between samples: all times are exact
constexpr int kFrame = 16;
constexpr std::size_t kMostPoints = 20000; // that a line keeps
constexpr double kOffsets[] = {0, 0.5, -3, 64, kNaN, kInf, -kInf, 1e308};

/// Sample k of a channel; one in a thousand is missing.
double signal(std::int64_t k, std::size_t channel)
{
    return k % 977 == 0 ? kNaN : std::sin(0.05 * static_cast<double>(k) * static_cast<double>(channel + 1));
}

bool same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

class RunningDisplay : RandomValues {
public:
    RunningDisplay()
    {
        shape();
        display_.setTimeOverrunMode(TimeOverrunModeEnum::Wrap);
        trigger_.setMode(TDTC::ModeEnum::Auto);
        bind();
        addTriggerSettings();
        addDisplaySettings();
        addBufferSettings();
    }

    /// Changes a setting, lets time pass, and redraws. Returns what is wrong, nothing at best.
    std::string step()
    {
        broken_.clear();
        const Setting& setting = settings_[below(settings_.size())];
        try {
            refuse([&] { setting.change(); });
            for (std::size_t blocks = below(3); blocks > 0; --blocks)
                write(1 + below(20));
            timer_->up = below(4) != 0;
            refuse([&] {
                scheduler_.DataAddedToLine(true);
                scheduler_.TaskComplete(below(8) == 0);
            });
        } catch (const std::exception& error) {
            expect(false, std::string("an error that is not identified: ") + error.what());
        }
        return broken_.empty() ? "" : "after a change of " + std::string(setting.name) + ": " + broken_;
    }

    std::size_t windows = 0;
    std::size_t points = 0;
    std::size_t refusals = 0;
    std::size_t events = 0;

private:
    struct Setting {
        const char* name;
        std::function<void()> change;
    };

    void expect(bool holds, const std::string& what)
    {
        if (!holds && broken_.empty())
            broken_ = what;
    }

    template <class Call>
    void refuse(Call&& call)
    {
        try {
            call();
        } catch (const Error&) {
            ++refusals;
        }
    }

    double offset() { return kOffsets[below(below(4) == 0 ? std::size(kOffsets) : 4)]; }

    // ---- Settings

    void addTriggerSettings()
    {
        using Controller = TimeDomainTriggerController;
        const auto numeric = [this](const char* name, void (Controller::*set)(double), double low, double high) {
            settings_.push_back({name, [this, set, low, high] { (trigger_.*set)(number(low, high)); }});
        };
        numeric("position", &Controller::setPosition, 0, 1);
        numeric("delay", &Controller::setDelay, -0.1, 0.1);
        numeric("level", &Controller::setLevel, -1, 1);
        numeric("hysteresis", &Controller::setHysteresis, 0, 0.5);
        numeric("upper level", &Controller::setUpperLevel, 0, 1);
        numeric("lower level", &Controller::setLowerLevel, -1, 0);
        numeric("shortest time", &Controller::setMinTime, 0, 0.01);
        numeric("longest time", &Controller::setMaxTime, 0, 1);
        numeric("timeout", &Controller::setTimeout, 0, 0.1);
        numeric("holdoff", &Controller::setHoldoff, 0, 0.1);
        numeric("tolerance", &Controller::setStepBackTolerance, 0, 1e-3);
        const std::pair<const char*, std::function<void()>> others[] = {
            {"type", [this] { trigger_.setType(choice<TDTC::TypeEnum>(0, 5)); }},
            {"mode", [this] { trigger_.setMode(choice<TDTC::ModeEnum>(0, 3)); }},
            {"polarity", [this] { trigger_.setPolarity(choice<TDTC::PolarityEnum>(-1, 1)); }},
            {"complexity", [this] { trigger_.setComplexity(choice<TDTC::ComplexityEnum>(1, 5)); }},
            {"automatic level", [this] { trigger_.setAutoLevel(flip()); }},
            {"arming", [this] { trigger_.setEnableOnceMode(flip()); }},
            {"source port", [this] { trigger_.setSourcePort(source()); }},
            {"source channel", [this] { trigger_.setSourcePortChannel(source()); }},
            {"everything, by a reset", [this] { trigger_.reset(); }},
        };
        for (const auto& [name, change] : others)
            settings_.push_back({name, change});
    }

    void addDisplaySettings()
    {
        const std::pair<const char*, std::function<void()>> all[] = {
            {"span", [this] { display_.setTimeSpan(number(0.01, 0.3)); }},
            {"wrap period", [this] { display_.setTimeWrap(number(0, 0.3)); }},
            {"origin", [this] { display_.setOriginTime(number(-1, 1)); }},
            {"overrun mode", [this] { display_.setTimeOverrunMode(choice<TimeOverrunModeEnum>(0, 1)); }},
            {"display offset",
             [this] {
                 const double offsets[] = {offset(), offset()};
                 display_.setTimeDisplayOffset(offsets, below(3));
             }},
            {"sample times",
             [this] {
                 const double times[] = {number(0, 1), number(0, 1)};
                 display_.setSampleTimes(times, below(3));
                 display_.getLengthOfChannelsWriteable().assign(below(3), number(1, 20));
             }},
            {"columns", [this] { columns_ = number(1, 2000); }},
            {"magnitude", [this] { display_.setPlotMagPhase(flip()); }},
            {"partial windows", [this] { partial_ = flip(); }},
            {"interval", [this] { scheduler_.Init(number(0, 1), number(0, 1)); }},
            {"task",
             [this] {
                 scheduler_.Unbind(task_);
                 bind();
             }},
        };
        for (const auto& [name, change] : all)
            settings_.push_back({name, change});
    }

    void addBufferSettings()
    {
        const std::pair<const char*, std::function<void()>> all[] = {
            {"capacity",
             [this] {
                 TimeBuffer::Counts steps(below(4));
                 for (std::uint64_t& each : steps)
                     each = below(16) == 0 ? below(2) << 62 : below(400);
                 buffer_.SetMaxNumTimeSteps(steps);
             }},
            {"frames",
             [this] {
                 framed_ = flip();
                 shape();
             }},
            {"extents", [this] { buffer_.SetMaxDimensions(std::vector<int>(below(3), -1), below(4)); }},
            {"data, by a clear", [this] { flip() ? buffer_.Clear() : buffer_.clearUptoLastTime(); }},
            {"data, by a step back",
             [this] {
                 const double to = number(static_cast<double>(next_ - 200), static_cast<double>(next_)) * kStep;
                 buffer_.ClearBackTo(to);
                 const double last = buffer_.GetLastTime();
                 if (std::isfinite(last)) // the simulation goes on from there
                     next_ = static_cast<std::int64_t>(std::round(last / kStep)) + (framed_ ? kFrame : 1);
                 drawnTo_ = -kInf;
             }},
        };
        for (const auto& [name, change] : all)
            settings_.push_back({name, change});
    }

    void bind()
    {
        task_ = scheduler_.Bind(std::function<void()>([this] { redraw(); }));
    }

    void shape()
    {
        const int samples = framed_ ? kFrame : 1;
        if (!buffer_.isInitialized())
            buffer_.ResetBuffer({200}, {1, 2, 1, 1}, {2, 2}, 2, BufferType::SingleRate,
                                {HostComplexity::real, HostComplexity::complex}, true);
        buffer_.SetMaxDimensions({samples, 2}, 0);
        buffer_.SetMaxDimensions({samples, 1}, 1);
    }

    // ---- The host

    double framePeriod() const { return kFrame * kStep; }
    std::size_t channelsOf(std::uint64_t port) const { return port == 0 ? 2 : 1; }

    void write(std::size_t steps)
    {
        const auto samples = static_cast<std::size_t>(framed_ ? kFrame : 1);
        const HostArrayPtr times(createDoubleMatrix(1, steps, HostComplexity::real));
        for (std::size_t i = 0; i < steps; ++i)
            getRealData(times.get())[i] = static_cast<double>(next_ + static_cast<std::int64_t>(i * samples)) * kStep;
        for (std::uint64_t port : {0U, 1U}) {
            const std::uint64_t extents[] = {samples, channelsOf(port), steps};
            const HostArrayPtr values(createNumericArray(3, extents, HostClassID::double_,
                                                         port == 0 ? HostComplexity::real : HostComplexity::complex));
            double* out = getRealData(values.get());
            for (std::size_t i = 0; i < steps; ++i)
                for (std::size_t c = 0; c < channelsOf(port); ++c)
                    for (std::size_t k = 0; k < samples; ++k)
                        *out++ = signal(next_ + static_cast<std::int64_t>(i * samples + k), c);
            buffer_.addTimeAndValue(times.get(), values.get(), port, true);
        }
        next_ += static_cast<std::int64_t>(steps * samples);
        newestEver_ = std::max(newestEver_, next_);
    }

    void redraw()
    {
        const double last = buffer_.GetLastTime();
        trigger(last);
        if (std::isinf(last))
            return;
        display_.setEndTime(last);
        const double start = display_.getTimeOverrunModeController()->calculateStartTime();
        const double width = std::max(display_.getMaxSiblingTimeStepWidth(), 0.0);
        const double span = display_.getTimeSpan();
        expect(!(start < display_.getOriginTime()), "the window starts before the origin");
        if (span > 1e-3 && span < 1 && display_.getTimeWrap() == span && display_.getOriginTime() <= last &&
            display_.getOriginTime() > -1e6 && display_.getTimeOverrunMode() == TimeOverrunModeEnum::Wrap)
            expect(start <= last + width && last <= start + span * (1 + 1e-9), "the window misses the newest step");
        if (start != display_.getStartTime())
            display_.clearLines();
        display_.setStartTime(start);
        for (std::size_t line = 0; line < display_.size(); ++line)
            draw(line, std::max(start, drawnTo_), last);
        drawnTo_ = last;
    }

    void draw(std::size_t line, double from, double to)
    {
        const std::uint64_t port = line / 2;
        std::vector<double> limits{kInf, -kInf, kInf, -kInf};
        const std::vector<double>& offsets = display_.getTimeDisplayOffset();
        HostArray* out = nullptr;
        buffer_.GetTimeAndValueInterleaved(port, out, limits, port < offsets.size() ? offsets[port] : 0, from, to,
                                           drawnTo_, channelsOf(port), line % 2, framed_, framePeriod(),
                                           framed_ ? kFrame : 1, false, display_.getPlotMagPhase());
        const HostArrayPtr pairs(out);
        expect(out == nullptr || getNumberOfElements(out) <= 2 * 400 * kFrame, "more steps than the capacity");
        const std::size_t before = display_.points(line).size();
        display_.draw(line, out, columns_);
        const std::span<const double> drawn = display_.points(line);
        for (std::size_t i = before; i + 1 < drawn.size(); i += 2)
            expect(isSample(drawn[i], drawn[i + 1], line % 2), "a drawn point that is none of the signal");
        points += (drawn.size() - before) / 2;
        if (drawn.size() > kMostPoints)
            display_.getTimeScopeLine(line)->reset();
    }

    /// Whether a point is a sample of a channel, shown with one of the offsets; the thinner may hold some of earlier
    /// ones.
    static bool isSample(double time, double value, std::size_t channel)
    {
        if (!std::isfinite(time) || std::abs(time) >= 1e300)
            return std::isnan(value) || std::abs(value) <= 1;
        for (const double offset : kOffsets) {
            const double k = (time - offset) / kStep;
            if (!(std::abs(k) < 1e15) || k != std::floor(k))
                continue;
            const double expected = signal(static_cast<std::int64_t>(k), channel);
            if (same(value, expected) || same(value, std::abs(expected)))
                return true;
        }
        return false;
    }

    void trigger(double now)
    {
        const double span = display_.getTimeSpan();
        const auto source = std::pair(trigger_.getSourcePort(), trigger_.getSourcePortChannel());
        const std::size_t pendingBefore = trigger_.getPendingEvents().size();
        const std::uint64_t acceptedBefore = trigger_.getDetector().getNumAcceptedEvents();
        // A step back forgets the events that are pending.
        const bool counts = now >= triggeredTo_ && trigger_.getStepBackTolerance() >= 0;
        triggeredTo_ = now;
        double start = 0, end = 0;
        trigger_.getTriggerWindow(buffer_, framed_, framePeriod(), source.first - 1, source.second - 1, 0, now, span,
                                  partial_, start, end);
        const auto& consumed = trigger_.getConsumedEvents();
        const auto& pending = trigger_.getPendingEvents();
        // The first samples of another channel start the detector's count anew.
        const std::uint64_t accepted = trigger_.getDetector().getNumAcceptedEvents();
        const std::uint64_t known = consumed.size() + pending.size() - pendingBefore;
        if (counts)
            expect(known == accepted - acceptedBefore || known == accepted, "events are lost or made up");
        events += consumed.size();
        if (accepted > acceptedBefore)
            expectInsideData(pending.empty() ? consumed.back().time : pending.back());
        if (start == -kInf && end == -kInf)
            return;
        ++windows;
        const double scale = std::max({std::abs(start), std::abs(end), std::abs(span)});
        if (std::isfinite(scale) && scale < 1e300) {
            expect(std::abs(end - start - span) <= 1e-15 * scale, "the window is not as long as the span");
            expect(span < 0 || start <= end, "the window ends before it starts");
        }
        double lastStart = 0, lastEnd = 0;
        trigger_.getLastTriggerWindow(lastStart, lastEnd);
        expect(same(start, lastStart) && same(end, lastEnd), "the last window is another one");
    }

    /// A crossing lies between two samples, unless levels are inverted or have just moved.
    void expectInsideData(double event)
    {
        if (trigger_.getType() != TDTC::TypeEnum::Timeout && !trigger_.getAutoLevel() &&
            trigger_.getHysteresis() >= 0 && trigger_.getLowerLevel() <= trigger_.getUpperLevel())
            expect(event >= 0 && event <= static_cast<double>(newestEver_) * kStep, "an event outside the data");
    }

    struct PublishingHost : embedded::EmbeddedHost {
        PublishingHost() { publishClasses(objects()); }
    };

    PublishingHost host_;
    HostScope attached_{host_};
    TimeBuffer buffer_;
    TimeDomainTriggerController trigger_;
    LineDisplay display_{host_, 3};
    FakeTimer* timer_ = new FakeTimer;
    DrawScheduler scheduler_{std::unique_ptr<Timer>(timer_)};
    std::size_t task_ = 0;
    std::vector<Setting> settings_;
    std::string broken_;
    bool framed_ = false;
    bool partial_ = false;
    double columns_ = 200;
    double drawnTo_ = -kInf;
    double triggeredTo_ = -kInf;
    std::int64_t next_ = 1000;
    std::int64_t newestEver_ = 0;
};

TEST(RunningDisplayTest, HoldsWhateverIsSetWhileItRuns)
{
    const char* wanted = std::getenv("TRACERY_SETTING_CHANGES");
    const long changes = wanted != nullptr ? std::atol(wanted) : 20000;
    RunningDisplay display;
    for (long i = 0; i < changes; ++i) {
        const std::string wrong = display.step();
        ASSERT_EQ(wrong, "") << "change " << i;
    }
    EXPECT_GT(display.windows, 0U);
    EXPECT_GT(display.points, 0U);
    EXPECT_GT(display.events, 0U);
    EXPECT_GT(display.refusals, 0U);
    std::printf("%ld changes, %zu refused; %zu windows, %zu events, %zu points\n", changes, display.refusals,
                display.windows, display.events, display.points);
}

} // namespace
