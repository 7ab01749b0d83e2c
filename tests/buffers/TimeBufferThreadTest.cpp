#include "support/Expect.h"

#include <tracery/TimeBuffer.h>

#include <chrono>
#include <future>
#include <limits>

using namespace tracery;
using namespace tracery::test;

namespace {

// A step's values are its time and, in the imaginary part, its negative: a torn read shows at once.
TEST(TimeBufferThreadTest, EveryBlockReadBesideAWriterIsConsistent)
{
    constexpr int kBlocks = 100000; // ten seconds or so under the thread sanitizer
    constexpr std::size_t kSteps = 16;
    TimeBuffer buffer({300}, {2, 1}, {1, 1}, 2, BufferType::SingleRate, {HostComplexity::real, HostComplexity::complex},
                      true);

    // Joins however this scope is left, and passes on what the writer throws.
    std::future<void> writer = std::async(std::launch::async, [&] {
        double next = 0;
        for (int block = 0; block < kBlocks; ++block)
            for (std::uint64_t port : {0U, 1U}) {
                std::vector<double> times(kSteps), values;
                for (std::size_t i = 0; i < kSteps; ++i) {
                    times[i] = next + static_cast<double>(i);
                    values.insert(values.end(), port == 0 ? 2 : 1, times[i]);
                }
                HostArrayPtr array(createDoubleMatrix(port == 0 ? 2 : 1, kSteps,
                                                      port == 0 ? HostComplexity::real : HostComplexity::complex));
                std::copy(values.begin(), values.end(), getRealData(array.get()));
                for (std::size_t i = 0; port == 1 && i < kSteps; ++i)
                    getImagData(array.get())[i] = -times[i];
                buffer.addTimeAndValue(row(times).get(), array.get(), port, true);
                if (port == 1)
                    next += kSteps;
                if (block % 5000 == 4999)
                    buffer.SetMaxNumTimeSteps({block % 10000 == 9999 ? 300U : 200U});
            }
    });

    std::size_t reads = 0, failures = 0;
    const auto expect = [&](bool holds) { failures += holds ? 0 : 1; };
    while (writer.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
        const double last = buffer.GetLastTime();
        HostArray *time = nullptr, *value = nullptr, *pairs = nullptr;
        buffer.GetTimeAndValue(0, time, value, last - 100, last, true);
        const HostArrayPtr t(time), v(value);
        const std::vector<double> times = realOf(time), values = realOf(value);
        for (std::size_t i = 0; i < times.size(); ++i)
            expect(values[2 * i] == times[i] && values[2 * i + 1] == times[i] &&
                   (i == 0 || times[i] == times[i - 1] + 1));
        std::vector<double> limits(4, 0.0);
        buffer.GetTimeAndValueInterleaved(1, pairs, limits, 0, last - 200, std::numeric_limits<double>::max(), -1, 1, 0,
                                          false, 1, 1, false, false);
        const HostArrayPtr p(pairs);
        const std::vector<double> re = realOf(pairs), im = imagOf(pairs);
        for (std::size_t i = 0; i + 1 < re.size(); i += 2)
            expect(re[i] == re[i + 1] && im[i] == re[i] && im[i + 1] == -re[i]);
        reads += times.size() + re.size() / 2;
    }
    writer.get();
    EXPECT_GT(reads, 0U);
    EXPECT_EQ(failures, 0U);
    EXPECT_EQ(buffer.GetLastTime(), kBlocks * static_cast<double>(kSteps) - 1);
}

} // namespace
