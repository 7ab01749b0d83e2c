#pragma once

#include <tracery/host/Host.h>

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace tracery::test {

using namespace hostobj;

/// A host object around a library object of class T; it is its own payload.
template <class T>
struct FakeObject : COSInterface, InstancePayload, std::enable_shared_from_this<FakeObject<T>> {
    const char* className() const override { return "fake.Object"; }
    bool isA(const COSNameID& name) const override { return name == className(); }
    std::shared_ptr<InstancePayload> payload() const override
    {
        return std::const_pointer_cast<FakeObject>(this->shared_from_this());
    }
    std::shared_ptr<void> as(const std::type_info& t) const noexcept override
    {
        return t == typeid(T) ? object : nullptr;
    }
    std::shared_ptr<T> object = std::make_shared<T>();
};

/// Hands static calls and "Parent" properties to the test; whatever else it is asked for, it refuses. All arrays made
/// in its life must be gone at its end. The class it knows is itself.
struct FakeHost : Host, ObjectSystem, COSClass {
    using Refused = std::logic_error;
    ~FakeHost() override { EXPECT_EQ(getNumberOfLiveArrays(), arraysBefore); }

    std::size_t arraysBefore = getNumberOfLiveArrays();
    COSNameID knownClass;
    std::function<HostOutputs(std::string call, HostInputs inputs, std::size_t wanted)> onStaticCall;
    std::function<HostArrayPtr(const COSInterfacePtr&)> parentOf;
    COSInterfacePtr objectOfHandles;

    COSNameID getName() const override { return knownClass; }
    COSClassPtr findClass(const COSNameID& name) const override
    {
        return name == knownClass ? COSClassPtr(COSClassPtr(), this) : nullptr;
    }
    HostOutputs callStaticMethod(const COSNameID& c, const COSNameID& m, HostInputs in, std::size_t wanted) override
    {
        return onStaticCall(c.text() + "." + m.text(), in, wanted);
    }
    HostArrayPtr getProperty(const COSInterfacePtr& object, const COSNameID& name) override
    {
        return name == "Parent" ? parentOf(object) : throw Refused(name.text());
    }
    COSInterfacePtr objectOfHandle(double) override { return objectOfHandles; }
    ObjectSystem& objects() override { return *this; }

    Features& features() override { throw Refused(""); }
    Graphics& graphics() override { throw Refused(""); }
    Console& console() override { throw Refused(""); }
    Functions& functions() override { throw Refused(""); }
    Performance::CooperativeTaskManager::TaskManager& tasks() override { throw Refused(""); }
    COSPackage& rootPackage() override { throw Refused(""); }
    void addPackage(std::unique_ptr<const COSPackageInfo>) override { throw Refused(""); }
    COSPackage* findPackage(const COSNameID&) override { throw Refused(""); }
    COSClient& publicClient() override { throw Refused(""); }
    bool hasMethod(const COSInterfacePtr&, const COSNameID&) const override { throw Refused(""); }
    HostOutputs callMethod(const COSInterfacePtr&, const COSNameID&, HostInputs, std::size_t) override
    {
        throw Refused("");
    }
    COSInterfacePtr wrapPayload(const COSNameID&, std::unique_ptr<InstancePayload>) override { throw Refused(""); }
};

/// An object array of these objects.
inline HostArrayPtr objectArray(const std::vector<HostObjectRef>& objects)
{
    const std::uint64_t extents[] = {1, objects.size()};
    HostArrayPtr array(createObjectArray("fake.Object", 2, extents));
    for (std::size_t i = 0; i < objects.size(); ++i)
        omSetArrayElement(array.get(), i, objects[i]);
    return array;
}

} // namespace tracery::test
