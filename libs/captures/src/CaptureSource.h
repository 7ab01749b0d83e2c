#pragma once

#include "CaptureView.h"

#include <tracery/captures/Capture.h>

#include <memory>

namespace tracery::captures {

/// What a capture looks at.
class CaptureSource {
public:
    CaptureSource(recordings::RecordingInfo about, const StepFormat& steps, std::optional<TimeAxis> even)
        : info(std::move(about)), format(steps), axis(std::move(even))
    {}
    CaptureSource(const CaptureSource&) = delete;
    CaptureSource& operator=(const CaptureSource&) = delete;
    virtual ~CaptureSource() = default;

    const recordings::RecordingInfo info;
    const StepFormat format;
    const std::optional<TimeAxis> axis;

    /// What there is now.
    virtual std::shared_ptr<const CaptureView> view() const = 0;

protected:
    const TimeAxis* axisOrNone() const { return axis ? &*axis : nullptr; }
};

} // namespace tracery::captures
