#include "CaptureBuilder.h"
#include "FileSource.h"

#include <tracery/captures/openCapture.h>

#include <unistd.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace tracery::captures {

namespace fs = std::filesystem;
using recordings::InputError;
using recordings::Recording;
using recordings::RecordingInfo;

namespace {

constexpr const char* kEnding = ".capture";

std::string cachePath(const std::string& folder, const std::string& recording)
{
    const std::string path = fs::absolute(recording).lexically_normal();
    char name[32];
    std::snprintf(name, sizeof name, "%016llx",
                  static_cast<unsigned long long>(hashOf(std::as_bytes(std::span(path)))));
    return (fs::path(folder) / (name + std::string(kEnding))).string();
}

bool sameBits(const std::vector<double>& a, const std::vector<double>& b)
{
    return std::ranges::equal(
        a, b, [](double x, double y) { return std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y); });
}

/// Whether reading where samples lie gives what the recording reads, in some places.
bool agree(Recording& recording, const StepFile& file, const CacheIndex& index)
{
    constexpr std::int64_t kSome = 64;
    const StepFormat format(index.layout, index.channels, index.complex);
    const std::uint64_t needed = static_cast<std::uint64_t>(index.steps) * format.stepBytes;
    if (file.state().size < index.layout.position || file.state().size - index.layout.position < needed)
        return false;
    for (const std::int64_t first :
         {std::int64_t{0}, index.steps / 2, std::max<std::int64_t>(index.steps - kSome, 0)}) {
        recording.seek(static_cast<double>(first) / recording.info().rate.value());
        recordings::Block block;
        recording.read(block, static_cast<std::size_t>(kSome));
        if (block.steps() == 0)
            return false;
        const auto at = std::llround(block.times[0] * recording.info().rate.value());
        std::vector<std::byte> bytes(block.steps() * format.stepBytes);
        file.read(index.layout.position + static_cast<std::uint64_t>(at) * format.stepBytes, bytes);
        std::vector<double> real(block.real.size()), imag(block.imag.size()), line(block.steps());
        for (std::size_t k = 0; k < format.lines(); ++k) {
            format.values(k, bytes.data(), block.steps(), 1, line.data());
            std::vector<double>& part = format.complex && k % 2 == 1 ? imag : real;
            for (std::size_t i = 0; i < line.size(); ++i)
                part[i * format.channels + (format.complex ? k / 2 : k)] = line[i];
        }
        if (!sameBits(real, block.real) || !sameBits(imag, block.imag))
            return false;
    }
    recording.seek(0);
    return true;
}

/// The opening of one recording.
class Opening {
public:
    Opening(const std::string& path, const CaptureOptions& options)
        : path_(path), options_(options), recording_(recordings::openRecording(path, options.recording)),
          info_(recording_->info())
    {
        if (info_.rate)
            axis_ = TimeAxis{options.start, Rate::of(*info_.rate)};
        wanted_.channels = info_.channels.size();
        wanted_.complex = info_.complex;
        wanted_.ownTimes = !axis_;
        describe();
    }

    Capture open()
    {
        if (!options_.cacheFolder.empty()) {
            cache_ = cachePath(options_.cacheFolder, samples_->path());
            if (auto kept = openKept())
                return Capture(std::move(kept));
        }
        if (inPlace()) {
            buildInPlace(*samples_, wanted_, options_.progress);
            keepOverview();
            return make(std::move(wanted_), std::move(samples_));
        }
        return decode();
    }

private:
    bool inPlace() const { return !wanted_.layout.path.empty(); }

    /// Enters where the samples are and what they are, and what file it all depends on.
    void describe()
    {
        std::optional<SampleLayout> layout = recording_->layout();
        if (layout && !layout->path.empty() && axis_ && info_.steps) {
            samples_ = std::make_unique<StepFile>(layout->path);
            wanted_.layout = *layout;
            wanted_.steps = static_cast<std::int64_t>(*info_.steps);
            if (!agree(*recording_, *samples_, wanted_)) {
                recording_->seek(0);
                samples_ = nullptr;
            }
        }
        if (!samples_) {
            samples_ = std::make_unique<StepFile>(info_.path);
            wanted_.layout = layout.value_or(SampleLayout{});
            wanted_.layout.path.clear();
            wanted_.layout.position = 0;
            wanted_.layout.bigEndian = false;
            wanted_.steps = 0;
        }
        wanted_.recording = fs::absolute(samples_->path()).lexically_normal();
        wanted_.state = samples_->state();
        wanted_.contentHash = samples_->contentHash();
    }

    void notice(const std::string& text) const
    {
        if (options_.notice)
            options_.notice(text);
    }

    Capture make(CacheIndex index, std::unique_ptr<StepFile> samples) const
    {
        return Capture(makeFileSource(info_, axis_, std::move(index), std::move(samples)));
    }

    /// Whether what is kept is about what there is. Samples that were decoded may have become wider.
    bool fits(const CacheIndex& kept) const
    {
        SampleLayout layout = kept.layout, wider;
        const bool sameLayout = layout == wanted_.layout || (!inPlace() && layout == wider);
        return kept.recording == wanted_.recording && kept.state == wanted_.state &&
               kept.contentHash == wanted_.contentHash && sameLayout && kept.channels == wanted_.channels &&
               kept.complex == wanted_.complex && kept.ownTimes == wanted_.ownTimes &&
               (!inPlace() || kept.steps == wanted_.steps) && startFits(kept);
    }

    /// Times of their own count from the recording's start.
    bool startFits(const CacheIndex& kept) const
    {
        return !kept.ownTimes || kept.runs[0][0].axis.start == options_.start + Duration::of(recording_->range().first);
    }

    std::shared_ptr<const CaptureSource> openKept()
    {
        std::error_code none;
        if (!fs::exists(cache_, none))
            return nullptr;
        try {
            auto file = std::make_unique<StepFile>(cache_);
            CacheIndex kept = readIndex(*file);
            if (!fits(kept))
                throw std::runtime_error("it is of an older state of the file");
            fs::last_write_time(cache_, fs::file_time_type::clock::now(), none); // used last
            if (inPlace())
                file = std::move(samples_);
            else
                file = std::make_unique<StepFile>(cache_); // whose time is another now
            return makeFileSource(info_, axis_, std::move(kept), std::move(file));
        } catch (const std::runtime_error& error) {
            const std::string why = error.what();
            notice(path_ + ": its overview is built anew: " + cache_ + ": " +
                   (why.starts_with(cache_) ? why.substr(cache_.size() + 2) : why));
            return nullptr;
        }
    }

    void keepOverview() const
    {
        if (cache_.empty())
            return;
        try {
            fs::create_directories(options_.cacheFolder);
            basics::WholeFile file(cache_);
            writeIndex(file, 0, wanted_);
            file.keep();
            makeRoom();
        } catch (const std::exception& error) {
            notice(path_ + ": its overview is not kept: " + error.what());
        }
    }

    Capture decode()
    {
        if (!cache_.empty()) {
            try {
                writing([this] { fs::create_directories(options_.cacheFolder); });
                Capture capture = decodeTo(cache_);
                writing([this] { makeRoom(); });
                return capture;
            } catch (const CannotWrite& error) {
                notice(path_ + ": its samples are not kept: " + error.what());
                recording_ = recordings::openRecording(path_, options_.recording);
            }
        }
        // In a file that loses its name when it is open.
        std::string name = (fs::temp_directory_path() / "tracery-XXXXXX").string();
        const int descriptor = mkstemp(name.data());
        if (descriptor < 0)
            throw InputError(path_, "", "its samples can be decoded nowhere");
        close(descriptor);
        const basics::TemporaryPath temporary(name);
        try {
            return decodeTo(name);
        } catch (const CannotWrite& error) {
            throw InputError(path_, "", std::string("its samples can be decoded nowhere: ") + error.what());
        }
    }

    Capture decodeTo(const std::string& target)
    {
        CacheIndex index = wanted_;
        std::optional<basics::WholeFile> file;
        writing([&] { file.emplace(target); });
        try {
            buildDecoded(*recording_, options_.start, *file, index, options_.progress);
        } catch (const NoSuchNumber&) { // what is told of it is not so
            recording_ = recordings::openRecording(path_, options_.recording);
            wanted_.layout = SampleLayout{};
            return decodeTo(target);
        }
        samples_->check();
        writing([&] { file->keep(); });
        return make(std::move(index), std::make_unique<StepFile>(target));
    }

    /// Removes what was used longest ago.
    void makeRoom() const
    {
        std::error_code none;
        std::uint64_t bytes = fs::file_size(cache_, none);
        for (const CacheEntry& entry : listCache(options_.cacheFolder)) {
            if (entry.path == cache_)
                continue;
            bytes += entry.bytes;
            if (bytes > options_.mostCacheBytes)
                fs::remove(entry.path, none);
        }
    }

    const std::string& path_;
    const CaptureOptions& options_;
    std::unique_ptr<Recording> recording_;
    RecordingInfo info_;
    std::optional<TimeAxis> axis_;
    CacheIndex wanted_;
    std::unique_ptr<StepFile> samples_; ///< the recording's
    std::string cache_;                 ///< path; empty for none
};

} // namespace

std::string defaultCacheFolder()
{
    const char* const cache = std::getenv("XDG_CACHE_HOME");
    if (cache != nullptr && cache[0] == '/')
        return std::string(cache) + "/tracery";
    const char* const home = std::getenv("HOME");
    return home != nullptr && home[0] != '\0' ? std::string(home) + "/.cache/tracery" : "";
}

Capture openCapture(const std::string& path, const CaptureOptions& options) { return Opening(path, options).open(); }

std::vector<CacheEntry> listCache(const std::string& folder)
{
    std::vector<CacheEntry> entries;
    std::error_code none;
    if (folder.empty() || !fs::exists(folder, none))
        return entries;
    for (const fs::directory_entry& found : fs::directory_iterator(folder)) {
        if (found.path().extension() != kEnding)
            continue;
        CacheEntry entry;
        entry.path = found.path();
        try {
            const StepFile file(entry.path);
            entry.bytes = file.state().size;
            entry.usedAt = file.state().seconds;
            entry.recording = readRecordingName(file);
        } catch (const std::runtime_error&) {
            // damaged, or just removed
        }
        entries.push_back(std::move(entry));
    }
    std::ranges::sort(entries, [](const CacheEntry& a, const CacheEntry& b) { return a.usedAt > b.usedAt; });
    return entries;
}

std::uint64_t clearCache(const std::string& folder)
{
    std::uint64_t bytes = 0;
    for (const CacheEntry& entry : listCache(folder)) {
        std::error_code none;
        if (fs::remove(entry.path, none))
            bytes += entry.bytes;
    }
    return bytes;
}

} // namespace tracery::captures
