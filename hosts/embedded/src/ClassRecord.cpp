#include "ClassRecord.h"

#include <tracery/embedded/errors.h>

#include <algorithm>

namespace tracery::embedded {

using namespace hostobj;

namespace {

/// Fills a record with what the class info tells.
class Definition final : public ClassDefinition {
public:
    explicit Definition(ClassRecord& record) : record_(record) {}
    void superclass(const COSNameID& dottedName) override { record_.superclassName = dottedName.text(); }
    void addProperty(std::unique_ptr<const COSPropInfo> property) override
    {
        record_.properties.add(std::move(property));
    }
    void addMethod(std::unique_ptr<const COSMethodInfo> method) override { record_.methods.add(std::move(method)); }
    void addConstructor(std::unique_ptr<const COSMethodInfo> constructor) override
    {
        record_.constructor = std::move(constructor);
    }
    void addInheritedMethod(const COSNameID& name) override { record_.inheritedMethods.push_back(name.text()); }

private:
    ClassRecord& record_;
};

} // namespace

template <class Member>
void MemberList<Member>::add(Pointer member)
{
    if (member == nullptr)
        return;
    std::string name = member->getName().text();
    if (find(name) != nullptr)
        throw Error(errors::DuplicateMember, "there are two members \"" + name + '"');
    entries_.emplace_back(std::move(name), std::move(member));
}

template <class Member>
auto MemberList<Member>::find(const std::string& name) const -> Pointer
{
    const auto entry = std::ranges::find(entries_, name, [](const auto& e) -> const std::string& { return e.first; });
    return entry != entries_.end() ? entry->second : nullptr;
}

template class MemberList<COSPropInfo>;
template class MemberList<COSMethodInfo>;

ClassRecord::ClassRecord(std::string dottedName) : name(std::move(dottedName)) {}

ClassRecord::ClassRecord(std::string dottedName, std::unique_ptr<const COSClassInfo> classInfo)
    : name(std::move(dottedName)), isAbstract(classInfo->isAbstract()), isHidden(classInfo->isHidden()),
      info(std::move(classInfo))
{
    Definition definition(*this);
    info->defineClass(definition);
}

template <class Find>
auto ClassRecord::firstOf(Find find) const -> decltype(find(*this))
{
    for (const ClassRecord* cls = this; cls != nullptr; cls = cls->superclass.get())
        if (auto found = find(*cls))
            return found;
    return {};
}

bool ClassRecord::isA(const std::string& dottedName) const
{
    return firstOf([&](const ClassRecord& cls) { return cls.name == dottedName; });
}

auto ClassRecord::findProperty(const std::string& property) const -> PropertyPtr
{
    return firstOf([&](const ClassRecord& cls) { return cls.properties.find(property); });
}

auto ClassRecord::findMethod(const std::string& method) const -> MethodPtr
{
    return firstOf([&](const ClassRecord& cls) {
        MethodPtr found = cls.methods.find(method);
        return found != nullptr && hasBody(*found) ? found : nullptr;
    });
}

auto ClassRecord::findConstructor(const std::string& shortClassName) const -> MethodPtr
{
    return firstOf([&](const ClassRecord& cls) {
        return cls.constructor != nullptr && cls.shortName() == shortClassName ? cls.constructor : nullptr;
    });
}

auto ClassRecord::nearestConstructor() const -> MethodPtr
{
    return firstOf([](const ClassRecord& cls) { return cls.constructor; });
}

bool ClassRecord::declares(const std::string& method) const
{
    return firstOf([&](const ClassRecord& cls) {
        return cls.methods.find(method) != nullptr ||
               std::ranges::find(cls.inheritedMethods, method) != cls.inheritedMethods.end();
    });
}

std::shared_ptr<const COSClassInfo> ClassRecord::nearestInfo() const
{
    return firstOf([](const ClassRecord& cls) { return cls.info; });
}

void ClassRecord::requireConstructible() const
{
    if (isAbstract)
        throw Error(errors::AbstractClass, name + " is abstract");
    if (info != nullptr)
        return;
    std::vector<std::string> missing;
    for (const ClassRecord* cls = this; cls != nullptr; cls = cls->superclass.get())
        for (const auto& [method, declaration] : cls->methods)
            if (declaration->isAbstract() && findMethod(method) == nullptr &&
                std::ranges::find(missing, method) == missing.end())
                missing.push_back(method);
    if (missing.empty())
        return;
    std::string message = name + " has no body for " + missing.front();
    for (std::size_t i = 1; i < missing.size(); ++i)
        message += ", " + missing[i];
    throw Error(errors::MissingMethod, message);
}

void ClassRecord::clear() noexcept
{
    // Moved out first: what the bodies refer to may look here while it goes.
    const auto oldProperties = std::exchange(properties, {});
    const auto oldMethods = std::exchange(methods, {});
    const auto oldConstructor = std::exchange(constructor, {});
}

bool hasBody(const COSMethodInfo& method) { return !method.isAbstract() && !method.isOptional(); }

bool isStatic(const COSMethodInfo& method)
{
    return std::ranges::any_of(method.getSignatures(), [](const auto& way) { return way->getObject() == nullptr; });
}

bool takesObject(const COSMethodInfo& method)
{
    const auto ways = method.getSignatures();
    return ways.empty() || std::ranges::any_of(ways, [](const auto& way) { return way->getObject() != nullptr; });
}

} // namespace tracery::embedded
