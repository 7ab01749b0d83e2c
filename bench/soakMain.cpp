#include "SoakScope.h"

#include <tracery/Kernels.h>
#include <tracery/host/Publish.h>

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <string>
#include <string_view>
#include <utility>

/// Pushes ports through everything in real time and tells what it costs, and whether the memory stays flat.
namespace {

using namespace tracery;
using namespace tracery::bench;
using Clock = SoakSource::Clock;

constexpr const char* kUsage =
    "usage: bench/soak [SECONDS] [--ports N] [--rate HZ] [--frame SAMPLES] [--refresh SECONDS] [--span SECONDS]\n"
    "                  [--columns N] [--flat-within PERCENT]\n";

/// Returns whether the arguments are understood.
bool parse(int count, char** arguments, SoakSettings& settings)
{
    double ports = static_cast<double>(settings.ports);
    double frame = static_cast<double>(settings.frame);
    const std::pair<std::string_view, double*> options[] = {{"--ports", &ports},
                                                            {"--rate", &settings.rate},
                                                            {"--frame", &frame},
                                                            {"--span", &settings.span},
                                                            {"--refresh", &settings.refresh},
                                                            {"--columns", &settings.columns},
                                                            {"--seconds", &settings.seconds},
                                                            {"--flat-within", &settings.flatWithin}};
    for (int i = 1; i < count; ++i) {
        double* value = i == 1 && arguments[i][0] != '-' ? &settings.seconds : nullptr;
        for (const auto& [name, field] : options)
            if (value == nullptr && name == arguments[i]) {
                value = field;
                ++i;
                break;
            }
        if (value == nullptr || i == count)
            return false;
        char* end = nullptr;
        *value = std::strtod(arguments[i], &end);
        if (*end != '\0' || !(*value > 0) || !std::isfinite(*value))
            return false;
    }
    settings.ports = static_cast<std::uint64_t>(ports);
    settings.frame = static_cast<std::uint64_t>(frame);
    return settings.ports > 0 && settings.ports <= 1000 && settings.frame > 0 && settings.frame <= 1000000;
}

double residentMegabytes()
{
    std::ifstream file("/proc/self/statm");
    double total = 0;
    double resident = 0;
    file >> total >> resident;
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
}

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void print(const char* what, const Waits& waits)
{
    std::printf("%-28s p50 %.4g µs, p99 %.4g µs, longest %.4g µs (%llu)\n", what, waits.quantile(0.5),
                waits.quantile(0.99), waits.longest(), static_cast<unsigned long long>(waits.count()));
}

unsigned long long whole(std::uint64_t number) { return number; }

/// Returns the exit status: 1 when the memory was not flat, or samples were lost.
int soak(const SoakSettings& settings)
{
    embedded::EmbeddedHost host;
    const HostScope attached(host);
    publishClasses(host.objects());
    const double period = settings.framePeriod();
    const auto kept = static_cast<std::uint64_t>(2 / period) + 2; // seconds that the display may be late
    TimeBuffer buffer({kept}, TimeBuffer::Counts(settings.ports, settings.frame), TimeBuffer::Counts(settings.ports, 1),
                      settings.ports, BufferType::SingleRate,
                      std::vector<HostComplexity>(settings.ports, HostComplexity::real), true);
    buffer.reserveCapacity();
    SoakScope scope(host, buffer, settings);
    SoakSource source(buffer, settings);

    const double warmUp = std::min(5.0, settings.seconds / 4);
    const double interval = std::clamp(settings.seconds / 6, 1.0, 60.0);
    double atStart = 0;
    double nextReport = warmUp;
    for (double now = 0; now < settings.seconds;
         now = std::chrono::duration<double>(Clock::now() - source.begin()).count()) {
        scope.poll(source.begin());
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        if (now < nextReport)
            continue;
        const double memory = residentMegabytes();
        if (atStart == 0)
            atStart = memory;
        std::printf("after %6.0f s: %.1f MB\n", now, memory);
        std::fflush(stdout);
        nextReport += interval - std::fmod(nextReport, interval);
    }
    const double elapsed = std::chrono::duration<double>(Clock::now() - source.begin()).count();
    const double atEnd = residentMegabytes();
    const double cpu = cpuSeconds();
    source.stop();

    const std::uint64_t lost = source.lost() + scope.missed();
    const double growth = (atEnd - atStart) / atStart * 100;
    std::printf("after %6.0f s: %.1f MB\n\n", elapsed, atEnd);
    std::printf("%-28s %llu written, %llu lost by the writer; %llu shown, %llu missed by the display\n", "samples",
                whole(source.written()), whole(source.lost()), whole(scope.shown()), whole(scope.missed()));
    std::printf("%-28s %llu shown; power statistics of %.0f samples\n", "trigger windows", whole(scope.windows()),
                scope.powerSamples());
    print("writer's wait, a frame", source.waits());
    print("redraw", scope.redraws());
    print("age of the newest sample", scope.ages());
    std::printf("%-28s %.1f %% of a core\n", "processor", cpu / elapsed * 100);
    const bool flat = growth <= settings.flatWithin;
    std::printf("\n%s: memory %+.2f %% (flat within %g %%), %llu samples lost\n", flat && lost == 0 ? "good" : "BAD",
                growth, settings.flatWithin, whole(lost));
    return flat && lost == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    SoakSettings settings;
    if (!parse(argc, argv, settings)) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    try {
        kernelsInUse();
        return soak(settings);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "soak: %s\n", error.what());
        return 2;
    }
}
