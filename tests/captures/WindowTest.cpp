#include "CaptureModel.h"

#include <cstdlib>

namespace tracery::captures {

namespace {

/// Of windows in all: TRACERY_WINDOWS, for more than all tests make.
int windowsToTry()
{
    const char* const wanted = std::getenv("TRACERY_WINDOWS");
    return wanted != nullptr ? std::atoi(wanted) : 6000;
}

std::string describe(const CaptureModel& model, const Window& window)
{
    return "type " + std::to_string(static_cast<int>(model.layout.type)) + ", " + std::to_string(model.lines()) +
           " lines of " + std::to_string(model.steps()) + " steps" + (model.axis ? ", even" : "") + "; " +
           std::to_string(window.count) + " from " + std::to_string(window.first) + " at " +
           std::to_string(window.columnsPerSecond) + (window.finishLast ? ", finished" : "");
}

void expectSameWindow(const CaptureModel& model, const Capture& capture, const Window& window, Doubles& points)
{
    capture.points(window, points);
    const Doubles wanted = thinned(model.full(window), window.columnsPerSecond, window.finishLast);
    if (sameBits(points, wanted))
        return;
    std::size_t i = 0;
    while (i < std::min(points.size(), wanted.size()) &&
           std::bit_cast<std::uint64_t>(points[i]) == std::bit_cast<std::uint64_t>(wanted[i]))
        ++i;
    const auto at = [i](const Doubles& list) { return i < list.size() ? testing::PrintToString(list[i]) : "none"; };
    FAIL() << describe(model, window) << ": number " << i << " of " << points.size() << " is " << at(points) << ", not "
           << at(wanted) << " of " << wanted.size();
}

/// Appends the steps in pieces.
void appendAll(const CaptureModel& model, LiveCapture& live, CaptureMaker& maker)
{
    for (std::size_t step = 0; step < static_cast<std::size_t>(model.steps());) {
        const auto count = std::min(static_cast<std::size_t>(1 + maker.below(maker.oneIn(3) ? 100000 : 700)),
                                    static_cast<std::size_t>(model.steps()) - step);
        std::span<const Time> times;
        if (!model.axis)
            times = std::span(model.times).subspan(step, count);
        live.appendValues(std::span(model.values).subspan(step * model.lines(), count * model.lines()), times);
        step += count;
    }
}

} // namespace

TEST(CaptureWindows, AreTheThinnersToTheLastBit)
{
    const int windows = windowsToTry(), captures = std::min(60 + windows / 2000, 700);
    Doubles points;
    for (int c = 0; c < captures; ++c) {
        CaptureMaker maker(static_cast<unsigned>(c));
        const CaptureModel model = maker.make();
        LiveCapture live(model.settings());
        appendAll(model, live, maker);
        const Capture capture = live.capture();
        ASSERT_EQ(capture.end(), model.steps());
        for (int w = 0; w < windows / captures + 1; ++w) {
            const Window window = maker.window(model);
            ASSERT_NO_FATAL_FAILURE(expectSameWindow(model, capture, window, points)) << "capture " << c;
        }
        for (int k = 0; k < 20; ++k) {
            const std::int64_t step = maker.below(model.steps());
            const Time time = model.timeOf(step);
            ASSERT_EQ(capture.timeOf(step), time);
            const std::int64_t found = capture.firstFrom(time);
            ASSERT_LE(found, step);
            ASSERT_EQ(model.timeOf(found), time);
            ASSERT_TRUE(found == 0 || model.timeOf(found - 1) < time);
            const Stretch stretch{static_cast<std::size_t>(maker.below(static_cast<std::int64_t>(model.channels))),
                                  Part::Real, step, static_cast<std::size_t>(1 + maker.below(5)), 1 + maker.below(70)};
            const std::int64_t last = step + static_cast<std::int64_t>(stretch.count - 1) * stretch.stride;
            Doubles read(stretch.count), wanted;
            if (last >= model.steps())
                continue;
            capture.read(stretch, read.data());
            for (std::int64_t s = step; s <= last; s += stretch.stride)
                wanted.push_back(model.values[static_cast<std::size_t>(s) * model.lines() +
                                              stretch.channel * (model.complex ? 2 : 1)]);
            ASSERT_TRUE(sameBits(read, wanted));
        }
    }
}

} // namespace tracery::captures
