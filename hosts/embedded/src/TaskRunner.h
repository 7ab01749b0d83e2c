#pragma once

#include <tracery/host/Tasks.h>

#include <chrono>
#include <functional>
#include <vector>

namespace tracery::embedded {

/// Runs the sessions' tasks in slices; see EmbeddedHost::runTasks.
class TaskRunner final : public Performance::CooperativeTaskManager::TaskManager {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    boost::shared_ptr<Performance::CooperativeTaskManager::OrderedTaskSession> createOrderedSession() override;
    void setClock(Clock clock) { clock_ = std::move(clock); }
    bool run(std::chrono::microseconds slice);

private:
    class Session;
    using SessionPtr = boost::shared_ptr<Session>;

    bool hasWork() const;
    Clock clock_;
    std::vector<SessionPtr> sessions_; ///< the one whose turn it is first
    bool running_ = false;
};

} // namespace tracery::embedded
