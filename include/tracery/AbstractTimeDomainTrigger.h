#pragma once

#include <tracery/DetectorSettings.h>
#include <tracery/SampleView.h>
#include <tracery/export.h>

#include <complex>
#include <cstdint>
#include <deque>
#include <limits>
#include <type_traits>

namespace tracery {

/// Finds trigger events in one channel. A detector is shown consecutive blocks of samples and appends the
/// times of the events it finds to a queue of the caller's. It remembers the last sample, so that, with fixed
/// levels, cutting the signal into blocks anywhere gives the same events.
///
/// A block is n (time, value) pairs: element 2i is the time of sample i in seconds, element 2i + 1 its value.
/// Complex blocks are read through one part, real or imaginary, of times and values alike.
///
/// Detectors are plain values: a copy goes on from the same memory of the signal. Times and levels follow
/// plain IEEE arithmetic: a NaN sample crosses nothing, and an event at a NaN time is refused.
class TRACERY_EXPORT AbstractTimeDomainTrigger {
public:
    /// Event times in seconds, oldest first. Detectors only append.
    using EventQueue = std::deque<double>;

    virtual ~AbstractTimeDomainTrigger();

    /// Examines a block of n samples and appends the events found. An empty block changes nothing, not even
    /// the level. One pass; allocates only what the queue needs.
    /// extrema  minimum and maximum of the channel over the current window; read only for auto level
    /// time     passed along by the controller; no detector of this library reads it
    virtual void updateEventQueue(const std::complex<double>* samples, std::uint64_t n, const double* extrema,
                                  double time, EventQueue& queue) = 0;
    virtual void updateEventQueue(const double* samples, std::uint64_t n, const double* extrema, double time,
                                  EventQueue& queue) = 0;

    /// Forgets the signal: last sample, last event, and whatever the detector has half seen. Settings stay.
    virtual void reset();

    /// The levels, in signal units. At every block auto level replaces those that the detector works on: the level of
    /// edge, the two levels of the others, none of timeout. A crossing armed under one level may then be found at
    /// another, at a time outside its segment; the formula is kept literal on purpose.
    double getLevel() const { return settings_.level; }
    double getUpperLevel() const { return settings_.upperLevel; }
    double getLowerLevel() const { return settings_.lowerLevel; }
    /// All of the settings, with the levels as they are now.
    const DetectorSettings& getSettings() const { return settings_; }

    /// Every setter resets the detector, so that nothing half seen is completed under another setting. What each setting
    /// means, DetectorSettings says.
    void setSettings(const DetectorSettings& settings) { settings_ = settings, reset(); }
    void setPolarity(TDTC::PolarityEnum polarity) { set(&DetectorSettings::polarity, polarity); }
    void setAutoLevel(bool autoLevel) { set(&DetectorSettings::autoLevel, autoLevel); }
    void setLevel(double level) { set(&DetectorSettings::level, level); }
    void setHysteresis(double hysteresis) { set(&DetectorSettings::hysteresis, hysteresis); }
    void setUpperLevel(double level) { set(&DetectorSettings::upperLevel, level); }
    void setLowerLevel(double level) { set(&DetectorSettings::lowerLevel, level); }
    void setMinTime(double seconds) { set(&DetectorSettings::minTime, seconds); }
    void setMaxTime(double seconds) { set(&DetectorSettings::maxTime, seconds); }
    void setTimeout(double seconds) { set(&DetectorSettings::timeout, seconds); }
    void setHoldoff(double seconds) { set(&DetectorSettings::holdoff, seconds); }

    /// Changes one setting, named by its member.
    template <class Value>
    void set(Value DetectorSettings::*setting, std::type_identity_t<Value> value)
    {
        settings_.*setting = value;
        reset();
    }

    /// Whether complex blocks are read through their imaginary parts. The one setting that does not reset.
    void shouldProcessImagPart(bool imagPart) { processImagPart_ = imagPart; }

    /// The time (s) at which the line from the sample before sample i to sample i reaches `level`. The sample
    /// before the first one is the last of the previous block; without one the result is NaN. samples holds
    /// at least i + 1 pairs.
    double interpTime(const double* samples, std::uint64_t i, double level) const;
    double interpTime(const std::complex<double>* samples, std::uint64_t i, double level) const;

    /// Remembers sample n - 1 for the next block; n = 0 changes nothing.
    void cacheLastSample(const double* samples, std::uint64_t n);
    void cacheLastSample(const std::complex<double>* samples, std::uint64_t n);

    /// Accepts the event when it is at least the holdoff after the last accepted one. A time that is not finite never is:
    /// it comes from a gap, or from a level that moved across a level line, and would hold off every later event.
    void push(EventQueue& queue, double time);

    /// Forgets the last event and the last sample, and starts the counts below anew.
    void resetEvents();

    /// What became of the candidates since the last reset. Events at times that are not finite are in
    /// neither of these two.
    std::uint64_t getNumAcceptedEvents() const { return numAcceptedEvents_; }
    std::uint64_t getNumHoldoffRefusals() const { return numHoldoffRefusals_; }
    /// Durations that were measured but lay outside [minimum, maximum] time.
    std::uint64_t getNumOutOfTimeBounds() const { return numOutOfTimeBounds_; }

protected:
    /// The times before there is a sample, and before there is an event.
    static constexpr double kNoTime = std::numeric_limits<double>::quiet_NaN();
    static constexpr double kNoEvent = -std::numeric_limits<double>::infinity();

    AbstractTimeDomainTrigger() = default;
    /// Starts with these settings.
    explicit AbstractTimeDomainTrigger(const DetectorSettings& settings) : settings_(settings) {}

    /// Copied as part of a detector only, so that none is sliced.
    AbstractTimeDomainTrigger(const AbstractTimeDomainTrigger&) = default;
    AbstractTimeDomainTrigger(AbstractTimeDomainTrigger&&) = default;
    AbstractTimeDomainTrigger& operator=(const AbstractTimeDomainTrigger&) = default;
    AbstractTimeDomainTrigger& operator=(AbstractTimeDomainTrigger&&) = default;

    /// With auto level on, moves the level to the middle of the window's range.
    void followLevel(const double* extrema);
    /// With auto level on, moves the upper and lower levels to 90 % and 10 % of the window's range.
    void followTwoLevels(const double* extrema);

    /// Whether rules for positive pulses and rising edges apply, and those for negative and falling ones.
    bool watchesPositive() const { return settings_.polarity != TDTC::PolarityEnum::Negative; }
    bool watchesNegative() const { return settings_.polarity != TDTC::PolarityEnum::Positive; }

    /// What to do, of three things, with this polarity.
    template <class Choice>
    Choice byPolarity(Choice positive, Choice negative, Choice either) const
    {
        return !watchesNegative() ? positive : !watchesPositive() ? negative : either;
    }

    /// The n pairs of a block as numbers: times and values by turns, of the part that is read.
    SampleView partOf(const double* samples, std::uint64_t n) const;
    SampleView partOf(const std::complex<double>* samples, std::uint64_t n) const;

    /// Hands the event to push when minTime <= duration <= maxTime.
    void pushInTimeBounds(EventQueue& queue, double duration, double time);

    /// The settings, and what is remembered of the signal: the last sample and the last accepted event.
    DetectorSettings settings_;
    TimedSample lastSample_{kNoTime, kNoTime};
    double lastEventTime_ = kNoEvent;
    bool processImagPart_ = false;

private:
    std::uint64_t numAcceptedEvents_ = 0;
    std::uint64_t numHoldoffRefusals_ = 0;
    std::uint64_t numOutOfTimeBounds_ = 0;
};

} // namespace tracery
