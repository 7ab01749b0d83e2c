#pragma once

#include <tracery/recordings/SampleLayout.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace tracery::recordings {

/// What is wrong with a file, in one line: "FILE: line 7, column 2: expected a number, found 'abc'".
class InputError : public std::runtime_error {
public:
    /// where  place inside the file, such as "line 7, column 2" or "byte 44"; empty for the file as a whole
    /// kind   what a caller could do about it
    enum class Kind { Other, RateMissing, RateKnown };
    InputError(const std::string& path, const std::string& where, const std::string& message, Kind kind = Kind::Other);
    /// Whether the caller gave no rate where one is needed, or one where the file has its own.
    Kind kind() const noexcept { return kind_; }

private:
    Kind kind_;
};

struct Channel {
    std::string name;
    std::string unit; ///< empty when the file does not tell
};

struct RecordingInfo {
    std::string path;
    std::string format; ///< for people: "WAV, signed 16 bit PCM", "CSV", "SigMF cu8"
    std::vector<Channel> channels;
    bool complex = false;                  ///< every channel carries in-phase and quadrature parts
    std::optional<double> rate;            ///< steps per second; none when the file gives a time for each step
    std::optional<std::uint64_t> steps;    ///< none when only reading to the end would tell
    std::optional<double> centerFrequency; ///< Hz, of complex recordings
};

/// Consecutive time steps. Values lie channel by channel within a step: channel c of step i is at
/// real[i * channels + c].
struct Block {
    std::vector<double> times; ///< seconds, non-decreasing
    std::vector<double> real;  ///< NaN where a value is missing
    std::vector<double> imag;  ///< empty for real recordings
    std::size_t steps() const { return times.size(); }
};

struct TimeRange {
    double first;
    double last;
};

/// A recording, read front to back in blocks; memory does not grow with the file.
/// thread  one at a time
class Recording {
public:
    Recording() = default;
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;
    virtual ~Recording() = default;
    virtual const RecordingInfo& info() const = 0;
    /// Times of the first and the last step, without reading what lies between (unless nothing less tells the
    /// last). Leaves the read position alone.
    /// Of standard input the last is infinity: nobody knows.
    /// throws  InputError for whatever is wrong with the data looked at
    virtual TimeRange range() = 0;
    /// Goes to the last step before `time` (to the first step when there is none), so that a line drawn from
    /// there enters the window at `time`.
    /// throws  InputError for whatever is wrong with the data passed over
    virtual void seek(double time) = 0;
    /// Reads up to maxSteps steps into `block`, reusing its memory; no steps means the end.
    /// maxSteps  1 or more
    /// throws  InputError for whatever is wrong with the data read
    virtual void read(Block& block, std::size_t maxSteps) = 0;
    /// Place value, in seconds, of the last digit that times near `time` are written with, as far as they have been read;
    /// 0 for times that are not written.
    virtual double lastDigit(double /*time*/) const { return 0; }
    /// How the samples are stored; none when that is no matter of numbers of one kind. Reading gives the values it tells.
    virtual std::optional<SampleLayout> layout() const { return std::nullopt; }
    /// Ends a reading that waits for more to come; reading on finds the end, or fails. thread  any
    virtual void stop() {}
};

struct OpenOptions {
    std::optional<double> rate; ///< steps per second for files that give no times
};

/// Opens a recording by what it is: SigMF pairs (either file, BASE.sigmf, or BASE alone); .csv, .tsv or .txt
/// tables; whatever else libsndfile reads. It has at least one step and one channel.
/// throws  InputError: missing, a directory, empty, unreadable, of an unknown format, damaged, without steps;
///         no rate given for a file without times, or one given for a file that has its own
std::unique_ptr<Recording> openRecording(const std::string& path, const OpenOptions& options);

/// The recording that comes in on a pipe, such as standard input. Its reads give what has come, and wait for one step at
/// least.
/// descriptor  stays open, and the caller's
/// name     for people
/// format   "csv", a table; "f64", "f32" or "s16", samples of `columns` channels in turn
/// stopAt   as of Pipe: ends also the wait for the first step
/// throws   InputError as openRecording
std::unique_ptr<Recording> openStream(int descriptor, const std::string& name, const std::string& format,
                                      std::size_t columns, const OpenOptions& options, int stopAt = -1);

} // namespace tracery::recordings
