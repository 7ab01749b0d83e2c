#pragma once

#include <tracery/export.h>
#include <tracery/host/HostArray.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace tracery {

/// Index into a (minimum, maximum) pair. In a pair of times, Min is the time of the minimum.
enum class ThinDataMinMax : std::int32_t { Min = 0, Max = 1 };

/// Reduces line data to what a display of limited resolution shows: of each pixel column the opening sample
/// and the extremes, with their times. Two independent interfaces: streaming (thinData, one sample of one
/// channel a call) and batch (getArrayThinData, whole lines). A plain value; copies are independent. No
/// indexes are checked: the caller guarantees channel < number of initDataThinningMinMax calls, indexes
/// inside the vectors, and nine output values.
class TRACERY_EXPORT DataThinner {
public:
    /// Pixel columns per second. The next column opens half a column after the last one opened, so what is drawn of
    /// one, its opening sample and two extremes, lies within half a column while times do not decrease.
    void setPixelTimeRatio(double columnsPerSecond) { pixelTimeRatio_ = columnsPerSecond; }
    double getPixelTimeRatio() const { return pixelTimeRatio_; }

    /// Time (s) of the last sample that opened a column in streaming; -inf makes the next one open one.
    void setLastUpdateTime(double time) { lastUpdateTime_ = time; }
    double getLastUpdateTime() const { return lastUpdateTime_; }

    /// The last value that thinData wrote at a column's opening, infinities as they are; for complex data its
    /// imaginary part, on purpose.
    void setLastSampleDataAdded(double value) { lastSampleDataAdded_ = value; }
    double getLastSampleDataAdded() const { return lastSampleDataAdded_; }

    /// The running extremes of a channel: real parts, imaginary parts, and the times of the real extremes.
    double getPixelMinMaxValue(int channel, ThinDataMinMax which) const;
    void setPixelMinMaxValue(int channel, ThinDataMinMax which, double value);
    double getPixelMinMaxImgValue(std::uint64_t channel, ThinDataMinMax which) const;
    void setPixelMinMaxImgValue(std::uint64_t channel, ThinDataMinMax which, double value);
    double getPixelMinMaxTimeValue(std::uint64_t channel, ThinDataMinMax which) const;
    void setPixelMinMaxTimeValue(std::uint64_t channel, ThinDataMinMax which, double time);

    /// Adds one channel to the streaming interface, with empty extremes (+inf, -inf); the others stay.
    void initDataThinningMinMax();
    /// Empties the extremes of every channel. Last update time, last sample and batch state stay.
    void reset();
    /// Empties the real extremes of one channel. The times stay, because the column's next sample overwrites
    /// both before they are read. So do the imaginary extremes, on purpose: they run on over the columns.
    void resetMinMaxVals(int channel);

    /// Whether a sample at `time` opens a new column: nothing drawn yet, or (time - last) x ratio >= 0.5, or
    /// the same time again, so that both samples of a discontinuity are drawn. A NaN distance gives false.
    bool needToUpdateTimeBuffer(double time) const;
    /// Always true.
    bool needToUpdateMinMaxBetweenPixels() const { return true; }

    /// The streaming step: one sample of one channel.
    /// channelPosition  place in the time step's loop over channels; 0 decides `needUpdate` for all of them
    /// time             of the step, seconds
    /// realData, imagData, sampleIndex
    ///                  the sample is element sampleIndex; imagData is read when isComplex. Of an empty realData
    ///                  nothing is accumulated, of an empty imagData no imaginary part; a column opens with NaN.
    /// out              at least nine values: (time, real, imaginary) of the earlier extreme, of the later
    ///                  extreme and of the sample that opens the new column. Infinite values are written as
    ///                  NaN; imaginary slots only when isComplex. Written only when needUpdate, the extremes
    ///                  only when pixelHadData becomes true. Imaginary extremes have no times of their own:
    ///                  they follow the real ones' order.
    /// count            not read
    /// minMaxEnabled    false: nothing is accumulated, and extremes from before come out as NaN
    /// pixelHadData     set when needUpdate: whether the column that ends had samples besides its opening one
    /// channel          index of the accumulator
    /// needUpdate       shared by the channels of a step: whether it opens a new column
    /// The opening sample is drawn as such and does not count towards the extremes of its column. Ties go to
    /// the later sample; a NaN replaces both extremes and stays until the column ends, so that a gap reaches
    /// the display.
    void thinData(int channelPosition, double& time, std::vector<double>& realData, std::vector<double>& imagData,
                  std::vector<double>& out, int count, bool isComplex, bool minMaxEnabled, const int& sampleIndex,
                  bool& pixelHadData, const int& channel, bool& needUpdate);

    /// The batch: thins (time, value) pairs, a real 2-by-n array, to a new real 2-by-m array that the caller
    /// owns.
    /// numPoints         pairs to take, clamped to the array; a null or non-double array counts as empty
    /// pixelTimeRatio    columns per second, independent of setPixelTimeRatio
    /// continuePrevious  carry on in the column that the previous call ended in, else start anew
    /// Emitted per column: the opening point, then the extremes in time order, as one point when they fall on
    /// the same time. Infinities become NaN. Points at a NaN time or at the very time of the opening one pass
    /// through at once and unchanged, ahead of pending extremes; but where there is no column yet, or it opened at
    /// a NaN time, any point opens one, a NaN time included. Extremes still pending at the end are discarded on
    /// purpose: a caller that wants them appends a point that opens another column.
    /// Complexity: one pass; each point is emitted at most once.
    HostArray* getArrayThinData(const HostArray* data, int numPoints, double pixelTimeRatio, bool continuePrevious);

private:
    using Pair = std::array<double, 2>;
    static constexpr Pair kEmptyPair{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};

    /// The extremes that one channel has accumulated in the current column.
    struct Channel {
        Pair real = kEmptyPair;
        Pair imaginary = kEmptyPair;
        Pair time = kEmptyPair;
        bool hasData = false;
    };
    const Channel& at(std::uint64_t channel) const { return channels_[static_cast<std::size_t>(channel)]; }
    Channel& at(std::uint64_t channel) { return channels_[static_cast<std::size_t>(channel)]; }

    void setMinMaxValues(int channelPosition, double& time, std::vector<double>& realData,
                         std::vector<double>& imagData, const int& channel, bool isComplex, bool minMaxEnabled,
                         int sampleIndex);
    void getMinMaxData(int channelPosition, std::vector<double>& out, double& time, const int& channel, bool isComplex,
                       bool minMaxEnabled);

    double pixelTimeRatio_ = 0;
    double lastUpdateTime_ = -std::numeric_limits<double>::infinity();
    double lastSampleDataAdded_ = -std::numeric_limits<double>::infinity();
    double arrayThinningPixelStart_ = -std::numeric_limits<double>::infinity();
    std::vector<Channel> channels_;
};

} // namespace tracery
