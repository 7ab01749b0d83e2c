// How frames become segments, and leave again.

#include "buffers/SpectrumBufferState.h"
#include "support/containerErrors.h"

#include <tracery/host/Error.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace tracery {

// ---- Inside

void SpectrumBuffer::State::Channels::requireSamples(std::uint64_t count) const
{
    for (const std::vector<SegmentedSamples>* part : {&real, &imag})
        for (const SegmentedSamples& buffer : *part)
            if (buffer.size() < count)
                throw InvalidSubscript();
}

SpectrumBuffer::State::Frame SpectrumBuffer::State::frameOf(const HostArray* value) const
{
    if (!isDouble(value))
        throw Error(errors::AddValueDataTypeError);
    const Frame frame{getDimensions(value)[0], getRealData(value), getImagData(value)};
    if (frame.rows > std::numeric_limits<std::uint32_t>::max())
        throw TooLong();
    if (frame.rows > 0 && getN(value) < numChannels)
        throw InvalidSubscript();
    if (frame.rows > 0 && numChannels > 0 && frame.real == nullptr)
        throw Error(errors::EmptyInput);
    return frame;
}

void SpectrumBuffer::State::reserve(Channels& into, std::uint64_t dropped, std::uint64_t rows, SegmentCut under,
                                    SegmentLead lead)
{
    into.each([&](SegmentedSamples& buffer) {
        buffer.reserve(SegmentedSamples::sizeAfter(buffer.size() - dropped, rows, under, lead));
    });
    if (!into.imag.empty() && zeros.size() < rows)
        zeros.resize(rows);
}

void SpectrumBuffer::State::append(Channels& into, const Frame& frame, SegmentCut under,
                                   SegmentLead lead) const noexcept
{
    const auto appendPart = [&](std::vector<SegmentedSamples>& buffers, const double* columns) {
        for (std::size_t c = 0; c < buffers.size(); ++c)
            buffers[c].append({columns != nullptr ? columns + c * frame.rows : zeros.data(), frame.rows}, under, lead);
    };
    appendPart(into.real, frame.real);
    appendPart(into.imag, frame.imag);
}

std::uint64_t SpectrumBuffer::State::samplesInBlocks() const
{
    const std::uint64_t block = std::max(segmentsPerBlock, 1U);
    return cut.segmentsIn(channels.size()) / block * block * cut.length;
}

void SpectrumBuffer::State::discardBlocks() noexcept
{
    const std::uint64_t count = samplesInBlocks();
    channels.each([count](SegmentedSamples& buffer) { buffer.dropOldest(count); });
    lastInputFrameLength = 0;
}

void SpectrumBuffer::State::noteInputStart() noexcept
{
    lastInputIndex = channels.size() > 0 ? channels.size() : cut.overlap;
    lastInputCut = cut;
}

void SpectrumBuffer::State::recut(SegmentCut under)
{
    if (lastInputFrameLength == 0) {
        cut = under;
        return;
    }
    if (channels.size() == 0) {
        channels.clear();
        cut = under;
        return;
    }
    if (lastInputCut.length == 0) // of that frame nothing was stored
        throw InvalidSubscript();
    const auto size = static_cast<std::int64_t>(channels.size());
    const auto inOpenSegment =
        size % static_cast<std::int64_t>(lastInputCut.length) - static_cast<std::int64_t>(lastInputCut.overlap);
    const auto rows = static_cast<std::uint64_t>(std::max<std::int64_t>(lastInputFrameLength, inOpenSegment));
    const std::vector<double> samples = newestSamples(rows);
    const double* imag = channels.imag.empty() ? nullptr : samples.data() + rows * channels.real.size();
    Channels fresh = emptyChannels(numChannels, complexity);
    reserve(fresh, 0, rows, under, SegmentLead::samples);
    append(fresh, {rows, samples.data(), imag}, under, SegmentLead::samples);

    std::swap(channels, fresh);
    cut = lastInputCut = under;
    lastInputFrameLength = static_cast<std::uint32_t>(rows);
    lastInputIndex = 0;
    pendingClear = false;
}

std::vector<double> SpectrumBuffer::State::newestSamples(std::uint64_t rows) const
{
    const auto first =
        static_cast<std::int64_t>(lastInputIndex + lastInputFrameLength) - static_cast<std::int64_t>(rows);
    if (first < 0)
        throw InvalidSubscript();
    std::vector<double> result;
    result.reserve(rows * (channels.real.size() + channels.imag.size()));
    for (const std::vector<SegmentedSamples>* part : {&channels.real, &channels.imag})
        for (const SegmentedSamples& buffer : *part) {
            auto from = static_cast<std::uint64_t>(first);
            for (std::uint64_t left = rows; left > 0;) {
                if (from != 0 && from % lastInputCut.length == 0)
                    from += lastInputCut.overlap;
                const std::uint64_t count = std::min(left, lastInputCut.length - from % lastInputCut.length);
                if (from + count > buffer.size())
                    throw InvalidSubscript();
                const double* samples = buffer.samples().data() + from;
                result.insert(result.end(), samples, samples + count);
                from += count;
                left -= count;
            }
        }
    return result;
}

// ---- Writing

void SpectrumBuffer::AddValue(const HostArray* value, int /*port*/, bool /*refresh*/)
{
    State& s = *state_;
    const State::Frame frame = value != nullptr ? s.frameOf(value) : State::Frame{};
    const std::uint64_t dropped = s.pendingClear ? s.samplesInBlocks() : 0;
    if (dropped > 0)
        s.channels.requireSamples(dropped);
    if (value != nullptr)
        s.reserve(s.channels, dropped, frame.rows, s.cut, SegmentLead::overlapOfZeros);

    if (std::exchange(s.pendingClear, false))
        s.discardBlocks();
    if (value != nullptr)
        s.lastInputFrameLength = static_cast<std::uint32_t>(frame.rows);
    s.noteInputStart();
    if (value == nullptr)
        return;
    s.numProcessedSamples += static_cast<std::uint32_t>(frame.rows);
    s.append(s.channels, frame, s.cut, SegmentLead::overlapOfZeros);
}

void SpectrumBuffer::addtoBuffer(const HostArray* value)
{
    if (value == nullptr)
        throw Error(errors::EmptyInput);
    State& s = *state_;
    const State::Frame frame = s.frameOf(value);
    s.reserve(s.channels, 0, frame.rows, s.cut, SegmentLead::overlapOfZeros);
    s.numProcessedSamples += static_cast<std::uint32_t>(frame.rows);
    s.append(s.channels, frame, s.cut, SegmentLead::overlapOfZeros);
}

void SpectrumBuffer::addtoBuffer(const double* samples, std::uint32_t count, bool imaginary, std::uint32_t channel)
{
    std::vector<SegmentedSamples>& part = imaginary ? state_->channels.imag : state_->channels.real;
    if (channel >= part.size())
        throw InvalidSubscript();
    if (samples == nullptr && count > 0)
        throw Error(errors::EmptyInput);
    SegmentedSamples& buffer = part[channel];
    buffer.reserve(SegmentedSamples::sizeAfter(buffer.size(), count, state_->cut, SegmentLead::overlapOfZeros));
    buffer.append({samples, count}, state_->cut, SegmentLead::overlapOfZeros);
}

void SpectrumBuffer::addtoBuffer(const std::complex<double>* samples, std::uint32_t count, std::uint32_t channel)
{
    State::Channels& channels = state_->channels;
    if (channel >= channels.imag.size())
        throw InvalidSubscript();
    if (samples == nullptr && count > 0)
        throw Error(errors::EmptyInput);
    std::vector<double> real(count), imag(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        real[i] = samples[i].real();
        imag[i] = samples[i].imag();
    }
    SegmentedSamples& imagBuffer = channels.imag[channel];
    imagBuffer.reserve(SegmentedSamples::sizeAfter(imagBuffer.size(), count, state_->cut, SegmentLead::overlapOfZeros));
    addtoBuffer(real.data(), count, false, channel);
    addtoBuffer(imag.data(), count, true, channel);
}

// ---- Reading

std::uint32_t SpectrumBuffer::getNumSegments() const
{
    return static_cast<std::uint32_t>(state_->cut.segmentsIn(state_->channels.size()));
}

std::uint32_t SpectrumBuffer::getNumUnprocessedSamples() const
{
    const State& s = *state_;
    if (s.numChannels == 0 || s.cut.length == 0)
        return 0;
    return static_cast<std::uint32_t>(s.channels.size() % s.cut.length - s.cut.overlap);
}

bool SpectrumBuffer::isReady()
{
    State& s = *state_;
    return (s.reduceUpdatesOverride || isTimeUp()) && s.samplesInBlocks() > 0;
}

HostArray* SpectrumBuffer::getAvailableSegments()
{
    if (!isReady())
        return nullptr;
    const State& s = *state_;
    const std::uint64_t count = s.samplesInBlocks();
    s.channels.requireSamples(count);
    const std::uint64_t extents[] = {s.cut.length, count / s.cut.length, s.numChannels};
    HostArrayPtr segments(createNumericArray(3, extents, HostClassID::double_, s.complexity));
    const auto copyPart = [count](const std::vector<SegmentedSamples>& buffers, double* to) {
        for (const SegmentedSamples& buffer : buffers) {
            std::memcpy(to, buffer.samples().data(), count * sizeof(double));
            to += count;
        }
    };
    copyPart(s.channels.real, getRealData(segments.get()));
    copyPart(s.channels.imag, getImagData(segments.get()));
    return segments.release();
}

void SpectrumBuffer::GetTimeAndValue(int /*port*/, HostArray*& time, HostArray*& value)
{
    time = nullptr;
    value = nullptr;
    value = getAvailableSegments();
    if (value != nullptr)
        state_->pendingClear = true;
}

// ---- Clearing

void SpectrumBuffer::clear()
{
    state_->channels.requireSamples(state_->samplesInBlocks());
    state_->discardBlocks();
}

void SpectrumBuffer::flush()
{
    state_->channels.clear();
    state_->lastTime = -std::numeric_limits<double>::infinity();
}

void SpectrumBuffer::rebuffer() { state_->recut(state_->cut); }

} // namespace tracery
