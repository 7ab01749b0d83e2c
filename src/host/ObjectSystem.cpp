#include <tracery/host/Error.h>
#include <tracery/host/Host.h>

namespace tracery::hostobj {

InstancePayload::~InstancePayload() = default;
COSInterface::~COSInterface() = default;
ObjectSystem::~ObjectSystem() = default;
COSClass::~COSClass() = default;
ClassDefinition::~ClassDefinition() = default;
COSClient::~COSClient() = default;
void COSClient::release(const COSInterfacePtr&) {}
COSPackage::~COSPackage() = default;
void COSPackage::removeClass(const COSNameID&) {}
COSPackageInfo::~COSPackageInfo() = default;

COSPropInfo::~COSPropInfo() = default;
std::string COSPropInfo::getLabel() const { return getName().text(); }
Access COSPropInfo::getGetAccess() const { return Access::public_; }
Access COSPropInfo::getSetAccess() const { return Access::public_; }
std::uint32_t COSPropInfo::getAttributes() const { return 0; }
std::string COSPropInfo::getDescription() const { return {}; }
void COSPropInfo::destroyValue(HostArray* value) const noexcept { destroyArray(value); }

COSMethodInfo::~COSMethodInfo() = default;
std::vector<COSMethodSignaturePtr> COSMethodInfo::getSignatures() const
{
    COSMethodSignaturePtr only = getSignature();
    return only != nullptr ? std::vector{std::move(only)} : std::vector<COSMethodSignaturePtr>();
}
Access COSMethodInfo::getAccess() const { return Access::public_; }
bool COSMethodInfo::isAbstract() const { return false; }
bool COSMethodInfo::isOptional() const { return false; }
std::string COSMethodInfo::getDescription() const { return {}; }

COSClassInfo::~COSClassInfo() = default;
void COSClassInfo::destroyInstance(std::unique_ptr<InstancePayload> payload) const noexcept { payload.reset(); }
bool COSClassInfo::isAbstract() const { return false; }
bool COSClassInfo::isHidden() const { return false; }

COSMethodSignaturePtr COSMethodSignature::createMethodSignature(COSDataTypePtr object,
                                                                std::vector<COSDataTypePtr> inputs,
                                                                std::vector<COSMethodOutput> outputs,
                                                                std::size_t optional)
{
    auto signature = std::shared_ptr<COSMethodSignature>(new COSMethodSignature);
    signature->object_ = std::move(object);
    signature->inputs_ = std::move(inputs);
    signature->outputs_ = std::move(outputs);
    signature->optional_ = optional;
    return signature;
}

void COSPackage::addPackage(std::unique_ptr<const COSPackageInfo> info)
{
    Host::require().objects().addPackage(std::move(info));
}

COSPackage* COSPackage::getPackageInterface(const COSNameID& dottedName)
{
    Host* host = Host::current();
    return host != nullptr ? host->objects().findPackage(dottedName) : nullptr;
}

COSClient& COSGetPublicClient() { return Host::require().objects().publicClient(); }

HostOutputs omCallMethod(const COSInterfacePtr& object, const COSNameID& method, HostInputs inputs,
                         std::size_t wantedOutputs)
{
    return Host::require().objects().callMethod(object, method, inputs, wantedOutputs);
}

HostOutputs omCallMethod(const COSNameID& dottedClassName, const COSNameID& method, HostInputs inputs,
                         std::size_t wantedOutputs)
{
    return Host::require().objects().callStaticMethod(dottedClassName, method, inputs, wantedOutputs);
}

HostArrayPtr omCreateScalar(const COSInterfacePtr& object)
{
    if (object == nullptr)
        throw Error(errors::InvalidObject);
    const std::uint64_t extents[] = {1, 1};
    HostArrayPtr array(createObjectArray(object->className(), 2, extents));
    omSetArrayElement(array.get(), 0, object);
    return array;
}

} // namespace tracery::hostobj
