#pragma once

#include <tracery/export.h>

namespace tracery {

/// Paces something: once started, its time is up when the timeout has passed. Owners take a timer through this
/// interface, so that another one than OneShotTimer can stand in.
class TRACERY_EXPORT Timer {
public:
    virtual ~Timer() = default;

    /// Stops the timer and sets how long the periods started from now on last; ignored unless seconds > 0.
    virtual void setTimeout(double seconds) = 0;
    virtual double getTimeout() const = 0;
    /// Begins a period; one that is running is cut short.
    virtual void start() = 0;
    /// Ends the running period, if any: the time is then up.
    virtual void stop() = 0;
    virtual bool isTimeUp() = 0;
};

} // namespace tracery
