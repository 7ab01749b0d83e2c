#pragma once

#include "libraries.h"
#include "stream/Progress.h"

#include <tracery/recordings/Recording.h>

#include <cstdint>
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

/// How many steps a stretch has, and how many a second.
struct Sampling {
    std::uint64_t steps = 0;
    double rate = 0;
    bool measured = false; ///< from the times
    std::string uneven;    ///< how long the steps are, when some differ from the mean by more than a tenth
};

/// The recording's own rate, or the measured one; reads the stretch through where the recording does not tell.
/// throws  InputError when one differs from the mean by more than half of it
Sampling measureSampling(Recording& recording, const Stretch& stretch);

/// Whether times keep to a measured rate, segment by segment: each is within half a step of where counting from its
/// segment's first one has it. Rounded times are, and clocks that wander slowly beside a segment.
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
