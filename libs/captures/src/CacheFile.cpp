#include "CacheFile.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace tracery::captures {

namespace {

constexpr std::uint64_t kMagic = 0x3150414359435254; // "TRCYCAP1"
constexpr std::uint64_t kVersion = 1;

/// The end of a cache file.
struct Footer {
    std::uint64_t magic = kMagic, version = kVersion, position = 0, size = 0, indexHash = 0, hash = 0;

    std::uint64_t ownHash() const { return hashOf(std::as_bytes(std::span(this, 1)).first(sizeof *this - 8)); }
};

[[noreturn]] void fail(const char* why) { throw std::runtime_error(why); }

/// Goes over the fields of an index, in their order: one list for reading and for writing.
template <class Archive, class Index>
void visit(Archive& archive, Index& index)
{
    archive.text(index.recording);
    for (auto* number : {&index.state.device, &index.state.node, &index.state.size})
        archive.number(*number);
    archive.number(index.state.seconds);
    archive.number(index.state.nanoseconds);
    archive.number(index.contentHash);
    archive.text(index.layout.path);
    archive.number(index.layout.position);
    archive.number(index.layout.type);
    archive.number(index.layout.bigEndian);
    for (auto* number : {&index.layout.bias, &index.layout.divisor, &index.layout.scale, &index.layout.offset})
        archive.number(*number);
    archive.number(index.channels);
    archive.number(index.complex);
    archive.number(index.ownTimes);
    archive.number(index.steps);
    archive.list(index.hashes);
    archive.list(index.tables);
}

class Writer {
public:
    template <class Number>
    void number(const Number& value)
    {
        append(&value, sizeof value);
    }
    void text(const std::string& value)
    {
        number(value.size());
        append(value.data(), value.size());
    }
    template <class Element>
    void list(const std::vector<Element>& values)
    {
        number(values.size());
        append(values.data(), values.size() * sizeof(Element));
    }
    std::vector<std::byte> bytes;

private:
    void append(const void* from, std::size_t size)
    {
        const auto* first = static_cast<const std::byte*>(from);
        bytes.insert(bytes.end(), first, first + size);
    }
};

class Reader {
public:
    explicit Reader(std::span<const std::byte> bytes) : left_(bytes) {}
    template <class Number>
    void number(Number& value)
    {
        if constexpr (std::is_same_v<Number, bool>)
            value = *take(1).data() != std::byte{};
        else
            std::memcpy(&value, take(sizeof value).data(), sizeof value);
    }
    void text(std::string& value)
    {
        const auto bytes = take(size(1));
        value.assign(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    template <class Element>
    void list(std::vector<Element>& values)
    {
        const std::size_t count = size(sizeof(Element));
        values.resize(count);
        if (count != 0)
            std::memcpy(values.data(), take(count * sizeof(Element)).data(), count * sizeof(Element));
    }
    bool atEnd() const { return left_.empty(); }

    /// A number of elements that there may be.
    std::size_t size(std::size_t elementBytes)
    {
        std::size_t count = 0;
        number(count);
        if (count > left_.size() / elementBytes)
            fail("it ends too early");
        return count;
    }

private:
    std::span<const std::byte> take(std::size_t size)
    {
        if (size > left_.size())
            fail("it ends too early");
        const auto taken = left_.first(size);
        left_ = left_.subspan(size);
        return taken;
    }
    std::span<const std::byte> left_;
};

struct StoredRun {
    std::int64_t first, seconds, femtos, unit;
    std::int64_t utc;
};

void readRuns(Reader& reader, CacheIndex& index)
{
    for (std::int64_t chunk = 0; chunk < index.chunks(); ++chunk) {
        std::vector<StoredRun> stored;
        reader.list(stored);
        std::vector<TimeRun>& runs = index.runs.emplace_back();
        std::int64_t next = chunk * kChunkSteps;
        for (const StoredRun& run : stored) {
            if ((runs.empty() ? run.first != next : run.first < next) ||
                run.first >= std::min((chunk + 1) * kChunkSteps, index.steps) || run.femtos < 0 ||
                run.femtos >= kFemtosPerSecond || run.unit < 1 || run.unit > kFemtosPerSecond)
                fail("its times make no sense");
            runs.push_back({run.first, {{{run.seconds, run.femtos}, run.utc != 0}, Rate(run.unit)}});
            next = run.first + 1;
        }
        if (runs.empty())
            fail("its times make no sense");
    }
}

void requireSense(const CacheIndex& index)
{
    constexpr std::int64_t kMostSteps = std::int64_t{1} << 60;
    if (index.steps < 1 || index.steps > kMostSteps || index.channels < 1 || index.channels > 65536 ||
        index.layout.type > SampleType::Bit)
        fail("it tells of no samples");
    const StepFormat format(index.layout, index.channels, index.complex);
    const auto chunks = static_cast<std::size_t>(index.chunks());
    const auto pieces = static_cast<std::size_t>(index.steps / kPieceSteps + (index.steps % kPieceSteps != 0 ? 1 : 0));
    const std::size_t hashes = !index.layout.path.empty() ? 0 : index.ownTimes ? 2 * pieces : pieces;
    const std::size_t tableBytes = ChunkTable(format).bytes();
    if (index.tables.size() % tableBytes != 0 || index.tables.size() / tableBytes != chunks ||
        index.hashes.size() != hashes || (index.ownTimes && !index.layout.path.empty()))
        fail("its sizes do not fit each other");
}

} // namespace

std::vector<std::byte> indexBytes(const CacheIndex& index)
{
    Writer writer;
    writer.bytes.reserve(index.tables.size() + index.hashes.size() * sizeof(std::uint32_t) + 1024);
    visit(writer, index);
    for (const std::vector<TimeRun>& runs : index.runs) {
        std::vector<StoredRun> stored;
        for (const TimeRun& run : runs)
            stored.push_back({run.first, run.axis.start.since.seconds, run.axis.start.since.femtos,
                              run.axis.rate.numerator(), run.axis.start.utc ? 1 : 0});
        writer.list(stored);
    }
    return std::move(writer.bytes);
}

CacheIndex parseIndex(std::span<const std::byte> bytes)
{
    Reader reader(bytes);
    CacheIndex index;
    visit(reader, index);
    requireSense(index);
    if (index.ownTimes)
        readRuns(reader, index);
    if (!reader.atEnd())
        fail("it ends too late");
    return index;
}

namespace {

Footer readFooter(const StepFile& file)
{
    Footer footer;
    const std::uint64_t size = file.state().size;
    if (size < sizeof footer)
        fail("it is too short");
    file.read(size - sizeof footer, std::as_writable_bytes(std::span(&footer, 1)));
    if (footer.magic != kMagic || footer.hash != footer.ownHash())
        fail("it is damaged");
    if (footer.version != kVersion)
        fail("it is of another version");
    if (footer.position > size || footer.size != size - sizeof footer - footer.position)
        fail("it is damaged");
    return footer;
}

} // namespace

CacheIndex readIndex(const StepFile& file)
{
    const Footer footer = readFooter(file);
    std::vector<std::byte> bytes(footer.size);
    file.read(footer.position, bytes);
    if (hashOf(bytes) != footer.indexHash)
        fail("it is damaged");
    return parseIndex(bytes);
}

std::string readRecordingName(const StepFile& file)
{
    constexpr std::uint64_t kMost = 8192;
    const Footer footer = readFooter(file);
    std::vector<std::byte> bytes(std::min(footer.size, kMost));
    file.read(footer.position, bytes);
    std::string name;
    Reader(bytes).text(name);
    return name;
}

bool writeIndex(basics::WholeFile& file, std::uint64_t position, const CacheIndex& index)
{
    const std::vector<std::byte> bytes = indexBytes(index);
    Footer footer;
    footer.position = position;
    footer.size = bytes.size();
    footer.indexHash = hashOf(bytes);
    footer.hash = footer.ownHash();
    return file.write(bytes.data(), bytes.size()) && file.write(&footer, sizeof footer);
}

} // namespace tracery::captures
