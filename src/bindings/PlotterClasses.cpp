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
            if (value != nullptr)
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
template <FixedText name, FixedText when = "">
using Supplied = AbstractScopeProtectedAbstractMethodInfo<Lines, name, when>;
struct ALPOnNewLinesMethodInfo : Supplied<"onNewLines", "called when Lines is set"> {};
struct ALPOnNewAxesColorMethodInfo : Supplied<"onNewAxesColor", "called after setAxesColor"> {};
struct ALPOnNewAxesTickColorMethodInfo : Supplied<"onNewAxesTickColor", "called after setAxesTickColor"> {};
struct ALPUpdateLabelsMethodInfo : Supplied<"updateLabels"> {};
struct ALPUpdateChannelNumbersMethodInfo : ReactionMethodInfo<Lines, "updateChannelNumbers", "called after onNewLines"> {};
struct ALPGetXGridMethodInfo : KeptGetterMethodInfo<Lines, "getXGrid", "called when XGrid is read"> {};
struct ALPSetXGridMethodInfo : KeptSetterMethodInfo<Lines, "setXGrid", "called when XGrid is set"> {};
struct ALPGetYGridMethodInfo : KeptGetterMethodInfo<Lines, "getYGrid", "called when YGrid is read"> {};
struct ALPSetYGridMethodInfo : KeptSetterMethodInfo<Lines, "setYGrid", "called when YGrid is set"> {};
struct ALPGetAxesColorMethodInfo : KeptGetterMethodInfo<Lines, "getAxesColor", "called when AxesColor is read"> {};
struct ALPSetAxesColorMethodInfo : KeptSetterMethodInfo<Lines, "setAxesColor", "called when AxesColor is set"> {};
struct ALPGetAxesTickColorMethodInfo : KeptGetterMethodInfo<Lines, "getAxesTickColor", "called when AxesTickColor is read"> {};
struct ALPSetAxesTickColorMethodInfo : KeptSetterMethodInfo<Lines, "setAxesTickColor", "called when AxesTickColor is set"> {};
// clang-format on

struct AbstractLinePlotterCOSCI : ClassInfo<Lines> {
    bool isAbstract() const override { return true; }
    void defineClass(hostobj::ClassDefinition& c) const override
    {
        c.superclass("handle");
        addProperties<ALPLinesPropInfo, ALPXGridPropInfo, ALPYGridPropInfo, ALPAxesColorPropInfo,
                      ALPAxesTickColorPropInfo, ALPAxesPropInfo, ALPDeleteAxesPropInfo>(c);
        addMethods<ALPGetNumLinesMethodInfo, ALPGetAllLinesMethodInfo, ALPOnNewLinesMethodInfo,
                   ALPOnNewAxesColorMethodInfo, ALPOnNewAxesTickColorMethodInfo, ALPUpdateLabelsMethodInfo,
                   ALPUpdateChannelNumbersMethodInfo, ALPGetXGridMethodInfo, ALPSetXGridMethodInfo,
                   ALPGetYGridMethodInfo, ALPSetYGridMethodInfo, ALPGetAxesColorMethodInfo, ALPSetAxesColorMethodInfo,
                   ALPGetAxesTickColorMethodInfo, ALPSetAxesTickColorMethodInfo>(c);
    }
};

// ---- Frames

HostArrayPtr getMaxDimensions(const Frames& frames)
{
    HostArrayPtr matrix(createDoubleMatrix(frames.getMaxDimsRows(), frames.getMaxDimsCols(), HostComplexity::real));
    std::ranges::copy(frames.getMaxDimensions(), getRealData(matrix.get()));
    return matrix;
}
void setMaxDimensions(Frames& frames, const HostArray* extents)
{
    static const hostobj::COSDataTypePtr type = hostobj::COSDataType::fromString("double matrix");
    frames.setMaxDimensions(type->convert(extents).get());
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
struct AFPMaxDimensionsPropInfo : ScopePropInfo<"MaxDimensions", "double matrix", kStored, &getMaxDimensions, &setMaxDimensions> {};
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
