#pragma once

#include <functional>
#include <utility>

namespace tracery {

/// What a display does when it is to redraw.
class DrawSchedulerTask {
public:
    /// Does nothing.
    DrawSchedulerTask() = default;
    /// Calls `callback`.
    DrawSchedulerTask(std::function<void()> callback) : callback_(std::move(callback)) {}

    /// Whether there is a callback.
    bool enabled() const noexcept { return callback_ != nullptr; }
    /// Calls the callback, if there is one, and passes on what it throws.
    void PrepareForDraw() const
    {
        if (callback_)
            callback_();
    }

private:
    std::function<void()> callback_;
};

} // namespace tracery
