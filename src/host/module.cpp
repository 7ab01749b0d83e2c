#include "host/guarded.h"

#include <tracery/DrawScheduler.h>
#include <tracery/Kernels.h>
#include <tracery/host/Host.h>
#include <tracery/host/Module.h>
#include <tracery/host/Publish.h>

#include <algorithm>
#include <list>
#include <memory>
#include <utility>

namespace tracery {

namespace {

constexpr const char* kUsesSLA = "TimeScopeBlockUsesSLA";
bool usesSLA = true;

void setUsesSLA(int value, void*) { usesSLA = value != 0; }

/// What has been done for one host.
struct Registration {
    std::weak_ptr<Host> host;
    bool initializing = false;
    bool classes = false;
    bool features = false;
    bool terminated = false;
};

/// Those of the hosts that live, in the order in which they came.
std::list<Registration>& registrations()
{
    // Never destroyed: a host may go later than the variables of this library.
    static std::list<Registration>& all = *new std::list<Registration>;
    std::erase_if(all, [](const Registration& r) { return r.host.expired(); });
    return all;
}

Registration& registrationOf(Host& host)
{
    std::list<Registration>& all = registrations();
    const auto known = std::ranges::find(all, &host, [](const Registration& r) { return r.host.lock().get(); });
    return known != all.end() ? *known : all.emplace_back(Registration{host.watch()});
}

/// A step that fails is to be done again; one that comes back here while it runs is not.
template <class Step>
void once(bool& done, Step&& step)
{
    if (std::exchange(done, true))
        return;
    try {
        step();
    } catch (...) {
        done = false;
        throw;
    }
}

void giveUpPackage()
{
    if (hostobj::COSPackage* package = hostobj::COSPackage::getPackageInterface("tracery"))
        package->removeClient(hostobj::COSGetPublicClient());
}

void registerFeatures()
{
    svRegisterFeature(kUsesSLA, 1, setUsesSLA, nullptr);
    setUsesSLA(Host::require().features().getFeature(kUsesSLA).value_or(1), nullptr);
    svRegisterFeature("UseTaskMgrToLaunchScope", 0, nullptr, nullptr);
    svRegisterFeature("FlushTaskMgrOnUELoadForTests", 0, nullptr, nullptr);
}

void initialize(Host& host)
{
    Registration& done = registrationOf(host);
    if (done.initializing)
        return;
    once(done.initializing, [&] {
        once(done.classes, [&] { publishClasses(host.objects()); });
        once(done.features, [&] {
            registerFeatures();
            DrawScheduler::getInstance()->Init();
        });
    });
    done.initializing = false;
}

/// The draw scheduler goes on with the host that came last of those that use the module; without one it is shut down.
/// One that listens to a host that stays is let be.
void releaseScheduler(const Host* leaving)
{
    const Host* listened = DrawScheduler::getInstance()->getCommitHost();
    if (listened != nullptr && listened != leaving)
        return;
    const auto& all = registrations();
    const auto next = std::find_if(all.rbegin(), all.rend(), [](const auto& r) { return r.features && !r.terminated; });
    if (next == all.rend())
        return DrawScheduler::shutDown();
    const HostScope attached(*next->host.lock());
    if (listened != nullptr)
        DrawScheduler::getInstance()->Init();
}

void terminate(Host* host)
{
    if (host == nullptr)
        return releaseScheduler(nullptr);
    Registration& done = registrationOf(*host);
    if (!done.classes)
        return;
    once(done.terminated, [&] {
        releaseScheduler(host);
        giveUpPackage();
    });
}

void attach(Host* host) { Host::attach(*host); }
void detach(Host* host) { Host::detach(*host); }

constexpr ModuleFunction kFunctions[] = {{"SetScopeRefreshRateImpl", &SetScopeRefreshRateImpl}};
constexpr ModuleTable kTable{kSeamVersion, "tracery",  TRACERY_VERSION_TEXT, &attach,
                             &detach,      kFunctions, std::size(kFunctions)};

} // namespace

bool timeScopeBlockUsesSLA() noexcept { return usesSLA; }

} // namespace tracery

using namespace tracery;

const char* const tracery_version = TRACERY_VERSION_TEXT;
const char* const tracery_build_date = TRACERY_BUILD_DATE;
const char* const tracery_relative_path = "bin\\win64\\scopes";

void VTInitialize_tracery()
{
    if (Host* host = Host::current())
        binding::guarded([&] {
            kernelsInUse(); // refuses what the environment asks for and is not known
            initialize(*host);
        });
}

void VTTerminate_tracery()
{
    binding::guarded([] { terminate(Host::current()); });
}

const ModuleTable* QueryVTFcnTable_tracery() { return &kTable; }

void SetScopeRefreshRateImpl(int, HostArray**, int numInputs, const HostArray** inputs)
{
    binding::guarded([&] {
        const HostArray* rate = numInputs == 1 && inputs != nullptr ? inputs[0] : nullptr;
        const bool usable = rate != nullptr && isDouble(rate) && !isEmpty(rate) && getRealData(rate) != nullptr;
        double seconds = usable ? *getRealData(rate) : DrawScheduler::kDefaultInterval;
        double before = DrawScheduler::getTimeInterval();
        DrawScheduler::setTimeInterval(seconds);
        try {
            DrawScheduler::getInstance()->Init();
        } catch (...) {
            DrawScheduler::setTimeInterval(before);
            throw;
        }
    });
}
