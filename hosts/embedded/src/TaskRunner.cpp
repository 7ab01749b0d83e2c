#include "TaskRunner.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <utility>

namespace tracery::embedded {

using Performance::CooperativeTaskManager::OrderedTaskSession;
using Performance::CooperativeTaskManager::TaskPtr;

namespace {

/// The time that is left of a slice.
class Slice {
public:
    Slice(TaskRunner::Clock clock, std::chrono::microseconds length)
        : clock_(std::move(clock)), begin_(now()), length_(std::max(length, std::chrono::microseconds(0)))
    {}
    std::int64_t remaining() const
    {
        const auto passed = std::chrono::duration_cast<std::chrono::microseconds>(now() - begin_);
        return (length_ - std::clamp(passed, std::chrono::microseconds(0), length_)).count();
    }

private:
    std::chrono::steady_clock::time_point now() const { return clock_ ? clock_() : std::chrono::steady_clock::now(); }

    TaskRunner::Clock clock_;
    std::chrono::steady_clock::time_point begin_;
    std::chrono::microseconds length_;
};

/// Sets a variable and sets it back.
template <class T>
class Setting {
public:
    Setting(T& variable, T value) : variable_(variable), before_(std::exchange(variable, value)) {}
    ~Setting() { variable_ = before_; }
    Setting(const Setting&) = delete;
    Setting& operator=(const Setting&) = delete;

private:
    T& variable_;
    T before_;
};

} // namespace

class TaskRunner::Session final : public OrderedTaskSession {
public:
    void setName(const std::string& name) override { name_ = name; }
    void removeTask(const TaskPtr& task) override
    {
        const TaskPtr held = task; // what is passed may be the only reference, inside the list
        std::erase(tasks_, held);
    }
    bool isFinished() const override { return next() == nullptr; }
    std::int64_t getMicrosecondsRemaining() const override { return slice_ != nullptr ? slice_->remaining() : 0; }

    /// Runs tasks in order until one has more to do or the time is over.
    void run(const Slice& slice)
    {
        const Setting<const Slice*> setting(slice_, &slice);
        while (slice.remaining() > 0) {
            const TaskPtr task = next();
            if (task == nullptr)
                return;
            bool finished = false;
            try {
                finished = task->run(*this);
            } catch (...) {
                removeTask(task);
                throw;
            }
            if (!finished)
                return;
            removeTask(task);
        }
    }

protected:
    void insertTask(TaskPtr task) override
    {
        if (std::ranges::find(tasks_, task) == tasks_.end())
            tasks_.push_back(std::move(task));
    }

private:
    TaskPtr next() const
    {
        const auto task = std::ranges::find_if(tasks_, [](const TaskPtr& t) { return t->isEnabled(); });
        return task != tasks_.end() ? *task : nullptr;
    }

    std::string name_;
    std::vector<TaskPtr> tasks_;
    const Slice* slice_ = nullptr; ///< of the run in progress
};

boost::shared_ptr<OrderedTaskSession> TaskRunner::createOrderedSession()
{
    sessions_.push_back(boost::make_shared<Session>());
    return sessions_.back();
}

bool TaskRunner::hasWork() const
{
    return std::ranges::any_of(sessions_, [](const SessionPtr& session) { return !session->isFinished(); });
}

bool TaskRunner::run(std::chrono::microseconds length)
{
    if (running_)
        return hasWork();
    const Setting<bool> setting(running_, true);
    const Slice slice(clock_, length);
    const std::size_t present = sessions_.size();
    for (std::size_t i = 0; i < present && slice.remaining() > 0; ++i) {
        // To the back before it runs, so that the next one begins next time, also after an error.
        std::rotate(sessions_.begin(), sessions_.begin() + 1, sessions_.end());
        const SessionPtr session = sessions_.back();
        session->run(slice);
    }
    // Finished sessions that nobody can add tasks to any more go; outside the list, as their tasks may look at it.
    const auto kept = std::stable_partition(sessions_.begin(), sessions_.end(), [](const SessionPtr& session) {
        return session.use_count() > 1 || !session->isFinished();
    });
    const std::vector<SessionPtr> gone(std::make_move_iterator(kept), std::make_move_iterator(sessions_.end()));
    sessions_.erase(kept, sessions_.end());
    return hasWork();
}

} // namespace tracery::embedded
