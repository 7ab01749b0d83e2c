#include "WavLength.h"

#include <tracery/recordings/Recording.h>

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

namespace tracery::recordings {

namespace {

constexpr std::uint64_t kAllBits32 = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint64_t kWrap = kAllBits32 + 1;
constexpr std::uint64_t kAllBits64 = std::numeric_limits<std::uint64_t>::max();

std::uint64_t number(std::string_view bytes, bool bigEndian)
{
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        value = value << 8 | static_cast<unsigned char>(bytes[bigEndian ? i : bytes.size() - 1 - i]);
    return value;
}

std::string bytesOf(std::uint64_t value, std::size_t size, bool bigEndian)
{
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i, value >>= 8)
        bytes[bigEndian ? size - 1 - i : i] = static_cast<char>(value & 0xFF);
    return bytes;
}

std::string_view readAt(const File& file, std::uint64_t offset, std::span<char> bytes)
{
    return {bytes.data(), file.read(offset, bytes)};
}

/// Chunks begin at even bytes, with a name and a length.
constexpr std::uint64_t kChunkHead = 8;
constexpr std::size_t kLeastFormat = kChunkHead + 14;
std::uint64_t nextChunk(std::uint64_t offset, std::uint64_t length)
{
    return offset + kChunkHead + length + length % 2;
}

/// What the header says. RF64 keeps its lengths, of 64 bits, in a chunk of their own.
struct WavHeader {
    std::string kind; ///< RIFF, RIFX or RF64
    bool longLength = false;
    std::uint64_t dataStart = 0;
    std::uint64_t dataLength = 0;
    std::string format; ///< the chunk that tells what samples are
    bool bigEndian() const { return kind == "RIFX"; }
};

std::optional<WavHeader> readHeader(const File& file)
{
    std::array<char, 24> bytes{};
    const std::string_view head = readAt(file, 0, bytes);
    if (head.size() < 12 || head.substr(8, 4) != "WAVE")
        return std::nullopt;
    const std::string kind(head.substr(0, 4));
    if (kind != "RIFF" && kind != "RIFX" && kind != "RF64")
        return std::nullopt;

    constexpr std::uint64_t kMostFormat = 4096;
    WavHeader header;
    header.kind = kind;
    for (std::uint64_t offset = 12;;) {
        const std::string_view chunk = readAt(file, offset, bytes);
        if (chunk.size() < kChunkHead)
            return std::nullopt;
        const std::string_view id = chunk.substr(0, 4);
        const std::uint64_t length = number(chunk.substr(4, 4), header.bigEndian());
        if (id == "fmt " && length <= kMostFormat) {
            header.format.resize(kChunkHead + length + length % 2);
            header.format.resize(file.read(offset, header.format));
        }
        if (id == "ds64" && kind == "RF64" && chunk.size() == bytes.size()) {
            header.dataLength = number(chunk.substr(16, 8), false);
            header.longLength = true;
        }
        if (id == "data") {
            header.dataStart = offset + kChunkHead;
            if (!header.longLength)
                header.dataLength = length;
            return header;
        }
        offset = nextChunk(offset, length);
    }
}

/// Whether chunks, and not samples, fill the file from `offset` on.
bool onlyChunksFollow(const File& file, std::uint64_t offset, bool bigEndian)
{
    std::array<char, kChunkHead> bytes{};
    while (offset < file.size()) {
        const std::string_view chunk = readAt(file, offset, bytes);
        const auto isText = [](char c) { return c >= ' ' && c <= '~'; };
        if (chunk.size() < kChunkHead || !std::ranges::all_of(chunk.substr(0, 4), isText))
            return false;
        offset = nextChunk(offset, number(chunk.substr(4, 4), bigEndian));
    }
    return offset <= file.size() + 1; // the byte that evens out the last one may be left out
}

bool onlyChunksFollowSamples(const File& file, const WavHeader& header, std::uint64_t length)
{
    return onlyChunksFollow(file, header.dataStart + length + length % 2, header.bigEndian());
}

/// Whether the length only stands for one that was never filled in. Writers to pipes put there 0, all bits, or what
/// keeps the file, or whole blocks of it, below 2 or 4 GiB; that may be a true length, too, which then fits the file.
bool isLeftOpen(const File& file, const WavHeader& header)
{
    const std::uint64_t length = header.dataLength;
    if (length == 0 || length == (header.longLength ? kAllBits64 : kAllBits32))
        return true;
    constexpr std::uint64_t kMostBelow = 4096;
    const auto isJustBelow = [length](std::uint64_t most) { return length <= most && most - length <= kMostBelow; };
    return !header.longLength && (isJustBelow(kWrap / 2) || isJustBelow(kWrap)) &&
           !onlyChunksFollowSamples(file, header, length);
}

/// How long the samples are of which the header tells the lower bits alone: to the last place from which on nothing but
/// chunks follow, or to the end of the file.
std::uint64_t unwrapLength(const File& file, const WavHeader& header, std::uint64_t present)
{
    const auto fits = [&](std::uint64_t length) { return onlyChunksFollowSamples(file, header, length); };
    if (present < kWrap || header.longLength || header.dataLength > present - kWrap || fits(header.dataLength))
        return header.dataLength;
    for (std::uint64_t length = present - (present - header.dataLength) % kWrap; length >= kWrap; length -= kWrap)
        if (fits(length))
            return length;
    return present;
}

/// A head for samples of this length.
Mend headFor(const File& file, const WavHeader& header, std::uint64_t dataLength)
{
    const bool isLong = dataLength >= kAllBits32 || header.longLength;
    if (isLong && header.bigEndian())
        throw InputError(file.path(), "byte " + std::to_string(header.dataStart - 4),
                         "more than 4 GiB of samples follow, which a big-endian WAV file has no length for");
    const auto bytes = [&](std::uint64_t value, std::size_t size) { return bytesOf(value, size, header.bigEndian()); };
    std::string rest = "WAVE";
    const std::uint64_t size = dataLength + header.format.size() + (isLong ? 48 : 12);
    constexpr std::size_t kStepBytes = kChunkHead + 12; // in the format
    const std::uint64_t step = number(std::string_view(header.format).substr(kStepBytes, 2), header.bigEndian());
    if (isLong)
        rest += "ds64" + bytes(28, 4) + bytes(size, 8) + bytes(dataLength, 8) +
                bytes(dataLength / std::max<std::uint64_t>(step, 1), 8) + bytes(0, 4);
    rest += header.format + "data" + bytes(isLong ? kAllBits32 : dataLength, 4);
    return {(isLong ? "RF64" : header.kind) + bytes(isLong ? kAllBits32 : size, 4) + rest, header.dataStart};
}

} // namespace

std::optional<WavData> findWavData(const File& file)
{
    const std::optional<WavHeader> header = readHeader(file);
    return header ? std::optional(WavData{header->dataStart, header->bigEndian()}) : std::nullopt;
}

std::optional<Mend> mendWavLength(const File& file)
{
    const std::optional<WavHeader> header = readHeader(file);
    if (!header)
        return std::nullopt;
    const std::uint64_t present = file.size() - header->dataStart;
    const bool filledIn = !isLeftOpen(file, *header);
    if (filledIn && header->dataLength > present)
        throw InputError(file.path(), "byte " + std::to_string(file.size()),
                         "the file ends here; its header promises " + std::to_string(header->dataLength) +
                             " bytes of samples from byte " + std::to_string(header->dataStart) + ", found " +
                             std::to_string(present));

    const bool empty = header->dataLength == 0 && onlyChunksFollow(file, header->dataStart, header->bigEndian());
    const std::uint64_t length = filledIn ? unwrapLength(file, *header, present) : present;
    if (empty || length == header->dataLength || header->format.size() < kLeastFormat)
        return std::nullopt;
    return headFor(file, *header, length);
}

} // namespace tracery::recordings
