#include "WavLength.h"

#include <tracery/recordings/Recording.h>

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

namespace tracery::recordings {

namespace {

constexpr std::uint64_t kAllBits32 = std::numeric_limits<std::uint32_t>::max();
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
std::uint64_t nextChunk(std::uint64_t offset, std::uint64_t length)
{
    return offset + kChunkHead + length + length % 2;
}

/// What the header says, and where it says how long the samples are: RF64 keeps its lengths in a chunk of
/// their own.
struct WavHeader {
    bool bigEndian = false;
    std::uint64_t dataStart = 0;
    std::uint64_t dataLength = 0;
    std::uint64_t lengthField = 0;
    std::size_t lengthFieldSize = 4;
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

    WavHeader header;
    header.bigEndian = kind == "RIFX";
    for (std::uint64_t offset = 12;;) {
        const std::string_view chunk = readAt(file, offset, bytes);
        if (chunk.size() < kChunkHead)
            return std::nullopt;
        const std::string_view id = chunk.substr(0, 4);
        const std::uint64_t length = number(chunk.substr(4, 4), header.bigEndian);
        if (id == "ds64" && kind == "RF64" && chunk.size() == bytes.size()) {
            header.dataLength = number(chunk.substr(16, 8), false);
            header.lengthField = offset + 16;
            header.lengthFieldSize = 8;
        }
        if (id == "data") {
            header.dataStart = offset + kChunkHead;
            if (header.lengthField == 0) {
                header.dataLength = length;
                header.lengthField = offset + 4;
            }
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

} // namespace

std::optional<WavData> findWavData(const File& file)
{
    const std::optional<WavHeader> header = readHeader(file);
    return header ? std::optional(WavData{header->dataStart, header->bigEndian}) : std::nullopt;
}

std::optional<Mend> mendWavLength(const File& file)
{
    const std::optional<WavHeader> header = readHeader(file);
    if (!header)
        return std::nullopt;
    const std::uint64_t present = file.size() - header->dataStart;
    const std::uint64_t allBits = header->lengthFieldSize == 4 ? kAllBits32 : kAllBits64;
    const bool filledIn = header->dataLength != 0 && header->dataLength != allBits;
    if (filledIn && header->dataLength > present)
        throw InputError(file.path(), "byte " + std::to_string(file.size()),
                         "the file ends here; its header promises " + std::to_string(header->dataLength) +
                             " bytes of samples from byte " + std::to_string(header->dataStart) + ", found " +
                             std::to_string(present));

    const bool empty = header->dataLength == 0 && onlyChunksFollow(file, header->dataStart, header->bigEndian);
    if (filledIn || empty)
        return std::nullopt;
    return Mend{header->lengthField, bytesOf(std::min(present, allBits), header->lengthFieldSize, header->bigEndian)};
}

} // namespace tracery::recordings
