#pragma once

#include "File.h"
#include "SampleFormat.h"

#include <tracery/recordings/Recording.h>

namespace tracery::recordings {

/// Samples without any description, from standard input as they come: little-endian numbers, channel by channel within
/// a step. Integers are scaled to [-1, 1).
class RawRecording final : public Recording {
public:
    /// format   "f64", "f32" or "s16"
    /// throws   InputError for another format, no columns, no rate
    RawRecording(File file, const std::string& format, std::size_t columns, const OpenOptions& options);

    const RecordingInfo& info() const override { return info_; }
    TimeRange range() override;
    void seek(double time) override;
    /// Reads the steps that are there, having waited for one.
    void read(Block& block, std::size_t maxSteps) override;
    void stop() override { file_.stop(); }

private:
    std::size_t fill(std::size_t most);

    File file_;
    RecordingInfo info_;
    SampleFormat format_;
    std::size_t stepBytes_;
    std::vector<char> bytes_;  ///< read, not handed out yet
    std::uint64_t offset_ = 0; ///< behind them
    std::uint64_t next_ = 0;   ///< step to hand out
};

} // namespace tracery::recordings
