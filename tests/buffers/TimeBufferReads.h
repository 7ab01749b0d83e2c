#pragma once

#include "buffers/PortModel.h"
#include "support/Expect.h"
#include "support/ScarceMemory.h"

#include <algorithm>
#include <complex>
#include <limits>
#include <string>

namespace tracery::test {

/// What a run must have met now and then to have said something.
struct BufferRun {
    std::size_t refusals = 0, shortages = 0, apart = 0, lost = 0, fullOfOneTime = 0, patterns = 0, pairs = 0;
};

/// A buffer, its model, and all the reads that compare them.
template <class Random>
class BufferReads {
protected:
    BufferReads(Random& random, BufferRun& run) : random_(random), run_(run), memory_(random) {}

    std::uint64_t below(std::uint64_t bound) { return random_() % bound; }
    bool chance(double p) { return static_cast<double>(random_()) < p * static_cast<double>(Random::max()); }
    double within(double from, double to)
    {
        return from + (to - from) * static_cast<double>(random_()) / static_cast<double>(Random::max());
    }
    double anyValue()
    {
        const std::uint64_t kind = below(20);
        return kind < (gaps_ ? 9 : 2) ? NAN : kind == 18 ? INFINITY : kind == 19 ? -0.0 : within(-9, 9);
    }
    template <class Operation>
    void attempt(const std::string& expected, Operation&& operation)
    {
        run_.refusals += expected != "none" ? 1 : 0;
        memory_.attempt(
            expected, [&] { return failure(operation); }, [this] { checkAll(); });
    }

    /// All that shows.
    void checkAll()
    {
        ASSERT_EQ(buffer_.isInitialized(), !ports_.empty());
        if (ports_.empty())
            return;
        double newest = -INFINITY;
        bool full = false, level = true;
        Counts capacities, nDim;
        std::vector<bool> linear;
        const HostArrayPtr flags(buffer_.GetComplexityFlags()), extents(buffer_.GetMaxDimensions());
        ASSERT_EQ(buffer_.GetNPorts(), ports_.size());
        for (std::uint64_t k = 0; k < ports_.size(); ++k) {
            const PortModel& port = ports_[k];
            newest = port.steps.empty() ? newest : std::max(newest, port.steps.back().time);
            full = full || port.steps.size() == port.capacity;
            level = level && port.isLevel();
            capacities.push_back(port.capacity);
            nDim.push_back(port.maxExtents.size());
            linear.push_back(port.linear);
            ASSERT_EQ(getLogicals(flags.get())[k] != 0, port.complex);
            ASSERT_EQ(buffer_.GetMaxDimensions(k), std::vector<int>(port.maxExtents.begin(), port.maxExtents.end()));
            for (std::uint64_t d = 0; d < getDimensions(extents.get())[1]; ++d)
                ASSERT_EQ(getRealData(extents.get())[k + d * ports_.size()],
                          d < nDim[k] ? static_cast<double>(port.maxExtents[d]) : 1.0);
            HostArray *time = nullptr, *value = nullptr;
            ASSERT_EQ(failure([&] { buffer_.GetTimeAndValue(k, time, value); }), port.refusal());
            checkSteps(port, HostArrayPtr(time), HostArrayPtr(value), 0, port.isReadable() ? port.steps.size() : 0);
            ASSERT_TRUE(sameBits(buffer_.GetSampleTimes(k), {sampleTimes_[2 * k], sampleTimes_[2 * k + 1]}));
        }
        ASSERT_TRUE(sameBits(buffer_.GetSampleTimes(), sampleTimes_));
        ASSERT_EQ(buffer_.GetLastTime(), newest);
        ASSERT_EQ(buffer_.GetIsFull(), full);
        ASSERT_EQ(buffer_.GetIsReady(), level);
        ASSERT_EQ(buffer_.GetMaxNumTimeSteps(), capacities);
        ASSERT_EQ(buffer_.GetNDim(), nDim);
        ASSERT_EQ(buffer_.getIsLinearInterpolation(), linear);
        ASSERT_EQ(buffer_.dataHasNaNPattern(), patternFound_);
        ASSERT_EQ(buffer_.getIsThreadSafe(), threadSafe_);
        ASSERT_EQ(buffer_.GetType(), type_ == BufferType::SingleRate ? "SingleRate" : "MultipleRate");
    }

    /// Steps [s, e), unless the port cannot be read.
    static void checkSteps(const PortModel& port, HostArrayPtr time, HostArrayPtr value, std::size_t s, std::size_t e)
    {
        const bool any = s < e && port.isLevel();
        ASSERT_EQ(time != nullptr, any);
        ASSERT_EQ(value != nullptr, any);
        if (!any)
            return;
        ASSERT_TRUE(sameBits(realOf(time.get()), port.times(s, e)));
        ASSERT_TRUE(sameBits(realOf(value.get()), port.values(0, s, e)));
        ASSERT_TRUE(sameBits(imagOf(value.get()), port.complex ? port.values(1, s, e) : Samples()));
        ASSERT_EQ(getDimensions(value.get())[0], port.width());
    }

    void checkReads(std::uint64_t k)
    {
        const PortModel& port = ports_[k];
        const auto storedTime = [&] { return port.steps[below(port.steps.size())].time; };
        double tStart = last_[oneTimeForAll_ ? 0 : k] - within(-1, 8), tEnd = tStart + within(-1, 6);
        if (!port.steps.empty() && chance(0.5))
            tStart = storedTime();
        if (!port.steps.empty() && chance(0.3))
            tEnd = storedTime();
        const bool widen = chance(0.5);
        int s = 0, e = 0, gotS = 0, gotE = 0;
        bool got = false;
        const bool any = port.find(tStart, tEnd, widen, s, e);
        const char* const refusal = port.refusal();
        attempt(refusal, [&] { got = buffer_.GetIndexRange(k, tStart, tEnd, widen, gotS, gotE); });
        ASSERT_EQ(got, any && port.isLevel());
        ASSERT_EQ(std::pair(gotS, gotE), port.isLevel() ? std::pair(s, e) : std::pair(-1, -1));
        HostArray *time = nullptr, *value = nullptr;
        attempt(refusal, [&] { buffer_.GetTimeAndValue(k, time, value, tStart, tEnd, widen); });
        checkSteps(port, HostArrayPtr(time), HostArrayPtr(value), any ? static_cast<std::size_t>(s) : 0,
                   any ? static_cast<std::size_t>(e) + 1 : 0);
        if (chance(0.4))
            checkReadAfter(k);
        checkInterleaved(k, tStart, tEnd, widen, chance(0.5) && !port.steps.empty() ? storedTime() : -INFINITY);
        checkSamplesAfter(k, chance(0.1) ? -INFINITY : tStart);
        checkSamplesBetween(k, chance(0.3) ? -INFINITY : tStart, chance(0.3) ? INFINITY : tEnd);
    }

    /// What was written since the last reading, or all after a clearing.
    void checkReadAfter(std::uint64_t k)
    {
        PortModel& port = ports_[k];
        const bool readable = port.isReadable() && port.isLevel();
        const std::size_t stored = readable ? port.steps.size() : 0;
        const std::size_t first = stored - (port.cleared ? stored : std::min<std::uint64_t>(port.unread, stored));
        const std::uint64_t lost = readable && !port.cleared ? port.unread - (stored - first) : 0;
        std::uint64_t got = 0;
        attempt(port.refusal(), [&] { got = buffer_.readAfter(k, port.position, read_); });
        ASSERT_EQ(got, lost);
        ASSERT_TRUE(sameBits(read_.times, port.times(first, stored)));
        ASSERT_TRUE(sameBits(read_.real, port.values(0, first, stored)));
        ASSERT_TRUE(sameBits(read_.imag, port.complex ? port.values(1, first, stored) : Samples()));
        if (!readable)
            return; // a port without steps leaves its readers where they are
        run_.lost += lost > 0 ? 1 : 0;
        port.unread = 0;
        port.cleared = false;
    }

    /// A channel's samples of steps [s, e), as (time, value) pairs of both parts; `fits` until it reaches outside.
    struct Pairs {
        Samples parts[2];
        bool fits = true;
    };
    static Pairs pairsOf(const PortModel& port, std::size_t s, std::size_t e, std::uint64_t channels,
                         std::uint64_t channel, std::uint64_t perFrame, double period, bool polar, double offset = 0)
    {
        Pairs pairs;
        const Samples re = port.values(0, s, e), im = port.values(1, s, e);
        const double dt = std::isinf(period) ? 0 : period / static_cast<double>(perFrame);
        for (std::size_t i = s; i < e; ++i)
            for (std::uint64_t j = 0; j < perFrame; ++j) {
                const std::uint64_t at = (i - s) * perFrame * channels + perFrame * channel + j;
                if (at >= re.size())
                    return {{}, false};
                const double t = static_cast<double>(j) * dt + port.steps[i].time + offset;
                const double magnitude = im[at] == 0 ? std::abs(re[at]) : std::hypot(re[at], im[at]);
                const double phase = std::atan2(im[at], re[at]) * 57.29577951308232;
                pairs.parts[0].insert(pairs.parts[0].end(), {t, polar ? magnitude : re[at]});
                pairs.parts[1].insert(pairs.parts[1].end(), {t, polar ? phase : im[at]});
            }
        return pairs;
    }
    /// Those at times in (after, upTo] of the steps from `from` on, of a channel of frames as long as the first extent.
    Pairs pairsWithin(const PortModel& port, double from, double after, double upTo, std::uint64_t channel,
                      bool isFrameBased, double period, TimeBuffer::SamplePart part)
    {
        const std::uint64_t perFrame = isFrameBased && !port.maxExtents.empty() ? port.maxExtents[0] : 1;
        const bool polar = part == TimeBuffer::SamplePart::magnitude || part == TimeBuffer::SamplePart::phase;
        int s = 0, e = 0;
        if (!port.find(from, std::numeric_limits<double>::max(), false, s, e))
            return {};
        const Pairs all = pairsOf(port, static_cast<std::size_t>(s), static_cast<std::size_t>(e) + 1,
                                  port.width() / perFrame, channel, perFrame, isFrameBased ? period : INFINITY, polar);
        const Samples& wanted =
            all.parts[part == TimeBuffer::SamplePart::imaginary || part == TimeBuffer::SamplePart::phase];
        Pairs within{{}, all.fits};
        for (std::size_t i = 0; i < wanted.size(); i += 2)
            if (wanted[i] > after && wanted[i] <= upTo)
                within.parts[0].insert(within.parts[0].end(), {wanted[i], wanted[i + 1]});
        return within;
    }
    /// Of the channels of a port; now and then one more.
    std::uint64_t anyChannel(const PortModel& port, bool isFrameBased)
    {
        const std::uint64_t perFrame = isFrameBased && !port.maxExtents.empty() ? port.maxExtents[0] : 1;
        return below((perFrame == 0 ? 1 : port.width() / perFrame) + (chance(0.1) ? 2 : 0) + (port.width() == 0));
    }

    void checkInterleaved(std::uint64_t k, double tStart, double tEnd, bool widen, double lastDrawn)
    {
        const PortModel& port = ports_[k];
        const bool isFrameBased = chance(0.5), polar = chance(0.3), fits = chance(0.5) && port.width() > 0;
        std::uint64_t perFrame = isFrameBased && chance(0.8) ? below(chance(0.3) ? 12 : 3) + 1 : 1;
        if (fits)
            perFrame = isFrameBased && !port.maxExtents.empty() ? port.maxExtents[0] : 1;
        const std::uint64_t channels = fits ? port.width() / perFrame : below(4) + 1;
        const std::uint64_t channel = below(channels + (chance(0.1) ? 1 : 0));
        const double period = chance(0.2) ? INFINITY : 0.7, offset = chance(0.5) ? 0.0 : -2.5;
        const Samples seeds{INFINITY, -INFINITY, INFINITY, -INFINITY};
        Samples limits = seeds, expectedLimits = seeds;
        int s = 0, e = 0;
        std::string expected = port.refusal();
        Pairs pairs;
        if (expected == "none" && port.find(tStart, tEnd, widen, s, e)) {
            if (port.steps[static_cast<std::size_t>(s)].time <= lastDrawn)
                ++s;
            pairs = pairsOf(port, static_cast<std::size_t>(s), static_cast<std::size_t>(e) + 1, channels, channel,
                            perFrame, isFrameBased ? period : INFINITY, polar, offset);
            for (std::size_t i = 0; i < 2 * pairs.parts[0].size(); ++i) {
                const std::size_t part = i % 2, at = i / 2;
                double &least = expectedLimits[2 * part], &greatest = expectedLimits[2 * part + 1];
                const double value = pairs.parts[part][at];
                least = at % 2 == 1 && value < least ? value : least;
                greatest = at % 2 == 1 && value > greatest ? value : greatest;
            }
            expected = pairs.fits ? expected : "InvalidChannelID";
        }
        HostArray* out = nullptr;
        attempt(expected, [&] {
            EXPECT_TRUE(sameBits(limits, seeds)) << "by a read that failed";
            buffer_.GetTimeAndValueInterleaved(k, out, limits, offset, tStart, tEnd, lastDrawn, channels, channel,
                                               isFrameBased, period, static_cast<std::int32_t>(perFrame), widen, polar);
        });
        const HostArrayPtr owned(out);
        run_.pairs += pairs.parts[0].size() / 2;
        if (expected != "none")
            return;
        ASSERT_TRUE(sameBits(realOf(out), pairs.parts[0]));
        ASSERT_TRUE(sameBits(imagOf(out), pairs.parts[1]));
        ASSERT_TRUE(sameBits(limits, expectedLimits));
    }

    void checkSamplesAfter(std::uint64_t k, double after)
    {
        const PortModel& port = ports_[k];
        const bool isFrameBased = chance(0.5);
        const std::uint64_t channel = anyChannel(port, isFrameBased);
        const double period = chance(0.2) ? INFINITY : 0.7;
        const auto part = static_cast<TimeBuffer::SamplePart>(below(4));
        std::string expected = port.refusal();
        Pairs pairs;
        if (expected == "none")
            pairs = pairsWithin(port, std::max(after, std::numeric_limits<double>::lowest()), after, INFINITY, channel,
                                isFrameBased, period, part);
        Samples got{1, 2, 3};
        expected = pairs.fits ? expected : "InvalidChannelID";
        attempt(expected, [&] { buffer_.GetSamplesAfter(after, k, channel, isFrameBased, period, part, got); });
        ASSERT_TRUE(sameBits(got, pairs.parts[0]));
    }

    /// Blocks end to end, however long they are; one that is full of one time is asked for again, larger. Frames last no
    /// time here, as random steps would part others.
    void checkSamplesBetween(std::uint64_t k, double after, double upTo)
    {
        const PortModel& port = ports_[k];
        const bool isFrameBased = chance(0.5);
        const std::uint64_t channel = anyChannel(port, isFrameBased);
        const auto part = static_cast<TimeBuffer::SamplePart>(below(4));
        if (!port.isLevel())
            return;
        const Pairs pairs = pairsWithin(port, std::numeric_limits<double>::lowest(), after, upTo, channel, isFrameBased,
                                        INFINITY, part);
        Samples got;
        if (!pairs.fits)
            return;
        Samples block(2 + below(18));
        for (double from = after;;) {
            std::uint64_t count = 0;
            attempt("none", [&] {
                count = buffer_.GetSamplesBetween(from, upTo, k, channel, isFrameBased, INFINITY, part, block);
            });
            if (count == 0)
                break;
            if (count == block.size() / 2 && block[0] == block[2 * count - 2]) {
                block.resize(2 * block.size());
                ++run_.fullOfOneTime;
                continue;
            }
            got.insert(got.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(2 * count));
            from = got.end()[-2];
        }
        ASSERT_TRUE(sameBits(got, pairs.parts[0]));
    }

    Random& random_;
    BufferRun& run_;
    ScarceMemory<Random> memory_;
    BufferType type_ = BufferType::SingleRate;
    bool threadSafe_ = false, oneTimeForAll_ = false, gaps_ = false, patternFound_ = false;
    Samples last_, sampleTimes_;
    std::vector<PortModel> ports_;
    TimeBuffer buffer_;
    TimeBuffer::ReadSteps read_;
};

} // namespace tracery::test
