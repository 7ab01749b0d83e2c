#include <tracery/ScopesVisualInitTask.h>
#include <tracery/host/Host.h>
#include <tracery/host/HostArray.h>

#include <iostream>

namespace tracery {

namespace {

bool isFlushing(Host& host) { return host.features().getFeature("FlushTaskMgrOnUELoadForTests").value_or(0) != 0; }

/// Whether the work was done. What the host reports is dropped: it shows again where what is missing is needed.
template <class Work>
bool succeeds(Work&& work)
{
    try {
        return work();
    } catch (...) {
        return false;
    }
}

void callHost(Host& host, const char* function, hostobj::HostInputs inputs)
{
    const HostScope attached(host);
    succeeds([&] {
        host.functions().call(function, inputs, 0);
        return true;
    });
}

} // namespace

ScopesVisualInitTask::ScopesVisualInitTask(const char* name, std::size_t steps) : steps_(steps)
{
    setName(name);
    if (Host* host = Host::current())
        host_ = host->watch();
}

bool ScopesVisualInitTask::run(Performance::CooperativeTaskManager::OrderedTaskSession& session)
{
    Host* host = getHost();
    if (host == nullptr || isFlushing(*host))
        return true;
    while (done_ < steps_) {
        runStep(*host, done_++);
        if (done_ < steps_ && session.getMicrosecondsRemaining() <= 0)
            return false;
    }
    return true;
}

ScopesVisualInitClassTask::ScopesVisualInitClassTask(const char* name) : ScopesVisualInitTask(name, 0)
{
    if (Host* host = getHost())
        classNames_ = host->warmUpClasses(name);
    setNumberOfSteps(classNames_.size());
}

void ScopesVisualInitClassTask::runStep(Host& host, std::size_t index)
{
    const HostScope attached(host);
    const std::string& name = classNames_[index];
    HostArrayPtr array;
    const bool made = succeeds([&] { return array.reset(createClassArray(name.c_str())), array != nullptr; });
    const bool known = succeeds([&] { return host.objects().findClass(name) != nullptr; });
    success_ = success_ && made && known;
    if (!success_)
        std::cout << name << " failed to load" << std::endl;
}

ScopesVisualInitCountingTask::ScopesVisualInitCountingTask(const char* name, const char* function, std::size_t calls)
    : ScopesVisualInitTask(name, calls), function_(function)
{}

void ScopesVisualInitCountingTask::runStep(Host& host, std::size_t) { callHost(host, function_, {}); }

void ScopesVisualInitCountingTask::finishIfBegun() const
{
    Host* host = getHost();
    if (host == nullptr || getStepsDone() == 0 || getStepsDone() >= getNumberOfSteps())
        return;
    const HostArrayPtr yes(createLogicalScalar(true));
    const HostArray* inputs[] = {yes.get()};
    callHost(*host, function_, inputs);
}

} // namespace tracery
