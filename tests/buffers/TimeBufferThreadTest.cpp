#include "support/Expect.h"

#include <tracery/TimeBuffer.h>
#include <tracery/TimeDomainTriggerController.h>

#include <atomic>
#include <cmath>
#include <future>
#include <limits>
#include <random>

using namespace tracery;
using namespace tracery::test;

namespace {

constexpr double kMost = std::numeric_limits<double>::max();
constexpr double kGeneration = 1.0 / (1 << 20);
constexpr std::uint64_t kLargest = 400; // capacity

/// Two ports, a real one of two channels and a complex one. Times are whole numbers without gaps, and a value tells its
/// time and how often the writer had stepped back when it was written; the imaginary part is the negative. Channel 1 is
/// a square wave.
class SharedBuffer {
public:
    SharedBuffer()
        : buffer_({200}, {2, 1}, {1, 1}, 2, BufferType::SingleRate, {HostComplexity::real, HostComplexity::complex},
                  true)
    {
        trigger_.setMode(TDTC::ModeEnum::Normal);
        trigger_.setAutoLevel(false);
        trigger_.setLevel(0.5);
    }

    void write()
    {
        const unsigned kind = writing_() % 64;
        if (kind == 0)
            return changeCapacity(writing_);
        if (kind == 1) {
            const double time = next_ - 1 - static_cast<double>(writing_() % 100);
            buffer_.ClearBackTo(time);
            next_ = std::min(next_, time + 1);
            ++generation_;
            return;
        }
        if (kind == 2)
            return buffer_.clearUptoLastTime();
        std::vector<double> times(1 + writing_() % 24);
        for (double& time : times)
            time = next_++;
        newest_ = std::max(newest_.load(), next_ - 1);
        for (const std::uint64_t port : {0U, 1U}) {
            const HostArrayPtr values(createDoubleMatrix(2 - port, times.size(), static_cast<HostComplexity>(port)));
            double *re = getRealData(values.get()), *im = getImagData(values.get());
            for (const double time : times) {
                *re++ = 4 * time + generation_ * kGeneration;
                port == 0 ? * re++ = std::fmod(std::floor(time / 50), 2) : * im++ = -re[-1];
            }
            if (kind > 8) {
                buffer_.addTimeAndValue(row(times).get(), values.get(), port, true);
                continue;
            }
            buffer_.AddTime(row(times).get(), port);
            if (failure([&] { buffer_.AddValue(values.get(), port, true); }) !=
                "none") // the times were cleared between
                return buffer_.Clear();
        }
    }

    void read()
    {
        const std::string refused = failure([this] { readAnything(buffer_.GetLastTime(), reading_() % 16); });
        check(refused == "none" || refused == "AddValueError" || refused == "GetComplexDataError"); // amid a write
    }

    std::size_t failures = 0, reads = 0, windows = 0;

    bool isLevelWhenCleared()
    {
        buffer_.Clear();
        return buffer_.GetIsReady();
    }

private:
    void check(bool holds) { failures += holds ? 0 : 1; }
    void changeCapacity(std::mt19937& random)
    {
        buffer_.SetMaxNumTimeSteps({50 + random() % (kLargest - 50), 50 + random() % (kLargest - 50)});
    }

    void readAnything(double last, unsigned kind)
    {
        if (kind == 0)
            return changeCapacity(reading_);
        if (kind == 1)
            return reading_() % 4 == 0 ? buffer_.Clear() : buffer_.clearUptoLastTime();
        if (kind < 5)
            return readWindow(last - 100, reading_() % 2 == 0 ? last : kMost, reading_() % 2 == 0);
        if (kind < 7) {
            HostArray* out = nullptr;
            std::vector<double> limits{kMost, -kMost, kMost, -kMost};
            buffer_.GetTimeAndValueInterleaved(1, out, limits, 0, last - 200, kMost, -1, 1, 0, false, 1, 1, false,
                                               false);
            const HostArrayPtr pairs(out);
            checkPairs(realOf(out), 1);
            return checkPairs(imagOf(out), -1);
        }
        if (kind < 9) {
            const bool imag = reading_() % 2 == 0;
            buffer_.GetSamplesAfter(last - 20, 1, 0, false, 0,
                                    imag ? TimeBuffer::SamplePart::imaginary : TimeBuffer::SamplePart::real, samples_);
            return checkPairs(samples_, imag ? -1 : 1);
        }
        if (!std::isfinite(last))
            return;
        double start = 0, end = 0; // around an edge of the square wave
        trigger_.getTriggerWindow(buffer_, false, 0, 0, 1, 0, last, 40, false, start, end);
        for (const double event : trigger_.getPendingEvents())
            check(event > 0 && event <= newest_.load());
        if (std::isinf(start))
            return check(start == end);
        check(end - start == 40 && trigger_.getLastTriggerTime() == start + 20);
        ++windows;
        readWindow(start, end, false);
    }

    void readWindow(double from, double to, bool widen)
    {
        HostArray *time = nullptr, *value = nullptr;
        buffer_.GetTimeAndValue(0, time, value, from, to, widen);
        const HostArrayPtr t(time), v(value);
        const std::vector<double> times = realOf(time), values = realOf(value);
        check(times.size() <= kLargest && values.size() == 2 * times.size());
        std::vector<double> pairs;
        for (std::size_t i = 0; i < times.size(); ++i) {
            check(widen || (times[i] >= from && times[i] <= to));
            check(values[2 * i + 1] == std::fmod(std::floor(times[i] / 50), 2));
            pairs.insert(pairs.end(), {times[i], values[2 * i]});
        }
        checkPairs(pairs, 1);
    }

    /// Times without gaps, each with its own value, of generations that do not decrease.
    void checkPairs(const std::vector<double>& pairs, double sign)
    {
        double generation = 0;
        for (std::size_t i = 0; i < pairs.size(); i += 2) {
            const double written = (sign * pairs[i + 1] - 4 * pairs[i]) / kGeneration;
            check((i == 0 || pairs[i] == pairs[i - 2] + 1) && written >= generation && written == std::floor(written));
            generation = written;
        }
        reads += pairs.size() / 2;
    }

    TimeBuffer buffer_;
    TimeDomainTriggerController trigger_;
    std::mt19937 writing_{1}, reading_{2};
    double next_ = 1000, generation_ = 0;
    std::atomic<double> newest_{0}; // time ever written
    std::vector<double> samples_;
};

TEST(TimeBufferThreadTest, ReadsBesideAWriterPairValuesWithTheirTimesWhateverBothChange)
{
    SharedBuffer buffer;
    // Joins however this scope is left, and passes on what the writer throws.
    std::future<void> done = std::async(std::launch::async, [&buffer] {
        for (int i = 0; i < 100000; ++i)
            buffer.write();
    });
    while (done.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
        buffer.read();
    done.get();
    EXPECT_EQ(buffer.failures, 0U);
    EXPECT_GT(buffer.reads, 0U);
    EXPECT_GT(buffer.windows, 0U);
    EXPECT_TRUE(buffer.isLevelWhenCleared());
}

TEST(TimeBufferThreadTest, TimesWithTheirValuesAreWrittenInTurnsToAnyBuffer)
{
    constexpr std::uint64_t kSteps = 20000;
    TimeBuffer buffer({2 * kSteps}, {1}, {1}, 1, BufferType::MultipleRate, {HostComplexity::real}, false);
    const auto write = [&buffer] {
        const HostArrayPtr one = row({1});
        for (std::uint64_t i = 0; i < kSteps; ++i)
            buffer.addTimeAndValue(one.get(), one.get(), 0, false);
    };
    std::future<void> beside = std::async(std::launch::async, write);
    write();
    beside.get();
    EXPECT_TRUE(buffer.GetIsReady() && buffer.GetIsFull());
}

} // namespace
