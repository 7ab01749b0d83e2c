#include "Harness.h"
#include "OnePassRange.h"
#include "PlainSubjects.h"

#include <cmath>
#include <random>

namespace tracery::bench {

namespace {

constexpr double kStepSeconds = 1e-6;

/// noise: leaves the branches of extremes least to predict; ramp: every point is a new maximum; square: all values tie.
std::vector<double> lineOf(const std::string& signal, std::size_t points)
{
    std::minstd_rand random(1);
    std::uniform_real_distribution<double> white(-1, 1);
    std::vector<double> line;
    line.reserve(2 * points);
    for (std::size_t i = 0; i < points; ++i) {
        const auto position = static_cast<double>(i);
        const double value = signal == "noise"  ? white(random)
                             : signal == "ramp" ? position
                             : i / 1000 % 2     ? 1.0
                                                : -1.0;
        line.insert(line.end(), {kStepSeconds * position, value});
    }
    return line;
}

struct Size {
    const char* name;
    std::size_t points; ///< of 16 bytes
};
constexpr Size kL2{"L2", 1 << 14}, kL3{"L3", 1 << 18}, kDram{"DRAM", 16'000'000};

Row row(const std::string& signal, double pointsPerColumn, const Size& size, Target target)
{
    char columns[32];
    std::snprintf(columns, sizeof columns, "%g points a column", pointsPerColumn);
    return {"batch thinning", signal + ", " + columns + ", " + size.name, target, [=] {
                const auto line = std::make_shared<const std::vector<double>>(lineOf(signal, size.points));
                const double columnsPerSecond = 0.5 / (pointsPerColumn * kStepSeconds);
                Work work{static_cast<double>(size.points), thinning(*line, columnsPerSecond),
                          [line] { keep(onePassRange(*line)); }, nullptr};
                if (size.points != kDram.points)
                    work.plain = tracery_plain::bench::thinning(*line, columnsPerSecond);
                return work;
            }};
}

} // namespace

Rows thinningRows()
{
    Rows rows;
    for (const char* signal : {"noise", "ramp", "square"})
        rows.push_back(row(signal, 260, kL3, {0.45, 9.0, {}}));
    rows.push_back(row("noise", 260, kL2, {}));
    for (const char* signal : {"noise", "ramp"})
        rows.push_back(row(signal, 4000, kDram, {0.85, {}, {}}));
    for (const double pointsPerColumn : {16.0, 20.3, 26.0})
        rows.push_back(row("noise", pointsPerColumn, kL3, {{}, 2.0, {}}));
    rows.push_back(row("ramp", 20.3, kL3, {{}, 2.0, {}}));
    rows.push_back(row("noise", 4, kL3, {}));
    return rows;
}

} // namespace tracery::bench
