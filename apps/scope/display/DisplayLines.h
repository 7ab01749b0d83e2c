#pragma once

#include "display/ScopeDisplay.h"
#include "libraries.h"
#include "stream/Feed.h"
#include "stream/sources.h"

#include <tracery/TimeBuffer.h>
#include <tracery/figures/Figure.h>

#include <optional>
#include <string>
#include <vector>

namespace scope {

using SamplePart = tracery::TimeBuffer::SamplePart;

inline bool isPolar(SamplePart part) { return part == SamplePart::magnitude || part == SamplePart::phase; }

/// Stretch of time that is shown, seconds.
struct Window {
    double from;
    double to;
};

/// A part of a channel of a recording.
struct LineSource {
    std::size_t port;
    std::size_t channel;
    SamplePart part;
    bool sameChannel(const LineSource& other) const { return port == other.port && channel == other.channel; }
};

/// One line to draw.
struct DisplayLine {
    LineSource source;
    std::string label;
    std::string unit;
    std::size_t panel = 0; ///< where it is drawn
};

/// The lines of the channels that are wanted: one for a real channel, two for a complex one.
/// trigger  what is triggered on; its magnitude or phase is drawn, too, when it is that
/// throws   UsageError when a wanted channel does not exist
std::vector<DisplayLine> chooseLines(const Recordings& recordings, const std::vector<std::string>& wanted,
                                     const std::optional<LineSource>& trigger);

/// Memory grows with lines × columns: the most of them that are drawn.
inline constexpr std::size_t kMostColumnsOfLines = std::size_t{1} << 22;
/// Pixels of a picture's height that each panel needs, legend and gaps included.
inline constexpr std::size_t kLeastPanelPixels = 12;

/// throws  UsageError: too many lines to be drawn `columns` wide, or too many panels for `height` pixels
void requireDrawable(const std::vector<DisplayLine>& lines, bool stack, int columns, int height);

/// Shows steps of recordings on a display, which has one line for each of `lines`.
class StepsPainter {
public:
    /// lines, display  outlive the painter
    StepsPainter(const Recordings& recordings, const std::vector<DisplayLine>& lines, ScopeDisplay& display);

    /// Later steps than those before, of one port.
    void paint(const FeedSteps& steps);

private:
    std::vector<std::size_t> channels_; ///< of each port
    const std::vector<DisplayLine>& lines_;
    ScopeDisplay& display_;
    std::vector<double> polar_; ///< kept for its memory
};

/// Reads the stretch through the buffer and shows each block of it on the display, which has one line each.
void streamLines(Recordings recordings, const Window& stretch, const std::vector<DisplayLine>& lines,
                 ScopeDisplay& display);

/// Takes what is drawn into panels, one a unit, or a channel when they are stacked, in order of appearance.
/// anything  tells whether a line has anything in the window
std::vector<Panel> makePanels(std::vector<DisplayLine>& lines, const ScopeDisplay& display, const Window& window,
                              bool stack, bool& anything);

} // namespace scope
