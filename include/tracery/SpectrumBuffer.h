#pragma once

#include <tracery/Timer.h>
#include <tracery/export.h>
#include <tracery/host/HostArray.h>

#include <complex>
#include <cstdint>
#include <memory>

namespace tracery {

/// Cuts the frames of a multichannel signal into overlapping segments of one length for spectrum estimation, hands them
/// out in whole blocks, no faster than an update timer allows, and keeps statistics of signal power (CCDF).
///
/// Each channel's buffer is the concatenation of its segments: a segment begins with the last overlap samples of the one
/// before, the very first one with as many zeros. The buffer ends in an open segment that holds its overlap already.
///
/// Frames are double arrays, a column a channel (wider ones use their first columns), extents past the second continuing
/// the columns. Of complex values a real buffer takes the real part; a complex buffer takes real values with zeros.
///
/// Errors: "invalid subscript" is std::out_of_range saying "invalid vector<T> subscript", "too long" is std::length_error
/// saying "vector<T> too long". An operation that throws, for want of memory too, has left the buffer as it was.
///
/// Thread: one thread uses the object.
class TRACERY_EXPORT SpectrumBuffer {
public:
    /// Segments of 1024 samples, no overlap, real, one channel.
    SpectrumBuffer();
    /// segmentLength   samples a segment; with 0 nothing is stored
    /// overlapPercent  see setOverlapPercent
    SpectrumBuffer(std::uint32_t segmentLength, double overlapPercent, HostComplexity complexity,
                   std::uint32_t numChannels);
    /// With another update timer than a OneShotTimer; null means that one. Its timeout becomes 0.05 s.
    SpectrumBuffer(std::uint32_t segmentLength, double overlapPercent, HostComplexity complexity,
                   std::uint32_t numChannels, std::unique_ptr<Timer> updateTimer);
    ~SpectrumBuffer();
    SpectrumBuffer(const SpectrumBuffer&) = delete;
    SpectrumBuffer& operator=(const SpectrumBuffer&) = delete;

    // ---- Parameters

    /// Stores the first elements of nPorts and maxNumTimeSteps (the other two are not read), and sets the complexity;
    /// only if that changes, the buffers are emptied.
    /// throws  EmptyInput when there is no first element, InvalidArgumentType for another class than double
    void setupBufferParams(const HostArray* nPorts, const HostArray*, const HostArray* maxNumTimeSteps,
                           const HostArray*, bool isComplex);

    /// Changing one of these re-cuts what is buffered (see rebuffer, whose errors they raise, and then change nothing);
    /// setting the value that is set already does nothing.
    void setSegmentLength(std::uint32_t samples);
    std::uint32_t getSegmentLength() const;
    /// The overlap becomes the percentage of the segment length rounded to whole samples, halves up, one less than the
    /// length at most; percentages that are not above 0 count as 0.
    void setOverlapPercent(double percent);
    double getOverlapPercent() const;
    std::uint32_t getNumOverlapSamples() const;

    /// Changing one of these empties the buffers.
    void setNumChannels(std::uint32_t channels);
    std::uint32_t getNumChannels() const;
    void setComplexityFlag(HostComplexity complexity);
    /// A new string, "Real" or "Complex".
    HostArray* getComplexityFlag() const;
    HostComplexity getComplexity() const;
    /// A new string, "SingleRate": all channels are sampled at the same times.
    HostArray* GetType() const;

    /// How many segments are handed out together; 0 works as 1.
    void setSegmentsPerBlock(std::uint32_t segments);
    std::uint32_t getSegmentsPerBlock() const;
    /// Whether segments wait for the update timer, at first true; the override makes them not wait all the same.
    void setReduceUpdates(bool reduce);
    bool getReduceUpdates() const;
    void setReduceUpdatesOverride(bool ignoreTimer);

    /// Kept for the owner.
    void setMaxNumTimeSteps(double steps);
    double getMaxNumTimeSteps() const;
    void setNPorts(double ports);
    /// 1, whatever was set; kept on purpose.
    double getNPorts() const;
    /// Kept for the owner.
    void setTreatMby1SignalsAsOneChannel(bool asOneChannel);
    bool getTreatMby1SignalsAsOneChannel() const;
    void setDataSkippedFlag(bool skipped);
    bool getDataSkippedFlag() const;

    // ---- Writing

    /// The last time becomes the first element; the other arguments are not read.
    /// throws  EmptyInput (null, or no elements), AddTimeError (not of the double class)
    void AddTime(const double* time, int count, int port);
    void AddTime(const HostArray* time, int port);
    /// The same: no samples are discarded, on purpose.
    void clearBackTo(const double* time);
    void clearBackTo(const HostArray* time);
    /// The last time set, -inf at first and after flush.
    double GetLastTime() const;

    /// Discards what GetTimeAndValue has handed out, then appends a frame; null appends nothing. (After null, on purpose,
    /// the buffer's end counts as the start of the last frame, so that nothing can be re-cut until the next one.) The
    /// last two arguments are not read.
    /// throws  AddValueDataTypeError (not of the double class), invalid subscript (fewer columns than channels), too long
    void AddValue(const HostArray* value, int port, bool refresh);
    /// Appends a frame and counts its samples, but discards nothing, and a later re-cut does not know of it as the last
    /// frame. throws  EmptyInput for null, and as AddValue
    void addtoBuffer(const HostArray* frame);
    /// Appends samples to one channel alone: to one part of it, or to both. Such samples are not counted.
    /// throws  invalid subscript (no such channel, or no imaginary part), EmptyInput (null with a count), too long
    void addtoBuffer(const double* samples, std::uint32_t count, bool imaginary, std::uint32_t channel);
    void addtoBuffer(const std::complex<double>* samples, std::uint32_t count, std::uint32_t channel);

    /// Samples of frames appended per channel, wrapping at 32 bits.
    std::uint32_t getNumProcessedSamples() const;
    void setNumProcessedSamples(std::uint32_t samples);
    /// Rows of the last frame, or how many samples a re-cut kept; 0 after clear.
    std::uint32_t getLastInputFrameLength() const;

    // ---- Reading

    /// Complete segments (of the first channel).
    std::uint32_t getNumSegments() const;
    /// The new samples in the open segment (of the first channel). Wraps at 32 bits when the segment has fewer samples
    /// than its overlap, as that of an empty buffer; kept on purpose.
    std::uint32_t getNumUnprocessedSamples() const;
    /// Whether there is a whole block of segments, and updates are not being held back.
    bool isReady();
    /// Whether updates are not reduced, or the update timer's time is up.
    bool isTimeUp();
    /// Starts the update timer.
    void restartTimer();
    /// The segments of all whole blocks, as a new array: samples by segments by channels, also of one channel. Null when
    /// not ready. throws  invalid subscript when another channel has fewer samples than the first needs
    HostArray* getAvailableSegments();
    /// Sets `time` to null and `value` to getAvailableSegments(). If there were any, the next AddValue discards them.
    void GetTimeAndValue(int port, HostArray*& time, HostArray*& value);

    // ---- Clearing

    /// Discards the segments of all whole blocks. throws  invalid subscript, as getAvailableSegments
    void clear();
    /// Empties the buffers and forgets the last time.
    void flush();
    /// Cuts anew, under the current parameters, the newest samples: those of the last frame, or of the open segment if
    /// that has more. They then begin the first segment, without zeros ahead. The rest is discarded. Does nothing while
    /// the last frame has no rows, as after clear.
    /// throws  invalid subscript when the last frame does not lie where it was written (after samples came in another way
    ///         than through AddValue, or null did, or while a frame that came at a segment length of 0 is the last one)
    void rebuffer();

    // ---- Power statistics

    /// Takes a frame of powers (linear, real, a column a channel) into the statistics, and reports them, each a new
    /// array, 1 by channels: the power that set each top bin, the average, the number of finite powers, and a cell of
    /// tables, each with rows of level (dB above the average) and the percentage of powers above it. NaN and +inf are
    /// passed over; -inf counts. Another number of channels than before starts the histogram anew, none too.
    /// numBins     bins of each channel's histogram, which ends at the peak. It may change only after resetCCDF.
    /// resolution  of a bin, in dB; to be changed only after resetCCDF, as bins of two widths would be mixed
    /// throws  EmptyInput (null), InvalidArgumentType (not real doubles, or a resolution that is not a positive number),
    ///         invalid subscript (another number of bins), too long (a negative one, or too many)
    void updateCCDF(const HostArray* power, int numBins, double resolution, HostArray*& maxPower, HostArray*& avgPower,
                    HostArray*& totSamples, HostArray*& distTable);
    /// Empties the histogram. Peaks, sums and counts of the channels that remain carry over to the next update; kept on
    /// purpose.
    void resetCCDF();
    /// The counts, a new array of bins by channels (0 by 0 when there are none).
    HostArray* getCCDFHistogram() const;
    /// The samples below the histogram, not positive, or shifted out of it: a new 1-by-channels array.
    HostArray* getCCDFTotalUnbinned() const;

private:
    struct TRACERY_NO_EXPORT State;
    std::unique_ptr<State> state_;
};

} // namespace tracery
