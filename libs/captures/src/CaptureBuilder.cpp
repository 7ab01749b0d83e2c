#include "CaptureBuilder.h"

#include <algorithm>
#include <cstring>

namespace tracery::captures {

namespace {

constexpr auto kSteps = static_cast<std::size_t>(kChunkSteps);

void hashPieces(const std::byte* bytes, std::size_t steps, std::size_t size, std::vector<std::uint32_t>& hashes,
                std::size_t from, std::size_t pace)
{
    for (std::size_t first = 0; first < steps; first += static_cast<std::size_t>(kPieceSteps), from += pace) {
        const std::size_t count = std::min(static_cast<std::size_t>(kPieceSteps), steps - first);
        hashes[from] = static_cast<std::uint32_t>(hashOf({bytes + first * size, count * size}));
    }
}

/// The chunk that is being filled.
class Filling {
public:
    Filling(const StepFormat& format, basics::WholeFile& file, CacheIndex& index)
        : format_(format), table_(format), file_(file), index_(index), steps_(kSteps * format.stepBytes)
    {}

    std::size_t room() const { return kSteps - count_; }

    void add(const recordings::Block& block, const Time& start)
    {
        const std::size_t lines = format_.lines(), count = block.steps();
        std::byte* const into = steps_.data() + count_ * format_.stepBytes;
        std::fill_n(into, count * format_.stepBytes, std::byte{});
        for (std::size_t line = 0; line < lines; ++line) {
            const std::size_t channel = format_.complex ? line / 2 : line;
            const double* const values = (format_.complex && line % 2 == 1 ? block.imag : block.real).data() + channel;
            if (!format_.store(line, values, format_.channels, count, into))
                throw NoSuchNumber{};
        }
        if (index_.ownTimes) {
            if (count_ == 0)
                index_.runs.emplace_back();
            for (std::size_t i = 0; i < count; ++i)
                offsets_.push_back(runs_.enter(index_.steps + static_cast<std::int64_t>(i),
                                               start + Duration::of(block.times[i]), index_.runs.back()));
        }
        count_ += count;
        index_.steps += static_cast<std::int64_t>(count);
        if (room() == 0)
            write();
    }

    void write()
    {
        if (count_ == 0)
            return;
        const std::size_t tables = index_.tables.size();
        index_.tables.resize(tables + table_.bytes());
        table_.update(index_.tables.data() + tables, steps_.data(), 0, count_);
        const std::size_t pieces = (count_ + kPieceSteps - 1) / kPieceSteps, pace = index_.ownTimes ? 2 : 1;
        const std::size_t hashes = index_.hashes.size();
        index_.hashes.resize(hashes + pieces * pace);
        hashPieces(steps_.data(), count_, format_.stepBytes, index_.hashes, hashes, pace);
        put(steps_.data(), count_ * format_.stepBytes);
        if (index_.ownTimes) {
            const auto bytes = std::as_bytes(std::span(offsets_));
            hashPieces(bytes.data(), count_, sizeof(std::int64_t), index_.hashes, hashes + 1, pace);
            put(bytes.data(), bytes.size());
        }
        count_ = 0;
        offsets_.clear();
    }

private:
    void put(const std::byte* bytes, std::size_t size)
    {
        if (!file_.write(bytes, size))
            writing([this] { file_.keep(); }); // says why it cannot
    }

    const StepFormat& format_;
    const ChunkTable table_;
    basics::WholeFile& file_;
    CacheIndex& index_;
    std::vector<std::byte> steps_;
    std::vector<std::int64_t> offsets_;
    TimeRuns runs_;
    std::size_t count_ = 0;
};

} // namespace

void buildInPlace(const StepFile& file, CacheIndex& index, const std::function<void(double)>& progress)
{
    const StepFormat format(index.layout, index.channels, index.complex);
    const ChunkTable table(format);
    index.tables.resize(static_cast<std::size_t>(index.chunks()) * table.bytes());
    std::vector<std::byte> steps(kSteps * format.stepBytes);
    for (std::int64_t chunk = 0; chunk < index.chunks(); ++chunk) {
        const std::int64_t first = chunk * kChunkSteps;
        const auto count = static_cast<std::size_t>(std::min(kChunkSteps, index.steps - first));
        file.read(index.layout.position + static_cast<std::uint64_t>(first) * format.stepBytes,
                  std::span(steps).first(count * format.stepBytes));
        table.update(index.tables.data() + static_cast<std::size_t>(chunk) * table.bytes(), steps.data(), 0, count);
        if (progress)
            progress(static_cast<double>(chunk + 1) / static_cast<double>(index.chunks()));
    }
    file.check();
}

void buildDecoded(recordings::Recording& recording, const Time& start, basics::WholeFile& file, CacheIndex& index,
                  const std::function<void(double)>& progress)
{
    const StepFormat format(index.layout, index.channels, index.complex);
    const std::size_t atOnce = std::max<std::size_t>(std::size_t{1 << 20} / (format.lines() * sizeof(double)), 256);
    const std::optional<std::uint64_t> steps = recording.info().steps;
    const recordings::TimeRange range = recording.range();
    Filling filling(format, file, index);
    std::uint64_t written = 0;
    for (recordings::Block block;;) {
        recording.read(block, std::min(atOnce, filling.room()));
        if (block.steps() == 0)
            break;
        filling.add(block, start);
        written = static_cast<std::uint64_t>(index.steps) * format.stepBytes;
        const double done = steps ? static_cast<double>(index.steps) / static_cast<double>(*steps)
                                  : (block.times.back() - range.first) / (range.last - range.first);
        if (progress && done <= 1)
            progress(done);
    }
    filling.write();
    if (index.ownTimes)
        written += static_cast<std::uint64_t>(index.steps) * sizeof(std::int64_t);
    writeIndex(file, written, index);
}

} // namespace tracery::captures
