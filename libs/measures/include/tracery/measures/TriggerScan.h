#pragma once

#include <tracery/TimeDomainTriggerController.h>
#include <tracery/measures/TriggerSettings.h>
#include <tracery/recordings/BatchReader.h>

#include <functional>
#include <vector>

namespace tracery::measures {

using namespace recordings;

/// What became of an event in the end: as the controller says, or still waiting for its window to fill.
enum class Fate { shown, superseded, overlap, disarmed, notFull };

struct TriggerEvent {
    double time;
    Fate fate;
    double start; ///< of the window, when shown
    double end;
    bool freeRun; ///< no event at all: Auto ran free
};

struct TriggerTotals {
    std::uint64_t shown = 0;
    std::uint64_t superseded = 0;
    std::uint64_t overlap = 0;
    std::uint64_t disarmed = 0;
    std::uint64_t notFull = 0;
    std::uint64_t freeRuns = 0;
    std::uint64_t refusedByHoldoff = 0;
    std::uint64_t outOfTimeBounds = 0;
    std::uint64_t found() const { return shown + superseded + overlap + disarmed + notFull; }
};

/// Runs a recording through the trigger controller, block by block, in one thread: the same recording, settings and block
/// size give the same events and windows every time. With fixed levels the block size makes no difference either, because
/// the display asks for a window at the very time each one is full.
class TriggerScan {
public:
    /// Sees each event or free run in the order of its decision; returns false to stop.
    using Visitor = std::function<bool(const TriggerEvent&)>;

    /// channel     of the recording, from 0
    /// span        of a window, seconds
    /// blockSteps  steps handed to the detector at once
    TriggerScan(BatchReader reader, std::size_t channel, double firstTime, double span);

    tracery::TimeDomainTriggerController& controller() { return controller_; }

    /// Runs to the end, or until the visitor stops it. throws  InputError
    /// progress  told how far it got, block by block; may be empty
    TriggerTotals run(const Visitor& visit, const std::function<void(double reached)>& progress);

private:
    bool poll(double currentTime, const Visitor& visit);
    bool report(const TriggerEvent& event, const Visitor& visit);

    BatchReader reader_;
    std::size_t channel_;
    double firstTime_;
    double span_;
    double now_;
    std::vector<double> samples_; ///< of a block, kept for its memory
    tracery::TimeDomainTriggerController controller_;
    TriggerTotals totals_;
};

/// Magnitude, or phase in degrees, of a complex sample.
double polarPart(double re, double im, bool phase);

/// The (time, value) pairs of a channel's part; the imaginary part of a real channel is 0.
void takePairs(const Steps& steps, std::size_t channel, tracery::TDTC::ComplexityEnum part, std::vector<double>& pairs);

/// Reads the whole of a recording for the range of the trigger signal.
SignalRange measureRange(BatchReader reader, std::size_t channel, tracery::TDTC::ComplexityEnum part);

} // namespace tracery::measures
