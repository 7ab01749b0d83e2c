#include "Wide.h"

#include <tracery/captures/TimeAxis.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace tracery::captures {

namespace {

std::string failureOf(const auto& action)
{
    try {
        action();
    } catch (const TimeError& error) {
        return error.what();
    }
    return "none";
}

struct AxisTest : testing::Test {
    std::mt19937_64 random{7};

    std::int64_t below(std::int64_t most)
    {
        return static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(most));
    }
    /// Of any size, so that small ones are as likely as large ones.
    std::int64_t ofAnySize(std::int64_t most) { return below(std::max<std::int64_t>(most >> below(50), 2)); }

    TimeAxis axis()
    {
        const Rate rates[] = {
            Rate(1'000'000'000),         Rate(44100),
            Rate(30000, 1001),           Rate(1, 60),
            Rate(1'000'000'000'000'000), Rate(1 + below(kFemtosPerSecond), 1 + below(kFemtosPerSecond))};
        const Rate rate = rates[below(6)];
        const auto most = static_cast<std::int64_t>(std::min(1e18 / rate.toDouble(), 4e9));
        return {{{below(2) * ofAnySize(most), below(2) * below(kFemtosPerSecond)}, true}, rate};
    }
};

} // namespace

TEST_F(AxisTest, AYearAtAGigasampleIsToldToTheFemtosecond)
{
    constexpr std::int64_t kRate = 1'000'000'000, kYear = 365 * 86400 * kRate;
    for (const Duration start : {Duration{}, Duration{1'772'366'400, 125'000'000}, Duration{365 * 86400, 1}}) {
        const TimeAxis axis{{start, true}, Rate(kRate)};
        for (int i = 0; i < 20000; ++i) {
            const std::int64_t step = i % 4 == 0 ? kYear - i : below(kYear);
            const Time time = axis.timeOf(step);
            ASSERT_EQ(time.since, (start + Duration{step / kRate, step % kRate * 1'000'000}));
            ASSERT_EQ(axis.firstFrom(time), step);
            ASSERT_EQ(axis.lastUpTo(time), step);
            ASSERT_EQ(Time::parse(time.text(), axis.start), time);
            ASSERT_EQ(Time::parse(time.date(), axis.start), time);
            const Time origin = axis.timeOf(step - below(1000));
            const double relative = RelativeTimes(axis, origin)(step);
            ASSERT_EQ(relative, static_cast<double>((time - origin).femtos) / 1e15);
        }
    }
}

TEST_F(AxisTest, StepsAndTimesLeadToEachOther)
{
    for (int i = 0; i < 50000; ++i) {
        const TimeAxis any = axis();
        const std::int64_t step = ofAnySize(std::int64_t{1} << 45) * (below(4) == 0 ? -1 : 1);
        if (std::abs(static_cast<double>(step)) / any.rate.toDouble() > 1e18)
            continue;
        const Time time = any.timeOf(step);
        const Duration one{0, 1};
        ASSERT_EQ(any.firstFrom(time), step);
        if (any.rate.toDouble() < 4e14) { // or the next femtosecond may have the next step
            ASSERT_EQ(any.lastUpTo(time + one), step);
            ASSERT_EQ(any.firstFrom(time + one), step + 1);
        }
        ASSERT_LT(any.timeOf(step - 1), time);
        ASSERT_EQ(Time::parse(time.text(), any.start), time);
        ASSERT_EQ(Rate::parse(any.rate.text()), any.rate);
    }
}

/// The doubles are the nearest ones: no other way of computing them rounds differently.
TEST_F(AxisTest, RelativeTimesAreTheNearestDoubles)
{
    for (int i = 0; i < 20000; ++i) {
        const TimeAxis any = axis();
        const std::int64_t step = ofAnySize(std::int64_t{1} << 40);
        if (static_cast<double>(step) / any.rate.toDouble() > 1e15)
            continue;
        const Time origin = below(3) == 0
                                ? any.start
                                : any.timeOf(step) - Duration{below(2) * ofAnySize(1000), ofAnySize(kFemtosPerSecond)};
        const RelativeTimes times(any, origin);
        double last = times(step - 1);
        for (std::int64_t k = step; k < step + 20; ++k) {
            const double time = times(k);
            ASSERT_LE(last, time);
            last = time;
            // Exactly: seconds and parts of a second, of which rate * 10^15 make one.
            const Duration ahead = any.start - origin;
            const Wide numerator = any.rate.numerator(), steps = static_cast<Wide>(k) * any.rate.denominator();
            const Wide second = numerator * kFemtosPerSecond;
            Wide seconds = floorOf(steps, numerator);
            Wide parts = (steps - seconds * numerator) * kFemtosPerSecond + ahead.femtos * numerator;
            seconds += ahead.seconds + parts / second;
            parts %= second;
            ASSERT_EQ(time,
                      nearestDouble(seconds, static_cast<UnsignedWide>(parts), static_cast<UnsignedWide>(second)));
        }
    }
}

TEST_F(AxisTest, NearestDoublesAreThoseOfDecimalText)
{
    for (int i = 0; i < 50000; ++i) {
        const Duration length{ofAnySize(std::int64_t{1} << 62) * (below(2) * 2 - 1),
                              below(3) == 0 ? 0 : ofAnySize(kFemtosPerSecond)};
        ASSERT_EQ(length.toDouble(), std::strtod(length.text().c_str(), nullptr)) << length.text();
        ASSERT_EQ(Duration::parse(length.text()), length);
        const double small = std::ldexp(static_cast<double>(below(1 << 20)), static_cast<int>(below(60)) - 60);
        ASSERT_NEAR(Duration::of(small).toDouble(), small, 1.1e-15);
    }
}

TEST(TimeText, SaysWhatItReads)
{
    const Time start{{1'772'366'400, 0}, true}, none;
    const struct {
        const char* text;
        Duration since;
        const char* date;
    } kRows[] = {
        {"2026-03-01T12:00:00.25Z", {1'772'366'400, 250'000'000'000'000}, "2026-03-01T12:00:00.25Z"},
        {"1772366400.000000125", {1'772'366'400, 125'000'000}, "2026-03-01T12:00:00.000000125Z"},
        {"+3.5", {1'772'366'403, 500'000'000'000'000}, "2026-03-01T12:00:03.5Z"},
        {"+-1e-15", {1'772'366'399, kFemtosPerSecond - 1}, "2026-03-01T11:59:59.999999999999999Z"},
        {"2026-03-01 13:30+01:30", {1'772'366'400, 0}, "2026-03-01T12:00:00Z"},
        {"2026-03-01", {1'772'323'200, 0}, "2026-03-01T00:00:00Z"},
        {"1969-12-31T23:59:59.5Z", {-1, 500'000'000'000'000}, "1969-12-31T23:59:59.5Z"},
        {"0000-01-01", {-62'167'219'200, 0}, "0000-01-01T00:00:00Z"},
        {"-0.000000000000001", {-1, kFemtosPerSecond - 1}, "1969-12-31T23:59:59.999999999999999Z"},
        {"12e3", {12000, 0}, "1970-01-01T03:20:00Z"},
    };
    for (const auto& row : kRows) {
        const Time time = Time::parse(row.text, start);
        EXPECT_EQ(time, (Time{row.since, true})) << row.text << " is " << time.text();
        EXPECT_EQ(time.date(), row.date);
        EXPECT_EQ(Time::parse(time.text(), start), time);
    }
    EXPECT_EQ(Time::parse("-2.5", none).date(), "-2.5");
    EXPECT_EQ(Duration::of(0.1), (Duration{0, 100'000'000'000'000}));
    EXPECT_EQ(Rate::of(0.1), Rate(1, 10));
    EXPECT_EQ(Rate::parse("1e9/3"), Rate(1'000'000'000, 3));
    EXPECT_EQ(Rate::parse("2.5"), Rate(5, 2));
}

TEST(TimeText, WhatIsWrongIsSaid)
{
    const Time start{{0, 0}, true}, none;
    const struct {
        const char* text;
        Time start;
        const char* failure;
    } kRows[] = {
        {"2026-02-30", start, "'2026-02-30' is no day of the calendar"},
        {"2026-03-01T25", start, "'2026-03-01T25' is no date and time such as 2026-03-01T12:00:00.25Z"},
        {"2026-03-01T12:00Zx", start, "'2026-03-01T12:00Zx' is no date and time such as 2026-03-01T12:00:00.25Z"},
        {"2026-03-01", none, "'2026-03-01' is a date, but the recording tells none"},
        {"1:30", none, "'1:30' is no number of seconds"},
        {"", none, "'' is no number of seconds"},
        {"1e-16", none, "'1e-16' is finer than a femtosecond"},
        {"9223372036854775808", none, "a time in seconds does not fit into 64 bits"},
        {"1e300", none, "'1e300' does not fit into 64 bits of seconds"},
        {"+9223372036854775807", {{1, 0}, false}, "a time in seconds does not fit into 64 bits"},
    };
    for (const auto& row : kRows)
        EXPECT_EQ(failureOf([&] { Time::parse(row.text, row.start); }), row.failure);
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(failureOf([&] {
                  TimeAxis{none, Rate(1, 1000)}.timeOf(kMost);
              }),
              "a time in seconds does not fit into 64 bits");
    EXPECT_EQ(failureOf([&] {
                  TimeAxis{none, Rate(1000)}.firstFrom({{kMost, 0}});
              }),
              "the number of a step does not fit into 64 bits");
    EXPECT_EQ(failureOf([&] { start - none; }), "a time with a date and one without have no difference");
    for (const char* text : {"0", "-5", "1/0", "1e-16", "1e16", "x"})
        EXPECT_NE(failureOf([&] { Rate::parse(text); }), "none") << text;
}

} // namespace tracery::captures
