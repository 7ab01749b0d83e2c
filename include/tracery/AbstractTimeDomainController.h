#pragma once

#include <tracery/export.h>
#include <tracery/host/HostObject.h>

#include <memory>

namespace tracery {

class AbstractTimeDomainPlotter;

/// What a time display does when data pass the right edge of its window. Copies have the same plotter and the same host
/// object. All times in seconds. Main thread only.
class TRACERY_EXPORT AbstractTimeDomainController {
public:
    /// A controller of this plotter; null for none yet.
    explicit AbstractTimeDomainController(AbstractTimeDomainPlotter* plotter = nullptr) { setPlotter(plotter); }
    /// With the same plotter and host object.
    AbstractTimeDomainController(const AbstractTimeDomainController&) = default;
    AbstractTimeDomainController& operator=(const AbstractTimeDomainController&) = default;

    /// Where the window starts. throws  NoPlotter
    virtual double calculateStartTime() = 0;
    /// The end time to draw to when an update came at `endTime`. throws  NoPlotter
    virtual double calculateAsynchronousEndTime(double endTime) = 0;
    /// The time offset to show with data at `time`. throws  NoPlotter
    virtual double calculateTimeOffset(double time) = 0;
    /// Called when a run starts; does nothing here.
    virtual void start();
    /// Called when a run stops; does nothing here.
    virtual void stop();
    virtual ~AbstractTimeDomainController();
    /// The host object of the controller; null when it has none.
    virtual HostObjectRef getCOSInterface() const = 0;
    /// The same, but null where it is that of the controller this one is a copy of, and once it is deleted.
    HostObjectRef getOwnCOSInterface() const;
    /// Only referred to: the host object owns the controller.
    void setCOSInterface(const HostObjectRef& object) { hostObject_ = object; }

    /// Only referred to: once the plotter is gone there is none, in copies too.
    void setPlotter(AbstractTimeDomainPlotter* plotter);
    /// Null when there is none.
    AbstractTimeDomainPlotter* getPlotter() const { return plotter_.lock().get(); }

protected:
    /// throws  NoPlotter
    const AbstractTimeDomainPlotter& requirePlotter() const;
    /// What setCOSInterface was given; null once it is gone.
    HostObjectRef hostObject() const { return hostObject_.lock(); }

private:
    std::weak_ptr<AbstractTimeDomainPlotter> plotter_; // ends with the plotter, does not keep it
    std::weak_ptr<hostobj::COSInterface> hostObject_;
};

} // namespace tracery
