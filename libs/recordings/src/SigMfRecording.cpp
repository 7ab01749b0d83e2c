#include "SigMfRecording.h"

#include <algorithm>
#include <utility>

namespace tracery::recordings {

namespace {

constexpr std::size_t kChunkBytes = 65536;

std::uint64_t countSteps(const File& data, const SigMfMeta& meta)
{
    const std::uint64_t size = data.size();
    if (meta.headerBytes > size || meta.trailingBytes > size - meta.headerBytes)
        throw InputError(data.path(), "byte " + std::to_string(size),
                         "the file ends here, within the header and trailing bytes of its description");
    const std::uint64_t bytes = size - meta.headerBytes - meta.trailingBytes;
    const std::uint64_t stepBytes = meta.channels * meta.format.sampleSize();
    if (bytes % stepBytes != 0)
        throw InputError(data.path(), "byte " + std::to_string(meta.headerBytes + bytes),
                         "the samples end here, within a step: expected a multiple of " + std::to_string(stepBytes) +
                             " bytes, found " + std::to_string(bytes));
    return bytes / stepBytes;
}

} // namespace

SigMfRecording::SigMfRecording(const std::string& path, const std::string& base, const OpenOptions& options)
    : meta_(readSigMfMeta(base + ".sigmf-meta")), data_(base + ".sigmf-data")
{
    RecordingInfo info;
    info.path = path;
    info.format = "SigMF " + meta_.datatype;
    info.channels = numberedChannels(static_cast<std::size_t>(meta_.channels));
    info.complex = meta_.format.complex;
    info.rate = chooseRate(path, meta_.rate, options);
    info.steps = countSteps(data_, meta_);
    if (info.complex)
        info.centerFrequency = meta_.frequency;
    describe(std::move(info));
}

std::optional<SampleLayout> SigMfRecording::layout() const
{
    SampleLayout layout = meta_.format.layout;
    layout.path = data_.path();
    layout.position = meta_.headerBytes;
    return layout;
}

void SigMfRecording::readValues(std::uint64_t first, std::size_t count, Block& block)
{
    const std::size_t channels = info().channels.size();
    const std::size_t size = meta_.format.sampleSize();
    block.real.resize(count * channels);
    block.imag.resize(meta_.format.complex ? count * channels : 0);

    std::uint64_t offset = meta_.headerBytes + first * channels * size;
    for (std::size_t done = 0; done < block.real.size();) {
        const std::size_t samples = std::min(kChunkBytes / size, block.real.size() - done);
        bytes_.resize(samples * size);
        if (data_.read(offset, bytes_) != bytes_.size())
            throw InputError(data_.path(), "byte " + std::to_string(offset), "the file has become shorter");
        meta_.format.decode(bytes_.data(), size, std::span(block.real).subspan(done, samples));
        if (meta_.format.complex)
            meta_.format.decode(bytes_.data() + meta_.format.numberSize, size,
                                std::span(block.imag).subspan(done, samples));
        done += samples;
        offset += bytes_.size();
    }
}

} // namespace tracery::recordings
