#include "captures/CaptureModel.h"

#include <atomic>
#include <stdexcept>
#include <thread>

namespace tracery::captures {

namespace {

constexpr std::size_t kChannels = 3;
constexpr std::int64_t kSteps = 600'000, kKept = 200'000;

/// What each step holds and when it is: any step can be told from its number.
double valueAt(std::int64_t step, std::size_t channel)
{
    return static_cast<double>((static_cast<std::uint64_t>(step) * 2654435761U + channel * 977) % 65536) - 32768;
}
Time timeAt(std::int64_t step) { return {{step / 1000, step % 1000 * 1'000'000'007}, true}; }

/// Asks for windows until all is there, each checked against its steps.
void look(const Capture& capture, bool even, unsigned seed, const std::atomic<bool>& done, std::atomic<int>& windows)
{
    CaptureMaker choose(seed);
    Doubles points, pairs;
    while (!done) {
        const std::int64_t end = capture.end(), begin = std::max<std::int64_t>(end - kKept, 0);
        if (end == 0)
            continue;
        Window window;
        window.channel = static_cast<std::size_t>(choose.below(kChannels));
        window.count = 1 + choose.below((end - begin) >> choose.below(12));
        window.first = begin + choose.below(end - begin - window.count + 1);
        try {
            window.origin = capture.timeOf(window.first);
            window.columnsPerSecond = even ? 4000 : 8;
            capture.points(window, points);
        } catch (const std::out_of_range&) {
            EXPECT_GT(capture.begin(), window.first); // gone meanwhile
            continue;
        }
        pairs.clear();
        for (std::int64_t step = window.first; step < window.first + window.count; ++step) {
            const double time =
                even ? static_cast<double>(step - window.first) / 1e6 : (timeAt(step) - window.origin).toDouble();
            pairs.insert(pairs.end(), {time, valueAt(step, window.channel)});
        }
        ASSERT_TRUE(sameBits(points, thinned(pairs, window.columnsPerSecond, false)));
        ++windows;
    }
}

void writeWhileOthersLook(bool even)
{
    LiveSettings settings;
    settings.channels.resize(kChannels);
    settings.layout.type = SampleType::I16;
    settings.mostSteps = kKept;
    if (even)
        settings.axis = TimeAxis{timeAt(0), Rate(1'000'000)};
    LiveCapture live(settings);
    std::atomic<bool> done = false;
    std::atomic<int> windows = 0;
    std::vector<std::thread> readers;
    for (unsigned i = 0; i < 2; ++i)
        readers.emplace_back([&, i] { look(live.capture(), even, i, done, windows); });
    Doubles values;
    std::vector<Time> times;
    for (std::int64_t step = 0; step < kSteps;) {
        const std::int64_t stop = std::min(step + 1 + step % 3001, kSteps);
        values.clear();
        times.clear();
        for (; step < stop; ++step) {
            for (std::size_t c = 0; c < kChannels; ++c)
                values.push_back(valueAt(step, c));
            if (!even)
                times.push_back(timeAt(step));
        }
        live.appendValues(values, times);
    }
    while (windows < 50 && !testing::Test::HasFailure())
        std::this_thread::yield();
    done = true;
    for (std::thread& reader : readers)
        reader.join();
    const Capture capture = live.capture();
    EXPECT_EQ(capture.end(), kSteps);
    EXPECT_LE(capture.end() - capture.begin(), kKept + 65536);
    EXPECT_GE(capture.end() - capture.begin(), kKept);
}

} // namespace

TEST(LiveCaptureThreads, EvenStepsAreLookedAtWhileTheyCome) { writeWhileOthersLook(true); }
TEST(LiveCaptureThreads, StepsWithTimesAreLookedAtWhileTheyCome) { writeWhileOthersLook(false); }

TEST(LiveCaptureThreads, WhatCannotBeAppendedLeavesAllAsItWas)
{
    LiveSettings settings;
    settings.channels.resize(2);
    settings.layout.type = SampleType::I8;
    LiveCapture live(settings);
    live.appendValues(Doubles{1, 2, 3, 4}, std::vector<Time>{{{5, 0}}, {{6, 0}}});
    const auto refuse = [&](const Doubles& values, const std::vector<Time>& times) {
        EXPECT_THROW(live.appendValues(values, times), std::invalid_argument);
        EXPECT_EQ(live.capture().end(), 2);
    };
    refuse({1, 2, 3}, {{{7, 0}}});
    refuse({1, 2}, {});
    refuse({1, 128}, {{{7, 0}}});
    refuse({1, 0.5}, {{{7, 0}}});
    refuse({1, 2, 3, 4}, {{{7, 0}}, {{6, 999}}});
    refuse({1, 2}, {{{5, 999}}});
    refuse({1, 2}, {{{7, 0}, true}});
    EXPECT_THROW(live.append({}, std::vector<Time>{{{7, 0}}}), std::invalid_argument);
    live.appendValues(Doubles{5, 6}, std::vector<Time>{{{6, 0}}});
    EXPECT_EQ(live.capture().end(), 3);
}

} // namespace tracery::captures
