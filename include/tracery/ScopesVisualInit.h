#pragma once

#include <tracery/ScopesVisualInitTask.h>
#include <tracery/export.h>
#include <tracery/host/Host.h>

#include <boost/shared_ptr.hpp>

#include <array>
#include <memory>

namespace tracery {

/// Hides the cost of a first scope: queues tasks that make the host load its classes in idle time. Everything works
/// without it as well. All objects of the process share one session of the host, until it is finished or another host
/// is attached; then the next object has a new one made. Copies share the tasks. Main thread only.
class TRACERY_EXPORT ScopesVisualInit {
public:
    /// Adds the six tasks to the session; without a host they are in none.
    ScopesVisualInit();

    /// Whether no task is left to run, of any object; also when the host of the session is gone.
    bool done() const;

    /// Disables the tasks that load classes. Graphics that are half set up are finished by the host.
    void disableAllTasks();
    /// Disables the task that loads graphics classes. Graphics that are half set up are finished by the host.
    void disableVELTRAGraphicsTasks();
    /// Takes all tasks out of the session. Graphics that are half set up are finished by the host.
    void removeAllTasks();

private:
    void finishGraphics() const;

    // Not shared with a second copy of the library, which would destroy them too.
    TRACERY_NO_EXPORT static boost::shared_ptr<Performance::CooperativeTaskManager::OrderedTaskSession> sSession;
    TRACERY_NO_EXPORT static std::weak_ptr<Host> sessionHost;

    // Null in an object that was moved from.
    std::array<Performance::CooperativeTaskManager::TaskPtr, 4> classTasks_; ///< graphics phase 1 last
    boost::shared_ptr<ScopesVisualInitVELTRAGraphicsPhase2Task> graphicsPhase2_;
    boost::shared_ptr<ScopesVisualInitVELTRATask> veltra_;
};

} // namespace tracery
