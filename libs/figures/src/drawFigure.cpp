#include "drawFigure.h"

#include "Layout.h"
#include "Legend.h"
#include "Markers.h"
#include "Sizes.h"
#include "Styles.h"
#include "comfortableLimits.h"
#include "drawAxes.h"
#include "drawPointMarks.h"
#include "drawTrace.h"
#include "ticks.h"

#include <tracery/basics/cleanText.h>

#include <algorithm>
#include <string>

namespace tracery::figures {

using namespace basics;

namespace {

void drawPanel(Canvas& canvas, const Panel& panel, std::size_t number, const Mapping& mapping, const Axis& xAxis,
               const Styles& styles, const PositionMarkers& positions, const Sizes& sizes)
{
    const Axis yAxis = fittingYAxis(mapping, cleanText(panel.yUnit), sizes);
    drawGrid(canvas, mapping, xAxis, yAxis, sizes);
    positions.drawLines(canvas, mapping.box());
    drawLevels(canvas, panel.levels, mapping, sizes);
    drawFrame(canvas, mapping, xAxis, yAxis, sizes);
    // Last, so that nothing hides a sample: neither the frame the first column nor a label a peak.
    for (std::size_t i = 0; i < panel.traces.size(); ++i)
        drawTrace(canvas, panel.traces[i], mapping, styles.of(number, i), sizes.traceLine);
    drawPointMarks(canvas, panel.traces, number, styles, mapping, sizes);
    drawYLabels(canvas, mapping, yAxis, panel.yLabel, sizes);
}

} // namespace

void drawFigure(Canvas& canvas, const Figure& figure)
{
    const Sizes sizes(figure.width, figure.height);
    const Styles styles(figure, canvas.theme());
    const double left = leftMargin(figure.width);
    const double right = left + plotWidth(figure.width);
    const double mostRight = figure.width - 2 * sizes.scale;
    const Limits xLimits = usableLimits(figure.xMin, figure.xMax);
    const Legend legend(canvas, styles, sizes, left, right, mostLegendRows(figure.height, sizes));
    const PositionMarkers positions(canvas, figure.positions, xLimits, sizes, left, right, mostRight);
    const Layout layout(figure.width, figure.height, sizes,
                        {.title = !figure.title.empty(),
                         .legend = legend.height(),
                         .strip = positions.height(),
                         .panels = std::max<std::size_t>(1, figure.panels.size())});

    canvas.setColour(canvas.theme().paper);
    canvas.fill({0, 0, static_cast<double>(figure.width), static_cast<double>(figure.height)});
    canvas.setColour(canvas.theme().ink);
    canvas.text(canvas.fitted(cleanText(figure.title), sizes.title, mostRight - left), sizes.title, Align::Start, left,
                layout.titleBaseline);
    legend.draw(canvas, layout.legendTop);

    const Axis xAxis = fittingXAxis(canvas, xLimits, cleanText(figure.xUnit), right - left, sizes);
    const Panel empty;
    for (std::size_t i = 0; i < layout.panels.size(); ++i) {
        const Panel& panel = i < figure.panels.size() ? figure.panels[i] : empty;
        const Limits yLimits =
            panel.yDecades ? usableDecades(panel.yMin, panel.yMax) : usableLimits(panel.yMin, panel.yMax);
        const Mapping mapping(layout.panels[i], xLimits, yLimits, panel.yDecades);
        drawPanel(canvas, panel, i, mapping, xAxis, styles, positions, sizes);
    }
    positions.drawLabels(canvas, layout.panels.front().top);
    const Mapping lowest(layout.panels.back(), xLimits, {0, 1});
    drawXLabels(canvas, lowest, xAxis, figure.xLabel, sizes, layout.tickBaseline, layout.labelBaseline, mostRight);
}

} // namespace tracery::figures
