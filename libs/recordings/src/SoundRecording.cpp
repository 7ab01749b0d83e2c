#include "SoundRecording.h"

#include <tracery/basics/Text.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <mutex>
#include <string_view>
#include <utility>

namespace tracery::recordings {

using namespace basics;

namespace {

constexpr std::size_t kSkipFrames = 4096;
constexpr std::uint64_t kNowhere = std::numeric_limits<std::uint64_t>::max();

/// Whether a seek gives the very samples that reading from the front gives. Codecs that carry a state from
/// packet to packet (Vorbis, Opus, MPEG) come near only, and a few cannot seek at all.
bool seeksExactly(int format)
{
    switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
    case SF_FORMAT_PCM_16:
    case SF_FORMAT_PCM_24:
    case SF_FORMAT_PCM_32:
    case SF_FORMAT_FLOAT:
    case SF_FORMAT_DOUBLE:
    case SF_FORMAT_ULAW:
    case SF_FORMAT_ALAW:
        return true;
    default:
        return false;
    }
}

/// Keeps a decoder from telling people what its return values tell us: one prints to standard error itself.
class QuietDecoder {
public:
    /// needed  otherwise nothing is done
    explicit QuietDecoder(bool needed)
    {
        if (!needed)
            return;
        lock_ = std::unique_lock(mutex_);
        std::fflush(stderr);
        standardError_ = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (standardError_ >= 0 && nowhere >= 0)
            dup2(nowhere, STDERR_FILENO);
        if (nowhere >= 0)
            close(nowhere);
    }
    ~QuietDecoder()
    {
        if (standardError_ < 0)
            return;
        dup2(standardError_, STDERR_FILENO);
        close(standardError_);
    }
    QuietDecoder(const QuietDecoder&) = delete;
    QuietDecoder& operator=(const QuietDecoder&) = delete;

private:
    static std::mutex mutex_; ///< one at a time, or one would restore the silence of another
    std::unique_lock<std::mutex> lock_;
    int standardError_ = -1;
};
std::mutex QuietDecoder::mutex_;

struct Stored {
    int format;
    SampleType type;
    double bias, divisor;
};
constexpr Stored kStored[] = {
    {SF_FORMAT_PCM_S8, SampleType::I8, 0, 0x1p7},   {SF_FORMAT_PCM_U8, SampleType::U8, 128, 0x1p7},
    {SF_FORMAT_PCM_16, SampleType::I16, 0, 0x1p15}, {SF_FORMAT_PCM_24, SampleType::I24, 0, 0x1p23},
    {SF_FORMAT_PCM_32, SampleType::I32, 0, 0x1p31}, {SF_FORMAT_FLOAT, SampleType::F32, 0, 1},
    {SF_FORMAT_DOUBLE, SampleType::F64, 0, 1},
};

std::string formatName(int format)
{
    SF_FORMAT_INFO info{};
    info.format = format;
    if (sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof info) != 0 || info.name == nullptr)
        return "unknown";
    return info.name;
}

/// "WAV, signed 16 bit PCM" from libsndfile's "WAV (Microsoft)" and "Signed 16 bit PCM".
std::string describeFormat(int format)
{
    const std::string file = formatName(format & SF_FORMAT_TYPEMASK);
    std::string samples = formatName(format & SF_FORMAT_SUBMASK);
    if (samples.starts_with("Signed ") || samples.starts_with("Unsigned "))
        samples = lowerCase(samples.substr(0, 1)) + samples.substr(1);
    return file.substr(0, file.find(" (")) + ", " + samples;
}

/// What libsndfile says of its last failure, of a file or of opening one: "Error : flac decoder lost sync."
std::string reason(SNDFILE* file)
{
    constexpr std::string_view kPrefix = "Error : ";
    std::string text = sf_strerror(file);
    if (text.starts_with(kPrefix))
        text.erase(0, kPrefix.size());
    if (text.ends_with('.'))
        text.pop_back();
    // It says so of broken MPEG, though the file is there: it was opened before.
    const bool saysNothing = text == "Unspecified internal error" || text.starts_with("File does not exist");
    return "cannot be decoded: " + (saysNothing ? "damaged, or of a kind that is not read" : text);
}

} // namespace

SoundRecording::SoundRecording(const std::string& path, const OpenOptions& options) : path_(path)
{
    File file(path);
    wav_ = findWavData(file);
    if (std::optional<Mend> mend = mendWavLength(file))
        mended_.emplace(std::move(file), *std::move(mend));
    open();
    seekIsExact_ = seeksExactly(format_.format);

    RecordingInfo info;
    info.path = path;
    info.format = describeFormat(format_.format);
    info.channels = numberedChannels(static_cast<std::size_t>(format_.channels));
    info.rate = chooseRate(path, format_.samplerate, options);
    info.steps = format_.frames == SF_COUNT_MAX ? countFrames() : static_cast<std::uint64_t>(format_.frames);
    describe(std::move(info));
}

std::optional<SampleLayout> SoundRecording::layout() const
{
    for (const Stored& each : kStored)
        if (each.format == (format_.format & SF_FORMAT_SUBMASK)) {
            SampleLayout layout;
            layout.type = each.type;
            layout.bias = each.bias;
            layout.divisor = each.divisor;
            if (wav_) {
                layout.path = path_;
                layout.position = wav_->start;
                layout.bigEndian = wav_->bigEndian;
            }
            return layout;
        }
    return std::nullopt;
}

void SoundRecording::open()
{
    const QuietDecoder quiet(true); // of which kind the file is, is not known yet
    format_ = SF_INFO{};
    file_.reset(mended_ ? mended_->open(format_) : sf_open(path_.c_str(), SFM_READ, &format_));
    frame_ = 0;
    if (!file_ && sf_error(nullptr) == SF_ERR_UNRECOGNISED_FORMAT)
        throw InputError(
            path_, "",
            "unknown format; expected WAV, FLAC or another sound file, a table (.csv, .tsv, .txt) or SigMF "
            "(.sigmf-meta with .sigmf-data)");
    if (!file_)
        throw InputError(path_, "", reason(nullptr));
    sf_command(file_.get(), SFC_SET_NORM_DOUBLE, nullptr, SF_TRUE);
}

void SoundRecording::readValues(std::uint64_t first, std::size_t count, Block& block)
{
    block.real.resize(count * info().channels.size());
    block.imag.clear();
    if (count == 0)
        return;
    goTo(first);
    decode(block.real.data(), count);
}

void SoundRecording::goTo(std::uint64_t frame)
{
    if (frame == frame_)
        return;
    if (seekIsExact_) {
        const auto target = static_cast<sf_count_t>(frame);
        if (sf_seek(file_.get(), target, SEEK_SET) != target)
            throw InputError(path_, "frame " + std::to_string(frame), "the file cannot be read from here");
        frame_ = frame;
        return;
    }
    if (frame < frame_)
        open();
    std::vector<double> skipped(kSkipFrames * static_cast<std::size_t>(format_.channels));
    while (frame_ < frame)
        decode(skipped.data(), static_cast<std::size_t>(std::min<std::uint64_t>(kSkipFrames, frame - frame_)));
}

void SoundRecording::decode(double* into, std::size_t count)
{
    const QuietDecoder quiet(!seekIsExact_);
    const sf_count_t got = sf_readf_double(file_.get(), into, static_cast<sf_count_t>(count));
    const bool failed = sf_error(file_.get()) != SF_ERR_NO_ERROR;
    if (failed || got != static_cast<sf_count_t>(count)) {
        const std::string where =
            "frame " + std::to_string(frame_ + static_cast<std::uint64_t>(std::max<sf_count_t>(got, 0)));
        frame_ = kNowhere; // where the decoder stands after a failure is not known
        throw InputError(path_, where,
                         failed ? reason(file_.get())
                                : "the data end here, expected " + std::to_string(*info().steps) + " frames");
    }
    frame_ += count;
}

/// A stream written without its length says so only by ending.
std::uint64_t SoundRecording::countFrames()
{
    std::vector<double> block(kSkipFrames * static_cast<std::size_t>(format_.channels));
    const QuietDecoder quiet(!seekIsExact_);
    sf_count_t got = 0;
    do {
        got = sf_readf_double(file_.get(), block.data(), kSkipFrames);
        frame_ += static_cast<std::uint64_t>(got);
        if (sf_error(file_.get()) != SF_ERR_NO_ERROR)
            throw InputError(path_, "frame " + std::to_string(frame_), reason(file_.get()));
    } while (got > 0);
    return frame_;
}

} // namespace tracery::recordings
