#include "bindings/classNames.h"
#include "bindings/classes.h"
#include "bindings/hostCalls.h"
#include "host/ScopeMembers.h"

#include <tracery/AbstractFramePlotter.h>
#include <tracery/AbstractLinePlotter.h>

#include <algorithm>

namespace tracery::binding {

namespace {

using Lines = AbstractLinePlotter;
using Frames = AbstractFramePlotter;

// ---- Lines. Grids and colours are kept by the host's subclasses.

// clang-format off
struct ALPLinesPropInfo : AbstractScopeDataTypeAnyPropInfo<"Lines", &Lines::getLines, &Lines::setLines> {
    void setValue(const HostObjectRef& object, const HostArray* value) const override
    {
        guarded([&] {
            AbstractScopeDataTypeAnyPropInfo::setValue(object, value);
            callIfPresent(object, {"onNewLines", "updateChannelNumbers"});
        });
    }
};
struct ALPXGridPropInfo : AbstractScopeDataTypeAnyDependentPropInfo<Lines, "XGrid", "getXGrid", "setXGrid"> {};
struct ALPYGridPropInfo : AbstractScopeDataTypeAnyDependentPropInfo<Lines, "YGrid", "getYGrid", "setYGrid"> {};
struct ALPAxesColorPropInfo : AbstractScopeDataTypeAnyDependentPropInfo<Lines, "AxesColor", "getAxesColor", "setAxesColor", "onNewAxesColor"> {};
struct ALPAxesTickColorPropInfo : AbstractScopeDataTypeAnyDependentPropInfo<Lines, "AxesTickColor", "getAxesTickColor", "setAxesTickColor", "onNewAxesTickColor"> {};
struct ALPAxesPropInfo : AbstractScopeDataTypeAnyPropInfo<"Axes", &Lines::getAxes, &Lines::setAxes> {};
struct ALPDeleteAxesPropInfo : ScopePropInfo<"DeleteAxes", "logical scalar", kStored, &Lines::getDeleteAxes, &Lines::setDeleteAxes> {};

struct ALPGetNumLinesMethodInfo : Method<"getNumLines", [](Lines& lines) { return static_cast<double>(lines.getNumLines()); }, Output<"numLines">> {};
struct ALPGetAllLinesMethodInfo : Method<"getAllLines", &Lines::getLines, Output<"lines">> {};
struct ALPOnNewLinesMethodInfo : AbstractScopeProtectedAbstractMethodInfo<Lines, "onNewLines"> {};
struct ALPOnNewAxesColorMethodInfo : AbstractScopeProtectedAbstractMethodInfo<Lines, "onNewAxesColor"> {};
struct ALPOnNewAxesTickColorMethodInfo : AbstractScopeProtectedAbstractMethodInfo<Lines, "onNewAxesTickColor"> {};
struct ALPUpdateLabelsMethodInfo : AbstractScopeProtectedAbstractMethodInfo<Lines, "updateLabels"> {};
// clang-format on

struct AbstractLinePlotterCOSCI : ClassInfo<Lines> {
    bool isAbstract() const override { return true; }
    void defineClass(hostobj::ClassDefinition& c) const override
    {
        c.superclass("handle");
        addProperties<ALPLinesPropInfo, ALPXGridPropInfo, ALPYGridPropInfo, ALPAxesColorPropInfo,
                      ALPAxesTickColorPropInfo, ALPAxesPropInfo, ALPDeleteAxesPropInfo>(c);
        addMethods<ALPGetNumLinesMethodInfo, ALPGetAllLinesMethodInfo, ALPOnNewLinesMethodInfo,
                   ALPOnNewAxesColorMethodInfo, ALPOnNewAxesTickColorMethodInfo, ALPUpdateLabelsMethodInfo>(c);
    }
};

// ---- Frames

HostArrayPtr getMaxDimensions(const Frames& frames)
{
    HostArrayPtr matrix(createDoubleMatrix(frames.getMaxDimsRows(), frames.getMaxDimsCols(), HostComplexity::real));
    std::ranges::copy(frames.getMaxDimensions(), getRealData(matrix.get()));
    return matrix;
}
void setNumberOfChannels(Frames& frames, std::vector<double> numbers)
{
    frames.getNumberOfChannelsWriteable() = std::move(numbers);
}
void setLengthOfChannels(Frames& frames, std::vector<double> lengths)
{
    frames.getLengthOfChannelsWriteable() = std::move(lengths);
}

// clang-format off
struct AFPFrameProcessingPropInfo : ScopePropInfo<"FrameProcessing", "logical scalar", kStored, &Frames::getFrameProcessing, &Frames::setFrameProcessing> {};
struct AFPMaxDimensionsPropInfo : ScopePropInfo<"MaxDimensions", "double matrix", kStored, &getMaxDimensions, &Frames::setMaxDimensions> {};
struct AFPNumberOfChannelsPropInfo : ScopePropInfo<"NumberOfChannels", "double vector", kStored, &Frames::getNumberOfChannels, &setNumberOfChannels> {};
struct AFPLengthOfChannelsPropInfo : ScopePropInfo<"LengthOfChannels", "double vector", kStored, &Frames::getLengthOfChannels, &setLengthOfChannels> {};
// clang-format on

struct AbstractFramePlotterCOSCI : ClassInfo<Frames, Lines> {
    bool isAbstract() const override { return true; }
    void defineClass(hostobj::ClassDefinition& c) const override
    {
        c.superclass(Published<Lines>::name);
        addProperties<AFPFrameProcessingPropInfo, AFPMaxDimensionsPropInfo, AFPNumberOfChannelsPropInfo,
                      AFPLengthOfChannelsPropInfo>(c);
    }
};

} // namespace

ClassInfoPtr abstractLinePlotterClass() { return std::make_unique<AbstractLinePlotterCOSCI>(); }
ClassInfoPtr abstractFramePlotterClass() { return std::make_unique<AbstractFramePlotterCOSCI>(); }

} // namespace tracery::binding
