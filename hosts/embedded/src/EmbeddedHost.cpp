#include "AnimatorClass.h"
#include "CommitHooks.h"
#include "ConsoleText.h"
#include "FeatureTable.h"
#include "FunctionTable.h"
#include "Object.h"
#include "Objects.h"
#include "TaskRunner.h"

#include <tracery/embedded/EmbeddedHost.h>

#include <algorithm>
#include <map>
#include <utility>

namespace tracery::embedded {

class EmbeddedHost::Parts {
public:
    Parts()
    {
        objects.rootPackage()
            .findOrCreatePackage("veltra.graphics.animation")
            .addClass(std::make_unique<AnimatorClassInfo>(animator));
    }

    std::map<std::string, std::vector<std::string>> warmUpClasses{
        {"ScopeExt",
         {"veltrashared.scopes.visual.AbstractLinePlotter", "veltrashared.scopes.visual.AbstractFramePlotter",
          "veltrashared.scopes.visual.AbstractTimeDomainPlotter"}},
        {"ScopesGfx2Phase1", {LineAnimator::kClassName}}};
    FeatureTable features;
    CommitHooks graphics;
    ConsoleText console;
    FunctionTable functions;
    TaskRunner tasks;
    Objects objects;
    LineAnimator animator{objects.table()};
    std::vector<std::unique_ptr<Module>> modules;
};

EmbeddedHost::EmbeddedHost() : parts_(std::make_unique<Parts>()) {}

EmbeddedHost::~EmbeddedHost()
{
    // While all parts are there: what the objects leave may look around.
    const HostScope scope(*this);
    for (auto module = parts_->modules.rbegin(); module != parts_->modules.rend(); ++module)
        try {
            (*module)->terminate();
        } catch (...) {
        }
    parts_->objects.close();
    while (!parts_->modules.empty())
        parts_->modules.pop_back();
}

hostobj::ObjectSystem& EmbeddedHost::objects() { return parts_->objects; }
Features& EmbeddedHost::features() { return parts_->features; }
Graphics& EmbeddedHost::graphics() { return parts_->graphics; }
Console& EmbeddedHost::console() { return parts_->console; }
Functions& EmbeddedHost::functions() { return parts_->functions; }
Performance::CooperativeTaskManager::TaskManager& EmbeddedHost::tasks() { return parts_->tasks; }

std::vector<std::string> EmbeddedHost::warmUpClasses(const std::string& taskName)
{
    const auto entry = parts_->warmUpClasses.find(taskName);
    return entry != parts_->warmUpClasses.end() ? entry->second : std::vector<std::string>();
}

void EmbeddedHost::setWarmUpClasses(const std::string& taskName, std::vector<std::string> dottedNames)
{
    parts_->warmUpClasses[taskName] = std::move(dottedNames);
}

Module& EmbeddedHost::loadModule(const std::string& path, const std::string& name)
{
    if (findModule(name) != nullptr)
        throw Error(errors::DuplicateModule, path + ": the host has a module " + name + " already");
    std::unique_ptr<Module> module(new Module(*this, parts_->functions, path, name));
    parts_->modules.push_back(std::move(module));
    return *parts_->modules.back();
}

Module* EmbeddedHost::findModule(const std::string& name) const
{
    const auto found = std::ranges::find(parts_->modules, name, [](const auto& module) { return module->getName(); });
    return found != parts_->modules.end() ? found->get() : nullptr;
}

void EmbeddedHost::defineClass(HostClass definition) { parts_->objects.define(std::move(definition)); }
std::vector<ClassListing> EmbeddedHost::listClasses() const { return parts_->objects.list(); }

HostObjectRef EmbeddedHost::construct(const std::string& dottedClass, HostInputs inputs)
{
    const HostScope scope(*this);
    return parts_->objects.construct(dottedClass, inputs);
}

void EmbeddedHost::deleteObject(const HostObjectRef& object)
{
    const HostScope scope(*this);
    parts_->objects.remove(object);
}

bool EmbeddedHost::isValid(const HostObjectRef& object) const { return parts_->objects.table()->isAlive(object); }
std::size_t EmbeddedHost::getNumberOfLiveObjects() const { return parts_->objects.table()->size(); }

double EmbeddedHost::handleOf(const HostObjectRef& object) const
{
    return static_cast<double>(parts_->objects.table()->require(object)->getNumber());
}

HostArrayPtr EmbeddedHost::get(const HostObjectRef& object, const std::string& property)
{
    const HostScope scope(*this);
    return parts_->objects.get(object, property, Caller::outside);
}

void EmbeddedHost::set(const HostObjectRef& object, const std::string& property, const HostArray* value)
{
    const HostScope scope(*this);
    parts_->objects.set(object, property, value, Caller::outside);
}

void EmbeddedHost::setOwn(const HostObjectRef& object, const std::string& property, const HostArray* value)
{
    const HostScope scope(*this);
    parts_->objects.set(object, property, value, Caller::inside);
}

HostOutputs EmbeddedHost::call(const HostObjectRef& object, const std::string& method, HostInputs further,
                               std::size_t wanted)
{
    const HostScope scope(*this);
    return parts_->objects.call(object, method, further, wanted, Caller::outside);
}

HostOutputs EmbeddedHost::callStatic(const std::string& dottedClass, const std::string& method, HostInputs inputs,
                                     std::size_t wanted)
{
    const HostScope scope(*this);
    return parts_->objects.callStatic(dottedClass, method, inputs, wanted, Caller::outside);
}

void EmbeddedHost::defineFunction(const std::string& name, HostBody body)
{
    parts_->functions.define(name, std::move(body));
}

void EmbeddedHost::setFeature(const std::string& name, int value)
{
    const HostScope scope(*this);
    parts_->features.set(name, value);
}

void EmbeddedHost::setConsoleSink(ConsoleSink sink) { parts_->console.setSink(std::move(sink)); }
std::string EmbeddedHost::takeConsoleText() { return parts_->console.take(); }

void EmbeddedHost::setTaskClock(TaskClock clock) { parts_->tasks.setClock(std::move(clock)); }

bool EmbeddedHost::runTasks(std::chrono::microseconds slice)
{
    const HostScope scope(*this);
    return parts_->tasks.run(slice);
}

std::size_t EmbeddedHost::getNumberOfCommits() const { return parts_->graphics.count(); }
LineAnimator& EmbeddedHost::animator() { return parts_->animator; }

} // namespace tracery::embedded
