// A module of another make, "demo": publishes demo.Counter, whose objects count themselves, and the function demoSum.
#include <tracery/host/Arrays.h>
#include <tracery/host/Error.h>
#include <tracery/host/Host.h>
#include <tracery/host/Module.h>

using namespace tracery;

namespace {

int counters = 0;

struct Counter : hostobj::InstancePayload {
    Counter() { ++counters; }
    ~Counter() override { --counters; }
    std::shared_ptr<void> as(const std::type_info&) const noexcept override { return nullptr; }
};

struct CounterInfo : hostobj::COSClassInfo {
    hostobj::COSNameID getName() const override { return "Counter"; }
    void defineClass(hostobj::ClassDefinition& c) const override { c.superclass("handle"); }
    std::unique_ptr<hostobj::InstancePayload> createInstance(const HostObjectRef&) const override
    {
        return std::make_unique<Counter>();
    }
};

struct DemoPackage : hostobj::COSPackageInfo {
    hostobj::COSNameID getName() const override { return "demo"; }
    void addClasses(hostobj::COSPackage& package) const override { package.addClass(std::make_unique<CounterInfo>()); }
};

/// Two results: the number of counters and the sum of the inputs, which are numbers.
void demoSum(int numOutputs, HostArray** outputs, int numInputs, const HostArray** inputs)
{
    outputs[0] = makeScalar(counters).release();
    if (numOutputs < 2)
        return;
    outputs[1] = makeScalar(0).release();
    for (int i = 0; i < numInputs; ++i) {
        if (inputs[i] == nullptr)
            throw Error(errors::EmptyInput);
        realValues(outputs[1])[0] += realValues(inputs[i])[0];
    }
}

constexpr ModuleFunction kFunctions[] = {{"demoSum", &demoSum}};
constexpr ModuleFunction kNoBody[] = {{"demoSum", nullptr}};
void attach(Host* host) { Host::attach(*host); }
void detach(Host* host) { Host::detach(*host); }
constexpr ModuleTable kTable{DEMO_SEAM_VERSION, "demo", "1.2.3.4", &attach, &detach, kFunctions, 1};

} // namespace

#define EXPORTED __attribute__((visibility("default")))
// A module NAME whose table is at fault.
#define FAULTY(NAME, ...)                                                                                              \
    EXPORTED const ModuleTable* QueryVTFcnTable_##NAME()                                                               \
    {                                                                                                                  \
        static constexpr ModuleTable table{DEMO_SEAM_VERSION, __VA_ARGS__};                                            \
        return &table;                                                                                                 \
    }                                                                                                                  \
    EXPORTED void VTInitialize_##NAME() {}                                                                             \
    EXPORTED void VTTerminate_##NAME() {}

extern "C" {
FAULTY(renamed, "other", "1.2.3.4", &attach, &detach, kFunctions, 1)
FAULTY(nameless, nullptr, "1.2.3.4", &attach, &detach, kFunctions, 1)
FAULTY(loose, "loose", "1.2.3.4", nullptr, &detach, kFunctions, 1)
FAULTY(bodiless, "bodiless", "1.2.3.4", &attach, &detach, kNoBody, 1)
EXPORTED const ModuleTable* QueryVTFcnTable_demo() { return &kTable; }
EXPORTED void VTInitialize_demo() { hostobj::COSPackage::addPackage(std::make_unique<DemoPackage>()); }
EXPORTED void VTTerminate_demo()
{
    hostobj::COSPackage::getPackageInterface("demo")->removeClient(hostobj::COSGetPublicClient());
}
}
