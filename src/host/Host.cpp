#include <tracery/host/Error.h>
#include <tracery/host/Host.h>

namespace tracery {

namespace {
Host* attachedHost = nullptr;
} // namespace

Host::Host() : self_(this, [](Host*) {}) {}
Host::~Host() = default;
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

Host* Host::current() noexcept { return attachedHost; }

Host& Host::require()
{
    if (attachedHost == nullptr)
        throw Error(errors::NoHost);
    return *attachedHost;
}

HostScope::HostScope(Host& host) noexcept : previous_(attachedHost) { attachedHost = &host; }
HostScope::~HostScope() { attachedHost = previous_; }

void svRegisterFeature(const char* name, int defaultValue, FeatureCallback changed, void* userData)
{
    if (Host* host = Host::current())
        host->features().registerFeature(name, defaultValue, changed, userData);
}

} // namespace tracery
