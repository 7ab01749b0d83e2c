#pragma once

#include <tracery/host/Error.h>
#include <tracery/host/Host.h>

/// All that a host is asked for, refused: the examples override what they need. A whole host takes all roles; with
/// hosts/embedded there is one to read.
class BareHost : public tracery::Host, public tracery::hostobj::ObjectSystem, public tracery::hostobj::COSPackage {
public:
    using Name = tracery::hostobj::COSNameID;
    using Object = tracery::hostobj::COSInterfacePtr;
    using Inputs = tracery::hostobj::HostInputs;
    using Outputs = tracery::hostobj::HostOutputs;
    struct Refused : std::logic_error {
        Refused() : std::logic_error("this host does not take that role") {}
    };

    ObjectSystem& objects() override { return *this; }
    tracery::Features& features() override { throw Refused(); }
    tracery::Graphics& graphics() override { throw Refused(); }
    tracery::Console& console() override { throw Refused(); }
    tracery::Functions& functions() override { throw Refused(); }
    tracery::Performance::CooperativeTaskManager::TaskManager& tasks() override { throw Refused(); }

    // The object system: it knows no class, and all packages are the root.
    tracery::hostobj::COSClassPtr findClass(const Name&) const override { return nullptr; }
    COSPackage& rootPackage() override { return *this; }
    void addPackage(std::unique_ptr<const tracery::hostobj::COSPackageInfo> package) override
    {
        package->addClasses(*this);
    }
    COSPackage* findPackage(const Name&) override { return this; }
    tracery::hostobj::COSClient& publicClient() override { throw Refused(); }
    Outputs callMethod(const Object&, const Name&, Inputs, std::size_t) override { throw Refused(); }
    Outputs callStaticMethod(const Name&, const Name&, Inputs, std::size_t) override { throw Refused(); }
    bool hasMethod(const Object&, const Name&) const override { return false; }
    tracery::HostArrayPtr getProperty(const Object&, const Name&) override { throw Refused(); }
    Object objectOfHandle(double) override { return nullptr; }
    Object wrapPayload(const Name&, std::unique_ptr<tracery::hostobj::InstancePayload>) override { throw Refused(); }

    // The package.
    Name getName() const override { return ""; }
    COSPackage& findOrCreatePackage(const Name&) override { return *this; }
    void addClass(std::unique_ptr<const tracery::hostobj::COSClassInfo>) override {}
    void removeClient(tracery::hostobj::COSClient&) override {}
};
