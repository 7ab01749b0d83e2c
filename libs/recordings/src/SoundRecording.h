#pragma once

#include "EvenRecording.h"
#include "MendedFile.h"
#include "WavLength.h"

#include <sndfile.h>

#include <memory>

namespace tracery::recordings {

/// Whatever libsndfile reads. Integer samples lie in [-1, 1), floating-point samples are taken as they are,
/// however great: measurements are often stored in volts.
class SoundRecording final : public EvenRecording {
public:
    /// throws  InputError: of a format that libsndfile does not know, damaged, cut short
    SoundRecording(const std::string& path, const OpenOptions& options);

    std::optional<SampleLayout> layout() const override;

private:
    struct Close {
        void operator()(SNDFILE* file) const noexcept { sf_close(file); }
    };

    void open();
    void readValues(std::uint64_t first, std::size_t count, Block& block) override;
    /// Makes `frame` the next one that decode() gives.
    void goTo(std::uint64_t frame);
    /// Decodes `count` frames, all of which the file promises.
    void decode(double* into, std::size_t count);
    std::uint64_t countFrames();

    std::string path_;
    std::optional<MendedFile> mended_; ///< shown to libsndfile in place of the file when its header needs it
    std::optional<WavData> wav_;
    SF_INFO format_{};
    std::unique_ptr<SNDFILE, Close> file_;
    std::uint64_t frame_ = 0; ///< next one to decode
    bool seekIsExact_ = false;
};

} // namespace tracery::recordings
