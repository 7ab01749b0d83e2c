#include <tracery/host/Error.h>
#include <tracery/host/Host.h>

#include <utility>

namespace tracery {

namespace {
Host* scopedHost = nullptr;   ///< of the innermost scope
Host* attachedHost = nullptr; ///< the last one attached for longer; the others follow by attachedBefore_
} // namespace

Host::Host() : self_(this, [](Host*) {}) {}
Host::~Host() { unlink(); }
Features::~Features() = default;
Graphics::~Graphics() = default;
Graphics::HookRegistration::~HookRegistration() = default;
Console::~Console() = default;
Functions::~Functions() = default;

namespace Performance::CooperativeTaskManager {
Task::~Task() = default;
OrderedTaskSession::~OrderedTaskSession() = default;
TaskManager::~TaskManager() = default;

void Task::remove()
{
    if (const auto session = session_.lock())
        session->removeTask(shared_from_this());
}

void OrderedTaskSession::addTask(TaskPtr task)
{
    if (task == nullptr)
        return;
    insertTask(task);
    task->session_ = weak_from_this();
}
} // namespace Performance::CooperativeTaskManager

std::vector<std::string> Host::warmUpClasses(const std::string&) { return {}; }

void Host::attach(Host& host) noexcept
{
    if (host.attachments_++ == 0)
        host.attachedBefore_ = std::exchange(attachedHost, &host);
}

void Host::detach(Host& host) noexcept
{
    if (host.attachments_ > 0 && --host.attachments_ == 0)
        host.unlink();
}

void Host::unlink() noexcept
{
    for (Host** link = &attachedHost; *link != nullptr; link = &(*link)->attachedBefore_)
        if (*link == this) {
            *link = attachedBefore_;
            return;
        }
}

Host* Host::current() noexcept { return scopedHost != nullptr ? scopedHost : attachedHost; }

Host& Host::require()
{
    if (Host* host = current())
        return *host;
    throw Error(errors::NoHost);
}

HostScope::HostScope(Host& host) noexcept : previous_(std::exchange(scopedHost, &host)) {}
HostScope::~HostScope() { scopedHost = previous_; }

void svRegisterFeature(const char* name, int defaultValue, FeatureCallback changed, void* userData)
{
    if (Host* host = Host::current())
        host->features().registerFeature(name, defaultValue, changed, userData);
}

} // namespace tracery
