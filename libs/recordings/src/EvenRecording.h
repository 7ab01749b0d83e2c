#pragma once

#include <tracery/recordings/Recording.h>

namespace tracery::recordings {

/// The rate to go by: the file's own, or the one from outside for a file that has none.
/// throws  InputError: neither or both, or not a positive number
double chooseRate(const std::string& path, std::optional<double> own, const OpenOptions& options);

/// Time of a step at an even rate. Through a signed number, which processors convert faster.
inline double stepTime(std::uint64_t step, double rate)
{
    return static_cast<double>(static_cast<std::int64_t>(step)) / rate;
}

/// A recording with an even rate and a known number of steps, each at stepTime(). What is left to a format is
/// to say what the values of a run of steps are.
class EvenRecording : public Recording {
public:
    const RecordingInfo& info() const override { return info_; }
    TimeRange range() override;
    void seek(double time) override;
    void read(Block& block, std::size_t maxSteps) override;

protected:
    /// info  with rate and steps given
    /// throws  InputError when there are no steps
    void describe(RecordingInfo info);

    /// Fills real and imag of `block` with the values of `count` steps from `first` on, all of which exist.
    virtual void readValues(std::uint64_t first, std::size_t count, Block& block) = 0;

private:
    RecordingInfo info_;
    std::uint64_t next_ = 0;
};

/// The name of a channel that has none: "ch1" for index 0.
std::string channelName(std::size_t index);
std::vector<Channel> numberedChannels(std::size_t count);

} // namespace tracery::recordings
