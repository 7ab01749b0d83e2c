#include "AnimatorClass.h"

#include <tracery/embedded/HostClass.h>
#include <tracery/embedded/errors.h>
#include <tracery/host/Arrays.h>
#include <tracery/host/ObjectSystem.h>

#include <cstring>
#include <utility>

namespace tracery::embedded {

using namespace hostobj;

namespace {

class LinePayload final : public InstancePayload {
public:
    std::shared_ptr<void> as(const std::type_info& type) const noexcept override
    {
        return type == typeid(DrawnLine) ? line_ : nullptr;
    }

private:
    std::shared_ptr<DrawnLine> line_ = std::make_shared<DrawnLine>();
};

class ParentPropInfo final : public COSPropInfo {
public:
    COSNameID getName() const override { return "Parent"; }
    COSDataTypePtr getDataType() const override { return COSDataType::fromString("any"); }
    std::string getDescription() const override { return "what the line is drawn in; -1 for nothing"; }
    HostArray* getValue(const COSInterfacePtr& object) const override
    {
        const std::shared_ptr<DrawnLine> line = lineOf(object);
        return line->parent != nullptr ? duplicateArray(line->parent.get()) : nullptr;
    }
    void setValue(const COSInterfacePtr& object, const HostArray* value) const override
    {
        HostArrayPtr copy = getDataType()->convert(value);
        if (copy != nullptr)
            setArrayScope(copy.get(), HostArrayScope::persistent);
        lineOf(object)->parent.swap(copy);
    }

private:
    static std::shared_ptr<DrawnLine> lineOf(const COSInterfacePtr& object)
    {
        const auto payload = object != nullptr ? object->payload() : nullptr;
        auto line = payload != nullptr ? std::static_pointer_cast<DrawnLine>(payload->as(typeid(DrawnLine))) : nullptr;
        if (line == nullptr)
            throw Error(errors::InvalidObject);
        return line;
    }
};

/// A static method with a line array for its first input.
class LineMethodInfo final : public COSMethodInfo {
public:
    using Body = HostOutputs (*)(LineAnimator& animator, const HostObjectRef& line, const HostArray* points);

    LineMethodInfo(const char* name, LineAnimator& animator, Body body, std::vector<COSDataTypePtr> inputs,
                   std::vector<COSMethodOutput> outputs)
        : name_(name), animator_(animator), body_(body),
          signature_(COSMethodSignature::createMethodSignature(nullptr, std::move(inputs), std::move(outputs)))
    {}
    COSNameID getName() const override { return name_; }
    COSMethodSignaturePtr getSignature() const override { return signature_; }
    HostOutputs invoke(HostInputs inputs, std::size_t wantedOutputs) const override
    {
        if (inputs.size() != signature_->getInputs().size() || wantedOutputs > signature_->getOutputs().size())
            throw Error(errors::InvalidNumberOfArguments);
        const HostObjectRef line = inputs[0] != nullptr ? omGetArrayElement(inputs[0], 0) : nullptr;
        return body_(animator_, line, inputs.back());
    }

private:
    const char* name_;
    LineAnimator& animator_;
    Body body_;
    COSMethodSignaturePtr signature_;
};

HostOutputs addXY(LineAnimator& animator, const HostObjectRef& line, const HostArray* points)
{
    const bool real = points != nullptr && isDouble(points) && !isComplex(points);
    const double* data = real ? getRealData(points) : nullptr;
    const std::uint64_t count = real ? getNumberOfElements(points) : 0;
    if (!real || (data == nullptr && count > 0))
        throw Error(errors::InvalidArgumentType, "points are real doubles, time and value in turn");
    animator.append(line, {data, static_cast<std::size_t>(count)});
    return {};
}

HostOutputs getXY(LineAnimator& animator, const HostObjectRef& line, const HostArray*)
{
    const std::span<const double> points = animator.points(line);
    HostOutputs outputs;
    outputs.push_back(makeMatrix(2, points.size() / 2, points));
    return outputs;
}

HostOutputs resetLine(LineAnimator& animator, const HostObjectRef& line, const HostArray*)
{
    animator.reset(line);
    return {};
}

} // namespace

void AnimatorClassInfo::defineClass(ClassDefinition& definition) const
{
    const auto object = COSDataType::fromString("object");
    const auto doubles = COSDataType::fromString("double");
    const auto add = [&](const char* name, LineMethodInfo::Body body, std::vector<COSDataTypePtr> inputs,
                         std::vector<COSMethodOutput> outputs) {
        definition.addMethod(
            std::make_unique<LineMethodInfo>(name, animator_, body, std::move(inputs), std::move(outputs)));
    };
    definition.superclass("handle");
    definition.addProperty(std::make_unique<ParentPropInfo>());
    add("addXY", addXY, {object, doubles}, {});
    add("getXY", getXY, {object}, {{"points", COSDataType::fromString("double matrix")}});
    add("reset", resetLine, {object}, {});
}

std::unique_ptr<InstancePayload> AnimatorClassInfo::createInstance(const HostObjectRef&) const
{
    auto payload = std::make_unique<LinePayload>();
    HostArrayPtr none = makeScalar(-1);
    setArrayScope(none.get(), HostArrayScope::persistent);
    std::static_pointer_cast<DrawnLine>(payload->as(typeid(DrawnLine)))->parent = std::move(none);
    return payload;
}

} // namespace tracery::embedded
