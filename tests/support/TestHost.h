#pragma once

#include <tracery/host/Error.h>
#include <tracery/host/Host.h>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tracery::test {

using namespace hostobj;
namespace tasking = Performance::CooperativeTaskManager;

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

/// A host in all its roles but the console. It writes down what is registered, looked for, queued and called, each with
/// a blank after it, and lets the test act upon it, or fail. All packages are itself; the classes it has are those that
/// were added, and one that the test names. What a test prepares nothing for is refused; features are never known, and
/// all arrays made in its life must be gone at its end.
struct TestHost : Host,
                  ObjectSystem,
                  COSClass,
                  COSPackage,
                  COSClient,
                  Features,
                  Graphics,
                  Functions,
                  tasking::TaskManager {
    using Refused = std::logic_error;
    struct Session : tasking::OrderedTaskSession {
        explicit Session(TestHost& own) : host(own) {}
        void setName(const std::string& name) override { host.note("session " + name); }
        void insertTask(tasking::TaskPtr task) override { host.note('+' + tasks.emplace_back(task)->getName()); }
        void removeTask(const tasking::TaskPtr& task) override { host.note('-' + task->getName()); }
        bool isFinished() const override { return finished; }
        std::int64_t getMicrosecondsRemaining() const override { return 0; }
        TestHost& host;
        std::vector<tasking::TaskPtr> tasks;
        bool finished = false;
    };
    ~TestHost() override { EXPECT_EQ(getNumberOfLiveArrays(), arraysBefore); }

    void note(const std::string& what) const
    {
        if (whenAsked)
            whenAsked(what);
        log += what + ' ';
    }
    std::string takeLog() { return std::exchange(log, ""); }

    std::size_t arraysBefore = getNumberOfLiveArrays();
    mutable std::string log;
    std::function<void(const std::string& what)> whenAsked;
    COSNameID knownClass;
    std::optional<int> knownLook; ///< the only look for a class that finds it, the first being 0
    mutable int looks = 0;
    bool keepsClasses = false; ///< whatever is taken back
    std::set<std::string> classes, ofPackage, featureNames;
    std::function<HostOutputs(std::string call, HostInputs inputs, std::size_t wanted)> onStaticCall;
    std::function<HostArrayPtr(const COSInterfacePtr&)> parentOf;
    COSInterfacePtr objectOfHandles;
    std::vector<COSInterfacePtr> released;
    boost::shared_ptr<Session> session;

    ObjectSystem& objects() override { return *this; }
    Features& features() override { return *this; }
    Graphics& graphics() override { return *this; }
    Console& console() override { throw Refused("a console"); }
    Functions& functions() override { return *this; }
    TaskManager& tasks() override { return *this; }
    std::vector<std::string> warmUpClasses(const std::string&) override { return {knownClass.text()}; }

    // Classes and packages.
    COSNameID getName() const override { return knownClass; }
    COSClassPtr findClass(const COSNameID& name) const override
    {
        const std::string& dotted = name.text();
        note("class " + dotted);
        const bool known = name == knownClass && knownLook.value_or(looks) == looks;
        ++looks;
        const bool here = known || classes.contains(dotted.substr(dotted.rfind('.') + 1));
        return here ? COSClassPtr(COSClassPtr(), this) : nullptr;
    }
    COSPackage& rootPackage() override { return note("root"), *this; }
    COSPackage* findPackage(const COSNameID& name) override { return note(name.text() + '?'), this; }
    COSPackage& findOrCreatePackage(const COSNameID& name) override { return note(name.text()), *this; }
    void addPackage(std::unique_ptr<const COSPackageInfo> info) override
    {
        note("package " + info->getName().text());
        const std::set<std::string> before = classes;
        info->addClasses(*this);
        for (const std::string& name : classes)
            if (!before.contains(name))
                ofPackage.insert(name);
        note("whole");
    }
    void addClass(std::unique_ptr<const COSClassInfo> info) override
    {
        note(info->getName().text());
        if (!classes.insert(info->getName().text()).second)
            throw Error(errors::DuplicateClass);
    }
    void removeClass(const COSNameID& name) override
    {
        if (!keepsClasses)
            classes.erase(name.text());
    }
    void removeClient(COSClient& who) override
    {
        note(&who == this ? "left" : "left by another");
        for (const std::string& name : ofPackage)
            removeClass(name);
    }

    // Objects.
    COSClient& publicClient() override { return *this; }
    void release(const COSInterfacePtr& object) override
    {
        released.push_back(object);
        throw Refused("a release");
    }
    HostOutputs callMethod(const COSInterfacePtr&, const COSNameID& m, HostInputs, std::size_t) override
    {
        throw Refused(m.text());
    }
    HostOutputs callStaticMethod(const COSNameID& c, const COSNameID& m, HostInputs in, std::size_t wanted) override
    {
        return onStaticCall(c.text() + "." + m.text(), in, wanted);
    }
    bool hasMethod(const COSInterfacePtr&, const COSNameID& m) const override { throw Refused(m.text()); }
    HostArrayPtr getProperty(const COSInterfacePtr& object, const COSNameID& name) override
    {
        return name == "Parent" ? parentOf(object) : throw Refused(name.text());
    }
    COSInterfacePtr objectOfHandle(double) override { return objectOfHandles; }
    COSInterfacePtr wrapPayload(const COSNameID& name, std::unique_ptr<InstancePayload>) override
    {
        throw Refused(name.text());
    }

    // Features, functions, commits and tasks.
    void registerFeature(const std::string& name, int value, FeatureCallback changed, void*) override
    {
        note(name + '=' + std::to_string(value) + (changed != nullptr ? "!" : ""));
        featureNames.insert(name);
    }
    std::optional<int> getFeature(const std::string& name) const override
    {
        return note("feature " + name), std::nullopt;
    }
    HostOutputs call(const std::string&, HostInputs inputs, std::size_t) override
    {
        return note("call" + std::to_string(inputs.size())), HostOutputs();
    }
    std::unique_ptr<HookRegistration> addCommitHook(CommitHook) override
    {
        return note("hook"), std::make_unique<HookRegistration>();
    }
    void commitDatabaseUpdates(int) override {}
    boost::shared_ptr<tasking::OrderedTaskSession> createOrderedSession() override
    {
        return session = boost::make_shared<Session>(*this);
    }
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
