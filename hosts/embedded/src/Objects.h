#pragma once

#include "ClassRegistry.h"
#include "ObjectTable.h"

#include <tracery/embedded/ClassListing.h>
#include <tracery/embedded/HostClass.h>

#include <memory>
#include <string>
#include <vector>

namespace tracery::embedded {

/// Whether a member is used by a program, which may use public ones, or by the library or a body of the class.
enum class Caller { outside, inside };

/// The classes and objects of the embedded host; see EmbeddedHost for what its operations promise.
class Objects final : public hostobj::ObjectSystem {
public:
    Objects();
    Objects(const Objects&) = delete;
    Objects& operator=(const Objects&) = delete;

    hostobj::COSClassPtr findClass(const hostobj::COSNameID& dottedName) const override;
    hostobj::COSPackage& rootPackage() override { return classes_.root(); }
    void addPackage(std::unique_ptr<const hostobj::COSPackageInfo> info) override;
    hostobj::COSPackage* findPackage(const hostobj::COSNameID& dottedName) override
    {
        return classes_.findPackage(dottedName.text());
    }
    hostobj::COSClient& publicClient() override { return classes_.publicClient(); }
    HostOutputs callMethod(const HostObjectRef& object, const hostobj::COSNameID& method, HostInputs inputs,
                           std::size_t wantedOutputs) override;
    HostOutputs callStaticMethod(const hostobj::COSNameID& dottedClassName, const hostobj::COSNameID& method,
                                 HostInputs inputs, std::size_t wantedOutputs) override;
    bool hasMethod(const HostObjectRef& object, const hostobj::COSNameID& method) const override;
    HostArrayPtr getProperty(const HostObjectRef& object, const hostobj::COSNameID& property) override;
    HostObjectRef objectOfHandle(double handle) override;
    HostObjectRef wrapPayload(const hostobj::COSNameID& dottedClassName,
                              std::unique_ptr<hostobj::InstancePayload> payload) override;

    void define(HostClass definition);
    std::vector<ClassListing> list() const;
    HostObjectRef construct(const std::string& dottedClass, HostInputs inputs);
    void remove(const HostObjectRef& object);
    HostArrayPtr get(const HostObjectRef& object, const std::string& property, Caller caller);
    void set(const HostObjectRef& object, const std::string& property, const HostArray* value, Caller caller);
    HostOutputs call(HostObjectRef object, const std::string& method, HostInputs further, std::size_t wanted,
                     Caller caller);
    HostOutputs callStatic(const std::string& dottedClass, const std::string& method, HostInputs inputs,
                           std::size_t wanted, Caller caller);
    /// Deletes all objects and forgets the members of all classes; afterwards no objects are made.
    void close();
    const std::shared_ptr<ObjectTable>& table() const noexcept { return table_; }

private:
    ClassRecord::PropertyPtr requireProperty(const ClassRecord& cls, const std::string& property) const;
    ClassRecord::MethodPtr requireMethod(const ClassRecord& cls, const std::string& method, Caller caller) const;

    ClassRegistry classes_;
    std::shared_ptr<ObjectTable> table_ = std::make_shared<ObjectTable>();
};

} // namespace tracery::embedded
