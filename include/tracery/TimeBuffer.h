#pragma once

#include <tracery/export.h>
#include <tracery/host/HostArray.h>

#include <complex>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tracery {

/// Whether all ports are written at the same times.
enum class BufferType : std::int32_t { SingleRate = 1, MultipleRate = 2 };

/// The store of time-stamped samples that a scope keeps for its input ports.
///
/// A port delivers, per time step, one block of values of up to a fixed maximum size; the buffer keeps the newest steps
/// of each port, up to a capacity per port, and silently drops the oldest. A step always takes the whole maximum block:
/// what the input does not cover is NaN. Values lie column-major.
///
/// Memory is taken as values come: a port's room doubles, with a fifth of it to spare, up to the capacity. The write that
/// makes it grow copies what is stored. Writers that must never wait for that take all room ahead (reserveCapacity).
/// Clearing gives room back.
///
/// Life: before set-up (by a constructor with arguments or ResetBuffer) writes and clears do nothing whatever their
/// arguments, and reads return nothing. Afterwards a port out of range is InvalidPortID in every operation that takes
/// one. An operation that throws, for want of memory too, has left the buffer as it was.
///
/// Thread: with isThreadSafe, every public operation holds the buffer's mutex, so one thread may write while another
/// reads. Otherwise only addTimeAndValue holds it, and reads must not run beside anything else.
///
/// Times are seconds and must not decrease within a port; a port whose times do not is searched without faults, but may
/// find the wrong steps.
class TRACERY_EXPORT TimeBuffer {
public:
    /// Numbers of steps or extents, such as one a port.
    using Counts = std::vector<std::uint64_t>;

    /// A buffer that awaits ResetBuffer.
    TimeBuffer();
    /// Sets up at once; the arguments are those of ResetBuffer.
    TimeBuffer(const Counts& maxNumTimeSteps, const Counts& maxDimensions, const Counts& nDim, std::uint64_t nPorts,
               BufferType type, const std::vector<HostComplexity>& complexity, bool isThreadSafe);
    /// A SingleRate buffer of real ports that all have maxDimensions.size() / nPorts extents, not thread safe.
    /// throws  InvalidMaxNumTimeStepsSize as ResetBuffer; InvalidMaxDimensions when nPorts is 0 or does not divide the
    ///         number of extents, and as ResetBuffer
    TimeBuffer(const Counts& maxNumTimeSteps, const Counts& maxDimensions, std::uint64_t nPorts);
    ~TimeBuffer();
    TimeBuffer(const TimeBuffer&) = delete;
    TimeBuffer& operator=(const TimeBuffer&) = delete;

    // ---- Set-up

    /// Drops all data and sets the buffer up anew; on an error the old buffer stays.
    /// maxNumTimeSteps  steps each port keeps: one for all ports, or (at least) one a port
    /// maxDimensions    the ports' maximum extents, port after port
    /// nDim             per port, how many extents it has there (0 makes steps of one value)
    /// complexity       one flag a port
    /// throws  InvalidMaxNumTimeStepsSize (too few capacities), InvalidMaxDimensions (as many extents as nDim adds up to
    ///         are needed, and one nDim a port; the steps of all ports together may have INT_MAX / 3 elements, because
    ///         the NaN-pattern detector keeps three and counts in int), InvalidComplexityDimension (too few flags),
    ///         InvalidMaxNumTimeStepsValue (a ring too large to address)
    /// Times are shared between the ports when the type is SingleRate, the buffer is not thread safe, and all
    /// capacities are equal.
    void ResetBuffer(const Counts& maxNumTimeSteps, const Counts& maxDimensions, const Counts& nDim,
                     std::uint64_t nPorts, BufferType type, const std::vector<HostComplexity>& complexity,
                     bool isThreadSafe);
    /// Drops all data and goes back to before set-up. The number of ports, the capacities and the sample times stay
    /// readable.
    void resetInitialized();
    /// Whether it was set up.
    bool isInitialized() const;

    // ---- Capacity and shape

    /// Changes the capacities, keeping the newest steps; one for all ports or one a port.
    /// throws  InvalidMaxNumTimeStepsSize, InvalidMaxNumTimeStepsValue (a 0, or a ring too large to address),
    ///         InvalidMaxNumTimeStepsChange (shared times and different capacities)
    void SetMaxNumTimeSteps(const Counts& steps);
    /// SetMaxNumTimeSteps to 20000 for every port; throws  InvalidMaxNumTimeStepsValue likewise.
    void SetToMaximumCapacity();
    /// One a port.
    Counts GetMaxNumTimeSteps() const;
    /// Takes room for as many steps as the ports keep, and holds it: no later write moves what is stored. The system backs
    /// the room with memory page by page as values come, or at once when it was told to lock what a process takes.
    /// Until the next set-up Clear and the other operations that clear keep the room, and changes of capacity or shape
    /// take the new one at once.
    /// throws  std::bad_alloc; nothing is held then that was not before
    void reserveCapacity();
    /// Gives a port other maximum extents, as many as it has. Its rings restart empty (all ports' rings when times are
    /// shared, so that steps stay aligned), and the NaN-pattern detector starts anew. Ports whose extents stay the same
    /// keep the shape of their last array (see AddValue).
    /// throws  InvalidMaxDimensions for another count, a negative extent, a product of extents past 64 bits, or more
    ///         than INT_MAX / 3 elements in the steps of all ports; InvalidMaxNumTimeStepsValue when the steps are small
    ///         enough to count but the ring would be too large to address, as of two huge extents
    void SetMaxDimensions(const std::vector<int>& extents, std::uint64_t port);
    /// The same for all ports at once: a real matrix of ports by extents. Values are truncated to whole numbers (2.9
    /// is 2, -0.9 is 0); ports with fewer extents than there are columns are filled up with 1.
    /// throws  EmptyInput, InvalidMaxDimensions (also for another number of rows), InvalidMaxNumTimeStepsValue
    void SetMaxDimensions(const HostArray* portsByExtents);
    /// A port's maximum extents. Extents past the largest int read as that.
    std::vector<int> GetMaxDimensions(std::uint64_t port) const;
    /// A new ports-by-extents matrix; ports with fewer extents than the widest one are filled up with 1.
    HostArray* GetMaxDimensions() const;
    /// Fills `out` with the matrix's elements row after row, truncated to whole numbers; this turns ports-by-extents
    /// into the list that ResetBuffer takes.
    /// throws  InvalidMaxDimensions when the array is not a real matrix of numbers that fit 64 bits unsigned
    static void TransposeMaxDimensions(const HostArray* matrix, Counts& out);
    /// What the buffer was set up with.
    std::uint64_t GetNPorts() const;
    Counts GetNDim() const;
    BufferType GetBufferType() const;
    /// "SingleRate" or "MultipleRate".
    std::string GetType() const;
    /// Whether every operation holds the mutex.
    bool getIsThreadSafe() const;
    /// A new logical array, ports by 1: true where the port is complex.
    HostArray* GetComplexityFlags() const;

    /// Two entries a port, zero after set-up; kept for the owner, and readable as the capacities are after
    /// resetInitialized. throws  InvalidSampleTimes for fewer
    void SetSampleTimes(const std::vector<double>& times);
    void SetSampleTimes(std::uint64_t port, const std::vector<double>& times);
    std::vector<double> GetSampleTimes() const;
    std::vector<double> GetSampleTimes(std::uint64_t port) const;
    /// Whether a port's data are continuous (non-zero) or hold their value, a flag a port; false after set-up. Kept for
    /// the owner. throws  InvalidArgumentType for another number of flags
    void setIsLinearInterpolation(const std::vector<std::uint8_t>& flags);
    std::vector<bool> getIsLinearInterpolation() const;

    /// Whether the data carry a regular pattern of NaN separators (see DataPattern); learned from the first value of
    /// each write until found, cleared at set-up.
    bool dataHasNaNPattern() const;
    void setDataHasNaNPattern(bool found);
    void resetNaNPattern();

    // ---- Writing. Times come first: values must bring the port's step count level with its times.

    /// Appends `count` times to the port's time ring; to every time ring when the type is SingleRate and the buffer is
    /// not thread safe, so several ports are then written with one AddTime and one AddValue each.
    void AddTime(const double* times, std::uint64_t count, std::uint64_t port);
    /// throws  AddTimeError when the array is not of the double class
    void AddTime(const HostArray* times, std::uint64_t port);
    /// Appends steps of one port to its real ring (complexity real) or its imaginary ring (complex). Writing a complex
    /// port takes both. A read that finds the two apart raises GetComplexDataError.
    /// values  in signal units, column-major, product of dims of them; NaN is a gap. Of complex values, the part that
    ///         belongs to the ring is taken.
    /// dims    extents of one step, plus the number of steps when it is not 1; {elements per step, steps} is whole
    ///         steps end to end (unless the port has three or more extents and the last is 1: dims shorter than the
    ///         port's are then filled up with 1 first). Smaller extents than the maximum are filled up with NaN.
    /// throws  AddComplexDataError (imaginary values for a real port), AddValueInputFormatError (extents that do not
    ///         fit), AddValueError (steps and times would differ)
    void AddValue(const double* values, const Counts& dims, std::uint64_t port, HostComplexity complexity);
    void AddValue(const std::complex<double>* values, const Counts& dims, std::uint64_t port,
                  HostComplexity complexity);
    /// Appends an array to a port, both parts for a complex port (zeros where the array has none).
    /// refresh  take the extents from this array; otherwise those of the port's last array that gave its extents hold,
    ///          and this array must have at least as many elements. The first array always gives its extents.
    /// An array without elements adds no steps and leaves those extents alone.
    /// throws  EmptyInput for null, AddValueDataTypeError for a class other than double, and as above
    void AddValue(const HostArray* values, std::uint64_t port, bool refresh);
    /// AddTime and AddValue as one, under the buffer's mutex: either both happen or neither.
    void addTimeAndValue(const HostArray* times, const HostArray* values, std::uint64_t port, bool refresh);

    // ---- Clearing

    /// Drops all steps of all ports, and gives back their room unless it is held (reserveCapacity).
    void Clear();
    /// Drops the steps newer than `time` (within the spacing of doubles there), port by port. With shared times the one
    /// time ring decides for all ports. As +inf and NaN have no spacing, nothing counts as up to them: all steps go.
    void ClearBackTo(double time);
    /// Drops all but the newest step of each port. A port that holds exactly two times keeps both, on purpose; with
    /// shared times this holds for the whole buffer.
    void clearUptoLastTime();

    // ---- Reading. New arrays belong to the caller; outputs are set to null first and stay so when nothing is found.

    /// Whether any port holds as many times as it can.
    bool GetIsFull() const;
    /// Whether every port's value steps are level with its times. False before set-up, true with no ports.
    bool GetIsReady() const;
    /// The largest newest time of all ports; -inf when there is none.
    double GetLastTime() const;

    /// Finds the port's stored steps in [tStart, tEnd], each edge widened by the spacing of doubles there (so a time
    /// equal to an edge is inside). Indexes count from the oldest stored step; startIndex is set before endIndex, -1
    /// for none.
    /// widen  also take the step before the window and the one after it, when the window's edge is not a stored time
    /// Returns whether there is any step. An infinite or NaN edge has no spacing: tStart finds the oldest step, tEnd
    /// finds nothing (use the largest double for "to the end").
    /// throws  AddValueError, GetComplexDataError when values or imaginary values lag behind the times
    bool GetIndexRange(std::uint64_t port, double tStart, double tEnd, bool widen, int& startIndex,
                       int& endIndex) const;

    /// The whole of a port: time 1-by-n, value (elements per step)-by-n, complex for a complex port.
    void GetTimeAndValue(std::uint64_t port, HostArray*& time, HostArray*& value) const;
    /// The steps that GetIndexRange finds.
    void GetTimeAndValue(std::uint64_t port, HostArray*& time, HostArray*& value, double tStart, double tEnd,
                         bool widen) const;

    /// The display read of one channel: (time, value) pairs ready for drawing.
    /// out           complex 2-by-(k n) for n steps of k samples: row 1 the time (in both parts), row 2 the value
    /// limits        real minimum and maximum, imaginary minimum and maximum, folded over all values; NaN is passed
    ///               over. The caller seeds them with +inf, -inf, +inf, -inf.
    /// timeOffset    added to every time, seconds
    /// tLastDrawn    a first step at or before this time is left out (one step at most)
    /// channelCount, channel, samplesPerFrame  a step holds channelCount channels of k consecutive samples each; k is
    ///               samplesPerFrame when isFrameBased, else 1
    /// framePeriod   seconds from frame to frame: samples of a frame are framePeriod / k apart, or at the same time
    ///               when it is infinite. Read when isFrameBased.
    /// toMagnitudePhase  give magnitude and phase (degrees) in place of real and imaginary part
    /// throws  InvalidLimits (not four of them), InvalidChannelID when the channel reaches outside the values, and for no
    ///         channels or no samples a frame; AddValueError and GetComplexDataError as GetIndexRange
    /// Cost follows the samples delivered, not the channels stored.
    void GetTimeAndValueInterleaved(std::uint64_t port, HostArray*& out, std::vector<double>& limits, double timeOffset,
                                    const double& tStart, const double& tEnd, const double& tLastDrawn,
                                    std::uint64_t channelCount, std::uint64_t channel, bool isFrameBased,
                                    double framePeriod, std::int32_t samplesPerFrame, bool widen,
                                    bool toMagnitudePhase) const;

    /// What of a complex value a channel read gives. Of real ports the imaginary part is 0.
    enum class SamplePart : std::int32_t { real, imaginary, magnitude, phase };

    /// The trigger read of one channel: replaces `pairs` by the (time, value) pairs of all samples at times strictly
    /// after `after`, of the steps from that time on, reusing its memory. Frame-based ports hold channels of as many
    /// samples as their first maximum extent, framePeriod / samples apart (see GetTimeAndValueInterleaved); others one
    /// sample a channel.
    /// part    phase in degrees
    /// Frames must not overlap: a framePeriod that is negative, or longer than the distance of the steps, delivers samples
    /// again or not at all.
    /// throws  InvalidPortID, InvalidChannelID, AddValueError, GetComplexDataError
    void GetSamplesAfter(double after, std::uint64_t port, std::uint64_t channel, bool isFrameBased, double framePeriod,
                         SamplePart part, std::vector<double>& pairs) const;
    /// The read of one channel into a block of the caller's, for displays that go through long windows block by block:
    /// fills `pairs` with the (time, value) pairs of the samples at times in (after, upTo], also those of a frame that
    /// began before, as many as there is room for, and returns how many those are. It takes no memory for real and
    /// imaginary parts, and holds the lock no longer than the block takes to fill.
    ///
    /// The next call goes on after the last time of the block, until one returns 0. A block that is full ends before
    /// the samples at its last time, so that blocks do not part samples of one time, unless all of it is of that time:
    /// then there may be more of them, which a call that goes on after that time would pass over. Who needs them asks
    /// again from the same `after` with a larger block; a block of as many samples as share a time, and one more, is
    /// always large enough.
    /// The other arguments are those of GetSamplesAfter, and so is what it throws. Only for callers in C++.
    std::uint64_t GetSamplesBetween(double after, double upTo, std::uint64_t port, std::uint64_t channel,
                                    bool isFrameBased, double framePeriod, SamplePart part,
                                    std::span<double> pairs) const;

    /// Steps of a port as readAfter hands them out.
    struct ReadSteps {
        std::vector<double> times; ///< seconds
        std::vector<double> real;  ///< all of a step's values, step after step
        std::vector<double> imag;  ///< of complex ports; else empty
    };
    /// Where a reader of a port is; a new one is at the oldest step stored when it first reads.
    struct ReadPosition {
        std::uint64_t steps = 0;     ///< how many of the port's steps lie before it
        std::uint64_t clearings = 0; ///< number of the buffer's clearing that last took steps of the port; 0 if new
    };
    /// The read of all channels for readers that go on step by step, whatever the times: replaces `steps` by all that was
    /// written to the port since the reading that `position` comes from, steps of one time and steps a spacing of doubles
    /// apart among them, reusing its memory. Moves `position` on. Of a port that was set up or given another shape since, or
    /// that lost steps to a clearing, the reading begins anew with the oldest step stored. Only for callers in C++.
    /// Returns how many steps were dropped for want of room before they could be read; 0 when it begins, also anew.
    /// throws  InvalidPortID, AddValueError, GetComplexDataError; without memory `position` stays
    std::uint64_t readAfter(std::uint64_t port, ReadPosition& position, ReadSteps& steps) const;

private:
    struct TRACERY_NO_EXPORT State;
    std::unique_ptr<State> state_;
};

} // namespace tracery
