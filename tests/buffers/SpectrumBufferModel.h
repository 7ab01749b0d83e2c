#pragma once

#include "buffers/NaiveSegmenter.h"
#include "buffers/SpectrumFixtures.h"
#include "support/ScarceMemory.h"

namespace tracery::test {

/// The same operations on a buffer and on the plain rules; `Random` generates the choices.
template <class Random>
class RandomSpectrum {
public:
    explicit RandomSpectrum(Random& random) : random_(random), memory_(random), naive_(6, 50, 1), buffer_(6, 50)
    {
        rebuild();
    }

    void step()
    {
        const std::size_t choice = below(20);
        if (choice < 10)
            addFrame();
        else if (choice < 14)
            setCut();
        else if (choice == 14)
            buffer_.setSegmentsPerBlock(naive_.B = static_cast<std::uint32_t>(below(4)));
        else if (choice == 15)
            rebuild();
        else if (choice == 16)
            both([](auto& n) { n.clear(); }, [](auto& b) { b.clear(); });
        else if (choice == 17)
            flush();
        else if (choice == 18 && below(3) == 0)
            appendToOne();
        else if (choice == 19)
            both([](auto& n) { n.rebuffer(); }, [](auto& b) { b.rebuffer(); });
        compare();
    }

    std::size_t shortages() const { return memory_.failures(); }
    std::size_t recuts() const { return recuts_; }
    std::size_t refusals() const { return refusals_; }

private:
    std::size_t below(std::size_t bound) { return random_() % bound; }

    /// An operation that throws must not have happened.
    template <class OnNaive, class OnBuffer>
    void both(OnNaive onNaive, OnBuffer onBuffer)
    {
        NaiveSegmenter after = naive_;
        const bool fails = refusal([&] { onNaive(after); }) != "none";
        refusals_ += fails ? 1 : 0;
        memory_.attempt(
            fails ? "invalid vector<T> subscript" : "none", [&] { return refusal([&] { onBuffer(buffer_); }); },
            [this] { compareContents(); });
        if (!fails)
            naive_ = after;
    }

    void flush()
    {
        naive_.flush();
        memory_.withoutMemory([this] { buffer_.flush(); });
    }

    void addFrame()
    {
        const bool imag = below(2) == 0;
        const std::size_t rows = below(6) == 0 ? 0 : below(40), columns = channels_ + (below(8) == 0 ? 1 : 0);
        Frame input, used;
        for (std::size_t c = 0; c < columns * (imag ? 2 : 1); ++c)
            input.push_back(ramp(rows, next_ += 1000));
        for (std::size_t i = 0; i < naive_.buffers.size(); ++i)
            used.push_back(i < channels_ ? input[i] : imag ? input[columns + i - channels_] : Samples(rows, 0.0));
        const HostArrayPtr array = arrayOf(input, columns);
        if (below(6) == 0)
            both([&](auto& n) { n.addToBuffer(used); }, [&](auto& b) { b.addtoBuffer(array.get()); });
        else
            both([&](auto& n) { n.addInput(used); }, [&](auto& b) { b.AddValue(array.get(), 7, false); });
    }

    void setCut()
    {
        const auto length = below(2) ? naive_.L : static_cast<std::uint32_t>(below(25));
        const double percent = length != naive_.L ? naive_.percent : 2.5 * static_cast<double>(below(41));
        recuts_ += naive_.F > 0 && naive_.length() > 0 && (length != naive_.L || percent != naive_.percent) ? 1 : 0;
        both([=](auto& n) { n.setCut(length, percent); },
             [=](auto& b) { b.setSegmentLength(length), b.setOverlapPercent(percent); });
    }

    void rebuild()
    {
        const std::size_t channels = below(3) + 1;
        const bool complex = below(2) == 0;
        const HostArrayPtr four = row({4});
        const bool alone = below(2) == 0, same = complex == (naive_.buffers.size() > channels_);
        both(
            [&](auto& n) {
                if (channels != channels_)
                    n.buffers.assign(channels * (same == complex ? 2 : 1), {});
            },
            [&](auto& b) { b.setNumChannels(static_cast<std::uint32_t>(channels)); });
        channels_ = channels;
        both(
            [&](auto& n) {
                if (!same)
                    n.buffers.assign(channels * (complex ? 2 : 1), {});
            },
            [&](auto& b) {
                alone ? b.setComplexityFlag(complex ? kComplex : kReal)
                      : b.setupBufferParams(four.get(), nullptr, four.get(), nullptr, complex);
            });
    }

    /// To one channel alone: the channels' lengths then differ.
    void appendToOne()
    {
        const std::size_t channel = below(channels_);
        const Samples real = ramp(below(30), next_ += 1000);
        std::vector<std::complex<double>> pairs(real.begin(), real.end());
        const auto c = static_cast<std::uint32_t>(channel), count = static_cast<std::uint32_t>(real.size());
        const bool complex = naive_.buffers.size() > channels_;
        both(
            [&](auto& n) {
                n.append(n.buffers[channel], real);
                if (complex)
                    n.append(n.buffers[channels_ + channel], Samples(count, 0.0));
            },
            [&](auto& b) {
                complex ? b.addtoBuffer(pairs.data(), count, c) : b.addtoBuffer(real.data(), count, false, c);
            });
    }

    void compareContents()
    {
        EXPECT_EQ(buffer_.getNumOverlapSamples(), naive_.O);
        EXPECT_EQ(buffer_.getSegmentLength(), naive_.L);
        EXPECT_EQ(buffer_.getNumChannels(), channels_);
        EXPECT_EQ(buffer_.getComplexity() == kComplex, naive_.buffers.size() > channels_);
        EXPECT_EQ(buffer_.getNumSegments(), naive_.segments());
        EXPECT_EQ(buffer_.getNumProcessedSamples(), naive_.processed);
        EXPECT_EQ(buffer_.getLastInputFrameLength(), naive_.F);
        EXPECT_EQ(buffer_.isReady(), naive_.samplesInBlocks() > 0);
        if (naive_.L > 0) {
            EXPECT_EQ(buffer_.getNumUnprocessedSamples(),
                      static_cast<std::uint32_t>(naive_.length() % naive_.L - naive_.O)); // which wraps
        }
    }

    void compare()
    {
        compareContents();
        Samples re, im;
        const bool thenClear = below(3) == 0;
        both(
            [&](auto& n) {
                re = n.handOut(0, channels_);
                im = n.handOut(channels_, n.buffers.size() - channels_);
                n.pendingClear = n.pendingClear || (thenClear && !re.empty());
            },
            [&](auto& b) {
                HostArray *time = nullptr, *value = nullptr;
                thenClear ? b.GetTimeAndValue(3, time, value) : void(value = b.getAvailableSegments());
                const HostArrayPtr segments(value);
                EXPECT_TRUE(sameBits(realOf(value), re) && sameBits(imagOf(value), im));
            });
    }

    Random& random_;
    ScarceMemory<Random> memory_;
    NaiveSegmenter naive_;
    TestBuffer buffer_;
    std::size_t channels_ = 1;
    double next_ = 0;
    std::size_t recuts_ = 0, refusals_ = 0;
};

} // namespace tracery::test
