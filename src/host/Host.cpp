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
} // namespace Performance::CooperativeTaskManager

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
