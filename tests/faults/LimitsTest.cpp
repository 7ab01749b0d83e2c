// What docs/limits.md says, at the edges.

#include "bindings/Script.h"
#include "support/Expect.h"
#include "support/FailingMemory.h"

#include <tracery/SpectrumBuffer.h>
#include <tracery/TimeBuffer.h>

#include <functional>
#include <limits>
#include <utility>

using namespace tracery;
using namespace tracery::test;
using Counts = TimeBuffer::Counts;

namespace {

constexpr std::uint64_t power2(int exponent) { return std::uint64_t{1} << exponent; }
constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kDenormal = std::numeric_limits<double>::denorm_min();

TEST(LimitsTest, SizesUpToTheLimitAreTakenAndThoseAboveRefused)
{
    constexpr std::uint64_t mostSteps = power2(61) - 1, mostElements = 0x7FFFFFFF / 3, million = 1000000;
    Script script;
    const auto spectrum = script.make("tracery.SpectrumBuffer", 4, 0, false, 1);
    const auto statistics = [&](double bins, double resolution) {
        return [&script, &spectrum, bins, resolution] {
            script.call(4, spectrum, "updateCCDF", row({1, 2}), bins, resolution);
        };
    };
    const auto set = [&](const char* property, double value) {
        return [&script, &spectrum, property, value] { script.set(spectrum, property, value); };
    };
    TimeBuffer frames({10}, {4, 3}, 1);
    frames.addTimeAndValue(row({1}).get(), matrix(4, 3, std::vector<double>(12, 1)).get(), 0, true);
    const auto drawn = [&](std::uint64_t channels, std::int32_t samples) {
        return [&frames, channels, samples] {
            HostArray* out = nullptr;
            std::vector<double> limits(4);
            frames.GetTimeAndValueInterleaved(0, out, limits, 0, 0, 9, 0, channels, 0, true, 1, samples, false, false);
            destroyArray(out);
        };
    };
    const auto array = [](std::uint64_t rows, std::uint64_t columns) {
        return [rows, columns] { makeMatrix(rows, columns); };
    };
    const struct {
        const char* what;
        std::function<void()> call;
        const char* error;
    } cases[] = {
        {"capacity of 2^31", [&] { TimeBuffer({power2(31)}, {1}, 1); }, "none"},
        {"the largest capacity", [&] { TimeBuffer({mostSteps}, {1}, 1); }, "none"},
        {"one above", [&] { TimeBuffer({mostSteps + 1}, {1}, 1); }, "InvalidMaxNumTimeStepsValue"},
        {"2^64 - 1", [&] { TimeBuffer({~std::uint64_t{0}}, {1}, 1); }, "InvalidMaxNumTimeStepsValue"},
        {"steps by elements past 2^64", [&] { TimeBuffer({power2(40)}, {power2(24)}, 1); },
         "InvalidMaxNumTimeStepsValue"},
        {"the largest step", [&] { TimeBuffer({1}, {mostElements}, 1); }, "none"},
        {"an element more", [&] { TimeBuffer({1}, {mostElements + 1}, 1); }, "InvalidMaxDimensions"},
        {"over two ports",
         [&] {
             TimeBuffer({1}, {mostElements, 1}, 2);
         },
         "InvalidMaxDimensions"},
        {"extents past 2^64",
         [&] {
             TimeBuffer({1}, {power2(32), power2(32)}, 1);
         },
         "InvalidMaxDimensions"},
        {"a million ports", [&] { EXPECT_TRUE(TimeBuffer({9}, Counts(million, 1), million).GetNPorts() == million); },
         "none"},
        {"2^63 ports", [&] { TimeBuffer({1}, {}, power2(63)); }, "InvalidMaxDimensions"},
        {"2^40 ports without extents",
         [&] { TimeBuffer({1}, {1}, {1}, power2(40), BufferType::MultipleRate, {HostComplexity::real}, true); },
         "InvalidMaxDimensions"},
        {"samples of a frame", drawn(3, 4), "none"},
        {"too many", drawn(3, std::numeric_limits<std::int32_t>::max()), "InvalidChannelID"},
        {"channels whose samples pass 2^64", drawn(power2(62), 4), "InvalidChannelID"},
        {"the longest segment", set("SegmentLength", 0x1p26), "none"},
        {"a sample more", set("SegmentLength", 0x1p26 + 1), "InvalidArgumentType"},
        {"of two channels", set("NumChannels", 2), "InvalidArgumentType"},
        {"past 32 bits", set("SegmentLength", 0x1p32), "InvalidArgumentType"},
        {"the most bins", statistics(0x1p24, 0.5), "none"},
        {"the finest", statistics(0x1p24, 2e-6), "none"},
        {"a bin more", statistics(0x1p24 + 1, 0.5), "InvalidArgumentType"},
        {"too fine bins", statistics(10, 1.99e-6), "InvalidArgumentType"},
        {"an array past 2^64 elements", array(power2(32), power2(32)), "InvalidArray"},
        {"an array past 2^64 bytes", array(power2(61), 1), "InvalidArray"},
        {"an empty array of any extent", array(power2(63), 0), "none"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(failure(c.call), c.error) << c.what;
}

TEST(LimitsTest, TimesUpToTheLargestDoubleAndDownToTheSmallestAreFoundAgain)
{
    const std::vector<double> times{-kLargest, -1e-308, -kDenormal, 0, kDenormal, 1e-308, kLargest};
    TimeBuffer buffer({10}, {1}, 1);
    buffer.addTimeAndValue(row(times).get(), row(times).get(), 0, true);
    const auto found = [&](double from, double to) {
        return realOf(outputsOf<2>([&](auto&... out) { buffer.GetTimeAndValue(0, out..., from, to, false); })[0].get());
    };
    EXPECT_EQ(found(-kLargest, kLargest), times);
    for (const double time : times) {
        const std::vector<double> near = found(time, time);
        EXPECT_EQ(std::count(near.begin(), near.end(), time), 1) << time;
    }
    buffer.ClearBackTo(kLargest);
    EXPECT_EQ(buffer.GetLastTime(), kLargest);
}

TEST(LimitsTest, ChainsOfAnyLengthAreReleasedAndCopied)
{
    constexpr int kLength = 300000;
    HostArrayPtr outer;
    for (int i = 0; i < kLength; ++i) {
        HostArrayPtr cell(createCellMatrix(1, 1));
        setCell(cell.get(), 0, outer.release());
        outer = std::move(cell);
    }
    const std::size_t before = getNumberOfLiveArrays();
    HostArrayPtr copy(duplicateArray(outer.get()));
    EXPECT_EQ(getNumberOfLiveArrays(), before + kLength);
    copy.reset();
    outer.reset();
    EXPECT_EQ(getNumberOfLiveArrays(), before - kLength);

    embedded::EmbeddedHost host;
    host.defineClass({.name = "demo.Node", .properties = {{.name = "Next"}}});
    const auto chain = [&] {
        HostObjectRef first;
        for (int i = 0; i < kLength; ++i) {
            const HostObjectRef node = host.construct("demo.Node");
            if (first != nullptr)
                host.set(node, "Next", hostobj::omCreateScalar(first).get());
            first = node;
        }
        return first;
    };
    HostObjectRef first = chain();
    EXPECT_EQ(host.getNumberOfLiveObjects(), static_cast<std::size_t>(kLength));
    first.reset();
    EXPECT_EQ(host.getNumberOfLiveObjects(), 0U);
    first = chain();
    host.deleteObject(first);
    EXPECT_EQ(host.getNumberOfLiveObjects(), 1U) << "the one that is held";
}

TEST(LimitsTest, ARefusalThatThereIsNoMemoryToWordHasAnIdentifierToo)
{
    Script script;
    const HostObjectRef buffer = script.make("tracery.SpectrumBuffer", 4, 0, false, 2);
    const HostArrayPtr column = matrix(3, 1, {1, 2, 3}), port = row({1});
    const HostArray* const inputs[] = {column.get(), port.get()};
    std::string last, outcome;
    for (long n = 0; outcome != "InvalidSubscript"; ++n) {
        last = std::exchange(outcome, failure([&] {
                                 try {
                                     const MemoryLimit limit(n, Shortage::ofOneAllocation);
                                     script.host.call(buffer, "addValue", inputs, 0);
                                 } catch (const std::bad_alloc&) { // of the host, before it called the library
                                     throw Error(errors::InitializeError);
                                 }
                             }));
    }
    EXPECT_EQ(last, "OutOfMemory") << "the words are the last that is made";
}

} // namespace
