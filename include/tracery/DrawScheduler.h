#pragma once

#include <tracery/DrawSchedulerTask.h>
#include <tracery/Timer.h>
#include <tracery/export.h>
#include <tracery/host/Host.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace tracery {

/// Decides when the displays of the process redraw: all of them together, at most once an interval unless forced, and
/// only when a line has new data or the host has updates pending. Then the host commits its graphics: the one that the
/// scheduler listens to, else the attached one.
///
/// Until Init a scheduler has no interval and does not listen to commits. A host that is detached or gone is let be;
/// the next Init listens to the host that is attached then. Not destroyed by its own tasks. Main thread only.
class TRACERY_EXPORT DrawScheduler {
public:
    /// Tells the time for DrawTic and DrawToc.
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    /// The process's scheduler, which keeps time with a OneShotTimer. Made by the first call, never replaced, gone at
    /// the end of the process.
    static DrawScheduler* getInstance();
    /// Stops the timer of the process's scheduler and clears it, if it was made. Tasks stay bound; Init arms it again.
    static void shutDown();

    /// A scheduler beside that of the process, with a timer of the caller's.
    explicit DrawScheduler(std::unique_ptr<Timer> timer, Clock clock = std::chrono::steady_clock::now);
    /// Stops the timer.
    ~DrawScheduler();
    DrawScheduler(const DrawScheduler&) = delete;
    DrawScheduler& operator=(const DrawScheduler&) = delete;

    /// Seconds between redraws that Init() takes up, at first kDefaultInterval.
    static double getTimeInterval() noexcept { return timeInterval; }
    /// Any value is kept; the next Init sees whether it can be used. (By reference on purpose: callers pass it so.)
    static void setTimeInterval(double& seconds) noexcept { timeInterval = seconds; }
    /// Seconds.
    static constexpr double kDefaultInterval = 0.05;

    /// Init(getTimeInterval(), 0.5)
    void Init();
    /// Starts a first interval with updates pending, a draw count of 0 and no round running, and listens to the host's
    /// commits.
    /// intervalSeconds  unless > 0, the timer keeps the period it has
    /// second           kept for getSecondSetting
    void Init(double intervalSeconds, double second);
    /// What Init was given; 0 at first.
    double getIntervalMicroseconds() const noexcept { return intervalMicroseconds_; }
    double getSecondSetting() const noexcept { return second_; }
    /// The host whose commits it listens to; null when there is none.
    Host* getCommitHost() const noexcept { return commitHook_ != nullptr ? commitHost_.lock().get() : nullptr; }
    /// Listens to commits no more; the draw count is 0. Tasks stay bound.
    void Clear();

    /// Adds a task to all rounds that begin from now on. Returns its id.
    std::size_t Bind(DrawSchedulerTask task);
    /// Drops a task, also from a round that is running; other ids keep their meaning. With the last one all ids are
    /// forgotten, and the scheduler is cleared. An id that was never given is ignored.
    void Unbind(std::size_t id);
    /// Slots in use: bound tasks, and dropped ones before the last drop.
    std::size_t getNumberOfTasks() const noexcept { return tasks_.size(); }

    /// Says whether a line has data that is not drawn yet. A round clears it when it begins.
    void DataAddedToLine(bool hasData) noexcept { lineHasData_ = hasData; }
    bool LineHasData() const noexcept { return lineHasData_; }
    /// A commit of the host: type 1 says that no updates are pending, every other that some are.
    void CDUHook(int type) noexcept { commitPending_ = type != 1; }

    /// A display has taken in its data. Draws a round when it is time for one, or at once with `force`: calls the tasks
    /// in the order of their ids, lets the host commit (type 0) and starts the next interval. Within a round it draws
    /// nothing and says so on the standard output.
    ///
    /// When a task or a commit throws, the round is over, the next interval starts, and the error is passed on.
    void TaskComplete(bool force);
    /// Rounds begun since Init, Clear or the last Unbind.
    unsigned getDrawCount() const noexcept { return drawCount_; }

    /// Notes the time.
    void DrawTic();
    /// Time since DrawTic in ticks of the clock (nanoseconds).
    double DrawToc() const;

private:
    void listenToCommits();
    void drawRound();

    // Not shared with a second copy of the library, which would destroy it too.
    TRACERY_NO_EXPORT static std::unique_ptr<DrawScheduler> mpInstance;
    static double timeInterval;

    std::vector<std::shared_ptr<const DrawSchedulerTask>> tasks_; ///< by id; null when dropped
    std::size_t roundSize_ = 0; ///< tasks that were bound when the running round began
    double intervalMicroseconds_ = 0;
    double second_ = 0;
    std::unique_ptr<Timer> timer_;
    Clock clock_;
    unsigned drawCount_ = 0;
    std::chrono::steady_clock::time_point drawStart_;
    bool inCallback_ = false;
    bool commitPending_ = false;
    bool lineHasData_ = false;
    std::weak_ptr<Host> commitHost_; ///< the one that gave the hook
    std::unique_ptr<Graphics::HookRegistration> commitHook_;
};

} // namespace tracery
