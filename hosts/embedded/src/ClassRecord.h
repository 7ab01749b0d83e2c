#pragma once

#include <tracery/host/ObjectSystem.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tracery::embedded {

/// Members of a class by name, in the order they were added.
template <class Member>
class MemberList {
public:
    using Pointer = std::shared_ptr<const Member>;

    /// Null is ignored. throws  DuplicateMember
    void add(Pointer member);
    Pointer find(const std::string& name) const;
    auto begin() const { return entries_.begin(); }
    auto end() const { return entries_.end(); }

private:
    std::vector<std::pair<std::string, Pointer>> entries_;
};

class ClassRecord;
using ClassPtr = std::shared_ptr<const ClassRecord>;

/// What the host knows of a class. Look-ups go through the ancestors, once the registry has linked them.
class ClassRecord final : public hostobj::COSClass {
public:
    using PropertyPtr = MemberList<hostobj::COSPropInfo>::Pointer;
    using MethodPtr = MemberList<hostobj::COSMethodInfo>::Pointer;

    explicit ClassRecord(std::string dottedName);
    /// A published class: asks the info for everything.
    ClassRecord(std::string dottedName, std::unique_ptr<const hostobj::COSClassInfo> info);

    hostobj::COSNameID getName() const override { return name; }
    std::string shortName() const { return name.substr(name.rfind('.') + 1); }
    bool isA(const std::string& dottedName) const;
    /// Null when there is none.
    PropertyPtr findProperty(const std::string& property) const;
    /// The most derived one with a body; null when there is none.
    MethodPtr findMethod(const std::string& method) const;
    /// The constructor of the ancestor (or the class itself) of this short name; null when there is none.
    MethodPtr findConstructor(const std::string& shortClassName) const;
    /// That of the nearest class that has one; null when there is none.
    MethodPtr nearestConstructor() const;
    /// Whether the class names the method, with or without a body.
    bool declares(const std::string& method) const;
    /// The info that makes the library objects of this class; null when no ancestor is published.
    std::shared_ptr<const hostobj::COSClassInfo> nearestInfo() const;
    /// throws  AbstractClass, MissingMethod
    void requireConstructible() const;
    /// Forgets the members, and with them whatever the bodies refer to.
    void clear() noexcept;

    const std::string name;
    std::string superclassName;
    ClassPtr superclass; ///< null until linked, and for a class of no superclass
    bool linked = false;
    bool isAbstract = false;
    bool isHidden = false;
    std::shared_ptr<const hostobj::COSClassInfo> info; ///< null for a class defined in the host
    MemberList<hostobj::COSPropInfo> properties;
    MemberList<hostobj::COSMethodInfo> methods;
    MethodPtr constructor;
    std::vector<std::string> inheritedMethods;

private:
    /// The first result that is not null, from the class itself upwards.
    template <class Find>
    auto firstOf(Find find) const -> decltype(find(*this));
};

/// Whether the method can be called: it is not left to subclasses.
bool hasBody(const hostobj::COSMethodInfo& method);
/// Whether the method can be called without an object, and with one: it may have signatures of both kinds. Without any
/// it takes an object.
bool isStatic(const hostobj::COSMethodInfo& method);
bool takesObject(const hostobj::COSMethodInfo& method);

} // namespace tracery::embedded
