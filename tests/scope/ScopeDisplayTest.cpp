#include "display/ScopeDisplay.h"

#include "display/PanelSorter.h"

#include <tracery/embedded/EmbeddedHost.h>
#include <tracery/host/Publish.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

using namespace scope;
using tracery::TimeOverrunModeEnum;

namespace {

/// What the window of a display shows in the end, when the samples come in blocks of up to `mostSteps`.
struct Shown {
    double start;
    std::vector<double> times;
    std::vector<double> values;
    bool operator==(const Shown&) const = default;
};
Shown show(TimeOverrunModeEnum mode, const std::vector<double>& times, const std::vector<double>& values,
           std::size_t mostSteps, std::mt19937& random)
{
    tracery::embedded::EmbeddedHost host;
    const tracery::HostScope attached(host);
    tracery::publishClasses(host.objects());
    ScopeDisplay display(host, 0, 10, 1000, 1); // columns narrower than the samples' distance: all are drawn
    display.follow(mode);
    for (std::size_t at = 0; at < times.size();) {
        const std::size_t count = std::min(1 + random() % mostSteps, times.size() - at);
        const auto part = display.advance({times.data() + at, count});
        display.add(0, part.data(), values.data() + (part.data() - times.data()), part.size(), 1);
        at += count;
    }
    display.finish();
    Shown shown{display.getStartTime(), {}, {}};
    for (const Point& point : display.points(0))
        if (point.x >= shown.start && point.x <= display.windowEnd()) {
            shown.times.push_back(point.x);
            shown.values.push_back(point.y);
        }
    return shown;
}

TEST(ScopeDisplayTest, ShowsTheSamplesOfItsWindowHoweverTheyCome)
{
    std::mt19937 random(5);
    for (const double end : {9.0, 10.0, 20.0, 20.5, 37.0, 20000.0}) {
        std::vector<double> times, values;
        for (double time = 0; time <= end; time += 0.5) {
            times.push_back(time);
            values.push_back(std::sin(time));
        }
        for (const auto mode : {TimeOverrunModeEnum::Wrap, TimeOverrunModeEnum::Scroll}) {
            const double sweep = std::ceil(end / 10 - 1) * 10; // a boundary belongs to the sweep before
            const double start = std::max(0.0, mode == TimeOverrunModeEnum::Wrap ? sweep : end - 10);
            Shown expected{start, {}, {}};
            for (std::size_t i = 0; i < times.size(); ++i)
                if (times[i] >= start) {
                    expected.times.push_back(times[i]);
                    expected.values.push_back(values[i]);
                }
            for (const std::size_t mostSteps : {1U, 2U, 50U, 1000U})
                EXPECT_EQ(show(mode, times, values, mostSteps, random), expected) << end << ' ' << mostSteps;
        }
    }
}

TEST(ScopeDisplayTest, SamplesStayAtTheirTimesWhereADoubleHoldsSeveral)
{
    tracery::embedded::EmbeddedHost host;
    const tracery::HostScope attached(host);
    tracery::publishClasses(host.objects());
    for (const double from : {0.0, 1.76e9, -1.76e9}) {
        std::vector<double> times, numbers;
        for (int i = 0; i < 100000; ++i) {
            times.push_back(from + i * 1e-7);
            numbers.push_back(i);
        }
        ScopeDisplay display(host, from, 0.01, 50, 1);
        for (int round = 0; round < 2; ++round) {
            display.add(0, times.data(), numbers.data(), times.size(), 1);
            display.finish();
            const std::vector<Point> points = display.points(0);
            ASSERT_GE(points.size(), 50U);
            for (std::size_t i = 0; i + 1 < points.size(); ++i) // the last one ends the line
                ASSERT_EQ(points[i].x, times[static_cast<std::size_t>(points[i].y)]) << from;
            display.restart(from);
        }
    }
}

TEST(PanelSorterTest, ALineWithNothingInTheWindowLeavesItsPanelsLimitsAlone)
{
    for (const bool silentFirst : {true, false}) {
        PanelSorter sorter;
        const Limits seen[] = {{}, {20, 40}};
        for (const bool silent : {silentFirst, !silentFirst})
            EXPECT_EQ(sorter.add("V", "V", {}, seen[silent ? 0 : 1]), 0U);
        const std::vector<Panel> panels = sorter.finish();
        EXPECT_GT(panels[0].yMin, 10);
        EXPECT_GT(panels[0].yMax, 40);
    }
}

} // namespace
