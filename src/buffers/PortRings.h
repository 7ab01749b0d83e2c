#pragma once

#include "buffers/StepLayout.h"
#include "buffers/TimeLine.h"

#include <tracery/host/Error.h>
#include <tracery/host/HostArray.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace tracery {

/// A port's steps, to be read until they change. Step i of the values begins at i * width.
struct StepsView {
    Ring::View times;
    Ring::View real;
    std::optional<Ring::View> imag; ///< of a complex port
    std::uint64_t width;
};

/// The steps of one port: values, imaginary values, and the times that other ports may share. Counters keep them level;
/// values may lag behind their times, but no value ever stands beside another step's time.
class PortRings {
public:
    /// One part, real or imaginary, of the values.
    struct ValueLine {
        Ring ring;
        std::uint64_t steps = 0; ///< as those of the times
    };

    /// How many values `steps` steps have. throws  InvalidMaxNumTimeStepsValue when a ring could not have so many
    static std::uint64_t capacityOf(const StepLayout& layout, std::uint64_t steps);
    PortRings(StepLayout layout, bool complex, std::uint64_t steps, std::shared_ptr<TimeLine> times);

    const StepLayout& layout() const { return layout_; }
    bool complex() const { return imag_.has_value(); }
    TimeLine& times() { return *times_; }
    const TimeLine& times() const { return *times_; }
    /// throws  AddComplexDataError when there is no imaginary part
    ValueLine& line(HostComplexity part);
    /// Calls use(line) for the real values and the imaginary ones, if there are any.
    template <class Use>
    void forEachLine(Use&& use)
    {
        use(real_);
        if (imag_)
            use(*imag_);
    }

    /// What `dims` come to for a line that must be level with `timeSteps` times then.
    /// throws  AddValueInputFormatError, AddValueError
    StepLayout::Input inputOf(std::span<const std::uint64_t> dims, const ValueLine& line, std::uint64_t timeSteps) const
    {
        StepLayout::Input input = layout_.inputOf(dims);
        if (line.steps + input.steps != timeSteps)
            throw Error(errors::AddValueError);
        return input;
    }
    /// Appends values that there is room for.
    void append(ValueLine& line, StepLayout::Input& input, const double* values) noexcept
    {
        line.steps += input.steps;
        layout_.append(line.ring, input, values);
        dropValuesWithoutTimes();
    }

    /// Keeps steps aligned with times from the newest end: no value may outlast its time.
    void dropValuesWithoutTimes() noexcept
    {
        forEachLine([&](ValueLine& line) {
            const std::uint64_t lag = times_->steps - line.steps; // the newest times whose values are still to come
            const std::uint64_t kept = times_->ring.size() - std::min(lag, times_->ring.size());
            line.ring.keepNewest(kept * layout_.elements());
        });
    }
    /// Drops the values of newest times that are gone.
    void follow(TimeLine::Drop drop) noexcept;
    /// Drops all values but that of the newest time, if it has come.
    void keepNewest() noexcept;

    /// Whether values are level with their times.
    bool isLevel() const;
    /// Whether there is anything to read. throws  AddValueError, GetComplexDataError when values lag behind
    bool readable() const;
    /// Steps that can be read; throw as readable().
    FoundSteps find(double tStart, double tEnd, bool widen) const;
    std::optional<StepRange> all() const;
    StepsView view() const;

private:
    StepLayout layout_;
    std::shared_ptr<TimeLine> times_;
    ValueLine real_;
    std::optional<ValueLine> imag_;
};

} // namespace tracery
