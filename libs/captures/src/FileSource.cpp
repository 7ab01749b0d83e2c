#include "FileSource.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace tracery::captures {

namespace {

/// All that there is of a file, at once.
class FileView final : public CaptureView {
public:
    FileView(const StepFormat& steps, const TimeAxis* even, CacheIndex index, std::unique_ptr<StepFile> samples)
        : CaptureView(steps, even), index_(std::move(index)), file_(std::move(samples))
    {
        end = index_.steps;
    }

    void read(std::int64_t first, std::size_t count, std::byte* into) const override
    {
        if (inPlace())
            file_->read(positionOf(first), {into, count * format.stepBytes});
        else
            readPieces(first, count, format.stepBytes, 0, into);
    }
    void readOffsets(std::int64_t first, std::size_t count, std::int64_t* into) const override
    {
        readPieces(first, count, sizeof *into, format.stepBytes, reinterpret_cast<std::byte*>(into));
    }
    const std::byte* overview(std::int64_t chunk) const override
    {
        return index_.tables.data() + static_cast<std::size_t>(chunk) * table.bytes();
    }
    std::span<const TimeRun> runs(std::int64_t chunk) const override
    {
        return index_.runs[static_cast<std::size_t>(chunk)];
    }
    void expect(std::int64_t first, std::size_t count) const override
    {
        file_->expect(positionOf(first), count * format.stepBytes);
    }
    bool expects(std::int64_t first) const override { return file_->waits(positionOf(first)); }
    /// What is in a cache file has hashes, and others may note that they use it.
    void check() const override
    {
        if (inPlace())
            file_->check();
    }

private:
    bool inPlace() const { return !index_.layout.path.empty(); }

    /// Where a step is; in a cache file its offset lies behind the steps of its chunk.
    std::uint64_t positionOf(std::int64_t step) const
    {
        const auto at = static_cast<std::uint64_t>(step);
        if (inPlace())
            return index_.layout.position + at * format.stepBytes;
        const std::uint64_t before = at - at % kChunkSteps;
        return before * (format.stepBytes + (index_.ownTimes ? sizeof(std::int64_t) : 0)) +
               at % kChunkSteps * format.stepBytes;
    }

    /// Reads elements of `size` bytes, one a step, that lie behind `before` bytes a step in their chunk: piece by piece,
    /// as each piece has its hash.
    void readPieces(std::int64_t first, std::size_t count, std::size_t size, std::size_t before, std::byte* into) const
    {
        std::vector<std::byte> bytes;
        const std::int64_t behind = first + static_cast<std::int64_t>(count);
        while (first < behind) {
            const std::int64_t piece = first / kPieceSteps, start = piece * kPieceSteps;
            const std::int64_t stop = std::min(start + kPieceSteps, index_.steps);
            const std::int64_t chunk = first / kChunkSteps * kChunkSteps;
            const auto inChunk = static_cast<std::uint64_t>(std::min(kChunkSteps, index_.steps - chunk));
            bytes.resize(static_cast<std::size_t>(stop - start) * size);
            file_->read(positionOf(chunk) + inChunk * before + static_cast<std::uint64_t>(start - chunk) * size, bytes);
            const std::size_t hash =
                static_cast<std::size_t>(index_.ownTimes ? 2 * piece : piece) + (before != 0 ? 1 : 0);
            if (static_cast<std::uint32_t>(hashOf(bytes)) != index_.hashes[hash]) {
                std::remove(file_->path().c_str()); // so that the next to open the recording builds it anew
                throw recordings::InputError(file_->path(), "step " + std::to_string(first),
                                             "the cache file is damaged here, and was removed");
            }
            const std::int64_t most = std::min(stop, behind);
            const auto some = static_cast<std::size_t>(most - first) * size;
            std::memcpy(into, bytes.data() + static_cast<std::size_t>(first - start) * size, some);
            into += some;
            first = most;
        }
    }

    const CacheIndex index_;
    const std::unique_ptr<StepFile> file_;
};

class FileSource final : public CaptureSource {
public:
    FileSource(recordings::RecordingInfo about, std::optional<TimeAxis> even, CacheIndex index,
               std::unique_ptr<StepFile> samples)
        : CaptureSource(std::move(about), StepFormat(index.layout, index.channels, index.complex), std::move(even)),
          view_(std::make_shared<FileView>(format, axisOrNone(), std::move(index), std::move(samples)))
    {}
    std::shared_ptr<const CaptureView> view() const override
    {
        view_->check();
        return view_;
    }

private:
    const std::shared_ptr<const FileView> view_;
};

} // namespace

std::shared_ptr<const CaptureSource> makeFileSource(recordings::RecordingInfo info, std::optional<TimeAxis> axis,
                                                    CacheIndex index, std::unique_ptr<StepFile> samples)
{
    return std::make_shared<FileSource>(std::move(info), std::move(axis), std::move(index), std::move(samples));
}

} // namespace tracery::captures
