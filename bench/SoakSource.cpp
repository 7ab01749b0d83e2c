#include "SoakSource.h"

#include <tracery/host/Arrays.h>

#include <cmath>
#include <numbers>
#include <random>

namespace tracery::bench {

namespace {
constexpr std::uint64_t kFrames = 64; // of a port, one period of its sine
}

SoakSource::SoakSource(TimeBuffer& buffer, const SoakSettings& settings) : buffer_(buffer), settings_(settings)
{
    std::mt19937 random(1);
    std::normal_distribution<double> noise(0, 0.02);
    frames_.resize(settings.ports);
    const double samples = static_cast<double>(kFrames * settings.frame);
    for (std::uint64_t port = 0; port < settings.ports; ++port)
        for (std::uint64_t k = 0; k < kFrames; ++k) {
            HostArrayPtr values = makeMatrix(settings.frame, 1);
            for (std::uint64_t i = 0; i < settings.frame; ++i)
                realValues(values.get())[i] =
                    std::sin(2 * std::numbers::pi * static_cast<double>(k * settings.frame + i) / samples +
                             static_cast<double>(port)) +
                    noise(random);
            frames_[port].push_back(std::move(values));
        }
    begin_ = Clock::now();
    thread_ = std::thread([this] { run(); });
}

void SoakSource::stop()
{
    stop_ = true;
    if (thread_.joinable())
        thread_.join();
}

void SoakSource::run()
{
    const double period = settings_.framePeriod();
    const auto mostLate = static_cast<std::uint64_t>(0.5 / period) + 1;
    const HostArrayPtr time = makeScalar(0);
    for (std::uint64_t frame = 0; !stop_;) {
        const std::chrono::duration<double> now = Clock::now() - begin_;
        const auto due = static_cast<std::uint64_t>(now.count() / period);
        if (frame >= due) {
            std::this_thread::sleep_until(begin_ +
                                          std::chrono::duration_cast<Clock::duration>(
                                              std::chrono::duration<double>(static_cast<double>(frame + 1) * period)));
            continue;
        }
        if (due - frame > mostLate) {
            lost_ += (due - frame) * settings_.frame * settings_.ports;
            frame = due;
        }
        *getRealData(time.get()) = static_cast<double>(frame) * period;
        for (std::uint64_t port = 0; port < settings_.ports; ++port) {
            const Clock::time_point before = Clock::now();
            buffer_.addTimeAndValue(time.get(), frames_[port][frame % kFrames].get(), port, true);
            waits_.add(Clock::now() - before);
        }
        written_ += settings_.frame * settings_.ports;
        ++frame;
    }
}

} // namespace tracery::bench
