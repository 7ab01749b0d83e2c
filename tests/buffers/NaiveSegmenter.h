#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <vector>

namespace tracery::test {

/// The segmenting of a spectrum buffer, rule after rule, a sample at a time. A frame has a column for each of the
/// buffers (all channels' real parts, then the imaginary ones). Throws what vector::at throws.
struct NaiveSegmenter {
    using Samples = std::vector<double>;
    using Frame = std::vector<Samples>;

    NaiveSegmenter(std::uint32_t length, double overlapPercent, std::size_t numBuffers)
        : L(length), percent(overlapPercent), buffers(numBuffers)
    {
        setOverlap();
    }

    void setOverlap()
    {
        const double x = L * percent / 100, f = std::floor(x), c = std::ceil(x);
        O = static_cast<std::uint32_t>(std::abs(x - f) < std::abs(x - c) ? f : c);
        if (O == L && L > 0)
            O = L - 1;
    }

    /// Each segment begins with the end of the one before it, the first one with zeros or at once.
    void append(Samples& buf, const Samples& data) const
    {
        for (std::size_t i = 0; L > 0; ++i) {
            const std::size_t n = buf.size();
            for (std::size_t k = 0; k < O && n % L == 0 && (n > 0 || startWithOverlap); ++k)
                buf.push_back(n == 0 ? 0.0 : buf.at(n - O + k));
            if (i == data.size())
                return;
            buf.push_back(data[i]);
        }
    }

    void addToBuffer(const Frame& frame)
    {
        processed += static_cast<std::uint32_t>(frame[0].size());
        for (std::size_t i = 0; i < buffers.size(); ++i)
            append(buffers[i], frame[i]);
    }

    void addInput(const Frame& frame)
    {
        if (pendingClear)
            clear();
        pendingClear = false;
        F = static_cast<std::uint32_t>(frame[0].size());
        lastIndex = length() != 0 ? length() : startWithOverlap ? O : 0;
        lastL = L;
        lastO = O;
        addToBuffer(frame);
    }

    std::size_t length() const { return buffers[0].size(); }
    std::size_t segments() const { return L == 0 ? 0 : length() / L; }
    std::size_t samplesInBlocks() const { return segments() / std::max(B, 1U) * std::max(B, 1U) * L; }

    /// The whole blocks of a run of buffers, one behind the other.
    Samples handOut(std::size_t first, std::size_t count) const
    {
        Samples out;
        for (std::size_t i = first; i < first + count; ++i)
            for (std::size_t k = 0; k < samplesInBlocks(); ++k)
                out.push_back(buffers[i].at(k));
        return out;
    }

    void clear()
    {
        handOut(0, buffers.size()); // throws when one has too few
        const auto gone = static_cast<std::ptrdiff_t>(samplesInBlocks());
        for (Samples& buf : buffers)
            buf.erase(buf.begin(), buf.begin() + gone);
        F = 0;
    }

    void flush() { buffers.assign(buffers.size(), {}); }

    void rebuffer()
    {
        if (F == 0)
            return;
        Frame frame;
        if (length() != 0) {
            if (lastL == 0)
                throw std::out_of_range("the last frame was not stored");
            const auto len = static_cast<std::int64_t>(length());
            const std::int64_t u = len - len / lastL * lastL - lastO, m = std::max<std::int64_t>(F, u);
            for (const Samples& buf : buffers) {
                std::int64_t p = static_cast<std::int64_t>(lastIndex) + F - m;
                Samples& column = frame.emplace_back();
                for (std::int64_t i = 0; i < m; ++i) {
                    if (p != 0 && p % lastL == 0)
                        p += lastO;
                    column.push_back(buf.at(static_cast<std::size_t>(p++)));
                }
            }
        }
        flush();
        if (frame.empty())
            return;
        startWithOverlap = false;
        addInput(frame);
        processed -= static_cast<std::uint32_t>(frame[0].size());
        startWithOverlap = true;
    }

    void setCut(std::uint32_t length, double overlapPercent)
    {
        if (length == L && overlapPercent == percent)
            return;
        L = length;
        percent = overlapPercent;
        setOverlap();
        rebuffer();
    }

    std::uint32_t L, O = 0, B = 1, F = 0, processed = 0, lastL = 0, lastO = 0;
    double percent;
    std::size_t lastIndex = 0;
    bool pendingClear = false, startWithOverlap = true;
    std::vector<Samples> buffers;
};

} // namespace tracery::test
