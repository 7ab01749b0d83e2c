#pragma once

#include "display/DisplayLines.h"
#include "stream/LiveFeed.h"
#include "trigger/LiveTrigger.h"

#include <tracery/embedded/EmbeddedHost.h>

#include <optional>
#include <vector>

namespace scope {

/// The display side in real time: takes what is new of a feed and shows it, in a window that follows the data or in the
/// windows of a trigger. Main thread only.
class LiveDisplay {
public:
    /// host, feed  outlive the display
    LiveDisplay(tracery::embedded::EmbeddedHost& host, const Recordings& recordings, std::vector<DisplayLine> lines,
                const Window& first, int columns);

    /// Lets the window follow the data.
    void follow(tracery::TimeOverrunModeEnum mode) { display_.follow(mode); }
    /// Shows the windows of a trigger, which outlives the display.
    void follow(LiveTrigger& trigger) { trigger_ = &trigger; }

    /// Takes what is new, without waiting. Returns whether there is something new to draw.
    bool update(LiveFeed& feed);
    /// Draws what is not drawn yet; all but what may still change, unless nothing follows.
    void draw(bool last) { last ? display_.finish() : display_.drawPending(); }
    /// Whether there is anything to show.
    bool hasPicture() const { return hasPicture_; }
    /// What is drawn: window, panels and marks.
    Figure figure();

private:
    bool showWindow(const tracery::TimeBuffer& buffer, std::optional<TriggeredWindow> window);

    std::vector<DisplayLine> lines_;
    ScopeDisplay display_;
    StepsPainter painter_;
    LiveTrigger* trigger_ = nullptr;
    std::optional<TriggeredWindow> triggered_;
    bool hasPicture_ = false;
};

} // namespace scope
