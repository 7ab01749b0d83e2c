#pragma once

#include "ClassRecord.h"

#include <tracery/host/ClassInfo.h>

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace tracery::embedded {

/// All classes of a host, in packages.
class ClassRegistry {
public:
    ClassRegistry();
    ~ClassRegistry();
    ClassRegistry(const ClassRegistry&) = delete;
    ClassRegistry& operator=(const ClassRegistry&) = delete;

    hostobj::COSPackage& root() noexcept;
    /// throws  DuplicateClass, InvalidName
    void add(std::shared_ptr<ClassRecord> cls);
    /// Adds the classes of a package. throws  what the info reports; neither it nor a class of it is known then
    void addPackage(const hostobj::COSPackageInfo& info);
    /// Null when there is none, or it was given up.
    hostobj::COSPackage* findPackage(const std::string& dottedName);
    hostobj::COSClient& publicClient() noexcept { return publicClient_; }
    /// Null when there is none.
    ClassPtr find(const std::string& dottedName) const;
    /// The class, linked with all its ancestors. throws  UnknownClass, InheritanceCycle
    ClassPtr use(const std::string& dottedName);
    /// In the order in which they became known.
    const std::vector<std::shared_ptr<ClassRecord>>& all() const noexcept { return classes_; }
    /// Forgets the members of all classes.
    void clear() noexcept;

private:
    class Package;
    /// Forgets the published classes whose names are meant; objects and subclasses keep them.
    template <class IsMeant>
    void forgetPublished(const IsMeant& isMeant);
    void requireNew(const std::string& dottedName) const;
    void link(const std::shared_ptr<ClassRecord>& cls);
    std::vector<std::shared_ptr<ClassRecord>> classes_;
    std::unordered_map<std::string, std::shared_ptr<ClassRecord>> byName_;
    std::unique_ptr<Package> root_;
    hostobj::COSClient publicClient_;
};

} // namespace tracery::embedded
