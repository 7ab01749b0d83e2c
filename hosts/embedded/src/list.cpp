#include "list.h"

#include <algorithm>

namespace tracery::embedded {

using namespace hostobj;

namespace {

std::string textOf(const COSDataTypePtr& type) { return type != nullptr ? type->getText() : "any"; }

PropertyListing listProperty(const std::string& name, const COSPropInfo& property)
{
    const COSDataTypePtr type = property.getDataType();
    PropertyListing listing{name,
                            property.getLabel(),
                            textOf(type),
                            {},
                            property.getGetAccess(),
                            property.getSetAccess(),
                            property.getAttributes(),
                            property.getDescription()};
    if (type != nullptr && type->getEnumeration() != nullptr)
        listing.enumeration = type->getEnumeration()->getEntries();
    return listing;
}

SignatureListing listSignature(const COSMethodSignature& signature)
{
    SignatureListing listing;
    for (const COSDataTypePtr& input : signature.getInputs())
        listing.inputs.push_back(textOf(input));
    listing.optional = std::min(signature.getOptional(), listing.inputs.size());
    for (const COSMethodOutput& output : signature.getOutputs())
        listing.outputs.push_back({output.name, textOf(output.type)});
    return listing;
}

MethodListing listMethod(const std::string& name, const COSMethodInfo& method, bool isPublished)
{
    MethodListing listing;
    listing.name = name;
    listing.access = method.getAccess();
    listing.isAbstract = method.isAbstract();
    listing.isOptional = method.isOptional();
    listing.isStatic = !takesObject(method);
    listing.description = method.getDescription();
    if (isPublished)
        for (const COSMethodSignaturePtr& signature : method.getSignatures())
            listing.signatures.push_back(listSignature(*signature));
    return listing;
}

} // namespace

ClassListing listClass(const ClassRecord& cls)
{
    ClassListing listing;
    listing.name = cls.name;
    listing.superclass = cls.superclassName;
    listing.isAbstract = cls.isAbstract;
    listing.isHidden = cls.isHidden;
    listing.isPublished = cls.info != nullptr;
    if (cls.constructor != nullptr)
        listing.constructor = listMethod(cls.shortName(), *cls.constructor, listing.isPublished);
    for (const auto& [name, property] : cls.properties)
        listing.properties.push_back(listProperty(name, *property));
    for (const auto& [name, method] : cls.methods)
        listing.methods.push_back(listMethod(name, *method, listing.isPublished));
    listing.inheritedMethods = cls.inheritedMethods;
    return listing;
}

} // namespace tracery::embedded
