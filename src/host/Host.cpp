#include <tracery/host/Error.h>
#include <tracery/host/Host.h>
#include <tracery/host/HostObject.h>

namespace tracery {

namespace {
Host* attachedHost = nullptr;
} // namespace

hostobj::COSInterface::~COSInterface() = default;
hostobj::ObjectSystem::~ObjectSystem() = default;
Host::~Host() = default;

Host* Host::current() noexcept { return attachedHost; }

HostScope::HostScope(Host& host) noexcept : previous_(attachedHost) { attachedHost = &host; }
HostScope::~HostScope() { attachedHost = previous_; }

namespace {
std::string joined(const ErrorKind& kind) { return std::string(kind.component) + ':' + kind.name; }
} // namespace

Error::Error(const ErrorKind& kind) : Error(kind, kind.text) {}
Error::Error(const ErrorKind& kind, const std::string& detail)
    : std::runtime_error(joined(kind) + ": " + detail), kind_(kind)
{}
Error::~Error() = default;
std::string Error::identifier() const { return joined(kind_); }

} // namespace tracery
