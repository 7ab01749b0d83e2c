#include "CaptureBuilder.h"

#include <algorithm>
#include <utility>

namespace tracery::captures {

namespace {

constexpr auto kSteps = static_cast<std::size_t>(kChunkSteps);

/// Steps that are handled at once: whole blocks, and whole chunks unless they are large.
std::size_t pieceOf(const StepFormat& format)
{
    constexpr std::size_t kBytes = 1 << 20;
    return std::clamp(kBytes / format.stepBytes / format.blockSteps * format.blockSteps, format.blockSteps, kSteps);
}

/// The chunk that is being filled: its steps go to the file piece by piece, and then their offsets.
class Filling {
public:
    Filling(const StepFormat& format, basics::WholeFile& file, CacheIndex& index)
        : format_(format), table_(format), file_(file), index_(index), steps_(pieceOf(format) * format.stepBytes)
    {}

    /// Steps that can be added at once.
    std::size_t room() const { return std::min(pieceOf(format_), kSteps - written_) - count_; }

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
            if (offsets_.empty())
                index_.runs.emplace_back();
            for (std::size_t i = 0; i < count; ++i)
                offsets_.push_back(runs_.enter(index_.steps + static_cast<std::int64_t>(i),
                                               start + Duration::of(block.times[i]), index_.runs.back()));
        }
        count_ += count;
        index_.steps += static_cast<std::int64_t>(count);
        if (room() == 0)
            writePiece();
        if (written_ == kSteps)
            endChunk();
    }

    void finish()
    {
        writePiece();
        endChunk();
    }

private:
    void writePiece()
    {
        if (count_ == 0)
            return;
        if (written_ == 0) {
            firstHash_ = index_.hashes.size();
            index_.tables.resize(index_.tables.size() + table_.bytes());
        }
        std::byte* const table = index_.tables.data() + index_.tables.size() - table_.bytes();
        table_.update(table, steps_.data(), written_, written_ + count_);
        enterHashes(steps_.data(), count_, format_.stepBytes, written_, 0);
        put(steps_.data(), count_ * format_.stepBytes);
        written_ += std::exchange(count_, 0);
    }

    void endChunk()
    {
        const auto bytes = std::as_bytes(std::span(offsets_));
        enterHashes(bytes.data(), offsets_.size(), sizeof(std::int64_t), 0, 1);
        put(bytes.data(), bytes.size());
        offsets_.clear();
        written_ = 0;
    }

    /// Of steps from `first` of the chunk on, `size` bytes each; those of offsets come behind those of steps.
    void enterHashes(const std::byte* bytes, std::size_t steps, std::size_t size, std::size_t first, std::size_t behind)
    {
        constexpr auto kPiece = static_cast<std::size_t>(kPieceSteps);
        const std::size_t pace = index_.ownTimes ? 2 : 1;
        for (std::size_t done = 0; done < steps; done += kPiece) {
            const std::size_t place = firstHash_ + (first + done) / kPiece * pace + behind;
            index_.hashes.resize(std::max(index_.hashes.size(), place + pace - behind));
            index_.hashes[place] =
                static_cast<std::uint32_t>(hashOf({bytes + done * size, std::min(kPiece, steps - done) * size}));
        }
    }

    void put(const std::byte* bytes, std::size_t size)
    {
        if (!file_.write(bytes, size))
            writing([this] { file_.keep(); }); // says why it cannot
    }

    const StepFormat& format_;
    const ChunkTable table_;
    basics::WholeFile& file_;
    CacheIndex& index_;
    std::vector<std::byte> steps_;      ///< of a piece
    std::vector<std::int64_t> offsets_; ///< of the chunk
    TimeRuns runs_;
    std::size_t count_ = 0, written_ = 0; ///< steps in the piece, and of the chunk before it
    std::size_t firstHash_ = 0;           ///< of the chunk
};

} // namespace

void buildInPlace(const StepFile& file, CacheIndex& index, const std::function<void(double)>& progress)
{
    const StepFormat format(index.layout, index.channels, index.complex);
    const ChunkTable table(format);
    index.tables.resize(static_cast<std::size_t>(index.chunks()) * table.bytes());
    std::vector<std::byte> steps(pieceOf(format) * format.stepBytes);
    for (std::int64_t first = 0; first < index.steps;) {
        const std::int64_t chunk = first / kChunkSteps, end = std::min((chunk + 1) * kChunkSteps, index.steps);
        const auto before = static_cast<std::size_t>(first % kChunkSteps);
        const std::size_t count = std::min(static_cast<std::size_t>(end - first), pieceOf(format));
        file.read(index.layout.position + static_cast<std::uint64_t>(first) * format.stepBytes,
                  std::span(steps).first(count * format.stepBytes));
        table.update(index.tables.data() + static_cast<std::size_t>(chunk) * table.bytes(), steps.data(), before,
                     before + count);
        first += static_cast<std::int64_t>(count);
        if (progress)
            progress(static_cast<double>(first) / static_cast<double>(index.steps));
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
    filling.finish();
    if (index.ownTimes)
        written += static_cast<std::uint64_t>(index.steps) * sizeof(std::int64_t);
    writeIndex(file, written, index);
}

} // namespace tracery::captures
