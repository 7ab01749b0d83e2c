#include "support/Expect.h"

#include <tracery/TimeBuffer.h>
#include <tracery/TimeDomainTriggerController.h>

#include <atomic>
#include <cmath>
#include <future>
#include <limits>
#include <random>
#include <utility>

using namespace tracery;
using namespace tracery::test;

namespace {

constexpr double kMost = std::numeric_limits<double>::max();
constexpr double kGeneration = 1.0 / (1 << 20);
constexpr std::uint64_t kLargest = 400; // capacity

/// Times are whole numbers without gaps, and a value tells its time, its channel and how often the writer had stepped
/// back when it was written; the imaginary part is the negative. Channel 1 is a square wave besides.
double valueAt(double time, std::size_t channel, double generation)
{
    return channel == 1 ? std::fmod(std::floor(time / 50), 2) : 4 * time + generation * kGeneration;
}

/// Writes to both ports, changes capacities and clears, as long as `on` holds.
class Writer {
public:
    Writer(TimeBuffer& buffer, std::atomic<double>& newest) : buffer_(buffer), newest_(newest) {}

    void step()
    {
        const unsigned kind = random_() % 64;
        if (kind == 0)
            buffer_.SetMaxNumTimeSteps({50 + random_() % (kLargest - 50), 50 + random_() % (kLargest - 50)});
        else if (kind == 1)
            stepBack(next_ - 1 - static_cast<double>(random_() % 100));
        else if (kind == 2)
            buffer_.clearUptoLastTime();
        else
            write(1 + random_() % 24, kind < 8);
    }

private:
    void write(std::size_t steps, bool apart)
    {
        std::vector<double> times(steps);
        for (double& time : times)
            time = next_++;
        newest_ = std::max(newest_.load(), next_ - 1);
        for (std::uint64_t port : {0U, 1U}) {
            const std::size_t channels = 2 - port;
            HostArrayPtr values(
                createDoubleMatrix(channels, steps, port == 0 ? HostComplexity::real : HostComplexity::complex));
            for (std::size_t i = 0; i < steps * channels; ++i) {
                getRealData(values.get())[i] = valueAt(times[i / channels], i % channels, generation_);
                if (port == 1)
                    getImagData(values.get())[i] = -getRealData(values.get())[i];
            }
            if (!apart) {
                buffer_.addTimeAndValue(row(times).get(), values.get(), port, true);
                continue;
            }
            buffer_.AddTime(row(times).get(), port);
            try {
                buffer_.AddValue(values.get(), port, true);
            } catch (const Error&) { // the reader has cleared the times in between
                buffer_.Clear();
                return;
            }
        }
    }

    void stepBack(double time)
    {
        buffer_.ClearBackTo(time);
        next_ = std::min(next_, time + 1);
        ++generation_;
    }

    TimeBuffer& buffer_;
    std::atomic<double>& newest_; // time ever written
    std::mt19937 random_{1};
    double next_ = 1000;
    double generation_ = 0;
};

/// Checks what a read has given: times without gaps, each with its own values.
class Checker {
public:
    void check(bool holds) { failures_ += holds ? 0 : 1; }
    void step(double time, double value, std::size_t channel)
    {
        if (count_++ > 0)
            check(time == last_ + 1);
        last_ = time;
        const double generation = channel == 1 ? 0 : (value - 4 * time) / kGeneration;
        check(value == valueAt(time, channel, generation) && generation >= generation_ &&
              generation == std::floor(generation));
        generation_ = generation;
    }
    void begin() { count_ = 0, generation_ = 0; }
    std::size_t failures() const { return failures_; }

private:
    std::size_t failures_ = 0;
    std::size_t count_ = 0;
    double last_ = 0;
    double generation_ = 0;
};

class Reader {
public:
    Reader(TimeBuffer& buffer, std::atomic<double>& newest) : buffer_(buffer), newest_(newest)
    {
        trigger_.setMode(TDTC::ModeEnum::Normal);
        trigger_.setAutoLevel(false);
        trigger_.setLevel(0.5);
    }

    void step()
    {
        try {
            const double last = buffer_.GetLastTime();
            switch (random_() % 16) {
            case 0:
                return changeCapacity();
            case 1:
                return random_() % 4 == 0 ? buffer_.Clear() : buffer_.clearUptoLastTime();
            case 2:
                return readRange(last);
            case 3:
            case 4:
                return readWindow(last - 100, random_() % 2 == 0 ? last : kMost, random_() % 2 == 0);
            case 5:
            case 6:
                return readPairs(last - 200);
            case 7:
            case 8:
                return readSamples(last - static_cast<double>(random_() % 30));
            default:
                return readTriggered(last);
            }
        } catch (const Error& error) { // what the writer was in the middle of
            const std::string name = error.name();
            checker_.check(name == "AddValueError" || name == "GetComplexDataError");
        }
    }

    std::size_t failures() const { return checker_.failures(); }
    std::size_t windows() const { return windows_; }
    std::size_t reads() const { return reads_; }

private:
    void changeCapacity() { buffer_.SetMaxNumTimeSteps({50 + random_() % (kLargest - 50)}); }

    void readRange(double last)
    {
        int first = 0, end = 0;
        const bool any = buffer_.GetIndexRange(0, last - 30, kMost, false, first, end);
        checker_.check(any ? 0 <= first && first <= end && end < static_cast<int>(kLargest) : first == -1 || end == -1);
    }

    /// Both channels of port 0 in a window.
    void readWindow(double from, double to, bool widen)
    {
        HostArray *time = nullptr, *value = nullptr;
        buffer_.GetTimeAndValue(0, time, value, from, to, widen);
        const HostArrayPtr t(time), v(value);
        const std::vector<double> times = realOf(time), values = realOf(value);
        checker_.check(times.size() <= kLargest && values.size() == 2 * times.size());
        for (std::size_t channel : {0U, 1U}) {
            checker_.begin();
            for (std::size_t i = 0; i < times.size(); ++i) {
                checker_.check(widen || (times[i] >= from && times[i] <= to));
                checker_.step(times[i], values[2 * i + channel], channel);
            }
        }
        reads_ += times.size();
    }

    void readPairs(double from)
    {
        constexpr double kInf = std::numeric_limits<double>::infinity();
        HostArray* pairs = nullptr;
        std::vector<double> limits{kInf, -kInf, kInf, -kInf};
        buffer_.GetTimeAndValueInterleaved(1, pairs, limits, 0, from, kMost, -1, 1, 0, false, 1, 1, false, false);
        const HostArrayPtr p(pairs);
        const std::vector<double> re = realOf(pairs), im = imagOf(pairs);
        checker_.begin();
        for (std::size_t i = 0; i + 1 < re.size(); i += 2) {
            checker_.step(re[i], re[i + 1], 0);
            checker_.check(im[i] == re[i] && im[i + 1] == -re[i + 1] && limits[0] <= re[i + 1] &&
                           limits[1] >= re[i + 1]);
        }
        reads_ += re.size() / 2;
    }

    void readSamples(double after)
    {
        const bool imaginary = random_() % 2 == 0;
        buffer_.GetSamplesAfter(after, 1, 0, false, 0,
                                imaginary ? TimeBuffer::SamplePart::imaginary : TimeBuffer::SamplePart::real, samples_);
        checker_.begin();
        for (std::size_t i = 0; i + 1 < samples_.size(); i += 2) {
            checker_.check(samples_[i] > after);
            checker_.step(samples_[i], imaginary ? -samples_[i + 1] : samples_[i + 1], 0);
        }
        reads_ += samples_.size() / 2;
    }

    /// A window around an edge of the square wave, and what it holds by now.
    void readTriggered(double now)
    {
        if (!std::isfinite(now))
            return;
        double start = 0, end = 0;
        trigger_.getTriggerWindow(buffer_, false, 0, 0, 1, 0, now, 40, false, start, end);
        for (const double event : trigger_.getPendingEvents())
            checker_.check(event > 0 && event <= newest_.load());
        if (std::isinf(start))
            return checker_.check(start == end);
        const double event = trigger_.getLastTriggerTime();
        checker_.check(end - start == 40 && event == start + 20);
        ++windows_;
        readWindow(start, end, false);
    }

    TimeBuffer& buffer_;
    std::atomic<double>& newest_; // time ever written
    TimeDomainTriggerController trigger_;
    std::mt19937 random_{2};
    Checker checker_;
    std::vector<double> samples_;
    std::size_t reads_ = 0;
    std::size_t windows_ = 0;
};

TEST(TimeBufferThreadTest, ReadsBesideAWriterPairValuesWithTheirTimesWhateverBothChange)
{
    TimeBuffer buffer({200}, {2, 1}, {1, 1}, 2, BufferType::SingleRate, {HostComplexity::real, HostComplexity::complex},
                      true);
    std::atomic<double> newest{0};
    Writer writer(buffer, newest);
    Reader reader(buffer, newest);
    // Joins however this scope is left, and passes on what the writer throws.
    std::future<void> done = std::async(std::launch::async, [&writer] {
        for (int i = 0; i < 100000; ++i)
            writer.step();
    });
    while (done.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
        reader.step();
    done.get();
    EXPECT_EQ(reader.failures(), 0U);
    EXPECT_GT(reader.reads(), 0U);
    EXPECT_GT(reader.windows(), 0U);
    buffer.Clear();
    EXPECT_TRUE(buffer.GetIsReady()) << "steps and times are level again";
}

} // namespace
