#include "trigger/TriggeredWindow.h"

#include "libraries.h"

#include <tracery/basics/quantity.h>

namespace scope {

SamplePart partOf(tracery::TDTC::ComplexityEnum complexity)
{
    using tracery::TDTC::ComplexityEnum;
    return complexity == ComplexityEnum::Imaginary   ? SamplePart::imaginary
           : complexity == ComplexityEnum::Magnitude ? SamplePart::magnitude
           : complexity == ComplexityEnum::Phase     ? SamplePart::phase
                                                     : SamplePart::real;
}

std::vector<Marker> levelsOf(const tracery::TimeDomainTriggerController& controller, const TriggerSettings& settings)
{
    if (settings.usesTwoLevels())
        return {{controller.getUpperLevel(), "upper"}, {controller.getLowerLevel(), "lower"}};
    return {{controller.getLevel(), "level"}};
}

void markTrigger(Figure& figure, const TriggeredWindow& triggered, const std::vector<DisplayLine>& lines)
{
    figure.xLabel = (triggered.freeRun ? "Free run, no event; time from " : "Time from trigger at ") +
                    formatTime(triggered.event, figure.xMax - figure.xMin, 9);
    figure.xMin -= triggered.event;
    figure.xMax -= triggered.event;
    figure.positions.push_back({0, triggered.freeRun ? "" : "T"});
    for (Panel& panel : figure.panels)
        for (Trace& trace : panel.traces)
            for (Point& point : trace.points)
                point.x -= triggered.event;
    for (const DisplayLine& line : lines)
        if (line.source.sameChannel(triggered.source) && isPolar(line.source.part) == isPolar(triggered.source.part))
            figure.panels[line.panel].levels = triggered.levels;
}

} // namespace scope
