#pragma once

#include <tracery/export.h>

#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>

#include <cstdint>
#include <string>
#include <utility>

namespace tracery::Performance::CooperativeTaskManager {

class OrderedTaskSession;

/// Work that a session runs in slices of the host's idle time.
class TRACERY_EXPORT Task {
public:
    virtual ~Task();
    /// One slice: works until getMicrosecondsRemaining of the session is 0. Returns whether the task is finished.
    virtual bool run(OrderedTaskSession& session) = 0;

    const std::string& getName() const noexcept { return name_; }
    void setName(std::string name) { name_ = std::move(name); }
    /// Sessions pass over disabled tasks.
    bool isEnabled() const noexcept { return enabled_; }
    void setEnabled(bool enabled) noexcept { enabled_ = enabled; }

private:
    std::string name_;
    bool enabled_ = true;
};
using TaskPtr = boost::shared_ptr<Task>;

/// Tasks that run one after another, in the order they were added. The host implements it. Main thread only.
class TRACERY_EXPORT OrderedTaskSession {
public:
    virtual ~OrderedTaskSession();
    virtual void setName(const std::string& name) = 0;
    virtual void addTask(TaskPtr task) = 0;
    /// Takes a task out, also while it runs; one that is not in the session is ignored.
    virtual void removeTask(const TaskPtr& task) = 0;
    /// Whether no task is left to run; disabled tasks are passed over.
    virtual bool isFinished() const = 0;
    /// Of the slice that runs; 0 between slices.
    virtual std::int64_t getMicrosecondsRemaining() const = 0;
};

/// The host's task manager.
class TRACERY_EXPORT TaskManager {
public:
    virtual ~TaskManager();
    /// The host runs the session until it is finished, whoever holds it.
    virtual boost::shared_ptr<OrderedTaskSession> createOrderedSession() = 0;
};

} // namespace tracery::Performance::CooperativeTaskManager
