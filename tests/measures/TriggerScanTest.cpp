#include "recordings/TableRecording.h"

#include <tracery/measures/TriggerScan.h>
#include <tracery/measures/explain.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

using namespace tracery::measures;
using namespace tracery::recordings;
using namespace tracery::TDTC;

namespace {

constexpr double kStep = 1e-3;
constexpr std::size_t kCell = 1000;

/// A kind of trigger, and a signal made of cells of a thousand samples of which one in thirteen holds what it is to
/// find; the others hold what comes close.
struct Plant {
    TypeEnum type;
    double (*value)(std::size_t place, bool planted);
    std::size_t eventPlace;
    double minTime, maxTime;
};

double pulse(std::size_t place, std::size_t from, std::size_t to) { return place >= from && place < to ? 1.0 : 0.0; }

const Plant kPlants[] = {
    {TypeEnum::Edge, [](std::size_t i, bool planted) { return pulse(i, 100, 200) * (planted ? 1.0 : 0.45); }, 100, 0,
     1e9},
    {TypeEnum::PulseWidth, [](std::size_t i, bool planted) { return pulse(i, 100, planted ? 200 : 150); }, 200, 0.08,
     0.12},
    {TypeEnum::Transition,
     [](std::size_t i, bool planted) {
         return planted && i >= 100 && i < 120 ? static_cast<double>(i - 100) / 20 : pulse(i, planted ? 120 : 100, 300);
     },
     116, 0.01, 0.03},
    {TypeEnum::Runt, [](std::size_t i, bool planted) { return pulse(i, 100, 150) * (planted ? 0.5 : 1.0); }, 150, 0,
     1e9},
    {TypeEnum::Window, [](std::size_t i, bool planted) { return 1 - pulse(i, 100, 150) * (planted ? 0.5 : 0.15); }, 150,
     0, 1e9},
    {TypeEnum::Timeout,
     [](std::size_t i, bool planted) { return planted && i >= 300 && i < 700 ? 0.0 : pulse(i % 50, 10, 25); }, 461, 0,
     1e9},
};

bool isPlanted(std::size_t cell) { return cell % 13 == 5; }

TriggerSettings settingsFor(const Plant& plant)
{
    TriggerSettings settings;
    settings.type = plant.type;
    settings.level = LevelSetting{0.5, false};
    settings.hysteresis = {0.1, false};
    settings.upper = LevelSetting{0.8, false};
    settings.lower = LevelSetting{0.2, false};
    settings.detector.minTime = plant.minTime;
    settings.detector.maxTime = plant.maxTime;
    settings.detector.timeout = 0.2;
    return settings;
}

Table signalOf(const Plant& plant, std::size_t steps)
{
    return {1, false, steps, [](std::size_t i) { return static_cast<double>(i) * kStep; },
            [&plant](std::size_t i, std::size_t) { return plant.value(i % kCell, isPlanted(i / kCell)); }};
}

BatchReader reader(Table table, std::size_t block)
{
    return {std::make_unique<TableRecording>(std::move(table)), -1e9, 1e18, block};
}

TEST(TriggerScanTest, FindsExactlyThePlantedEventsAtAnyBlockSize)
{
    // A longer run on request: 100 million samples take minutes.
    const char* wanted = std::getenv("TRACERY_TEST_SAMPLES");
    const std::size_t steps = wanted != nullptr ? std::strtoull(wanted, nullptr, 10) : 200000;
    for (const Plant& plant : kPlants)
        for (const std::size_t block : {1UL, 7UL, 1024UL, 1000000UL}) {
            SCOPED_TRACE(static_cast<int>(plant.type) * 10000000 + static_cast<int>(block));
            TriggerScan scan(reader(signalOf(plant, steps), block), 0, 0, 0.5);
            configure(scan.controller(), settingsFor(plant), {{0, 1}, 1});
            std::size_t cell = 5;
            std::size_t misplaced = 0;
            const TriggerTotals totals = scan.run(
                [&](const TriggerEvent& event) {
                    const double expected = static_cast<double>(cell * kCell + plant.eventPlace) * kStep;
                    misplaced += std::abs(event.time - expected) > 1.5 * kStep;
                    // Each is shown by itself: they are thirteen seconds apart, and windows are half a second.
                    misplaced += event.fate == Fate::shown && std::abs(event.start + 0.25 - event.time) > 1e-9;
                    cell += 13;
                    return true;
                },
                [](double) {});
            const std::size_t planted = (steps / kCell + 7) / 13;
            EXPECT_EQ(totals.found(), planted);
            EXPECT_EQ(totals.shown + totals.notFull, planted);
            EXPECT_EQ(misplaced, 0U);
        }
}

TEST(TriggerScanTest, FindsThemAlsoWhereBlocksPartSamplesOfOneTime)
{
    const double first = 1.76e9;
    for (const std::size_t block : {1UL, 5UL, 1000000UL})
        for (const bool autoLevel : {false, true}) {
            Table table = signalOf(kPlants[0], 200000);
            table.time = [first](std::size_t i) { return first + static_cast<double>(i) * 1e-7; };
            TriggerScan scan(reader(std::move(table), block), 0, first, 1e-3);
            TriggerSettings settings = settingsFor(kPlants[0]);
            if (autoLevel)
                settings.level.reset();
            configure(scan.controller(), settings, {{0, 1}, 1});
            std::vector<double> events;
            scan.run([&](const TriggerEvent& event) { return events.push_back(event.time), true; }, [](double) {});
            std::size_t misplaced = 0, cell = 5;
            if (!autoLevel)
                for (const double event : events) {
                    misplaced += std::abs(event - first - static_cast<double>(cell * kCell + 100) * 1e-7) > 5e-7;
                    cell += 13;
                }
            EXPECT_EQ(misplaced, 0U);
            EXPECT_GE(events.size(), 15U) << block << autoLevel;
        }
}

TEST(TriggerScanTest, TotalsReconcileAndOnceShowsOneWindow)
{
    const Plant& edge = kPlants[0];
    for (const ModeEnum mode : {ModeEnum::Normal, ModeEnum::Once, ModeEnum::Auto, ModeEnum::Off}) {
        TriggerScan scan(reader(signalOf(edge, 200000), 100), 0, 0, 2);
        TriggerSettings settings = settingsFor(edge);
        settings.mode = mode;
        configure(scan.controller(), settings, {{0, 1}, 1});
        std::uint64_t seen = 0;
        const TriggerTotals totals = scan.run([&](const TriggerEvent&) { return ++seen > 0; }, [](double) {});
        EXPECT_EQ(seen, totals.found() + totals.freeRuns);
        EXPECT_EQ(totals.found(), mode == ModeEnum::Off ? 0U : 15U);
        EXPECT_EQ(totals.superseded, 0U) << "a window is asked for when it is full, before the next one can be";
        if (mode == ModeEnum::Once) {
            EXPECT_EQ(totals.shown, 1U);
            EXPECT_GT(totals.disarmed, 0U);
        }
        EXPECT_EQ(totals.freeRuns > 0, mode == ModeEnum::Auto);
    }
}

TEST(TriggerScanTest, SaysWhyNothingIsShown)
{
    const auto why = [](const Plant& plant, auto&& change, double span = 0.5) {
        TriggerSettings settings = settingsFor(plant);
        change(settings);
        TriggerScan scan(reader(signalOf(plant, 20000), 1024), 0, 0, span);
        configure(scan.controller(), settings, {{0, 1}, 1});
        const TriggerTotals totals = scan.run([](const TriggerEvent&) { return true; }, [](double) {});
        const SignalRange range = measureRange(reader(signalOf(plant, 20000), 1024), 0, settings.part);
        return explainNothingShown(settings, scan.controller(), totals, range, span);
    };
    const Plant &edge = kPlants[0], &width = kPlants[1], &runt = kPlants[3], &timeout = kPlants[5];
    EXPECT_EQ(why(edge, [](TriggerSettings& s) { s.level->value = 7; }),
              "nothing triggers: the level 7 is outside the signal's range, 0 to 1");
    EXPECT_EQ(why(runt, [](TriggerSettings& s) { std::swap(s.upper, s.lower); }),
              "nothing triggers: the levels are inverted: the lower one is 0.8, the upper one 0.2");
    EXPECT_EQ(why(width, [](TriggerSettings& s) { s.detector.minTime = 3, s.detector.maxTime = 4; }),
              "nothing triggers: 20 pulses measured, none of them lasted 3 s to 4 s");
    EXPECT_EQ(why(timeout, [](TriggerSettings& s) { s.detector.timeout = 9; }),
              "nothing triggers: the signal never goes 9 s without crossing the level 0.5");
    EXPECT_EQ(why(edge, [](TriggerSettings& s) { s.hysteresis.value = 0.6; }),
              "nothing triggers: the signal, which runs from 0 to 1, never crosses the level 0.5 with a hysteresis of "
              "0.6 in that direction");
    EXPECT_EQ(why(
                  edge, [](TriggerSettings&) {}, 100),
              "2 events, but the recording ends before a window of 100 s is full");
    EXPECT_EQ(why(edge, [](TriggerSettings& s) { s.mode = ModeEnum::Off; }), "nothing is shown: the trigger is off");
    Plant gaps = edge;
    gaps.value = [](std::size_t, bool) { return std::nan(""); };
    EXPECT_EQ(why(gaps, [](TriggerSettings&) {}),
              "nothing triggers: the trigger channel has only gaps: no number in it");
}

} // namespace
