// Cache files of captures, of any bytes: what is wrong with one is said, and one that makes sense leads nowhere outside.

#include "Bytes.h"
#include "FileSource.h"

#include <tracery/basics/WholeFile.h>
#include <tracery/captures/Capture.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

using namespace tracery::captures;
using tracery::fuzz::Bytes;

namespace {

/// A file in memory where there is a place, which goes away with the program.
class File {
public:
    File()
        : path_((std::filesystem::exists("/dev/shm") ? "/dev/shm/captures-" : "/tmp/captures-") +
                std::to_string(getpid()))
    {}
    ~File() { std::filesystem::remove(path_); }
    File(const File&) = delete;
    const std::string& write(std::string_view bytes) const
    {
        std::ofstream(path_, std::ios::binary) << bytes;
        return path_;
    }

private:
    std::string path_;
};

/// An index whose sizes fit each other; all else is any.
CacheIndex someIndex(Bytes& bytes)
{
    CacheIndex index;
    index.layout.type = static_cast<SampleType>(bytes.below(11));
    index.layout.bigEndian = bytes.flag();
    if (bytes.below(3) == 0)
        for (double* number : {&index.layout.bias, &index.layout.divisor, &index.layout.scale, &index.layout.offset})
            *number = bytes.number();
    index.channels = 1 + bytes.below(3);
    index.complex = bytes.flag();
    index.ownTimes = bytes.flag();
    index.steps = 1 + static_cast<std::int64_t>(bytes()) * (bytes.below(4) == 0 ? 4 : 1);
    if (!index.ownTimes && bytes.flag())
        index.layout.path = "in place";
    const StepFormat format(index.layout, index.channels, index.complex);
    index.tables.resize(static_cast<std::size_t>(index.chunks()) * ChunkTable(format).bytes());
    for (std::byte& byte : index.tables)
        byte = static_cast<std::byte>(bytes.byte());
    for (std::int64_t chunk = 0; index.ownTimes && chunk < index.chunks(); ++chunk) {
        std::vector<TimeRun>& runs = index.runs.emplace_back();
        for (std::int64_t step = chunk * kChunkSteps; runs.empty() || bytes.below(8) != 0; step += bytes())
            runs.push_back(
                {step, {{{static_cast<std::int64_t>(bytes()), bytes()}, bytes.below(99) == 0}, Rate(1 + bytes())}});
    }
    return index;
}

void look(Capture capture, Bytes& bytes)
{
    std::vector<double> points, values(10);
    for (int i = 0; i < 20; ++i) {
        const auto part = bytes.flag() ? Part::Imaginary : Part::Real;
        const std::int64_t first = bytes() % static_cast<std::uint64_t>(capture.end());
        const std::int64_t count = 1 + bytes() % static_cast<std::uint64_t>(capture.end() - first);
        try {
            capture.points({bytes.below(4), part, first, count, {{bytes(), 5}}, bytes.number(), bytes.flag()}, points);
            EXPECT_LE(points.size(), 2 * static_cast<std::size_t>(count));
            capture.read({0, part, first, values.size(), 1 + static_cast<std::int64_t>(bytes.below(9))}, values.data());
            capture.readTimes(first, 1, capture.timeOf(first), values.data());
            capture.firstFrom(capture.timeOf(first));
        } catch (const std::runtime_error& error) { // hashes, times
            EXPECT_EQ(std::string_view(error.what()).find('\n'), std::string_view::npos);
        } catch (const std::out_of_range&) {
        }
    }
}

} // namespace

void tracery::fuzz::runInput(Bytes& bytes)
{
    static const File file;
    if (bytes.below(4) == 0) {
        const std::string any = bytes.rest();
        EXPECT_THROW(readIndex(StepFile(file.write(any))), std::runtime_error);
        try {
            parseIndex(std::as_bytes(std::span(any)));
        } catch (const std::runtime_error&) {
        }
        return;
    }
    CacheIndex index = someIndex(bytes);
    const StepFormat format(index.layout, index.channels, index.complex);
    const bool inPlace = !index.layout.path.empty();
    const std::int64_t pieces = (index.steps + kPieceSteps - 1) / kPieceSteps;
    std::string data(static_cast<std::size_t>(index.steps) * (format.stepBytes + (index.ownTimes ? 8 : 0)), '\0');
    for (std::size_t i = 0; i < data.size() && i < 5000; ++i)
        data[i] = static_cast<char>(bytes.byte());
    if (!inPlace)
        index.hashes.resize(static_cast<std::size_t>(index.ownTimes ? 2 * pieces : pieces));
    // Right hashes of what lies at the start: small captures can be read.
    if (!inPlace && index.steps <= kChunkSteps) {
        const auto all = std::as_bytes(std::span(data));
        for (std::int64_t piece = 0; piece < pieces; ++piece) {
            const auto at = static_cast<std::size_t>(piece * kPieceSteps);
            const auto count = static_cast<std::size_t>(std::min(kPieceSteps, index.steps - piece * kPieceSteps));
            const auto hash = [&](std::size_t from, std::size_t size) {
                return static_cast<std::uint32_t>(hashOf(all.subspan(from, size)));
            };
            const auto place = static_cast<std::size_t>(index.ownTimes ? 2 * piece : piece);
            index.hashes[place] = hash(at * format.stepBytes, count * format.stepBytes);
            if (index.ownTimes)
                index.hashes[place + 1] =
                    hash(static_cast<std::size_t>(index.steps) * format.stepBytes + 8 * at, 8 * count);
        }
    }
    std::vector<std::byte> written = indexBytes(index);
    if (bytes.below(3) == 0)
        written[bytes() % written.size()] ^= static_cast<std::byte>(1 + bytes.below(255));
    try {
        CacheIndex read = parseIndex(written);
        std::optional<TimeAxis> axis;
        if (!read.ownTimes)
            axis = TimeAxis{{}, Rate(1000)};
        if (read.layout.path.empty() == inPlace)
            return;
        look(Capture(makeFileSource({}, axis, std::move(read), std::make_unique<StepFile>(file.write(data)))), bytes);
    } catch (const std::runtime_error&) {
    }
}
