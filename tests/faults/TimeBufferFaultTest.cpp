// Memory that runs out at every allocation in turn: an operation then either happened or did not.

#include "support/FaultSweep.h"

#include <tracery/TimeBuffer.h>

#include <cmath>
#include <complex>
#include <functional>
#include <random>

using namespace tracery;
using namespace tracery::test;
using Counts = TimeBuffer::Counts;

namespace {

constexpr auto kReal = HostComplexity::real;
constexpr auto kComplex = HostComplexity::complex;

/// Port 0 takes 2 by 2 real values a step, port 1 three complex ones.
struct Setting {
    BufferType type;
    bool threadSafe;
    void operator()(TimeBuffer& buffer) const
    {
        buffer.ResetBuffer({6}, {2, 2, 3}, {2, 1}, 2, type, {kReal, kComplex}, threadSafe);
    }
};

/// Complex steps of a port, of `rows` rows, all values different.
HostArrayPtr stepsOf(std::uint64_t port, std::uint64_t rows, const std::vector<double>& times)
{
    const std::uint64_t flat[] = {rows, times.size()}, block[] = {rows, 2, times.size()};
    HostArrayPtr values(
        createNumericArray(port == 0 ? 3 : 2, port == 0 ? block : flat, HostClassID::double_, kComplex));
    for (std::uint64_t i = 0; i < getNumberOfElements(values.get()); ++i) {
        getRealData(values.get())[i] = 100 * times[0] + static_cast<double>(i);
        getImagData(values.get())[i] = -getRealData(values.get())[i];
    }
    return values;
}

/// Appends whole steps to both ports.
void addToBoth(TimeBuffer& buffer, const std::vector<double>& times)
{
    const bool oneTimeForAll = buffer.GetBufferType() == BufferType::SingleRate && !buffer.getIsThreadSafe();
    for (const std::uint64_t port : {0U, 1U}) {
        if (port == 0 || !oneTimeForAll)
            buffer.AddTime(times.data(), times.size(), port);
        buffer.AddValue(stepsOf(port, port == 0 ? 2 : 3, times).get(), port, true);
    }
}

/// Everything that can be read, as one list.
Observation contents(const TimeBuffer& buffer)
{
    std::vector<double> all{buffer.GetLastTime(), buffer.GetIsReady() ? 1.0 : 0.0, buffer.GetIsFull() ? 1.0 : 0.0};
    for (const std::uint64_t steps : buffer.GetMaxNumTimeSteps())
        all.push_back(static_cast<double>(steps));
    for (const double seconds : buffer.GetSampleTimes())
        all.push_back(seconds);
    for (const bool linear : buffer.getIsLinearInterpolation())
        all.push_back(linear ? 1 : 0);
    if (!buffer.isInitialized())
        return all;
    for (const std::uint64_t port : {0U, 1U}) {
        HostArray *time = nullptr, *value = nullptr;
        // Values that are still to come make a port unreadable; the error then stands for its contents.
        all.push_back(static_cast<double>(failure([&] { buffer.GetTimeAndValue(port, time, value); }).size()));
        const HostArrayPtr t(time), v(value);
        for (const std::vector<double>& part : {realOf(time), realOf(value), imagOf(value)})
            all.insert(all.end(), part.begin(), part.end());
        for (const int extent : buffer.GetMaxDimensions(port))
            all.push_back(extent);
    }
    return all;
}

struct Case {
    const char* name;
    std::function<void(TimeBuffer&)> prepare;
    std::function<void(TimeBuffer&)> operation;
    bool allocates = true;
};

TEST(TimeBufferFaultTest, AnOperationThatRunsOutOfMemoryHasNotHappened)
{
    const std::vector<double> times{6, 7, 8, 9}, fewSampleTimes{1, 2}, sampleTimes{1, 2, 3, 4};
    const HostArrayPtr timeRow = row(times), whole = stepsOf(1, 3, times), parts = stepsOf(0, 1, times);
    const std::vector<double> tall = realOf(whole.get());
    std::vector<std::complex<double>> pairs;
    for (const double value : tall)
        pairs.emplace_back(value, -value);
    const HostArrayPtr extents = matrix(2, 2, {2, 2, 3, 1});

    const auto nothing = [](TimeBuffer&) {};
    const auto timesOfBoth = [&](TimeBuffer& b) { b.AddTime(timeRow.get(), 0), b.AddTime(timeRow.get(), 1); };
    const auto timesOfPort1 = [&](TimeBuffer& b) { b.AddTime(timeRow.get(), 1); };
    std::vector<double> kept; // by reads that reuse memory
    const Case cases[] = {
        {"times", nothing, timesOfPort1},
        {"plain times", nothing, [&](TimeBuffer& b) { b.AddTime(times.data(), times.size(), 1); }},
        {"a complex array", nothing, [&](TimeBuffer& b) { b.addTimeAndValue(timeRow.get(), whole.get(), 1, true); }},
        {"parts of steps", nothing, [&](TimeBuffer& b) { b.addTimeAndValue(timeRow.get(), parts.get(), 0, true); }},
        {"an array after its times", timesOfPort1, [&](TimeBuffer& b) { b.AddValue(whole.get(), 1, true); }},
        {"plain values", timesOfPort1,
         [&](TimeBuffer& b) {
             b.AddValue(tall.data(), {3, 4}, 1, kReal);
         }},
        {"pairs", timesOfPort1,
         [&](TimeBuffer& b) {
             b.AddValue(pairs.data(), {3, 4}, 1, kComplex);
         }},
        {"less room", nothing, [](TimeBuffer& b) { b.SetMaxNumTimeSteps({2}); }},
        {"more room", nothing, [](TimeBuffer& b) { b.SetToMaximumCapacity(); }},
        {"all room", nothing, [](TimeBuffer& b) { b.reserveCapacity(); }},
        {"less room, values pending", timesOfBoth, [](TimeBuffer& b) { b.SetMaxNumTimeSteps({2}); }},
        {"other extents", nothing, [](TimeBuffer& b) { b.SetMaxDimensions({2}, 1); }},
        {"other extents of all", nothing, [&](TimeBuffer& b) { b.SetMaxDimensions(extents.get()); }},
        {"set-up", nothing, Setting{BufferType::MultipleRate, true}},
        {"a new buffer", nothing,
         [](TimeBuffer&) {
             TimeBuffer({10}, {2, 2}, 2);
         }},
        {"sample times", nothing, [&](TimeBuffer& b) { b.SetSampleTimes(sampleTimes); }, false},
        {"sample times of one", nothing, [&](TimeBuffer& b) { b.SetSampleTimes(1, fewSampleTimes); }, false},
        {"interpolation", nothing,
         [](TimeBuffer& b) {
             b.setIsLinearInterpolation({1, 1});
         }},
        {"the pattern", nothing, [](TimeBuffer& b) { b.setDataHasNaNPattern(true), b.resetNaNPattern(); }, false},
        {"clear", nothing, [](TimeBuffer& b) { b.Clear(); }, false},
        {"clear back", nothing, [](TimeBuffer& b) { b.ClearBackTo(2); }, false},
        {"clear up to the last", nothing, [](TimeBuffer& b) { b.clearUptoLastTime(); }}, // may move, but cannot fail
        {"back to before set-up", nothing, [](TimeBuffer& b) { b.resetInitialized(); }, false},
        {"getters", nothing,
         [](TimeBuffer& b) {
             const HostArrayPtr wide(b.GetMaxDimensions()), flags(b.GetComplexityFlags());
             b.GetMaxDimensions(1), b.GetNDim(), b.GetType(), b.GetSampleTimes(), b.GetSampleTimes(1);
         }},
        {"transposed extents", nothing,
         [&](TimeBuffer&) {
             Counts out;
             TimeBuffer::TransposeMaxDimensions(extents.get(), out);
         }},
        {"a whole read", nothing,
         [](TimeBuffer& b) {
             HandedOut<2> out;
             b.GetTimeAndValue(1, out[0], out[1]);
         }},
        {"a window", nothing,
         [](TimeBuffer& b) {
             HandedOut<2> out;
             b.GetTimeAndValue(0, out[0], out[1], 1, 9, true);
         }},
        {"a drawn channel", nothing,
         [](TimeBuffer& b) {
             HandedOut<1> out;
             const std::vector<double> seeds{INFINITY, -INFINITY, INFINITY, -INFINITY};
             std::vector<double> limits = seeds;
             try {
                 b.GetTimeAndValueInterleaved(1, out[0], limits, 0, 0, 9, 0, 3, 1, false, 1, 1, false, true);
             } catch (const std::bad_alloc&) {
                 EXPECT_EQ(limits, seeds);
                 throw;
             }
         }},
        {"a trigger read", nothing,
         [&](TimeBuffer& b) {
             kept = {};
             b.GetSamplesAfter(0, 1, 1, false, 1, TimeBuffer::SamplePart::magnitude, kept);
         }},
    };
    for (const bool threadSafe : {false, true})
        for (const BufferType type : {BufferType::SingleRate, BufferType::MultipleRate})
            for (const Case& c : cases) {
                long allocations = 0;
                for (const std::vector<double>& stored : {std::vector<double>{}, {1, 2, 3}, {0, 1, 2, 3, 4, 5}}) {
                    const auto make = [&] {
                        auto buffer = std::make_unique<TimeBuffer>();
                        Setting{type, threadSafe}(*buffer);
                        if (!stored.empty())
                            addToBoth(*buffer, stored);
                        c.prepare(*buffer);
                        return buffer;
                    };
                    const std::string name = std::string(c.name) + ", " + std::to_string(stored.size()) +
                                             " steps stored" + (threadSafe ? ", thread safe" : "");
                    allocations += failEveryAllocation(name, make, c.operation, contents);
                }
                EXPECT_EQ(allocations > 0, c.allocates) << c.name;
            }
}

// Rings at all stages of their growth: what clears must not need memory, nor what is written where there is room.
TEST(TimeBufferFaultTest, RandomOperationsShortOfMemoryComeOutAsWithEnough)
{
    int failures = 0;
    for (unsigned seed = 0; seed < 200 && !HasFailure(); ++seed) {
        std::mt19937 random(seed);
        const Setting setting{seed % 2 ? BufferType::SingleRate : BufferType::MultipleRate, seed % 3 == 0};
        TimeBuffer scarce, rich;
        setting(scarce), setting(rich);
        for (double last = 0; last < 400 && !HasFailure();) {
            std::vector<double> times(random() % 12 + 1);
            for (double& time : times)
                time = ++last;
            const HostArrayPtr timeRow = row(times), values = stepsOf(1, 3, times);
            const double back = last - static_cast<double>(random() % 40);
            const std::uint64_t capacity = random() % 60 + 1;
            const auto add = [&](TimeBuffer& b) { b.addTimeAndValue(timeRow.get(), values.get(), 1, true); };
            const std::function<void(TimeBuffer&)> operations[] = {
                [&](TimeBuffer& b) { b.ClearBackTo(back); },
                [](TimeBuffer& b) { b.clearUptoLastTime(); },
                [](TimeBuffer& b) { b.Clear(); },
                [](TimeBuffer& b) { b.reserveCapacity(); },
                [&](TimeBuffer& b) { b.SetMaxNumTimeSteps({capacity}); },
                [&](TimeBuffer& b) { b.SetMaxDimensions({3}, 1); },
                add,
            };
            const std::size_t choice = std::min<std::size_t>(random() % 20, std::size(operations) - 1);
            const auto& operation = operations[choice];
            operation(rich);
            const Observation before = contents(scarce);
            try {
                const MemoryLimit limit(static_cast<long>(random() % 4), Shortage::lasting);
                operation(scarce);
            } catch (const std::bad_alloc&) {
                EXPECT_GT(choice, 2U) << "clearing failed";
                EXPECT_TRUE(sameBits(contents(scarce), before)) << "half done";
                operation(scarce);
                ++failures;
            }
            EXPECT_TRUE(sameBits(contents(scarce), contents(rich))) << "seed " << seed << ", operation " << choice;
        }
    }
    EXPECT_GT(failures, 1000);
}

TEST(TimeBufferFaultTest, MemoryIsTakenAsValuesComeOrAheadWhenItIsAskedFor)
{
    constexpr std::uint64_t kSteps = 1 << 20, kAllBytes = kSteps * 4 * sizeof(double);
    TimeBuffer buffer({kSteps}, {3}, 1);
    const std::vector<double> times(256, 1), values(768, 2);
    const Counts dims{3, 256};
    const auto add = [&] {
        buffer.AddTime(times.data(), 256, 0);
        buffer.AddValue(values.data(), dims, 0, kReal);
    };
    const auto bytesOf = [](auto&& operation) {
        const std::size_t before = bytesAllocated();
        operation();
        return bytesAllocated() - before;
    };
    EXPECT_LT(bytesOf([&] {
                  for (int i = 0; i < 40; ++i)
                      add();
              }),
              std::size_t{10240 * 4 * sizeof(double) * 5}); // the last room and those before it
    EXPECT_LT(bytesOf([&] { buffer.SetMaxNumTimeSteps({2 * kSteps}), buffer.SetMaxNumTimeSteps({kSteps}); }), 4096U);
    EXPECT_GE(bytesOf([&] { buffer.reserveCapacity(); }), kAllBytes);
    const auto addsWithoutMemory = [&] {
        const MemoryLimit limit(0, Shortage::lasting);
        for (std::uint64_t written = 0; written < kSteps + 512; written += 256)
            EXPECT_NO_THROW(add());
        EXPECT_TRUE(buffer.GetIsFull());
    };
    addsWithoutMemory();
    buffer.Clear();
    addsWithoutMemory();
    buffer.clearUptoLastTime();
    addsWithoutMemory();
    EXPECT_GE(bytesOf([&] { buffer.SetMaxNumTimeSteps({kSteps + 1}); }), kAllBytes);
    buffer.ResetBuffer({100}, {3}, {1}, 1, BufferType::SingleRate, {kReal}, false);
    EXPECT_GT(bytesOf(add), 0U) << "a new set-up holds nothing";
    add();
    EXPECT_EQ(bytesOf(add), 0U) << "a full ring needs no more";
}

} // namespace
