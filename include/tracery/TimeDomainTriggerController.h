#pragma once

#include <tracery/AbstractTimeDomainTrigger.h>
#include <tracery/TDTC.h>
#include <tracery/export.h>

#include <cstdint>
#include <deque>
#include <limits>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace tracery {

class TimeBuffer;

/// Turns trigger events into display windows: owns the detector, the settings of all kinds of detectors, the queue of
/// pending events, and the modes.
///
/// A caller asks getTriggerWindow, at each update of the display, for a new window; samples come from a TimeBuffer or
/// one by one through processSample. A window opens at event + delay - span x position and is `span` long; it is given
/// out once it is full of data. start = end = -inf means no new window.
///
/// Modes: Normal gives a window for each new event at least a span after the last window's event (after that event, for
/// windows that are not yet full), so that full windows do not overlap; where several events are ready, for
/// the last of them. Auto does the same and runs free when events are missing. Once gives one window and then stays
/// disarmed until setMode, setEnableOnceMode(true) or reset arms it again. Off does nothing.
///
/// Times are seconds. When the current time steps back, everything about the past is dropped and triggering starts
/// anew. A controller is fed in one form, from a buffer or sample by sample; one that goes over from samples to a buffer
/// takes the buffer's channel, whichever it is, for the same signal. While position, delay or span are NaN no window is
/// given and events wait. Main thread only.
class TRACERY_EXPORT TimeDomainTriggerController {
public:
    /// Event times in seconds, oldest first.
    using EventQueue = AbstractTimeDomainTrigger::EventQueue;

    /// What became of an event that left the queue.
    enum class EventFate : std::int32_t {
        Shown,      ///< it opened the window
        Superseded, ///< a later event was ready as well
        Overlap,    ///< it came less than a span after the last window's event
        Disarmed    ///< Once had given its window
    };
    /// An event that left the queue: when it was, and what became of it.
    struct ConsumedEvent {
        /// Seconds, and its fate.
        double time;
        EventFate fate;
    };

    TimeDomainTriggerController();
    ~TimeDomainTriggerController();
    TimeDomainTriggerController(const TimeDomainTriggerController&) = delete;
    TimeDomainTriggerController& operator=(const TimeDomainTriggerController&) = delete;

    // ---- Settings. Setters of the detector's settings reset the detector, so nothing half seen is completed under
    // ---- another setting; pending events stay.

    /// A new mode arms Once and drops pending events.
    void setMode(TDTC::ModeEnum mode);
    TDTC::ModeEnum getMode() const { return mode_; }
    /// Arms or disarms Once, and drops pending events.
    void setEnableOnceMode(bool armed);
    bool getEnableOnceMode() const { return enableOnce_; }
    /// Place of the event in the window: 0 the left edge, 1 the right.
    void setPosition(double position) { position_ = position; }
    double getPosition() const { return position_; }
    /// Seconds from the event to the place that `position` names.
    void setDelay(double seconds) { delay_ = seconds; }
    double getDelay() const { return delay_; }

    /// The source that hosts read and write, counted from 1. A change resets the detector: two channels never make one
    /// crossing. Samples of processSample that wait for detection, up to 1023, are dropped with it: they are of the old
    /// source, and would be taken for the new one's. throws  InvalidPortID, InvalidChannelID for 0
    void setSourcePort(std::uint32_t port);
    std::uint32_t getSourcePort() const { return static_cast<std::uint32_t>(sourcePort_ + 1); }
    void setSourcePortChannel(std::uint32_t channel);
    std::uint32_t getSourcePortChannel() const { return sourcePortChannel_ + 1; }
    /// Which real quantity of the channel is triggered on; a change resets the detector, and drops waiting samples
    /// likewise.
    void setComplexity(TDTC::ComplexityEnum complexity);
    TDTC::ComplexityEnum getComplexity() const { return complexity_; }

    /// Replaces the detector by a new one with all of the controller's settings; pending events stay.
    void setType(TDTC::TypeEnum type);
    TDTC::TypeEnum getType() const { return type_; }
    /// All settings of the detector at once, as they were set: auto level moves the detector's own.
    void setDetectorSettings(const DetectorSettings& settings);
    const DetectorSettings& getDetectorSettings() const { return settings_; }
    /// Which direction counts.
    void setPolarity(TDTC::PolarityEnum polarity) { set(&DetectorSettings::polarity, polarity); }
    TDTC::PolarityEnum getPolarity() const { return settings_.polarity; }
    /// Levels follow the extremes of the channel over the last span, at every block.
    void setAutoLevel(bool autoLevel) { set(&DetectorSettings::autoLevel, autoLevel); }
    bool getAutoLevel() const { return settings_.autoLevel; }
    /// Levels and hysteresis in signal units. The getters of levels tell the detector's, which auto level may have set.
    void setLevel(double level) { set(&DetectorSettings::level, level); }
    double getLevel() const { return detector_->getLevel(); }
    void setHysteresis(double hysteresis) { set(&DetectorSettings::hysteresis, hysteresis); }
    double getHysteresis() const { return settings_.hysteresis; }
    void setUpperLevel(double level) { set(&DetectorSettings::upperLevel, level); }
    double getUpperLevel() const { return detector_->getUpperLevel(); }
    void setLowerLevel(double level) { set(&DetectorSettings::lowerLevel, level); }
    double getLowerLevel() const { return detector_->getLowerLevel(); }
    /// Bounds of measured durations, timeout, and the least distance between events, in seconds.
    void setMinTime(double seconds) { set(&DetectorSettings::minTime, seconds); }
    double getMinTime() const { return settings_.minTime; }
    void setMaxTime(double seconds) { set(&DetectorSettings::maxTime, seconds); }
    double getMaxTime() const { return settings_.maxTime; }
    void setTimeout(double seconds) { set(&DetectorSettings::timeout, seconds); }
    double getTimeout() const { return settings_.timeout; }
    void setHoldoff(double seconds) { set(&DetectorSettings::holdoff, seconds); }
    double getHoldoff() const { return settings_.holdoff; }
    /// Backward step of the current time, relative to it, that restarts triggering.
    void setStepBackTolerance(double relative) { stepBackTolerance_ = relative; }
    double getStepBackTolerance() const { return stepBackTolerance_; }
    /// Whether samples come from a buffer; kept for the owner.
    bool isTimeBufferEnabled() const { return timeBufferEnabled_; }
    void disableTimeBuffer() { timeBufferEnabled_ = false; }

    // ---- Running

    /// Forgets the past and arms Once; settings stay.
    void reset();

    /// The window to show, from samples of a buffer.
    /// isFrameBased, framePeriod  how the port's steps hold samples (see TimeBuffer::GetSamplesAfter)
    /// port, channel         the trigger channel, counted from 0; the first samples of another one than were read last
    ///                       reset the detector
    /// firstDisplayableTime  before the first window, Auto runs free only once `span` more than this has passed (with
    ///                       partialWindow, once this has)
    /// currentTime, span     seconds
    /// partialWindow         give a window before it is full of data
    /// start, end            the window, or -inf both
    /// throws  what the buffer's reads throw, such as InvalidPortID; nothing has changed then, also when the current time
    ///         steps back. Without memory the samples may have been taken in; the next call then gives the window that
    ///         this one would have given.
    void getTriggerWindow(const TimeBuffer& buffer, bool isFrameBased, double framePeriod, std::uint64_t port,
                          std::uint64_t channel, double firstDisplayableTime, double currentTime, double span,
                          bool partialWindow, double& start, double& end);
    /// The same from the samples handed to processSample.
    void getTriggerWindow(double firstDisplayableTime, double currentTime, double span, bool partialWindow,
                          double& start, double& end);
    /// Takes one sample; every 1024 of them go through the detector at once. Nothing in Off.
    /// span  seconds of signal that auto level looks back on
    void processSample(double time, double value, double currentTime, double span);
    /// Takes a block of samples, (time, value) pairs, at once; the first may be at the time of the last one before.
    /// Nothing in Off. Only for callers in C++.
    void processSamples(const std::vector<double>& pairs, double currentTime, double span);
    /// Runs the detector over what is new in a buffer without asking for a window. Nothing in Off.
    void processBuffer(const TimeBuffer& buffer, bool isFrameBased, double framePeriod, std::uint64_t port,
                       std::uint64_t channel, double currentTime, double span);

    /// The last window given out, -inf both when there was none.
    void getLastTriggerWindow(double& start, double& end) const;
    /// Event time of the last window; -inf when there was none.
    double getLastTriggerTime() const { return lastTriggerTime_; }

    /// Events found and not consumed yet, oldest first.
    const EventQueue& getPendingEvents() const { return eventQueue_; }
    /// Events that the last getTriggerWindow consumed, oldest first, and what became of each. Events found are those
    /// consumed, those pending, and those dropped by setMode, setEnableOnceMode and reset. A partial window may still
    /// open at the last event of an earlier call that had given none.
    const std::vector<ConsumedEvent>& getConsumedEvents() const { return consumedEvents_; }
    /// When the window of an event is full of data.
    double getDisplayTime(double event, double span) const { return displayTime(event, span, span); }
    /// The detector, for its counts; valid until setType.
    const AbstractTimeDomainTrigger& getDetector() const { return *detector_; }

private:
    struct TimeValue {
        double time;
        double value;
    };
    struct FoundEvent {
        double time = -std::numeric_limits<double>::infinity();
        bool found = false;
    };

    template <class Value>
    void set(Value DetectorSettings::*setting, Value value)
    {
        settings_.*setting = value;
        detector_->set(setting, value);
    }
    void restartDetection();
    double displayTime(double event, double offset, double span) const;
    bool onceAllows() const { return mode_ != TDTC::ModeEnum::Once || enableOnce_; }
    bool stepsBack(double currentTime) const;
    void resetIfSteppedBack(double currentTime);
    void updateEventQueue(double currentTime, double span);
    enum class Repeated { mayBe, no }; ///< whether samples may be delivered again
    void detect(const std::vector<double>& pairs, double currentTime, double span, Repeated repeated = Repeated::mayBe);
    void updateWindowExtrema(const std::vector<double>& pairs, double extrema[2], double span, double currentTime,
                             Repeated repeated);
    FoundEvent findLastDisplayableEvent(double offset, double currentTime, double span);
    void processEvent(FoundEvent event, double firstDisplayableTime, double currentTime, double span,
                      bool partialWindow, double& start, double& end);

    TDTC::ModeEnum mode_ = TDTC::ModeEnum::Off;
    bool enableOnce_ = true;
    double position_ = 0.5;
    double delay_ = 0;
    std::uint64_t sourcePort_ = 0;
    std::uint32_t sourcePortChannel_ = 0;
    TDTC::ComplexityEnum complexity_ = TDTC::ComplexityEnum::Scalar;
    TDTC::TypeEnum type_ = TDTC::TypeEnum::Edge;
    DetectorSettings settings_{.autoLevel = true, .upperLevel = 2.1, .lowerLevel = 0.2};
    bool timeBufferEnabled_ = true;
    double stepBackTolerance_ = std::numeric_limits<double>::epsilon();
    std::unique_ptr<AbstractTimeDomainTrigger> detector_;
    std::vector<double> pendingSamples_; ///< (time, value) pairs handed in one by one
    std::vector<double> block_;          ///< the buffer's samples of one update; kept for its memory
    EventQueue eventQueue_;
    std::vector<ConsumedEvent> consumedEvents_;
    std::deque<TimeValue> windowMinima_;                                 ///< values never fall from front to back
    std::deque<TimeValue> windowMaxima_;                                 ///< values never rise
    std::optional<std::pair<std::uint64_t, std::uint64_t>> lastChannel_; ///< port and channel read last, since a reset
    double lastTime_ = 0;
    double lastReadTime_ = 0;
    double lastDisplayableEvent_ = 0;
    double lastTriggerTime_ = 0;
    double lastWindowStart_ = 0;
    double lastWindowEnd_ = 0;
};

} // namespace tracery
