#include "bindings/classes.h"

#include <tracery/host/Error.h>
#include <tracery/host/Host.h>
#include <tracery/host/Publish.h>

#include <algorithm>
#include <array>
#include <list>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace tracery {

namespace {

using binding::ClassInfoPtr;
using Makers = std::array<ClassInfoPtr (*)(), 5>;

constexpr const char* kOwnPackage = "tracery";
constexpr const char* kBasePackage = "veltrashared.scopes.visual";
constexpr Makers kOwnClasses{&binding::timeBufferClass, &binding::spectrumBufferClass,
                             &binding::timeDomainTriggerControllerClass, &binding::timeScopeLineClass,
                             &binding::oneShotTimerClass};
constexpr Makers kBaseClasses{&binding::abstractLinePlotterClass, &binding::abstractFramePlotterClass,
                              &binding::abstractTimeDomainPlotterClass, &binding::wrappingTimeDomainControllerClass,
                              &binding::scrollingTimeDomainControllerClass};

/// What there is no memory for is none.
template <class Make>
auto orNone(Make make) -> decltype(make())
{
    try {
        return make();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

/// What a host reports while something is undone comes second to what it is undone for.
template <class Undo>
void undoing(Undo&& undo) noexcept
{
    try {
        undo();
    } catch (...) {
    }
}

using Names = std::vector<std::string>;

/// What a host may still have of a registration that failed.
struct Remainder {
    std::weak_ptr<Host> host;
    Names classes;
};

/// Of the attached host when it has this object system; else it is forgotten with `otherwise`.
Names& remainderAt(const hostobj::ObjectSystem& objects, Names& otherwise)
{
    // Never destroyed: a host may go later than the variables of this library.
    static std::list<Remainder>& all = *new std::list<Remainder>;
    std::erase_if(all, [](const Remainder& r) { return r.host.expired(); });
    Host* host = Host::current();
    if (host == nullptr || &host->objects() != &objects)
        return otherwise;
    const auto known = std::ranges::find(all, host, [](const Remainder& r) { return r.host.lock().get(); });
    return (known != all.end() ? *known : all.emplace_back(Remainder{host->watch(), {}})).classes;
}

/// Adds the classes of this library to packages of a host. A host that cannot take classes back is not given them twice.
class Registrar {
public:
    explicit Registrar(hostobj::ObjectSystem& objects) : objects_(objects), had_(remainderAt(objects, forgotten_)) {}

    /// Whether the host has the class from an earlier registration, which failed.
    bool hasAlready(const std::string& dottedName) const
    {
        return std::ranges::find(had_, dottedName) != had_.end() && objects_.findClass(dottedName) != nullptr;
    }
    /// All or none.
    void add(std::vector<ClassInfoPtr> classes, hostobj::COSPackage& package, const std::string& packageName)
    {
        Names added;
        added.reserve(classes.size());
        had_.reserve(had_.size() + classes.size());
        try {
            for (ClassInfoPtr& info : classes) {
                std::string name = info != nullptr ? info->getName().text() : "";
                std::string dotted = packageName + '.' + name;
                if (info != nullptr && hasAlready(dotted))
                    continue;
                package.addClass(std::move(info));
                added.push_back(std::move(name));
                if (std::ranges::find(had_, dotted) == had_.end())
                    had_.push_back(std::move(dotted));
            }
        } catch (...) {
            for (; !added.empty(); added.pop_back())
                undoing([&] { package.removeClass(added.back()); });
            forgetRemoved();
            throw;
        }
    }
    /// A class that comes by one of their names is another's.
    void forgetRemoved() noexcept
    {
        for (std::size_t i = had_.size(); i-- > 0;)
            undoing([&] {
                if (objects_.findClass(had_[i]) == nullptr)
                    had_.erase(had_.begin() + static_cast<std::ptrdiff_t>(i));
            });
    }
    /// Whether the host has classes of the library's own package.
    bool hasOwn() const
    {
        return std::ranges::any_of(had_, [&](const std::string& name) {
            return name.starts_with(kOwnPackage) && objects_.findClass(name) != nullptr;
        });
    }
    /// The next registration is not the continuation of this one.
    void finish() noexcept { had_.clear(); }

private:
    hostobj::ObjectSystem& objects_;
    Names forgotten_;
    Names& had_;
};

std::vector<ClassInfoPtr> make(const Makers& makers)
{
    std::vector<ClassInfoPtr> classes(makers.size());
    std::ranges::transform(makers, classes.begin(), [](auto maker) { return orNone(maker); });
    return classes;
}

/// The package of the library's own classes.
class traceryPackageInfo : public hostobj::COSPackageInfo {
public:
    explicit traceryPackageInfo(std::shared_ptr<Registrar> registrar) : registrar_(std::move(registrar)) {}
    hostobj::COSNameID getName() const override { return kOwnPackage; }
    void addClasses(hostobj::COSPackage& package) const override
    {
        std::vector<ClassInfoPtr> classes;
        for (const auto maker : kOwnClasses)
            classes.push_back(maker());
        registrar_->add(std::move(classes), package, kOwnPackage);
    }

private:
    std::shared_ptr<Registrar> registrar_; // a host may add the classes later
};

void addBaseClasses(Registrar& registrar, std::vector<ClassInfoPtr> classes, hostobj::ObjectSystem& objects)
{
    hostobj::COSPackage& visual = objects.rootPackage()
                                      .findOrCreatePackage("veltrashared")
                                      .findOrCreatePackage("scopes")
                                      .findOrCreatePackage("visual");
    registrar.add(std::move(classes), visual, kBasePackage);
}

void giveUpOwnPackage(hostobj::ObjectSystem& objects)
{
    if (hostobj::COSPackage* package = objects.findPackage(kOwnPackage))
        package->removeClient(objects.publicClient());
}

} // namespace

void publishClasses(hostobj::ObjectSystem& objects)
{
    const auto registrar = std::make_shared<Registrar>(objects);
    std::vector<ClassInfoPtr> baseClasses = make(kBaseClasses);
    for (const ClassInfoPtr& info : baseClasses) {
        const std::string name = info != nullptr ? std::string(kBasePackage) + '.' + info->getName().text() : "";
        if (info != nullptr && !registrar->hasAlready(name) && objects.findClass(name) != nullptr)
            throw Error(errors::DuplicateClass);
    }
    std::unique_ptr<const hostobj::COSPackageInfo> own =
        orNone([&] { return std::make_unique<const traceryPackageInfo>(registrar); });
    try {
        objects.addPackage(std::move(own));
        addBaseClasses(*registrar, std::move(baseClasses), objects);
    } catch (...) {
        undoing([&] {
            if (registrar->hasOwn())
                giveUpOwnPackage(objects);
        });
        registrar->forgetRemoved();
        throw;
    }
    registrar->finish();
}

} // namespace tracery
