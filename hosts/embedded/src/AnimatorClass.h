#pragma once

#include <tracery/embedded/LineAnimator.h>
#include <tracery/host/ClassInfo.h>

#include <memory>
#include <vector>

namespace tracery::embedded {

/// What a line keeps.
struct DrawnLine {
    std::vector<double> points; ///< time and value in turn
    HostArrayPtr parent;
};

/// The host class LineAnimator::kClassName.
class AnimatorClassInfo final : public hostobj::COSClassInfo {
public:
    explicit AnimatorClassInfo(LineAnimator& animator) : animator_(animator) {}
    hostobj::COSNameID getName() const override { return "ScopeLineAnimator"; }
    void defineClass(hostobj::ClassDefinition& definition) const override;
    std::unique_ptr<hostobj::InstancePayload> createInstance(const HostObjectRef& self) const override;

private:
    LineAnimator& animator_;
};

} // namespace tracery::embedded
