#include "display/LineThinner.h"

#include "display/NaiveThinner.h"
#include "display/ScopeDisplay.h"

#include <tracery/embedded/EmbeddedHost.h>
#include <tracery/host/Publish.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

using namespace scope;

namespace {

struct Signal {
    std::vector<double> times;
    std::vector<double> values;
};

Signal randomSignal(std::mt19937& random, std::size_t count)
{
    Signal signal;
    double time = -5;
    for (std::size_t i = 0; i < count; ++i) {
        if (random() % 4 != 0)
            time += std::uniform_real_distribution<>(0, 0.1)(random);
        signal.times.push_back(time);
        const auto kind = random() % 60;
        signal.values.push_back(kind == 0   ? std::numeric_limits<double>::quiet_NaN()
                                : kind == 1 ? -std::numeric_limits<double>::infinity()
                                            : std::round(std::uniform_real_distribution<>(-9, 9)(random)));
    }
    return signal;
}

bool same(const std::vector<Point>& a, const std::vector<Point>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const Point& p, const Point& q) {
        return std::bit_cast<std::uint64_t>(p.x) == std::bit_cast<std::uint64_t>(q.x) &&
               std::bit_cast<std::uint64_t>(p.y) == std::bit_cast<std::uint64_t>(q.y);
    });
}

/// What must be drawn: every run of finite values thinned by itself, and a gap after it. Repeated times are moved apart
/// by the smallest step.
std::vector<Point> expectedLine(const Signal& signal, double ratio)
{
    std::vector<Point> line;
    naive::Doubles run;
    const auto endRun = [&] {
        if (run.empty())
            return;
        run.insert(run.end(), {naive::kInf, 0}); // opens a further column: what is pending shows
        double pixelStart = -naive::kInf;
        const naive::Doubles thin = naive::thinBatch(run, ratio, pixelStart);
        for (std::size_t i = 0; i + 2 < thin.size(); i += 2)
            line.push_back({thin[i], thin[i + 1]});
        line.push_back({naive::kNaN, naive::kNaN});
        run.clear();
    };
    double last = -naive::kInf;
    for (std::size_t i = 0; i < signal.times.size(); ++i) {
        last = std::max(signal.times[i], std::nextafter(last, naive::kInf));
        if (std::isfinite(signal.values[i]))
            run.insert(run.end(), {last, signal.values[i]});
        else
            endRun();
    }
    endRun();
    return line;
}

TEST(LineThinnerTest, LosesNoExtremeAndIsTheSameHoweverTheLineIsCut)
{
    tracery::embedded::EmbeddedHost host;
    const tracery::HostScope attached(host);
    tracery::publishClasses(host.objects());
    std::mt19937 random(3);
    for (int round = 0; round < 300; ++round) {
        const Signal signal = randomSignal(random, random() % 400);
        const double ratio = round % 3 == 0 ? 0.01 : 2.0;
        ScopeDisplay display(host, 0, 1, 1, 2);
        LineThinner whole(display.getTimeScopeLine(0), ratio);
        whole.add(signal.times.data(), signal.values.data(), signal.times.size(), 1);
        whole.finish();
        ASSERT_TRUE(same(display.points(0), expectedLine(signal, ratio))) << round;

        LineThinner pieces(display.getTimeScopeLine(1), ratio, 16 + random() % 100);
        for (std::size_t at = 0; at < signal.times.size();) {
            const std::size_t count = std::min<std::size_t>(random() % 9, signal.times.size() - at);
            pieces.add(signal.times.data() + at, signal.values.data() + at, count, 1);
            at += count;
            for (auto times = random() % 3; times > 0; --times)
                pieces.drawPending();
        }
        pieces.finish();
        ASSERT_TRUE(same(display.points(1), display.points(0))) << round;
    }
}

} // namespace
