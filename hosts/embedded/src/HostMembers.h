#pragma once

#include "ClassRecord.h"

#include <tracery/embedded/HostClass.h>

namespace tracery::embedded {

/// A property defined in the host; the objects keep its values.
class HostPropInfo final : public hostobj::COSPropInfo {
public:
    /// throws  InvalidTypeString, InvalidArgumentType for a value of another type, InvalidObject
    explicit HostPropInfo(HostProperty property);
    hostobj::COSNameID getName() const override { return property_.name; }
    hostobj::COSDataTypePtr getDataType() const override { return type_; }
    Access getGetAccess() const override { return property_.getAccess; }
    Access getSetAccess() const override { return property_.setAccess; }
    std::string getDescription() const override { return property_.description; }
    HostArray* getValue(const HostObjectRef& object) const override;
    void setValue(const HostObjectRef& object, const HostArray* value) const override;

private:
    HostProperty property_;
    hostobj::COSDataTypePtr type_;
};

/// A method or constructor defined in the host.
class HostMethodInfo final : public hostobj::COSMethodInfo {
public:
    explicit HostMethodInfo(HostMethod method);
    hostobj::COSNameID getName() const override { return method_.name; }
    /// No types but that of the object.
    hostobj::COSMethodSignaturePtr getSignature() const override { return signature_; }
    Access getAccess() const override { return method_.access; }
    bool isAbstract() const override { return method_.body == nullptr; }
    HostOutputs invoke(HostInputs inputs, std::size_t wantedOutputs) const override
    {
        return method_.body(inputs, wantedOutputs);
    }

private:
    HostMethod method_;
    hostobj::COSMethodSignaturePtr signature_;
};

/// throws  DuplicateMember, and as HostPropInfo
std::shared_ptr<ClassRecord> makeRecord(HostClass definition);

} // namespace tracery::embedded
