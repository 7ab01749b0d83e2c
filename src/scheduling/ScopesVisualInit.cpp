#include <tracery/ScopesVisualInit.h>

#include <boost/make_shared.hpp>

namespace tracery {

using Performance::CooperativeTaskManager::OrderedTaskSession;
using Performance::CooperativeTaskManager::TaskPtr;

boost::shared_ptr<OrderedTaskSession> ScopesVisualInit::sSession;
std::weak_ptr<Host> ScopesVisualInit::sessionHost;

ScopesVisualInit::ScopesVisualInit()
    : classTasks_{boost::make_shared<ScopesVisualInitExtMgrTask>(),
                  boost::make_shared<ScopesVisualInitVarnWidgetsTask>(),
                  boost::make_shared<ScopesVisualInitScopeExtTask>(),
                  boost::make_shared<ScopesVisualInitVELTRAGraphicsPhase1Task>()},
      graphicsPhase2_(boost::make_shared<ScopesVisualInitVELTRAGraphicsPhase2Task>()),
      veltra_(boost::make_shared<ScopesVisualInitVELTRATask>())
{
    Host* host = Host::current();
    if (host == nullptr)
        return;
    if (sSession == nullptr || sSession->isFinished() || sessionHost.lock().get() != host) {
        const auto session = host->tasks().createOrderedSession();
        session->setName("ScopesVisualInitializer");
        sSession = session;
        sessionHost = host->watch();
    }
    try {
        for (const TaskPtr& task : classTasks_)
            sSession->addTask(task);
        sSession->addTask(graphicsPhase2_);
        sSession->addTask(veltra_);
    } catch (...) { // those that are in do nothing
        for (const TaskPtr& task : classTasks_)
            task->setEnabled(false);
        graphicsPhase2_->setEnabled(false);
        veltra_->setEnabled(false);
        throw;
    }
}

bool ScopesVisualInit::done() const { return sSession == nullptr || sessionHost.expired() || sSession->isFinished(); }

void ScopesVisualInit::disableAllTasks()
{
    for (const TaskPtr& task : classTasks_)
        if (task != nullptr)
            task->setEnabled(false);
    finishGraphics();
}

void ScopesVisualInit::disableVELTRAGraphicsTasks()
{
    if (classTasks_.back() != nullptr)
        classTasks_.back()->setEnabled(false);
    finishGraphics();
}

void ScopesVisualInit::removeAllTasks()
{
    for (const TaskPtr& task : classTasks_)
        if (task != nullptr)
            task->remove();
    finishGraphics();
    if (graphicsPhase2_ != nullptr)
        graphicsPhase2_->remove();
    if (veltra_ != nullptr)
        veltra_->remove();
}

void ScopesVisualInit::finishGraphics() const
{
    if (graphicsPhase2_ != nullptr)
        graphicsPhase2_->finishIfBegun();
}

} // namespace tracery
