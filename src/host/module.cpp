#include "bindings/classes.h"
#include "host/guarded.h"

#include <tracery/DrawScheduler.h>
#include <tracery/host/Host.h>
#include <tracery/host/Module.h>

#include <algorithm>
#include <list>
#include <memory>

namespace tracery {

namespace {

constexpr const char* kUsesSLA = "TimeScopeBlockUsesSLA";
bool usesSLA = true;

void setUsesSLA(int value, void*) { usesSLA = value != 0; }

/// What has been done for one host.
struct Registration {
    std::weak_ptr<Host> host;
    bool package = false;
    bool baseClasses = false;
    bool features = false;
    bool terminated = false;
};

Registration& registrationOf(Host& host)
{
    // Never destroyed: a host may go later than the variables of this library.
    static std::list<Registration>& all = *new std::list<Registration>;
    std::erase_if(all, [](const Registration& r) { return r.host.expired(); });
    const auto known = std::ranges::find(all, &host, [](const Registration& r) { return r.host.lock().get(); });
    return known != all.end() ? *known : all.emplace_back(Registration{host.watch()});
}

template <class Step>
void once(bool& done, Step&& step)
{
    if (done)
        return;
    step();
    done = true;
}

void registerFeatures(Features& features)
{
    svRegisterFeature(kUsesSLA, 1, setUsesSLA, nullptr);
    setUsesSLA(features.getFeature(kUsesSLA).value_or(1), nullptr);
    svRegisterFeature("UseTaskMgrToLaunchScope", 0, nullptr, nullptr);
    svRegisterFeature("FlushTaskMgrOnUELoadForTests", 0, nullptr, nullptr);
}

void initialize(Host& host)
{
    Registration& done = registrationOf(host);
    once(done.package, [&] { hostobj::COSPackage::addPackage(binding::traceryPackage()); });
    once(done.baseClasses, [&] { binding::addBaseClasses(host.objects()); });
    once(done.features, [&] {
        registerFeatures(host.features());
        DrawScheduler::getInstance()->Init();
    });
}

void terminate(Host& host)
{
    Registration& done = registrationOf(host);
    if (!done.package || done.terminated)
        return;
    done.terminated = true;
    if (hostobj::COSPackage* package = hostobj::COSPackage::getPackageInterface("tracery"))
        package->removeClient(hostobj::COSGetPublicClient());
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
        binding::guarded([&] { initialize(*host); });
}

void VTTerminate_tracery()
{
    binding::guarded([] {
        DrawScheduler::shutDown();
        if (Host* host = Host::current())
            terminate(*host);
    });
}

const ModuleTable* QueryVTFcnTable_tracery() { return &kTable; }

void SetScopeRefreshRateImpl(int, HostArray**, int numInputs, const HostArray** inputs)
{
    binding::guarded([&] {
        const HostArray* rate = numInputs == 1 && inputs != nullptr ? inputs[0] : nullptr;
        const bool usable = rate != nullptr && isDouble(rate) && !isEmpty(rate) && getRealData(rate) != nullptr;
        double seconds = usable ? *getRealData(rate) : DrawScheduler::kDefaultInterval;
        DrawScheduler::setTimeInterval(seconds);
        DrawScheduler::getInstance()->Init();
    });
}
