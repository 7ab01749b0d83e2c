#pragma once

#include <tracery/DataThinner.h>
#include <tracery/export.h>
#include <tracery/host/HostArray.h>
#include <tracery/host/HostObject.h>

#include <array>
#include <cstddef>
#include <limits>
#include <memory>
#include <optional>

namespace tracery {

class Host;

/// One line of a time display: the host's line, what the display needs to know of it, and its thinner. Points are drawn
/// by static methods of the host's line animator, "addXY" (line, points), "getXY" (line) and "reset" (line); its
/// class is looked up once, at construction. Main thread only.
class TRACERY_EXPORT TimeScopeLine {
public:
    TimeScopeLine();
    /// Releases the line's animator object through the public client of the host that was attached when the line was
    /// set, if that still is. What the host throws then goes no further.
    virtual ~TimeScopeLine();
    TimeScopeLine(const TimeScopeLine&) = delete;
    TimeScopeLine& operator=(const TimeScopeLine&) = delete;

    /// Keeps a copy of the host's line, an object array; null is ignored.
    void setLine(const HostArray* line);
    /// The line that is held, null when there is none; valid until the next setLine.
    const HostArray* getLine() const { return line_.get(); }

    /// Which display of the scope the line is in, and which line of that display it is.
    double getDisplayID() const { return displayID_; }
    void setDisplayID(double id) { displayID_ = id; }
    double getLineID() const { return lineID_; }
    void setLineID(double id) { lineID_ = id; }

    /// Whether data come in frames, frames a second, and seconds between samples.
    bool getIsFrameBased() const { return isFrameBased_; }
    void setIsFrameBased(bool isFrameBased) { isFrameBased_ = isFrameBased; }
    double getFrameRate() const { return frameRate_; }
    void setFrameRate(double framesPerSecond) { frameRate_ = framesPerSecond; }
    double getSampleTime() const { return sampleTime_; }
    void setSampleTime(double seconds) { sampleTime_ = seconds; }

    /// Whether the line shows a real signal or the real part of one, or the phase of one.
    bool getIsReal() const { return isReal_; }
    void setIsReal(bool isReal) { isReal_ = isReal; }
    bool getIsPhase() const { return isPhase_; }
    void setIsPhase(bool isPhase) { isPhase_ = isPhase; }
    /// Whether the display is to thin the data before it draws them.
    bool getShouldThinData() const { return shouldThinData_; }
    void setShouldThinData(bool shouldThinData) { shouldThinData_ = shouldThinData; }

    /// The extremes of the pixel thinned last, which the display keeps here: index 0 is the minimum, 1 the maximum.
    /// Another index reads NaN and writes nothing.
    double getPixelMinMaxValue(int i) const { return read(pixelValue_, i); }
    void setPixelMinMaxValue(int i, double value) { write(pixelValue_, i, value); }
    double getPixelMinMaxImgValue(int i) const { return read(pixelImgValue_, i); }
    void setPixelMinMaxImgValue(int i, double value) { write(pixelImgValue_, i, value); }
    double getPixelMinMaxTimeValue(int i) const { return read(pixelTimeValue_, i); }
    void setPixelMinMaxTimeValue(int i, double time) { write(pixelTimeValue_, i, time); }
    /// Empties the three pairs to (+inf, -inf).
    void initDataThinningMinMax();

    /// The line's thinner, the same at every call; made at the first.
    DataThinner* getDataThinner();
    /// The thinner's getArrayThinData of the same arguments: a new array that the caller owns.
    HostArray* getLineThinData(const HostArray* data, int count, double pixelTimeRatio, bool continuePrevious);

    /// Appends (time, value) pairs, a 2-by-n array that stays the caller's, to the drawn line; `thin` thins them first
    /// to `pixelTimeRatio` columns a second, in continuation of the call before. Does nothing without a line or data.
    /// throws  NoHost, and what the host reports, as without an animator class; the thinner then is as it was
    void plotData(const HostArray* data, bool thin, double pixelTimeRatio);
    /// Takes the drawn points away. Does nothing without a line. throws  as plotData
    void reset();

    /// Widens the y extents by the points drawn at or after `fromTime`. Elements 0 and 2 are the lower and upper extent
    /// of the first axes, 1 and 3 of the second; the second are meant when `split` and not q < p, so that equal ones
    /// mean the second on purpose. An extent that is NaN stays NaN. A NaN at the first of the points is passed over,
    /// those further on are compared like the others. The search for fromTime is binary, so times should not decrease.
    /// Nothing changes for null, without a line, or without points that are a real 2-by-n array. throws  as plotData
    void resetLineYExtents(double* yExtents, const double& fromTime, bool split, std::size_t p, std::size_t q);

    /// The line's animator object, the first of the line array; null when there is none.
    HostObjectRef getSLA() const;
    /// The object's property "Parent", an object or a numeric handle of one; null when it has none (the handle -1 too),
    /// for no object and without a host. throws  what the host reports
    HostObjectRef getParent(const HostObjectRef& object) const;
    /// The graphics transform under which the line is drawn: the parent of getSLA().
    HostObjectRef getTransform() const { return getParent(getSLA()); }

private:
    using Pair = std::array<double, 2>;
    static constexpr Pair kEmptyPair{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
    static double read(const Pair& pair, int i);
    static void write(Pair& pair, int i, double value);

    std::weak_ptr<Host> host_;              ///< of the line
    std::shared_ptr<const HostArray> line_; // shared by calls that are under way, as the host may set another meanwhile
    Pair pixelValue_ = kEmptyPair;
    Pair pixelImgValue_ = kEmptyPair;
    Pair pixelTimeValue_ = kEmptyPair;
    bool isFrameBased_ = false;
    double frameRate_ = 0;
    double sampleTime_ = 0;
    double displayID_ = 0;
    double lineID_ = 0;
    bool isReal_ = false;
    bool isPhase_ = false;
    bool shouldThinData_ = false;
    hostobj::COSNameID animatorClassName_; // empty when the host has no such class
    std::optional<DataThinner> thinner_;
};

} // namespace tracery
