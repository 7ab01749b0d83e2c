#include "Feed.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace scope;
using namespace tracery;

namespace {

struct Table {
    std::size_t channels = 1;
    bool complex = false;
    std::vector<double> times;
    std::size_t failAt = SIZE_MAX;

    double value(std::size_t step, std::size_t channel) const { return static_cast<double>(step * 10 + channel); }
};

class TableRecording : public Recording {
public:
    explicit TableRecording(const Table& table) : table_(table)
    {
        info_.channels.resize(table.channels);
        info_.complex = table.complex;
    }
    const RecordingInfo& info() const override { return info_; }
    TimeRange range() override { return {table_.times.front(), table_.times.back()}; }
    void seek(double time) override
    {
        while (next_ + 1 < table_.times.size() && table_.times[next_ + 1] < time)
            ++next_;
    }
    void read(Block& block, std::size_t maxSteps) override
    {
        block = {};
        for (; block.steps() < maxSteps && next_ < table_.times.size(); ++next_) {
            if (next_ == table_.failAt)
                throw InputError("table", "step " + std::to_string(next_), "broken");
            block.times.push_back(table_.times[next_]);
            for (std::size_t c = 0; c < table_.channels; ++c) {
                block.real.push_back(table_.value(next_, c));
                if (table_.complex)
                    block.imag.push_back(-table_.value(next_, c));
            }
        }
    }

private:
    Table table_;
    RecordingInfo info_;
    std::size_t next_ = 0;
};

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
    std::vector<Table> tables(3);
    tables[0] = {2, false, {}, SIZE_MAX};
    tables[1] = {1, true, {}, SIZE_MAX};
    tables[2] = {40, false, {}, SIZE_MAX};
    const std::size_t steps[] = {100000, 30000, 5000};
    for (std::size_t k = 0; k < tables.size(); ++k) {
        double time = k == 1 ? -2.0 : 0.0;
        for (std::size_t i = 0; i < steps[k]; ++i) {
            tables[k].times.push_back(time);
            // Runs of equal times, one of them longer than the buffer, and times a few doubles apart.
            const auto kind = random() % 10;
            if (!(k == 2 && i > 500 && i < 3500) && kind > 2)
                time += kind == 3 ? std::abs(time) * 3e-16 : 10.0 / static_cast<double>(steps[k]);
        }
    }
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
            wrong += times[i] != table.times.at(step);
            for (std::size_t c = 0; c < table.channels; ++c) {
                wrong += real[i * table.channels + c] != table.value(step, c);
                wrong += table.complex && imag[i * table.channels + c] != -table.value(step, c);
            }
        }
        if (seen[0] > 0 && seen[0] < steps[0] && seen[1] > 0 && seen[1] < steps[1])
            behind = std::max(behind, std::abs(tables[0].times[seen[0] - 1] - tables[1].times[seen[1] - 1]));
    }
    EXPECT_EQ(wrong, 0U);
    EXPECT_EQ(seen, (std::vector<std::size_t>{100000, 30000, 5000}));
    EXPECT_LT(behind, 12.0) << "ports stay in step";
    EXPECT_EQ(feed.reached(), std::max({tables[0].times.back(), tables[1].times.back(), tables[2].times.back()}));
}

TEST(FeedThreadTest, AWindowComesWithTheStepsOnBothSides)
{
    Table table;
    for (int i = 0; i < 1000; ++i)
        table.times.push_back(i);
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
    Table table;
    for (int i = 0; i < 500000; ++i)
        table.times.push_back(i);
    {
        Feed abandoned(open({table}), 0, 1e9);
        EXPECT_TRUE(abandoned.next().has_value());
    }
    table.failAt = 300000;
    Feed feed(open({table}), 0, 1e9);
    EXPECT_THROW(
        while (feed.next()) {}, InputError);
}

} // namespace
