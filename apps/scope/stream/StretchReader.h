#pragma once

#include "libraries.h"
#include "stream/Progress.h"

#include <tracery/recordings/Recording.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace scope {

/// A stretch of time as options give it: from the recording's start and to its end when missing.
struct Stretch {
    std::optional<double> from; ///< seconds
    std::optional<double> span; ///< seconds
    bool whole() const { return !from && !span; }
};

/// Reads the steps of a stretch, from <= time < from + span, in blocks, with a progress bar.
class StretchReader {
public:
    /// Goes to the start of the stretch; of each recording one reader at a time.
    StretchReader(Recording& recording, const Stretch& stretch);

    /// Reads the next steps; false at the end. throws  InputError; UsageError when there are none at all
    bool next(Block& block);

private:
    Recording& recording_;
    TimeRange range_;
    double from_;
    double to_;
    bool any_ = false;
    bool ended_ = false;
    Progress progress_;
};

/// How long the steps of a stretch are.
class StepLengths {
public:
    /// Takes the next times.
    void add(const std::vector<double>& times);

    std::uint64_t steps() const { return steps_; }
    double mean() const { return (last_ - first_) / static_cast<double>(steps_ - 1); }
    double rate() const { return static_cast<double>(steps_ - 1) / (last_ - first_); }
    /// How far the rounding of times, to doubles and to the last digit of the file, may move a step.
    double rounding(const Recording& recording) const;
    /// How long the steps are when some differ from the mean by more than a tenth; empty when none do.
    /// purpose  why they must be even, for the message
    /// throws   InputError when one differs by more than half the mean and more than rounding explains
    std::string requireEven(const Recording& recording, const std::string& purpose) const;
    /// Whether none differs from the mean by more than a tenth, or by more than rounding explains.
    bool areEven(const Recording& recording) const;
    /// "1 s to 3 s".
    std::string text() const;

private:
    struct Step {
        double length;
        double from;
    };
    double deviation() const;

    std::uint64_t steps_ = 0;
    double first_ = 0;
    double last_ = 0;
    Step shortest_{std::numeric_limits<double>::infinity(), 0};
    Step longest_{0, 0};
};

/// Prints that steps which are not quite even are taken as even.
/// lengths  as StepLengths::requireEven tells them
void tellTakenAsEven(const Recording& recording, const std::string& lengths);

/// How many steps a stretch has, and how many a second.
struct Sampling {
    std::uint64_t steps = 0;
    double rate = 0;
    bool measured = false; ///< from the times
    double rounding = 0;   ///< of measured ones, as StepLengths has it
    std::string uneven;    ///< how long the steps are, when some differ from the mean by more than a tenth
};

/// The recording's own rate, or the measured one; reads the stretch through where the recording does not tell.
/// throws  InputError when the steps are uneven
Sampling measureSampling(Recording& recording, const Stretch& stretch);

/// Whether times keep to a measured rate, segment by segment: each is within half a step, and what rounding moves, of
/// where counting from its segment's first one has it. Clocks that wander slowly beside a segment are.
class EvenTimes {
public:
    /// path     for the message
    /// segment  steps
    EvenTimes(std::string path, const Sampling& sampling, std::uint64_t segment);

    /// Takes the next times. throws  InputError that names the first one that is off
    void check(const std::vector<double>& times);

private:
    std::string path_;
    Sampling sampling_;
    std::uint64_t segment_;
    std::uint64_t steps_ = 0; ///< of the segment
    double first_ = 0;        ///< its first time
};

} // namespace scope
