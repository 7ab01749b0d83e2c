#include "figures/Picture.h"

#include "Sizes.h"
#include "Styles.h"
#include "drawTrace.h"
#include "support/TemporaryFolder.h"
#include "ticks.h"

#include <tracery/basics/WholeFile.h>
#include <tracery/figures/Figure.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <random>
#include <regex>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

using namespace tracery::figures;
using namespace tracery::basics;
namespace fs = std::filesystem;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

class PictureTest : public testing::Test, protected tracery::test::TemporaryFolder {
protected:
    std::string bytesOf(const Figure& figure, const std::string& ending) const
    {
        writeFigure(figure, path("bytes" + ending));
        return read("bytes" + ending);
    }
};

std::string failure(const Figure& figure, const std::string& path)
{
    try {
        writeFigure(figure, path);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "none";
}

Figure figureOf(std::vector<Point> points)
{
    Figure figure;
    figure.panels = {
        {.yLabel = "v", .yUnit = "V", .yMin = -1, .yMax = 1, .traces = {{"a", std::move(points)}}, .levels = {}}};
    figure.width = 400;
    figure.height = 300;
    return figure;
}

constexpr int kUnderLegend = 30; // pixels from the top of a figure that has no title

/// What a label with its unit means: "−1.5", "mV". No regard to how it was made.
double meaning(std::string label, const std::string& unit)
{
    static const std::map<std::string, double> kUnits = {
        {"y", 1e-24}, {"z", 1e-21}, {"a", 1e-18}, {"f", 1e-15}, {"p", 1e-12}, {"n", 1e-9},
        {"µ", 1e-6},  {"m", 1e-3},  {"", 1},      {"k", 1e3},   {"M", 1e6},   {"G", 1e9},
        {"T", 1e12},  {"P", 1e15},  {"E", 1e18},  {"Z", 1e21},  {"Y", 1e24}};
    static const std::map<std::string, double> kTimes = {{"min", 60}, {"h", 3600}, {"d", 86400}};
    static const std::vector<std::string> kDigits = {"⁰", "¹", "²", "³", "⁴", "⁵", "⁶", "⁷", "⁸", "⁹", "⁻"};

    if (label.starts_with("−"))
        label.replace(0, std::string("−").size(), "-");
    double factor = 1;
    std::string rest = unit;
    if (rest.starts_with("×10")) {
        std::string power;
        for (rest.erase(0, std::string("×10").size());;) {
            const auto digit = std::find_if(kDigits.begin(), kDigits.end(),
                                            [&](const std::string& each) { return rest.starts_with(each); });
            if (digit == kDigits.end())
                break;
            power += "0123456789-"[digit - kDigits.begin()];
            rest.erase(0, digit->size());
        }
        factor = std::pow(10.0, std::stoi(power));
        rest.erase(0, rest.starts_with(" ") ? 1 : 0);
    }
    if (kTimes.contains(rest))
        return std::stod(label) * factor * kTimes.at(rest);
    for (const std::string base : {"V", "s"})
        if (rest.ends_with(base))
            return std::stod(label) * factor * kUnits.at(rest.substr(0, rest.size() - base.size()));
    return std::stod(label) * factor;
}

double offsetMeaning(const std::string& offset)
{
    if (offset.empty())
        return 0;
    const std::size_t space = offset.find(' ');
    return meaning(offset.substr(0, space), space == std::string::npos ? "" : offset.substr(space + 1));
}

/// Digits with or without decimals, a minus only before what is not zero, no needless zeros before the point.
bool isPlainNumber(const std::string& label)
{
    static const std::regex plain("(−(?!0(\\.0+)?$))?(0|[1-9][0-9]*)(\\.[0-9]+)?");
    return std::regex_match(label, plain);
}

TEST_F(PictureTest, TicksOfRangesOfEverySizeAreOrderedInsideAndToldApartByTheirLabels)
{
    std::mt19937_64 random(7);
    const auto uniform = [&](double low, double high) { return std::uniform_real_distribution(low, high)(random); };
    const std::vector<std::string> units = {"", "V", "s", "dB", "°"};
    for (int i = 0; i < 20000; ++i) {
        const std::string& unit = units[random() % units.size()];
        const bool usual = i % 2 == 0; // as far from zero as doubles tell apart
        const double reach = std::pow(10.0, usual ? uniform(-12, 12) : uniform(-250, 290));
        const double low = reach * uniform(-1.5, 0.5) * std::pow(10.0, usual ? uniform(0, 14.5) : 0);
        const double high = low + std::max(reach, narrowestSpan(low, low) * 1.01);
        const double span = high - low;
        const int wished = static_cast<int>(uniform(1, 14));
        const Axis axis = makeAxis({low, high}, wished, unit);
        SCOPED_TRACE(testing::Message() << low << " to " << high << ' ' << unit << " in " << wished << ": "
                                        << axis.ticks.front().label << ' ' << axis.unit << axis.offset);

        ASSERT_GE(axis.ticks.size(), 2U);
        ASSERT_LE(axis.ticks.size(), static_cast<std::size_t>(std::max(wished + 1, 5)));
        std::set<std::string> labels;
        double before = -kInfinity;
        for (const Tick& tick : axis.ticks) {
            ASSERT_TRUE(tick.at > before && tick.at >= low && tick.at <= high);
            before = tick.at;
            ASSERT_TRUE(labels.insert(tick.label).second);
            ASSERT_TRUE(isPlainNumber(tick.label)) << tick.label;
            ASSERT_LE(tick.label.size(), 7 + std::string("−").size()) << tick.label;
            ASSERT_NEAR(meaning(tick.label, axis.unit) + offsetMeaning(axis.offset), tick.at,
                        1e-6 * span + 4e-16 * std::abs(tick.at))
                << tick.label;
        }
    }
}

TEST_F(PictureTest, AxesReadWell)
{
    const auto read = [](double low, double high, const std::string& unit) {
        const Axis axis = makeAxis({low, high}, 5, unit);
        std::string text;
        for (const Tick& tick : axis.ticks)
            text += tick.label + ' ';
        return text + axis.unit + axis.offset;
    };
    EXPECT_EQ(read(-1.1, 1.1, "V"), "−1.0 −0.5 0.0 0.5 1.0 V");
    EXPECT_EQ(read(0, 0.02, "s"), "0 5 10 15 20 ms");
    EXPECT_EQ(read(0, 0.1 + 0.2, "s"), "0 100 200 300 ms");
    EXPECT_EQ(read(863.000012, 863.000047, "s"), "20 30 40 µs+863 s");
    EXPECT_EQ(read(-863.000047, -863.000012, "s"), "−40 −30 −20 µs−863 s");
    EXPECT_EQ(read(0, 170, "s"), "0 50 100 150 s");
    EXPECT_EQ(read(0, 1800, "s"), "0 10 20 30 min");
    EXPECT_EQ(read(0, 86400, "s"), "0 6 12 18 24 h");
    EXPECT_EQ(read(0, 45 * 86400, "s"), "0 10 20 30 40 d");
    EXPECT_EQ(read(86400 * 1000, 86400 * 1000 + 18000, "s"), "0 1 2 3 4 5 h+1000 d");
    EXPECT_EQ(read(-180, 180, "°"), "−180 −90 0 90 180 °");
    EXPECT_EQ(read(-100, 0, "dB"), "−100 −80 −60 −40 −20 0 dB");
    EXPECT_EQ(read(0, 4e6, ""), "0 1 2 3 4 ×10⁶");
    EXPECT_EQ(read(0, 4e-6, "1/Hz"), "0 1 2 3 4 ×10⁻⁶ 1/Hz");
    EXPECT_EQ(read(0, 5000, "uV"), "0 1 2 3 4 5 mV"); // a unit that has a prefix does not get another
}

TEST_F(PictureTest, ALogarithmicAxisCountsPowersOfTenAndPlacesValuesByThem)
{
    const auto read = [](double low, double high, int wished) {
        std::string text;
        for (const Tick& tick : makeDecadeAxis({low, high}, wished, "%").ticks)
            text += tick.label + ' ';
        return text;
    };
    EXPECT_EQ(read(0.001, 100, 9), "0.001 0.01 0.1 1 10 100 ");
    EXPECT_EQ(read(0.0002, 99, 9), "0.001 0.01 0.1 1 10 ");
    EXPECT_EQ(read(1e-7, 100, 3), "10⁻⁷ 0.0001 0.1 100 ");
    const Mapping mapping({0, 0, 10, 400}, {0, 1}, {0.01, 100}, true);
    for (const auto& [value, y] : {std::pair{100.0, 0.0}, {1.0, 200.0}, {0.01, 400.0}, {std::sqrt(10.0), 150.0}})
        EXPECT_NEAR(mapping.y(value), y, 1e-9) << value;
    EXPECT_GT(mapping.y(0), 1e9);
    EXPECT_GT(mapping.y(-1), 1e9);
}

TEST_F(PictureTest, ComfortableLimitsLeaveAMarginOfFiveToTenPercent)
{
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> exponent(-200, 200), part(-3, 3);
    for (int i = 0; i < 2000; ++i) {
        const double span = std::pow(10.0, exponent(random));
        const double low = span * part(random), high = low + span;
        const Limits limits = comfortableLimits(low, high);
        EXPECT_TRUE(limits.low <= low - 0.049 * span && limits.low >= low - 0.101 * span) << low << ' ' << high;
        EXPECT_TRUE(limits.high >= high + 0.049 * span && limits.high <= high + 0.101 * span) << low << ' ' << high;
    }
    const auto is = [](Limits limits, double low, double high) { return limits.low == low && limits.high == high; };
    EXPECT_TRUE(is(comfortableLimits(5, 5), 4.5, 5.5));
    EXPECT_TRUE(is(comfortableLimits(0, 0), -1, 1));
    EXPECT_TRUE(is(comfortableLimits(kInfinity, -kInfinity), 0, 1));
    EXPECT_TRUE(is(comfortableLimits(kNaN, 1), 0, 1));
}

TEST_F(PictureTest, ASegmentIsCutToTheBoxAlongItself)
{
    const Box box{0, 0, 100, 50};
    std::mt19937_64 random(5);
    for (int i = 0; i < 20000; ++i) {
        // Through a point near the box, with its ends any distance away.
        std::uniform_real_distribution<double> nearby(-30, 130), turn(0, 6.28), decades(0, 12);
        const Point through{nearby(random), nearby(random)};
        const double angle = turn(random);
        const auto end = [&](double sign) {
            const double distance = sign * std::pow(10.0, decades(random));
            return Point{through.x + distance * std::cos(angle), through.y + distance * std::sin(angle)};
        };
        const Point a = end(-1), b = end(1);
        const auto inBox = [&](const Point& p, double slack) {
            return p.x >= box.left - slack && p.x <= box.right + slack && p.y >= box.top - slack &&
                   p.y <= box.bottom + slack;
        };
        const auto offLine = [&](const Point& p) {
            return std::abs((p.x - through.x) * std::sin(angle) - (p.y - through.y) * std::cos(angle));
        };
        const auto inside = clipped(a, b, box);
        if (inside) {
            EXPECT_TRUE(inBox(inside->first, 0) && inBox(inside->second, 0));
            EXPECT_LT(std::max(offLine(inside->first), offLine(inside->second)), 1e-3);
        }
        EXPECT_TRUE(inside || !inBox(through, -1e-3));
        const auto is = [](const Point& p, const Point& q) { return p.x == q.x && p.y == q.y; };
        EXPECT_TRUE(!inBox(a, 0) || is(inside->first, a));
        EXPECT_TRUE(!inBox(b, 0) || is(inside->second, b));
    }
}

TEST_F(PictureTest, ThePlottingAreaIsAsWideAsPromised)
{
    for (const int width : {100, 333, 1200, 5000}) {
        Figure figure = figureOf({{0, 0}, {1, 0}});
        figure.width = width;
        figure.panels[0].traces[0].label.clear();
        const std::set<int> columns = Picture(figure, path("wide.png")).colouredColumns(0);
        EXPECT_EQ(*columns.begin(), leftMargin(width)) << "the frame must not cover the first";
        EXPECT_EQ(*columns.rbegin() - *columns.begin() + 1, plotWidth(width)) << width;
    }
}

TEST_F(PictureTest, AGapStaysBlankAndASingleSampleShows)
{
    const std::vector<Point> points = {{0, 0.5},    {0.25, -0.5}, {kNaN, kNaN}, {0.5, 0.3},
                                       {0.6, kNaN}, {0.75, 0.1},  {1, 0.2}};
    const std::set<int> columns = Picture(figureOf(points), path("gap.png")).colouredColumns(kUnderLegend);
    const auto columnAt = [](double x) { return leftMargin(400) + static_cast<int>(x * plotWidth(400)); };
    std::set<int> expected;
    for (int x = columnAt(0) + 1; x < columnAt(1); ++x)
        if (x <= columnAt(0.25) || x >= columnAt(0.75) || std::abs(x - columnAt(0.5)) <= 1)
            expected.insert(x);
    for (const int x : expected)
        EXPECT_TRUE(columns.contains(x)) << x;
    for (const int x : columns) // what reaches beyond are round ends
        EXPECT_TRUE(expected.contains(x) || expected.contains(x - 2) || expected.contains(x + 2)) << x;
}

TEST_F(PictureTest, NothingIsDrawnOutsideOfItsPanelOrRange)
{
    Figure figure = figureOf({{-5, -5}, {0.2, 40}, {0.4, -1e300}, {0.6, kInfinity}, {7, 0.1}});
    const std::set<int> columns = Picture(figure, path("clip.png")).colouredColumns(kUnderLegend);
    EXPECT_GE(*columns.begin(), leftMargin(400));
    EXPECT_LT(*columns.rbegin(), leftMargin(400) + plotWidth(400));

    const std::string plain = bytesOf(figure, ".png");
    figure.positions = {{-0.1, "early"}, {kNaN, "never"}, {1.1, "late"}};
    figure.panels[0].levels = {{2, "high"}, {-kInfinity, "low"}};
    EXPECT_TRUE(bytesOf(figure, ".png") == plain);
    figure.positions.push_back({0.5, "middle"});
    EXPECT_FALSE(bytesOf(figure, ".png") == plain);
}

TEST_F(PictureTest, TracesOfOneNameShareAStyleAcrossPanelsOnly)
{
    Figure figure;
    const auto panel = [](std::vector<std::string> names) {
        Panel made;
        for (std::string& name : names)
            made.traces.push_back({std::move(name), {}});
        return made;
    };
    figure.panels = {panel({"a", "b", "b"}), panel({"b", "a", "b", "c"})};
    const Styles styles(figure, themeOf(ThemeEnum::Light));
    EXPECT_EQ(styles.labels(), (std::vector<std::string>{"a", "b", "b", "c"}));
    const auto same = [](const TraceStyle& a, const TraceStyle& b) {
        return a.dashes.data() == b.dashes.data() && a.colour.red == b.colour.red && a.colour.green == b.colour.green &&
               a.colour.blue == b.colour.blue;
    };
    EXPECT_TRUE(same(styles.of(0, 0), styles.of(1, 1)));
    EXPECT_TRUE(same(styles.of(0, 2), styles.of(1, 2)));
    EXPECT_FALSE(same(styles.of(0, 1), styles.of(0, 2)));
    for (const auto theme : {ThemeEnum::Light, ThemeEnum::Dark, ThemeEnum::Print})
        for (std::size_t i = 0; i < (theme == ThemeEnum::Print ? 16U : 32U); ++i)
            for (std::size_t j = 0; j < i; ++j)
                EXPECT_FALSE(same(traceStyle(i, themeOf(theme)), traceStyle(j, themeOf(theme)))) << i << ' ' << j;
    EXPECT_TRUE(traceStyle(32 + 9, themeOf(ThemeEnum::Print)).dashes.empty()) << "a thousand traces are drawn in time";
}

TEST_F(PictureTest, ASignalThatEndsTheProgramLeavesNoHalfPicture)
{
    const auto files = [this] { return std::distance(fs::directory_iterator(path(".")), fs::directory_iterator()); };
    const auto endInBetween = [this](void (*action)(int)) {
        std::signal(SIGTERM, action);
        WholeFile file(path("cut.png"));
        file.write("half", 4);
        std::raise(SIGTERM);
        file.keep();
        std::exit(0);
    };
    EXPECT_EXIT(endInBetween(SIG_DFL), testing::KilledBySignal(SIGTERM), "");
    EXPECT_EQ(files(), 0);
    EXPECT_EXIT(endInBetween(SIG_IGN), testing::ExitedWithCode(0), "");
    EXPECT_EQ(files(), 1) << "a signal that is ignored ends nothing";
}

TEST_F(PictureTest, ExtremeValuesAndAnyTextAreDrawn)
{
    const std::vector<double> values = {0, 1, -1, 1e308, -1.7e308, kInfinity, -kInfinity, kNaN, 5e-324, 1 + 1e-15};
    std::mt19937_64 random(11);
    const auto any = [&] { return values[random() % values.size()]; };
    const auto text = [&] {
        std::string bytes(random() % 300, ' ');
        for (char& byte : bytes)
            byte = static_cast<char>(random() % 4 == 0 ? random() % 128 : random() % 256);
        return bytes;
    };
    for (int i = 0; i < 60; ++i) {
        Figure figure;
        figure.title = text();
        figure.xUnit = i % 2 == 0 ? "s" : text();
        figure.xMin = any();
        figure.xMax = any();
        figure.width = 100 + static_cast<int>(random() % 300);
        figure.height = 100 + static_cast<int>(random() % 300);
        for (std::size_t p = random() % 40; p > 0; p /= 2) {
            Panel panel{text(), text(), any(), any(), {}, {{any(), text()}, {any(), text()}}, random() % 2 == 0};
            for (int t = 0; t < 30; ++t) {
                Trace& trace = panel.traces.emplace_back(Trace{text(), {}});
                for (int k = 0; k < 20; ++k)
                    trace.points.push_back({any(), any()});
                trace.marks = {{trace.points[0], text()}, {trace.points[1], text()}};
            }
            figure.panels.push_back(panel);
        }
        figure.positions = {{any(), text()}, {any(), text()}, {any(), text()}};
        EXPECT_EQ(failure(figure, path(i % 3 == 0 ? "x.svg" : "x.png")), "none");
    }
}

} // namespace
