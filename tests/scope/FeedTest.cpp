#include "stream/Feed.h"

#include "recordings/TableRecording.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace scope;
using namespace tracery;

namespace {

double valueAt(std::size_t step, std::size_t channel) { return static_cast<double>(step * 10 + channel); }

Table tableOf(std::size_t channels, bool complex, const std::vector<double>& times)
{
    return {channels, complex, times.size(), [&times](std::size_t i) { return times[i]; }, valueAt};
}

std::vector<std::unique_ptr<Recording>> open(const std::vector<Table>& tables)
{
    std::vector<std::unique_ptr<Recording>> recordings;
    for (const Table& table : tables)
        recordings.push_back(std::make_unique<TableRecording>(table));
    return recordings;
}

TEST(FeedThreadTest, HandsOutEveryStepOfEveryPortOnceAndInOrder)
{
    std::mt19937 random(7);
    std::vector<double> allTimes[3];
    const std::size_t steps[] = {100000, 30000, 5000};
    for (std::size_t k = 0; k < 3; ++k) {
        double time = k == 1 ? -2.0 : 0.0;
        for (std::size_t i = 0; i < steps[k]; ++i) {
            allTimes[k].push_back(time);
            // Runs of equal times, one of them longer than the buffer, and times a few doubles apart.
            const auto kind = random() % 10;
            if (!(k == 2 && i > 500 && i < 3500) && kind > 2)
                time += kind == 3 ? std::abs(time) * 3e-16 : 10.0 / static_cast<double>(steps[k]);
        }
    }
    const std::vector<Table> tables{tableOf(2, false, allTimes[0]), tableOf(1, true, allTimes[1]),
                                    tableOf(40, false, allTimes[2])};
    Feed feed(open(tables), -1e9, 1e9);
    std::vector<std::size_t> seen(3, 0);
    std::size_t wrong = 0;
    double behind = 0;
    while (const auto got = feed.next()) {
        const Table& table = tables[got->port];
        const double* times = getRealData(got->times.get());
        const double* real = getRealData(got->values.get());
        const double* imag = getImagData(got->values.get());
        for (std::size_t i = 0; i < got->count(); ++i) {
            const std::size_t step = seen[got->port]++;
            wrong += times[i] != allTimes[got->port].at(step);
            for (std::size_t c = 0; c < table.channels; ++c) {
                wrong += real[i * table.channels + c] != valueAt(step, c);
                wrong += table.complex && imag[i * table.channels + c] != -valueAt(step, c);
            }
        }
        if (seen[0] > 0 && seen[0] < steps[0] && seen[1] > 0 && seen[1] < steps[1])
            behind = std::max(behind, std::abs(allTimes[0][seen[0] - 1] - allTimes[1][seen[1] - 1]));
    }
    EXPECT_EQ(wrong, 0U);
    EXPECT_EQ(seen, (std::vector<std::size_t>{100000, 30000, 5000}));
    EXPECT_LT(behind, 12.0) << "ports stay in step";
    EXPECT_EQ(feed.reached(), std::max({allTimes[0].back(), allTimes[1].back(), allTimes[2].back()}));
}

TEST(FeedThreadTest, AWindowComesWithTheStepsOnBothSides)
{
    const Table table{1, false, 1000, [](std::size_t i) { return static_cast<double>(i); }, valueAt};
    Feed feed(open({table}), 100.5, 200.0);
    std::vector<double> times;
    while (const auto got = feed.next())
        times.insert(times.end(), getRealData(got->times.get()), getRealData(got->times.get()) + got->count());
    ASSERT_EQ(times.size(), 102U);
    EXPECT_EQ(times.front(), 100.0);
    EXPECT_EQ(times.back(), 201.0);
}

TEST(FeedThreadTest, AReadersErrorArrivesAndAnUnfinishedFeedStops)
{
    Table table{1, false, 500000, [](std::size_t i) { return static_cast<double>(i); }, valueAt};
    {
        Feed abandoned(open({table}), 0, 1e9);
        EXPECT_TRUE(abandoned.next().has_value());
    }
    table.failAt = 300000;
    Feed feed(open({table}), 0, 1e9);
    EXPECT_THROW(while (feed.next()){}, InputError);
}

} // namespace
