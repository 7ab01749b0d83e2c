#pragma once

#include <tracery/export.h>

#include <boost/enable_shared_from_this.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>

#include <cstdint>
#include <string>
#include <utility>

namespace tracery::Performance::CooperativeTaskManager {

class OrderedTaskSession;

/// Work that a session runs in slices of the host's idle time. Held by a TaskPtr.
class TRACERY_EXPORT Task : public boost::enable_shared_from_this<Task> {
public:
    virtual ~Task();
    /// One slice: works until getMicrosecondsRemaining of the session is 0. Returns whether the task is finished.
    virtual bool run(OrderedTaskSession& session) = 0;

    /// For people; empty at first.
    const std::string& getName() const noexcept { return name_; }
    void setName(std::string name) { name_ = std::move(name); }
    /// Sessions pass over disabled tasks.
    bool isEnabled() const noexcept { return enabled_; }
    void setEnabled(bool enabled) noexcept { enabled_ = enabled; }
    /// Takes the task out of the session that it was last added to; does nothing when there is none.
    void remove();

private:
    friend OrderedTaskSession;
    std::string name_;
    bool enabled_ = true;
    boost::weak_ptr<OrderedTaskSession> session_;
};
using TaskPtr = boost::shared_ptr<Task>;

/// Tasks that run one after another, in the order they were added. The host implements it. Main thread only.
///
/// A session may outlive its host: its tasks are then run no more.
class TRACERY_EXPORT OrderedTaskSession : public boost::enable_shared_from_this<OrderedTaskSession> {
public:
    virtual ~OrderedTaskSession();
    /// For people.
    virtual void setName(const std::string& name) = 0;
    /// Null is ignored, and a task that is in the session already.
    void addTask(TaskPtr task);
    /// Takes a task out, also while it runs; one that is not in the session is ignored.
    virtual void removeTask(const TaskPtr& task) = 0;
    /// Whether no task is left to run; disabled tasks are passed over.
    virtual bool isFinished() const = 0;
    /// Of the slice that runs; 0 between slices.
    virtual std::int64_t getMicrosecondsRemaining() const = 0;

protected:
    /// addTask, of a task that is not null.
    virtual void insertTask(TaskPtr task) = 0;
};

/// The host's task manager.
class TRACERY_EXPORT TaskManager {
public:
    virtual ~TaskManager();
    /// The host runs the session until it is finished, whoever holds it.
    virtual boost::shared_ptr<OrderedTaskSession> createOrderedSession() = 0;
};

} // namespace tracery::Performance::CooperativeTaskManager
