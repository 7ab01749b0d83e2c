#pragma once

#include <tracery/AbstractFramePlotter.h>
#include <tracery/AbstractTimeDomainController.h>
#include <tracery/TimeScopeLine.h>
#include <tracery/host/HostObject.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace tracery {

/// What happens when data pass the right edge of the time window; any other value counts as Scroll.
enum class TimeOverrunModeEnum : std::int32_t { Wrap = 0, Scroll = 1 };

/// The state of one time display: its window, its overrun mode, the ports, the y extents, and what is known of each
/// line. Lines and transforms are looked up when they are first asked for. Times in seconds.
class TRACERY_EXPORT AbstractTimeDomainPlotter : public AbstractFramePlotter {
public:
    AbstractTimeDomainPlotter();
    ~AbstractTimeDomainPlotter() override;

    /// Forgets lines, transforms and the lines' end times.
    void initPlotter() override;
    /// The host object of the plotter; null when it has none.
    HostObjectRef getCOSInterface() const { return hostObject_.lock(); }
    /// Only referred to: the host object owns the plotter.
    void setCOSInterface(const HostObjectRef& object) { hostObject_ = object; }
    /// As destroyHostArrayObtainedFromGet.
    void releaseHostArray(HostArray* array) noexcept { destroyHostArrayObtainedFromGet(array); }

    // ---- The time window

    /// Left edge of the window.
    double getStartTime() const { return startTime_; }
    void setStartTime(double time) { startTime_ = time; }
    /// Earliest time that the window may show.
    double getOriginTime() const { return originTime_; }
    void setOriginTime(double time) { originTime_ = time; }
    /// Length of the window.
    double getTimeSpan() const { return timeSpan_; }
    void setTimeSpan(double span) { timeSpan_ = span; }
    /// The wrap period; the time span while none (0) is set.
    double getTimeWrap() const { return timeWrap_ != 0 ? timeWrap_ : timeSpan_; }
    void setTimeWrap(double period) { timeWrap_ = period; }
    /// Time of the newest data.
    double getEndTime() const { return endTime_; }
    void setEndTime(double time) { endTime_ = time; }
    /// Largest time step width among the displays of a scope.
    double getMaxSiblingTimeStepWidth() const { return maxSiblingTimeStepWidth_; }
    void setMaxSiblingTimeStepWidth(double width) { maxSiblingTimeStepWidth_ = width; }

    /// Whether the overrun mode is in use; kept for the owner.
    bool getEnableOverrunMode() const { return enableOverrunMode_; }
    void setEnableOverrunMode(bool enable) { enableOverrunMode_ = enable; }
    /// What happens at the right edge; Wrap at first.
    TimeOverrunModeEnum getTimeOverrunMode() const { return timeOverrunMode_; }
    /// Keeps the mode as it is given, and gets a new controller for it.
    void setTimeOverrunMode(TimeOverrunModeEnum mode);
    /// Null until a mode or a controller was set.
    std::shared_ptr<AbstractTimeDomainController> getTimeOverrunModeController() const { return controller_; }
    /// Shares the controller and becomes its plotter; the mode stays. The controller's host object, if it has one, is kept
    /// alive from then on. Null takes the controller away.
    void setTimeOverrunModeController(std::shared_ptr<AbstractTimeDomainController> controller);
    /// Keeps alive the host object that the controller has by now.
    void keepTimeOverrunModeControllerObject();

    // ---- Ports

    /// Of each port: time between samples, or between frames. At first one of 0.
    const std::vector<double>& getSampleTimes() const { return sampleTimes_; }
    /// Replaces all. No values (or null) keep the old ones on purpose.
    void setSampleTimes(const double* values, std::size_t n);
    /// Of each port: added to times that are shown. At first one of 0.
    const std::vector<double>& getTimeDisplayOffset() const { return timeDisplayOffset_; }
    /// Replaces all. No values (or null) leave none.
    void setTimeDisplayOffset(const double* values, std::size_t n);
    /// How far the samples of a frame reach past its time, (length - 1) x sample time / length for each port that has a
    /// frame length; 0 where that is not finite or there is no sample time. Never empty: 0 without ports.
    std::vector<double> getTimeStepWidth() const;

    /// Which ports of the scope the display shows, and whether some are buses; kept for the owner.
    int getFirstPortID() const { return firstPortID_; }
    void setFirstPortID(int id) { firstPortID_ = id; }
    int getEffectiveFirstPortID() const { return effectiveFirstPortID_; }
    void setEffectiveFirstPortID(int id) { effectiveFirstPortID_ = id; }
    bool hasBusPorts() const { return hasBusPorts_; }
    void setHasBusPorts(bool hasBusPorts) { hasBusPorts_ = hasBusPorts; }
    /// Ports in the order in which they were appended.
    const std::vector<int>& getPortIndex() const { return portIndex_; }
    /// Appends one.
    void setPortIndex(int id) { portIndex_.push_back(id); }
    /// Takes all away.
    void resetPortIndex() { portIndex_.clear(); }

    // ---- What is shown

    /// Whether signals are complex.
    bool getIsComplex() const { return isComplex_; }
    void setIsComplex(bool isComplex) { isComplex_ = isComplex; }
    /// Whether complex signals are drawn as magnitude and phase, on two axes.
    bool getPlotMagPhase() const { return plotMagPhase_; }
    void setPlotMagPhase(bool plotMagPhase) { plotMagPhase_ = plotMagPhase; }
    /// Elements 0 and 2 are the lower and upper extent of the first axes, 1 and 3 of the second; NaN when unknown.
    const std::array<double, 4>& getYExtents() const { return yExtents_; }
    /// Copies four values; null is ignored.
    void setYExtents(const double* values);
    /// Makes all four unknown.
    void resetYExtents() { yExtents_ = kNoYExtents; }
    /// Set by hosts while they assign several properties in a row.
    bool getSettingProperties() const { return settingProperties_; }
    void setSettingProperties(bool settingProperties) { settingProperties_ = settingProperties; }

    // ---- Lines, by their index in the lines array

    /// Sets the end times of all lines to -inf.
    void initAllPreviousEndTimes();
    /// End time of what was drawn last; 0 for a line that has none yet.
    double getPreviousEndTimeForLine(std::size_t i) const;
    /// Ignored for a line that initAllPreviousEndTimes did not know.
    void setPreviousEndTimeForLine(std::size_t i, double time);

    /// Looks up the line objects not yet known, up to index i or the last. They stay the host's: one that the host
    /// deletes is no longer there. Elements that are no TimeScopeLine are known as none.
    void setTimeScopeLine(std::size_t i);
    /// The line object, looked up when it is not known yet; null when there is none.
    std::shared_ptr<TimeScopeLine> getTimeScopeLine(std::size_t i);
    /// The line objects that are known: forgets them, and whether there are none.
    void clearTimeScopeLineObjs() { lineCache_.clear(); }
    bool isLineCacheEmpty() const { return lineCache_.empty(); }

    /// Transform `i` of the cache. When it holds fewer, that of line i, which is then appended: lines should be asked
    /// for in the order of their indexes. Null when there is none; past the last line nothing is appended.
    /// throws  as TimeScopeLine::getParent
    HostObjectRef getTransform(std::size_t i);
    /// The cache itself: appends one, and whether it has one at index i.
    void addTransformToCache(HostObjectRef transform) { transformCache_.push_back(std::move(transform)); }
    bool transformIsInCache(std::size_t i) const { return i < transformCache_.size(); }
    /// Null when there is none.
    HostObjectRef getTransformFromCache(std::size_t i) const;
    /// Forgets all transforms.
    void clearTransformCache();

private:
    friend class AbstractTimeDomainController; // shares self_

    static constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    static constexpr std::array<double, 4> kNoYExtents{kNaN, kNaN, kNaN, kNaN};

    /// Owns nothing; lets controllers know when the plotter is gone.
    std::shared_ptr<AbstractTimeDomainPlotter> self_;
    std::weak_ptr<hostobj::COSInterface> hostObject_;
    double startTime_ = 0;
    std::vector<double> sampleTimes_ = {0};
    double originTime_ = 0;
    double timeSpan_ = 10;
    double timeWrap_ = 0;
    bool enableOverrunMode_ = true;
    TimeOverrunModeEnum timeOverrunMode_ = TimeOverrunModeEnum::Wrap;
    double endTime_ = 0;
    std::vector<double> timeDisplayOffset_ = {0};
    bool isComplex_ = false;
    bool plotMagPhase_ = false;
    std::array<double, 4> yExtents_ = kNoYExtents;
    int firstPortID_ = -1;
    int effectiveFirstPortID_ = -1;
    std::vector<std::weak_ptr<TimeScopeLine>> lineCache_;
    std::vector<int> portIndex_;
    bool hasBusPorts_ = false;
    std::shared_ptr<AbstractTimeDomainController> controller_;
    HostObjectRef controllerObject_;
    bool settingProperties_ = false;
    double maxSiblingTimeStepWidth_ = 0;
    std::vector<double> previousEndTimes_;
    std::vector<HostObjectRef> transformCache_;
};

} // namespace tracery
