// A triggered scope: samples go into a buffer as they come, the controller finds the events in them and gives out each
// window once it is full, and the buffer hands out the samples of that window. A display would draw them; this one says
// where they are. The signal, 40 Hz, crosses 0.5 upwards 1/480 s after each period begins.
// Prints:
//    window -0.0079 to 0.0121 s: 122 samples, event at 0.0021 s
//    window 0.0171 to 0.0371 s: 202 samples, event at 0.0271 s
//    window 0.0421 to 0.0621 s: 202 samples, event at 0.0521 s
//    window 0.0671 to 0.0871 s: 202 samples, event at 0.0771 s
#include <tracery/TimeBuffer.h>
#include <tracery/TimeDomainTriggerController.h>
#include <tracery/host/Arrays.h>

#include <cmath>
#include <cstdio>
#include <numbers>

using namespace tracery;

int main()
{
    const double rate = 10000, span = 0.02; // samples a second; seconds of a window
    const std::uint64_t block = 100;        // samples that come at once
    TimeBuffer buffer({20000}, {1}, 1);     // the newest 20000 steps of one port with one channel
    TimeDomainTriggerController trigger;
    trigger.setMode(TDTC::ModeEnum::Normal);
    trigger.setAutoLevel(false);
    trigger.setLevel(0.5);

    int windows = 0, wrong = 0;
    for (std::uint64_t n = 0; n < 1000; n += block) {
        const HostArrayPtr times = makeMatrix(1, block), values = makeMatrix(1, block);
        for (std::uint64_t i = 0; i < block; ++i) {
            const double time = static_cast<double>(n + i) / rate;
            realValues(times.get())[i] = time;
            realValues(values.get())[i] = std::sin(2 * std::numbers::pi * 40 * time);
        }
        buffer.addTimeAndValue(times.get(), values.get(), 0, true);
        double start = 0, end = 0;
        trigger.getTriggerWindow(buffer, false, 0, 0, 0, 0, buffer.GetLastTime(), span, false, start, end);
        if (std::isinf(start))
            continue; // no new window
        const auto [t, v] = outputsOf<2>([&](auto&... out) {
            buffer.GetTimeAndValue(0, out..., start, end, true); // with the neighbours just outside
        });
        std::printf("window %.4f to %.4f s: %u samples, event at %.4f s\n", start, end,
                    static_cast<unsigned>(getN(v.get())), trigger.getLastTriggerTime());
        const double phase = std::fmod(trigger.getLastTriggerTime(), 1 / 40.0);
        ++windows;
        wrong += std::abs(phase - 1 / 480.0) > 1e-5 ? 1 : 0;
    }
    return windows == 4 && wrong == 0 ? 0 : 1;
}
