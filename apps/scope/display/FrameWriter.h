#pragma once

#include "libraries.h"

#include <tracery/figures/Figure.h>

#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace scope {

/// Writes frames in a thread of its own, one at a time: a frame that comes while another is being written is dropped, so
/// that slow pictures never hold up the display. One display thread uses the functions.
class FrameWriter {
public:
    /// Writes frame `number`, from 1; what it throws ends the writing.
    using Sink = std::function<void(const Figure& figure, std::uint64_t number)>;

    explicit FrameWriter(Sink sink);
    /// Writes to its end what is being written.
    ~FrameWriter();
    FrameWriter(const FrameWriter&) = delete;
    FrameWriter& operator=(const FrameWriter&) = delete;

    enum class IfBusy { Drop, Wait };
    /// A frame, made only if it is to be written. throws  what the sink has thrown
    void offer(const std::function<Figure()>& make, IfBusy ifBusy);
    /// Waits until all that was taken on is written. throws  what the sink has thrown
    void finish();

    struct Totals {
        std::uint64_t accepted = 0;
        std::uint64_t written = 0;
        std::uint64_t dropped = 0;
    };
    /// throws  what the sink has thrown
    Totals totals();

private:
    void run();
    void awaitSlot(std::unique_lock<std::mutex>& lock);
    void check() const;

    Sink sink_;
    std::mutex mutex_; ///< guards what follows
    std::condition_variable changed_;
    std::optional<Figure> slot_; ///< until it is written
    Totals totals_;
    bool stop_ = false;
    std::exception_ptr failure_;
    std::thread thread_;
};

} // namespace scope
