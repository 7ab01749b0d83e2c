#include "SoakScope.h"

#include <tracery/host/Arrays.h>

#include <cmath>
#include <functional>
#include <limits>

namespace tracery::bench {

namespace {

constexpr std::uint32_t kSegment = 1024;
constexpr double kOverlapPercent = 50;
constexpr int kBins = 1000;
constexpr double kBinDecibels = 0.1;

} // namespace

SoakScope::SoakScope(embedded::EmbeddedHost& host, const TimeBuffer& buffer, const SoakSettings& settings)
    : buffer_(buffer), settings_(settings), sweep_(host, settings.ports), triggered_(host, settings.ports),
      spectrum_(kSegment, kOverlapPercent, HostComplexity::real, 1), drawnTo_(-settings.framePeriod() / 2)
{
    sweep_.setTimeSpan(settings.span);
    sweep_.setTimeOverrunMode(TimeOverrunModeEnum::Wrap);
    sweep_.getTimeOverrunModeController()->start();
    triggered_.setTimeSpan(settings.refresh);
    trigger_.setMode(TDTC::ModeEnum::Auto);
    trigger_.setHysteresis(0.1);
    spectrum_.setReduceUpdates(false);
    task_ = DrawScheduler::getInstance()->Bind(std::function<void()>([this] { drawAll(); }));
    DrawScheduler::getInstance()->Init(settings.refresh, 0.5);
}

SoakScope::~SoakScope() { DrawScheduler::getInstance()->Unbind(task_); }

void SoakScope::poll(SoakSource::Clock::time_point begin)
{
    DrawScheduler& scheduler = *DrawScheduler::getInstance();
    scheduler.DataAddedToLine(true);
    const unsigned drawn = scheduler.getDrawCount();
    const auto before = SoakSource::Clock::now();
    scheduler.TaskComplete(false);
    if (scheduler.getDrawCount() == drawn)
        return;
    const auto after = SoakSource::Clock::now();
    redraws_.add(after - before);
    const std::chrono::duration<double> newest(newest_);
    ages_.add(after - begin - std::chrono::duration_cast<std::chrono::nanoseconds>(newest));
}

void SoakScope::drawAll()
{
    // All ports have the frame before the newest one.
    const double last = buffer_.GetLastTime() - settings_.framePeriod();
    const double to = last + settings_.framePeriod() / 2;
    if (!(to > drawnTo_))
        return;
    newest_ = last;
    // In slices: what a display that was held up has to catch up with takes no more memory.
    while (drawnTo_ < to) {
        const double step = std::max(1.0, std::round(settings_.refresh / settings_.framePeriod()));
        const double end = std::min(to, drawnTo_ + step * settings_.framePeriod());
        drawSweep(drawnTo_, end);
        updateStatistics(drawnTo_, end);
        drawnTo_ = end;
    }
    drawTriggered(last);
}

HostArrayPtr SoakScope::read(std::uint64_t port, double from, double to) const
{
    constexpr double kInf = std::numeric_limits<double>::infinity();
    std::vector<double> limits{kInf, -kInf, kInf, -kInf};
    HostArray* pairs = nullptr;
    buffer_.GetTimeAndValueInterleaved(port, pairs, limits, 0, from, to, -kInf, 1, 0, true, settings_.framePeriod(),
                                       static_cast<std::int32_t>(settings_.frame), false, false);
    return HostArrayPtr(pairs);
}

void SoakScope::drawSweep(double from, double to)
{
    sweep_.setEndTime(to - settings_.framePeriod() / 2);
    const double start = sweep_.getTimeOverrunModeController()->calculateStartTime();
    if (start != sweep_.getStartTime())
        sweep_.clearLines();
    sweep_.setStartTime(start);
    const auto due = static_cast<std::uint64_t>(std::round((to - from) / settings_.framePeriod())) * settings_.frame;
    for (std::uint64_t port = 0; port < settings_.ports; ++port) {
        const HostArrayPtr pairs = read(port, from, to);
        const std::uint64_t got = pairs != nullptr ? getNumberOfElements(pairs.get()) / 2 : 0;
        shown_ += got;
        missed_ += due - std::min(due, got);
        sweep_.draw(port, pairs.get(), settings_.columns);
    }
}

void SoakScope::drawTriggered(double now)
{
    double start = 0;
    double end = 0;
    trigger_.getTriggerWindow(buffer_, true, settings_.framePeriod(), 0, 0, 0, now, triggered_.getTimeSpan(), false,
                              start, end);
    if (std::isinf(start))
        return;
    ++windows_;
    triggered_.setStartTime(start);
    triggered_.clearLines();
    for (std::uint64_t port = 0; port < settings_.ports; ++port)
        triggered_.draw(port, read(port, start, end).get(), settings_.columns);
}

void SoakScope::updateStatistics(double from, double to)
{
    const auto read = outputsOf<2>([&](auto&... out) { buffer_.GetTimeAndValue(0, out..., from, to, false); });
    const std::span<const double> values = realValues(read[1].get());
    if (read[1] == nullptr)
        return;
    spectrum_.AddValue(makeMatrix(values.size(), 1, values).get(), 0, true);
    const auto ready = outputsOf<2>([&](auto&... out) { spectrum_.GetTimeAndValue(0, out...); });
    if (ready[1] == nullptr)
        return;
    const std::span<const double> segments = realValues(ready[1].get());
    const HostArrayPtr power = makeMatrix(segments.size(), 1);
    std::ranges::transform(segments, realValues(power.get()).begin(), [](double value) { return value * value; });
    const auto statistics =
        outputsOf<4>([&](auto&... out) { spectrum_.updateCCDF(power.get(), kBins, kBinDecibels, out...); });
    powerSamples_ = realValues(statistics[2].get())[0];
}

} // namespace tracery::bench
