#pragma once

#include <tracery/export.h>
#include <tracery/host/Host.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace tracery {

/// A warm-up task: makes the host load what a first scope will need, a step at a time until the slice is used up. The
/// host is the one that is attached at construction; it is attached again while it loads. Without it, and with its
/// feature "FlushTaskMgrOnUELoadForTests", the task is finished at once. Nothing is raised when a step fails.
class TRACERY_EXPORT ScopesVisualInitTask : public Performance::CooperativeTaskManager::Task {
public:
    /// Takes steps until the slice is used up.
    bool run(Performance::CooperativeTaskManager::OrderedTaskSession& session) override;
    /// How many there are in all, and how many are done, failed ones included.
    std::size_t getNumberOfSteps() const noexcept { return steps_; }
    std::size_t getStepsDone() const noexcept { return done_; }

protected:
    /// A task of this name for the attached host.
    ScopesVisualInitTask(const char* name, std::size_t steps);
    /// Loads what belongs to step `index`, counted from 0.
    virtual void runStep(Host& host, std::size_t index) = 0;
    /// Null when it is gone, or there never was one.
    Host* getHost() const noexcept { return host_.lock().get(); }
    /// For tasks that learn at construction how many they have.
    void setNumberOfSteps(std::size_t steps) noexcept { steps_ = steps; }

private:
    std::weak_ptr<Host> host_;
    std::size_t steps_;
    std::size_t done_ = 0;
};

/// Loads the classes that the host lists for the task's name. A class that cannot be loaded is
/// named on the standard output, and so is, on purpose, every later one of the task.
class TRACERY_EXPORT ScopesVisualInitClassTask : public ScopesVisualInitTask {
protected:
    /// A step a class.
    explicit ScopesVisualInitClassTask(const char* name);
    void runStep(Host& host, std::size_t index) override;

private:
    std::vector<std::string> classNames_;
    bool success_ = true;
};

/// Calls a function of the host, without arguments and results, once a step.
class TRACERY_EXPORT ScopesVisualInitCountingTask : public ScopesVisualInitTask {
public:
    /// Once some of the calls are made, but not all: calls the function with the logical value true, so that the host
    /// can finish what was begun.
    void finishIfBegun() const;

protected:
    /// A step a call.
    ScopesVisualInitCountingTask(const char* name, const char* function, std::size_t calls);
    void runStep(Host& host, std::size_t index) override;

private:
    const char* function_;
};

// ---- The tasks of ScopesVisualInit, in their order

/// Classes of the extension framework.
struct TRACERY_EXPORT ScopesVisualInitExtMgrTask : ScopesVisualInitClassTask {
    ScopesVisualInitExtMgrTask() : ScopesVisualInitClassTask("ExtMgr") {}
};
/// Widgets.
struct TRACERY_EXPORT ScopesVisualInitVarnWidgetsTask : ScopesVisualInitClassTask {
    ScopesVisualInitVarnWidgetsTask() : ScopesVisualInitClassTask("VarnWidgets") {}
};
/// The scopes' own classes.
struct TRACERY_EXPORT ScopesVisualInitScopeExtTask : ScopesVisualInitClassTask {
    ScopesVisualInitScopeExtTask() : ScopesVisualInitClassTask("ScopeExt") {}
};
/// Graphics classes.
struct TRACERY_EXPORT ScopesVisualInitVELTRAGraphicsPhase1Task : ScopesVisualInitClassTask {
    ScopesVisualInitVELTRAGraphicsPhase1Task() : ScopesVisualInitClassTask("ScopesGfx2Phase1") {}
};
/// The graphics themselves.
struct TRACERY_EXPORT ScopesVisualInitVELTRAGraphicsPhase2Task : ScopesVisualInitCountingTask {
    ScopesVisualInitVELTRAGraphicsPhase2Task()
        : ScopesVisualInitCountingTask("ScopesVELTRAGraphics2Phase2", "Brevant.scopes.ScopeInitVELTRAGraphics", 7)
    {}
};
/// The rest.
struct TRACERY_EXPORT ScopesVisualInitVELTRATask : ScopesVisualInitCountingTask {
    ScopesVisualInitVELTRATask()
        : ScopesVisualInitCountingTask("ScopesVELTRATasks", "Brevant.scopes.ScopeInitVELTRA", 4)
    {}
};

} // namespace tracery
