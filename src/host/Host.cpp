#include <tracery/host/Error.h>
#include <tracery/host/Host.h>

#include <utility>

namespace tracery {

namespace {
HostScope* innermostScope = nullptr;
Host* attachedHost = nullptr; ///< the last one attached for longer; the others follow by attachedBefore_
} // namespace

Host::Host() : self_(this, [](Host*) {}) {}
Host::~Host()
{
    unlink();
    for (HostScope* scope = innermostScope; scope != nullptr; scope = scope->outer_)
        if (scope->host_ == this)
            scope->host_ = nullptr;
}
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
    ++host.attachments_;
    host.unlink(); // the last one attached goes first, also when it was attached before
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

bool Host::isAttached() const noexcept
{
    if (attachments_ > 0)
        return true;
    for (const HostScope* scope = innermostScope; scope != nullptr; scope = scope->outer_)
        if (scope->host_ == this)
            return true;
    return false;
}

Host* Host::current() noexcept
{
    for (const HostScope* scope = innermostScope; scope != nullptr; scope = scope->outer_)
        if (scope->host_ != nullptr)
            return scope->host_;
    return attachedHost;
}

Host& Host::require()
{
    if (Host* host = current())
        return *host;
    throw Error(errors::NoHost);
}

HostScope::HostScope(Host& host) noexcept : host_(&host), outer_(std::exchange(innermostScope, this)) {}
HostScope::~HostScope() { innermostScope = outer_; }

void svRegisterFeature(const char* name, int defaultValue, FeatureCallback changed, void* userData)
{
    if (Host* host = Host::current())
        host->features().registerFeature(name, defaultValue, changed, userData);
}

} // namespace tracery
