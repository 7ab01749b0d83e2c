#pragma once

#include "buffers/PortModel.h"
#include "support/Expect.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <random>

namespace tracery::test {

/// A TimeBuffer and the plain model of it, on which the same operations are done; `Random` generates the choices.
template <class Random>
class RandomBuffer {
public:
    explicit RandomBuffer(Random& random) : random_(random)
    {
        const std::uint64_t numPorts = below(4) + 1;
        type_ = chance(0.5) ? BufferType::SingleRate : BufferType::MultipleRate;
        threadSafe_ = chance(0.5);
        Counts capacities, extents, nDim;
        std::vector<HostComplexity> complexity;
        const std::uint64_t common = below(9) + 1;
        const bool unequal = chance(0.5);
        for (std::uint64_t k = 0; k < numPorts; ++k) {
            PortModel port;
            port.complex = chance(0.4);
            port.capacity = unequal ? below(9) + 1 : common;
            port.maxExtents.resize(below(4));
            for (auto& extent : port.maxExtents)
                extent = below(chance(0.2) ? 12 : 4) + 1;
            capacities.push_back(port.capacity);
            nDim.push_back(port.maxExtents.size());
            extents.insert(extents.end(), port.maxExtents.begin(), port.maxExtents.end());
            complexity.push_back(port.complex ? HostComplexity::complex : HostComplexity::real);
            ports_.push_back(port);
        }
        buffer_.ResetBuffer(capacities, extents, nDim, numPorts, type_, complexity, threadSafe_);
        oneTimeForAll_ = type_ == BufferType::SingleRate && !threadSafe_;
        shared_ = oneTimeForAll_ &&
                  std::adjacent_find(capacities.begin(), capacities.end(), std::not_equal_to<>()) == capacities.end();
        last_.assign(numPorts, -3.0);
    }

    void step()
    {
        const std::uint64_t choice = below(100);
        if (choice >= 60 && choice < 73)
            for (PortModel& port : ports_)
                port.cleared = true;
        if (choice < 60)
            add();
        else if (choice < 63)
            clear();
        else if (choice < 70)
            clearBackTo();
        else if (choice < 73)
            clearUptoLastTime();
        else if (choice < 78)
            changeCapacity();
        else if (choice == 78)
            buffer_.reserveCapacity(); // which shows in nothing but memory
        check();
    }

private:
    std::uint64_t below(std::uint64_t bound) { return random_() % bound; }
    bool chance(double p) { return static_cast<double>(random_()) < p * static_cast<double>(Random::max()); }
    double anyValue()
    {
        return chance(0.1)    ? NAN
               : chance(0.05) ? INFINITY
               : chance(0.1)  ? (chance(0.5) ? 0.0 : -0.0)
                              : std::uniform_real_distribution<>(chance(0.5) ? -9 : 0, 9)(random_);
    }

    std::vector<double> newTimes(std::size_t n, double& last)
    {
        std::vector<double> times(n);
        for (double& t : times)
            t = last += chance(0.2) ? 0.0 : std::uniform_real_distribution<>(0, 1)(random_);
        return times;
    }

    /// Values of n steps of random extents within the port's, and the same laid out as whole blocks.
    HostArrayPtr newValues(const PortModel& port, std::size_t n, std::vector<Block>& blocks)
    {
        Counts extents = port.maxExtents;
        if (chance(0.6))
            for (auto& extent : extents)
                extent = below(extent) + 1;
        // A port of three or more extents that end in 1 does not take the flattened form: its dims are filled up first.
        const bool flattened = extents.size() < 3 || extents.back() != 1;
        const bool whole = extents.empty() || (extents == port.maxExtents && flattened && chance(0.5));
        std::uint64_t inputStep = 1;
        for (const std::uint64_t extent : extents)
            inputStep *= extent;
        Counts dims = whole ? Counts{port.width()} : extents;
        dims.push_back(n);
        const bool complexInput = chance(0.5);
        HostArrayPtr array(createNumericArray(dims.size(), dims.data(), HostClassID::double_,
                                              complexInput ? HostComplexity::complex : HostComplexity::real));
        for (std::size_t i = 0; i < n; ++i) {
            Block block(port.width(), std::complex<double>(kFill, kFill));
            for (std::uint64_t j = 0; j < inputStep; ++j) {
                const std::uint64_t at = i * inputStep + j;
                getRealData(array.get())[at] = anyValue();
                if (complexInput)
                    getImagData(array.get())[at] = anyValue();
                std::uint64_t rest = j, position = 0, stride = 1;
                for (std::size_t d = 0; d < extents.size(); ++d) {
                    position += rest % extents[d] * stride;
                    rest /= extents[d];
                    stride *= port.maxExtents[d];
                }
                block[position] = {getRealData(array.get())[at], complexInput ? getImagData(array.get())[at] : 0.0};
            }
            blocks.push_back(block);
        }
        return array;
    }

    void add()
    {
        const std::size_t n = below(12);
        const std::uint64_t chosen = below(ports_.size());
        std::vector<double> times;
        if (oneTimeForAll_) {
            times = newTimes(n, last_[0]);
            buffer_.AddTime(row(times).get(), chosen);
        }
        for (std::uint64_t k = 0; k < ports_.size(); ++k) {
            if (!oneTimeForAll_ && k != chosen)
                continue;
            std::vector<Block> blocks;
            const HostArrayPtr values = newValues(ports_[k], n, blocks);
            if (oneTimeForAll_) {
                buffer_.AddValue(values.get(), k, true);
            } else {
                times = newTimes(n, last_[k]);
                buffer_.addTimeAndValue(row(times).get(), values.get(), k, true);
            }
            ports_[k].times.insert(ports_[k].times.end(), times.begin(), times.end());
            ports_[k].steps.insert(ports_[k].steps.end(), blocks.begin(), blocks.end());
            ports_[k].unread += n;
            ports_[k].trim();
        }
    }

    void clear()
    {
        buffer_.Clear();
        for (PortModel& port : ports_)
            port.keepFirst(0);
    }

    void clearBackTo()
    {
        const double to = last_[below(last_.size())] - std::uniform_real_distribution<>(-1, 4)(random_);
        buffer_.ClearBackTo(to);
        for (PortModel& port : ports_) {
            std::size_t kept = port.times.size();
            while (kept > 0 && port.times[kept - 1] > to)
                --kept;
            port.keepFirst(kept);
        }
    }

    void clearUptoLastTime()
    {
        buffer_.clearUptoLastTime();
        for (PortModel& port : ports_) {
            if (port.times.empty() || port.times.size() == 2)
                continue;
            port.times = {port.times.back()};
            port.steps = {port.steps.back()};
        }
    }

    void changeCapacity()
    {
        Counts capacities(ports_.size(), below(14) + 1);
        if (!shared_)
            for (auto& capacity : capacities)
                capacity = below(14) + 1;
        buffer_.SetMaxNumTimeSteps(capacities);
        for (std::size_t k = 0; k < ports_.size(); ++k) {
            ports_[k].capacity = capacities[k];
            ports_[k].trim();
        }
    }

    void check()
    {
        double newest = -INFINITY;
        bool full = false;
        for (const PortModel& each : ports_) {
            newest = std::max(newest, each.times.empty() ? newest : each.times.back());
            full = full || each.times.size() == each.capacity;
        }
        ASSERT_EQ(buffer_.GetLastTime(), newest);
        ASSERT_EQ(buffer_.GetIsFull(), full);
        const std::uint64_t k = below(ports_.size());
        const PortModel& port = ports_[k];
        double tStart = last_[oneTimeForAll_ ? 0 : k] - std::uniform_real_distribution<>(-1, 8)(random_);
        double tEnd = tStart + std::uniform_real_distribution<>(-1, 6)(random_);
        if (!port.times.empty() && chance(0.5))
            tStart = port.times[below(port.times.size())];
        if (!port.times.empty() && chance(0.3))
            tEnd = port.times[below(port.times.size())];
        const bool widen = chance(0.5);
        int s = 0, e = 0, gotS = 0, gotE = 0;
        const bool any = port.find(tStart, tEnd, widen, s, e);
        ASSERT_EQ(buffer_.GetIndexRange(k, tStart, tEnd, widen, gotS, gotE), any);
        if (!port.times.empty()) {
            ASSERT_EQ(gotS, s);
            ASSERT_EQ(gotE, e);
        }
        HostArray* time = nullptr;
        HostArray* value = nullptr;
        buffer_.GetTimeAndValue(k, time, value, tStart, tEnd, widen);
        checkSteps(port, HostArrayPtr(time), HostArrayPtr(value), any ? s : 0, any ? e : -1);
        buffer_.GetTimeAndValue(k, time, value);
        checkSteps(port, HostArrayPtr(time), HostArrayPtr(value), 0, static_cast<int>(port.times.size()) - 1);
        if (chance(0.4))
            checkReadAfter(k);
        checkInterleaved(k, tStart, tEnd, widen);
        checkSamplesAfter(k, chance(0.1) ? -INFINITY : tStart);
        checkSamplesBetween(k, chance(0.3) ? -INFINITY : tStart, chance(0.3) ? INFINITY : tEnd);
    }

    static void checkSteps(const PortModel& port, HostArrayPtr time, HostArrayPtr value, int s, int e)
    {
        ASSERT_EQ(time == nullptr, s > e);
        ASSERT_EQ(value == nullptr, s > e);
        std::vector<double> times, real, imag;
        for (int i = s; i <= e; ++i) {
            times.push_back(port.times[static_cast<std::size_t>(i)]);
            for (const std::complex<double> element : port.steps[static_cast<std::size_t>(i)]) {
                real.push_back(element.real());
                if (port.complex)
                    imag.push_back(element.imag());
            }
        }
        ASSERT_TRUE(sameBits(realOf(time.get()), times));
        ASSERT_TRUE(sameBits(realOf(value.get()), real));
        ASSERT_TRUE(sameBits(imagOf(value.get()), imag));
        if (value) {
            ASSERT_EQ(getDimensions(value.get())[0], port.width());
        }
    }

    /// What was written since the last reading, or all after a clearing.
    void checkReadAfter(std::uint64_t k)
    {
        PortModel& port = ports_[k];
        const std::size_t stored = port.times.size();
        const std::size_t got = port.cleared ? stored : std::min<std::uint64_t>(port.unread, stored);
        const std::uint64_t lost = port.cleared ? 0 : port.unread - got;
        std::vector<double> times, real, imag;
        for (std::size_t i = stored - got; i < stored; ++i) {
            times.push_back(port.times[i]);
            for (const std::complex<double> element : port.steps[i]) {
                real.push_back(element.real());
                if (port.complex)
                    imag.push_back(element.imag());
            }
        }
        ASSERT_EQ(buffer_.readAfter(k, port.position, read_), lost);
        ASSERT_TRUE(sameBits(read_.times, times));
        ASSERT_TRUE(sameBits(read_.real, real));
        ASSERT_TRUE(sameBits(read_.imag, imag));
        if (stored == 0)
            return; // a port without steps leaves its readers where they are
        port.unread = 0;
        port.cleared = false;
    }

    void checkInterleaved(std::uint64_t k, double tStart, double tEnd, bool widen)
    {
        const PortModel& port = ports_[k];
        const bool isFrameBased = chance(0.5);
        const std::uint64_t perFrame = isFrameBased && chance(0.8) ? below(chance(0.3) ? 12 : 3) + 1 : 1;
        const std::uint64_t channels = below(4) + 1, channel = below(channels + (chance(0.1) ? 1 : 0));
        const double period = chance(0.2) ? INFINITY : 0.7, offset = chance(0.5) ? 0.0 : -2.5;
        const bool polar = chance(0.3);
        double lastDrawn = -INFINITY;
        if (!port.times.empty() && chance(0.5))
            lastDrawn = port.times[below(port.times.size())];

        std::vector<double> limits{INFINITY, -INFINITY, INFINITY, -INFINITY}, expectedLimits = limits;
        std::vector<double> real, imag;
        int s = 0, e = 0;
        std::string expected = "none";
        if (port.find(tStart, tEnd, widen, s, e)) {
            if (port.times[static_cast<std::size_t>(s)] <= lastDrawn)
                ++s;
            Block all;
            for (int i = s; i <= e; ++i)
                for (const std::complex<double> element : port.steps[static_cast<std::size_t>(i)])
                    all.push_back(port.complex ? element : element.real());
            for (int i = s; i <= e && expected == "none"; ++i)
                for (std::uint64_t j = 0; j < perFrame; ++j) {
                    const std::uint64_t at =
                        static_cast<std::uint64_t>(i - s) * perFrame * channels + perFrame * channel + j;
                    if (at >= all.size()) {
                        expected = "InvalidChannelID";
                        break;
                    }
                    const double dt = !isFrameBased || std::isinf(period) ? 0 : period / static_cast<double>(perFrame);
                    const double t = static_cast<double>(j) * dt + port.times[static_cast<std::size_t>(i)] + offset;
                    double re = all[at].real(), im = port.complex ? all[at].imag() : 0;
                    if (polar) {
                        const double magnitude = im == 0 ? std::abs(re) : std::hypot(re, im);
                        im = std::atan2(im, re) * 57.29577951308232;
                        re = magnitude;
                    }
                    real.insert(real.end(), {t, re});
                    imag.insert(imag.end(), {t, im});
                    for (const std::size_t part : {0U, 2U}) {
                        const double value = part == 0 ? re : im;
                        if (value < expectedLimits[part])
                            expectedLimits[part] = value;
                        if (value > expectedLimits[part + 1])
                            expectedLimits[part + 1] = value;
                    }
                }
        }
        HostArray* out = nullptr;
        const std::string got = failure([&] {
            buffer_.GetTimeAndValueInterleaved(k, out, limits, offset, tStart, tEnd, lastDrawn, channels, channel,
                                               isFrameBased, period, static_cast<std::int32_t>(perFrame), widen, polar);
        });
        const HostArrayPtr owned(out);
        ASSERT_EQ(got, expected);
        if (expected != "none")
            return;
        ASSERT_TRUE(sameBits(realOf(out), real));
        ASSERT_TRUE(sameBits(imagOf(out), imag));
        ASSERT_TRUE(sameBits(limits, expectedLimits));
    }

    /// The trigger read is the later part of the display read, one part of the values at a time.
    void checkSamplesAfter(std::uint64_t k, double after)
    {
        const PortModel& port = ports_[k];
        const bool isFrameBased = chance(0.5);
        const std::uint64_t perFrame = isFrameBased && !port.maxExtents.empty() ? port.maxExtents[0] : 1;
        const std::uint64_t channel = below(port.width() / perFrame + (chance(0.1) ? 2 : 0));
        const double period = chance(0.2) ? INFINITY : 0.7;
        const double from = std::isinf(after) ? std::numeric_limits<double>::lowest() : after;
        const auto wanted = static_cast<TimeBuffer::SamplePart>(below(4));
        const bool polar = wanted == TimeBuffer::SamplePart::magnitude || wanted == TimeBuffer::SamplePart::phase;
        const bool first = wanted == TimeBuffer::SamplePart::real || wanted == TimeBuffer::SamplePart::magnitude;

        std::vector<double> limits(4), expected, pairs{1, 2, 3};
        HostArray* out = nullptr;
        const std::string failed = failure([&] {
            buffer_.GetTimeAndValueInterleaved(k, out, limits, 0, from, std::numeric_limits<double>::max(), -INFINITY,
                                               port.width() / perFrame, channel, isFrameBased, period,
                                               static_cast<std::int32_t>(perFrame), false, polar);
        });
        const HostArrayPtr owned(out);
        const std::vector<double> all = first ? realOf(out) : imagOf(out);
        for (std::size_t i = 0; i < all.size(); i += 2)
            if (all[i] > after)
                expected.insert(expected.end(), {all[i], all[i + 1]});
        ASSERT_EQ(failure([&] { buffer_.GetSamplesAfter(after, k, channel, isFrameBased, period, wanted, pairs); }),
                  failed);
        ASSERT_TRUE(sameBits(pairs, expected));
    }

    /// Blocks end to end are the trigger read up to a time, however long they are; one that is full of one time is asked
    /// for again, larger. Frames last no time here, as random steps would part others.
    void checkSamplesBetween(std::uint64_t k, double after, double upTo)
    {
        const PortModel& port = ports_[k];
        const bool isFrameBased = chance(0.5);
        const std::uint64_t perFrame = isFrameBased && !port.maxExtents.empty() ? port.maxExtents[0] : 1;
        const std::uint64_t channel = below(port.width() / perFrame);
        const auto part = static_cast<TimeBuffer::SamplePart>(below(4));
        std::vector<double> all, expected, got;
        buffer_.GetSamplesAfter(after, k, channel, isFrameBased, INFINITY, part, all);
        for (std::size_t i = 0; i < all.size() && all[i] <= upTo; i += 2)
            expected.insert(expected.end(), {all[i], all[i + 1]});
        std::vector<double> block(2 + below(18));
        for (double from = after;;) {
            const std::uint64_t count =
                buffer_.GetSamplesBetween(from, upTo, k, channel, isFrameBased, INFINITY, part, block);
            if (count == 0)
                break;
            if (count == block.size() / 2 && block[0] == block[2 * count - 2]) {
                block.resize(2 * block.size());
                continue;
            }
            got.insert(got.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(2 * count));
            from = got.end()[-2];
        }
        ASSERT_TRUE(sameBits(got, expected));
    }

    Random& random_;
    BufferType type_ = BufferType::SingleRate;
    bool threadSafe_ = false, oneTimeForAll_ = false, shared_ = false;
    std::vector<double> last_;
    std::vector<PortModel> ports_;
    TimeBuffer buffer_;
    TimeBuffer::ReadSteps read_;
};

} // namespace tracery::test
