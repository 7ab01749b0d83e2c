#include "ClassRegistry.h"

#include <tracery/embedded/errors.h>

#include <algorithm>
#include <set>
#include <string_view>

namespace tracery::embedded {

using namespace hostobj;

namespace {

bool isDottedName(std::string_view text)
{
    bool wordBegins = true;
    for (const char c : text) {
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
        if (c == '.' ? wordBegins : !letter && (wordBegins || c < '0' || c > '9'))
            return false;
        wordBegins = c == '.';
    }
    return !wordBegins;
}

const std::string& requireDottedName(const std::string& text)
{
    if (!isDottedName(text))
        throw Error(errors::InvalidName, '"' + text + "\" is no name");
    return text;
}

} // namespace

template <class IsMeant>
void ClassRegistry::forgetPublished(const IsMeant& isMeant)
{
    std::erase_if(classes_, [&](const std::shared_ptr<ClassRecord>& cls) {
        return cls->info != nullptr && isMeant(cls->name) && byName_.erase(cls->name) > 0;
    });
}

class ClassRegistry::Package final : public COSPackage {
public:
    Package(ClassRegistry& registry, std::string name) : registry_(registry), name_(std::move(name)) {}

    COSNameID getName() const override { return name_; }
    void addClass(std::unique_ptr<const COSClassInfo> info) override
    {
        if (info == nullptr)
            return;
        const std::string name = dotted(info->getName().text());
        registry_.requireNew(name);
        registry_.add(std::make_shared<ClassRecord>(name, std::move(info)));
    }
    COSPackage& findOrCreatePackage(const COSNameID& shortName) override
    {
        const std::string& text = requireDottedName(shortName.text());
        const std::size_t dot = text.find('.');
        const std::string word = text.substr(0, dot);
        std::unique_ptr<Package>& inner = packages_[word];
        if (inner == nullptr)
            inner = std::make_unique<Package>(registry_, dotted(word));
        inner->givenUp_ = false;
        return dot == std::string::npos ? *inner : inner->findOrCreatePackage(text.substr(dot + 1));
    }
    void removeClass(const COSNameID& shortName) override
    {
        registry_.forgetPublished([name = dotted(shortName.text())](const std::string& cls) { return cls == name; });
    }
    void removeClient(COSClient& client) override
    {
        if (&client != &registry_.publicClient_)
            return;
        registry_.forgetPublished([prefix = dotted("")](const std::string& cls) { return cls.starts_with(prefix); });
        givenUp_ = true;
    }
    Package* find(const std::string& dottedName)
    {
        const std::size_t dot = dottedName.find('.');
        const auto inner = packages_.find(dottedName.substr(0, dot));
        if (inner == packages_.end())
            return nullptr;
        if (dot != std::string::npos)
            return inner->second->find(dottedName.substr(dot + 1));
        return inner->second->givenUp_ ? nullptr : inner->second.get();
    }
    template <class Visit>
    void forEach(const Visit& visit)
    {
        visit(*this);
        for (const auto& [word, inner] : packages_)
            inner->forEach(visit);
    }

private:
    friend ClassRegistry;
    std::string dotted(const std::string& shortName) const
    {
        return name_.empty() ? shortName : name_ + '.' + shortName;
    }

    ClassRegistry& registry_;
    std::string name_;
    bool givenUp_ = false; ///< stays in its place: references to packages hold
    std::map<std::string, std::unique_ptr<Package>> packages_;
};

ClassRegistry::ClassRegistry() : root_(std::make_unique<Package>(*this, "")) {}
ClassRegistry::~ClassRegistry() = default;

COSPackage& ClassRegistry::root() noexcept { return *root_; }

COSPackage* ClassRegistry::findPackage(const std::string& dottedName) { return root_->find(dottedName); }

void ClassRegistry::requireNew(const std::string& dottedName) const
{
    if (byName_.contains(requireDottedName(dottedName)))
        throw Error(errors::DuplicateClass, "there is a class " + dottedName + " already");
}

void ClassRegistry::add(std::shared_ptr<ClassRecord> cls)
{
    requireNew(cls->name);
    if (classes_.size() == classes_.capacity())
        classes_.reserve(2 * classes_.size() + 1); // nothing fails once the name is in
    byName_.emplace(cls->name, cls);
    classes_.push_back(std::move(cls));
}

void ClassRegistry::addPackage(const COSPackageInfo& info)
{
    const std::size_t before = classes_.size();
    std::set<const Package*> known;
    root_->forEach([&](const Package& package) {
        if (!package.givenUp_)
            known.insert(&package);
    });
    try {
        info.addClasses(root_->findOrCreatePackage(info.getName()));
    } catch (...) {
        for (; classes_.size() > before; classes_.pop_back())
            byName_.erase(classes_.back()->name);
        root_->forEach([&](Package& package) { package.givenUp_ = !known.contains(&package); });
        throw;
    }
}

ClassPtr ClassRegistry::find(const std::string& dottedName) const
{
    const auto entry = byName_.find(dottedName);
    return entry != byName_.end() ? entry->second : nullptr;
}

ClassPtr ClassRegistry::use(const std::string& dottedName)
{
    const auto entry = byName_.find(dottedName);
    if (entry == byName_.end())
        throw Error(errors::UnknownClass, "there is no class " + dottedName);
    link(entry->second);
    return entry->second;
}

void ClassRegistry::link(const std::shared_ptr<ClassRecord>& cls)
{
    // The way up is found before anything is linked, so that a cycle is never tied.
    std::vector<std::shared_ptr<ClassRecord>> way{cls};
    while (!way.back()->linked && !way.back()->superclassName.empty()) {
        const ClassRecord& last = *way.back();
        const auto above = byName_.find(last.superclassName);
        if (above == byName_.end())
            throw Error(errors::UnknownClass,
                        last.name + " inherits from " + last.superclassName + ", which is no class");
        if (std::ranges::find(way, above->second) != way.end())
            throw Error(errors::InheritanceCycle, last.name + " inherits from itself");
        way.push_back(above->second);
    }
    for (std::size_t i = 0; i < way.size(); ++i) {
        if (i + 1 < way.size())
            way[i]->superclass = way[i + 1];
        way[i]->linked = true;
    }
}

void ClassRegistry::clear() noexcept
{
    for (std::size_t i = 0; i < classes_.size(); ++i)
        classes_[i]->clear();
}

} // namespace tracery::embedded
