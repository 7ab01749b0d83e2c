#pragma once

#include "support/FakeHost.h"

#include <boost/make_shared.hpp>

#include <optional>
#include <utility>

namespace tracery::test {

/// Writes down what is registered, queued and called, each with a blank after it. The class is known at one look
/// only, features never; commits do nothing.
struct RecordingHost : FakeHost,
                       Features,
                       Graphics,
                       Functions,
                       COSPackage,
                       Performance::CooperativeTaskManager::TaskManager {
    struct Session : Performance::CooperativeTaskManager::OrderedTaskSession {
        using Task = Performance::CooperativeTaskManager::TaskPtr;
        explicit Session(RecordingHost& own) : host(own) {}
        void setName(const std::string& name) override { host.note("session " + name); }
        void insertTask(Task task) override
        {
            host.note('+' + tasks.emplace_back(task)->getName());
            host.whileQueueing();
        }
        void removeTask(const Task& task) override { host.note('-' + task->getName()); }
        bool isFinished() const override { return finished; }
        std::int64_t getMicrosecondsRemaining() const override { return 0; }
        RecordingHost& host;
        std::vector<Task> tasks;
        bool finished = false;
    };

    Features& features() override { return *this; }
    Graphics& graphics() override { return *this; }
    Functions& functions() override { return *this; }
    COSPackage& rootPackage() override { return *this; }
    TaskManager& tasks() override { return *this; }
    COSClient& publicClient() override { return client; }
    std::vector<std::string> warmUpClasses(const std::string&) override { return {knownClass.text()}; }
    COSClassPtr findClass(const COSNameID& name) const override
    {
        return looks++ == knownLook ? FakeHost::findClass(name) : nullptr;
    }

    COSNameID getName() const override { return ""; }
    COSPackage* findPackage(const COSNameID& name) override { return note(name.text() + '?'), this; }
    COSPackage& findOrCreatePackage(const COSNameID& name) override { return note(name.text()), *this; }
    void addPackage(std::unique_ptr<const COSPackageInfo> info) override
    {
        note("package " + info->getName().text());
        whileAdding();
    }
    void addClass(std::unique_ptr<const COSClassInfo> info) override { note(info->getName().text()); }
    void removeClient(COSClient& who) override { note(&who == &client ? "left" : "left by another"); }
    void registerFeature(const std::string& name, int value, FeatureCallback changed, void*) override
    {
        note(name + '=' + std::to_string(value) + (changed != nullptr ? "!" : ""));
    }
    std::optional<int> getFeature(const std::string&) const override { return std::nullopt; }
    std::unique_ptr<HookRegistration> addCommitHook(CommitHook) override
    {
        return note("hook"), std::make_unique<HookRegistration>();
    }
    void commitDatabaseUpdates(int) override {}
    HostOutputs call(const std::string&, HostInputs inputs, std::size_t) override
    {
        return note("call" + std::to_string(inputs.size())), HostOutputs();
    }
    boost::shared_ptr<Performance::CooperativeTaskManager::OrderedTaskSession> createOrderedSession() override
    {
        return session = boost::make_shared<Session>(*this);
    }

    void note(const std::string& what) { log += what + ' '; }
    std::string takeLog() { return std::exchange(log, ""); }
    std::string log;
    std::function<void()> whileAdding = [] {}, whileQueueing = [] {};
    COSClient client;
    boost::shared_ptr<Session> session;
    int knownLook = 0;
    mutable int looks = 0;
};

} // namespace tracery::test
