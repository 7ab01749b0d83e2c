#include "bindings/classNames.h"
#include "bindings/classes.h"
#include "host/ClassTable.h"

#include <tracery/SpectrumBuffer.h>
#include <tracery/host/Error.h>

#include <algorithm>
#include <tuple>
#include <utility>

namespace tracery::binding {

namespace {

using SB = SpectrumBuffer;

HostComplexity complexityOf(bool isComplex) { return isComplex ? HostComplexity::complex : HostComplexity::real; }

/// What there is, or an empty double array.
HostArrayPtr orEmpty(HostArray* array)
{
    return HostArrayPtr(array != nullptr ? array : createDoubleMatrix(0, 0, HostComplexity::real));
}

// ---- Operations whose arguments or results are not those of the class

void addTime(SB& buffer, const HostArray* time, std::uint32_t) { buffer.AddTime(time, 0); }
void addValue(SB& buffer, const HostArray* value, std::uint32_t) { buffer.AddValue(value, 0, true); }
void clearBackTo(SB& buffer, const HostArray* time) { buffer.clearBackTo(time); }
HostArrayPtr getSegments(SB& buffer) { return orEmpty(buffer.getAvailableSegments()); }

/// The four numbers are not read: the buffer hands out what is ready.
std::tuple<HostArrayPtr, HostArrayPtr> getTimeAndValue(SB& buffer, double, double, double, double)
{
    // Made first: what was handed out is discarded later, so it must not be lost.
    HostArrayPtr noTime = orEmpty(nullptr);
    HostArrayPtr noValue = orEmpty(nullptr);
    HostArray* time = nullptr;
    HostArray* value = nullptr;
    buffer.GetTimeAndValue(0, time, value);
    return {time != nullptr ? HostArrayPtr(time) : std::move(noTime),
            value != nullptr ? HostArrayPtr(value) : std::move(noValue)};
}

using Statistics = std::tuple<HostArrayPtr, HostArrayPtr, HostArrayPtr, HostArrayPtr>;
Statistics updateCCDF(SB& buffer, const HostArray* power, double numBins, double resolution)
{
    constexpr double kMostBins = 1 << 24;
    if (!(numBins >= 1 && numBins <= kMostBins))
        throw Error(errors::InvalidArgumentType, "needed: 1 to 2^24 bins");
    // The logarithms of doubles lie within +-745.2: bins of less than 1.51e-6 dB could not be counted in ints.
    constexpr double kFinest = 2e-6;
    if (!(resolution >= kFinest))
        throw Error(errors::InvalidArgumentType, "needed: a resolution of at least 2e-6 dB");
    HostArray* results[4] = {};
    buffer.updateCCDF(power, static_cast<int>(numBins), resolution, results[0], results[1], results[2], results[3]);
    return {HostArrayPtr(results[0]), HostArrayPtr(results[1]), HostArrayPtr(results[2]), HostArrayPtr(results[3])};
}

/// Sizes at which a host cannot be stopped by running out of memory.
void requireSize(std::uint32_t segmentLength, std::uint32_t numChannels)
{
    constexpr std::uint64_t kMostSamples = std::uint64_t{1} << 26;
    if (std::uint64_t{std::max(segmentLength, 1U)} * std::max(numChannels, 1U) > kMostSamples)
        throw Error(errors::InvalidArgumentType, "needed: at most 2^26 samples in a segment of all channels");
}
void setSegmentLength(SB& buffer, std::uint32_t samples)
{
    requireSize(samples, buffer.getNumChannels());
    buffer.setSegmentLength(samples);
}
void setNumChannels(SB& buffer, std::uint32_t channels)
{
    requireSize(buffer.getSegmentLength(), channels);
    buffer.setNumChannels(channels);
}

void construct(SB& buffer, std::uint32_t segmentLength, double overlapPercent, bool isComplex,
               std::uint32_t numChannels)
{
    requireSize(segmentLength, numChannels);
    buffer.flush();
    buffer.setSegmentLength(segmentLength);
    buffer.setOverlapPercent(overlapPercent);
    buffer.setComplexityFlag(complexityOf(isComplex));
    buffer.setNumChannels(numChannels);
}

// ---- The table

/// The base of all methods of the class.
template <FixedText name, auto operation, class... Outputs>
struct SBBaseMI : Method<name, operation, Outputs...> {};

// clang-format off
struct SpectrumBuffer_Constructor : Constructor<&construct> {};
struct SBAddTimeMI : SBBaseMI<"addTime", &addTime> {};
struct SBAddValueMI : SBBaseMI<"addValue", &addValue> {};
struct SBClearBackToMI : SBBaseMI<"clearBackTo", &clearBackTo> {};
struct SBClearMI : SBBaseMI<"clear", &SB::clear> {};
struct SBFlushMI : SBBaseMI<"flush", &SB::flush> {};
struct SBGetDataSkippedFlagMI : SBBaseMI<"getDataSkippedFlag", &SB::getDataSkippedFlag, Output<"getDataSkippedFlag">> {};
struct SBGetLastInputFrameSizeMI : SBBaseMI<"getLastFrameSize", &SB::getLastInputFrameLength, Output<"getLastFrameSize">> {};
struct SBGetLastTimeMI : SBBaseMI<"getLastTime", &SB::GetLastTime, Output<"lasttime">> {};
struct SBGetNumProcessedSamplesMI : SBBaseMI<"getNumProcessedSamples", &SB::getNumProcessedSamples, Output<"numProcessedSamples">> {};
struct SBGetNumUnprocessedSamplesMI : SBBaseMI<"getNumUnprocessedSamples", &SB::getNumUnprocessedSamples, Output<"numUnprocessedSamples">> {};
struct SBGetReduceUpdatesMI : SBBaseMI<"getReduceUpdates", &SB::getReduceUpdates, Output<"reduceUpdates">> {};
struct SBGetSegmentsMI : SBBaseMI<"getSegments", &getSegments, Output<"segments">> {};
struct SBGetTimeAndValueMI : SBBaseMI<"getTimeAndValue", &getTimeAndValue, Output<"time">, Output<"value">> {};
/// The names of the method and of its result differ on purpose.
struct SBIsReadyMI : SBBaseMI<"IsReady", &SB::isReady, Output<"isReady">> {};
struct SBIsTimeUpMI : SBBaseMI<"isTimeUp", &SB::isTimeUp, Output<"isTimeUp">> {};
struct SBRebufferMI : SBBaseMI<"rebuffer", &SB::rebuffer> {};
struct SBResetCCDFMI : SBBaseMI<"resetCCDF", &SB::resetCCDF> {};
struct SBRestartTimerMI : SBBaseMI<"restartTimer", &SB::restartTimer> {};
struct SBSetDataSkippedFlagMI : SBBaseMI<"setDataSkippedFlag", &SB::setDataSkippedFlag> {};
struct SBSetNumProcessedSamplesMI : SBBaseMI<"setNumProcessedSamples", &SB::setNumProcessedSamples> {};
struct SBSetReduceUpdatesMI : SBBaseMI<"setReduceUpdates", &SB::setReduceUpdates> {};
struct SBSetReduceUpdatesOverrideMI : SBBaseMI<"setReduceUpdatesOverride", &SB::setReduceUpdatesOverride> {};
struct SBSetupBufferParamsMI : SBBaseMI<"setupBufferParams", &SB::setupBufferParams> {};
struct SBUpdateCCDFMI : SBBaseMI<"updateCCDF", &updateCCDF, Output<"maxPower">, Output<"avgPower">, Output<"totSamples">, Output<"distTable">> {};
// clang-format on

struct SpectrumBufferCOSClassInfo : ClassInfo<SB> {
    void defineClass(hostobj::ClassDefinition& c) const override
    {
        c.superclass("handle");
        // clang-format off
        c.addProperty(property<&SB::getOverlapPercent, &SB::setOverlapPercent>("OverlapPercent", kPublic, kPublic, kStored, "OverlapPercent"));
        c.addProperty(property<&SB::getSegmentLength, &setSegmentLength>("SegmentLength", kPublic, kPublic, kStored, "Segment Length"));
        c.addProperty(property<&SB::getSegmentsPerBlock, &SB::setSegmentsPerBlock>("SegmentsPerBlock", kPublic, kPublic, kStored, "Segments per block"));
        c.addProperty(property<&SB::getComplexityFlag>("Complexity", kPublic, kReadOnly, kComputed, "Return the complexity Flag as a string"));
        c.addProperty(property<&SB::getCCDFHistogram>("CCDFHistogram", kPublic, kReadOnly, kComputed, "Return the CCDF Histogram"));
        c.addProperty(property<&SB::getCCDFTotalUnbinned>("CCDFTotalUnbinned", kPublic, kReadOnly, kComputed, "Return the total number of samples excluded from the CCDF Histogram"));
        c.addProperty(property<&SB::getNumChannels, &setNumChannels>("NumChannels", kPublic, kPublic, kComputed, "Number of channels"));
        c.addProperty(property<&SB::getMaxNumTimeSteps, &SB::setMaxNumTimeSteps>("MaxNumTimeSteps", kPublic, kPublic, kStored, "MaxNumTimeSteps"));
        c.addProperty(property<&SB::getNPorts, &SB::setNPorts>("NPorts", kPublic, kPublic, kStored, "Number of ports"));
        c.addProperty(property<&SB::getTreatMby1SignalsAsOneChannel, &SB::setTreatMby1SignalsAsOneChannel>("TreatMby1SignalsAsOneChannel", kPublic, kPublic, kStored, "TreatMby1SignalsAsOneChannel"));
        // clang-format on
        c.addConstructor(std::make_unique<SpectrumBuffer_Constructor>());
        addMethods<SBAddTimeMI, SBAddValueMI, SBClearBackToMI, SBClearMI, SBFlushMI, SBGetDataSkippedFlagMI,
                   SBGetLastInputFrameSizeMI, SBGetLastTimeMI, SBGetNumProcessedSamplesMI, SBGetNumUnprocessedSamplesMI,
                   SBGetReduceUpdatesMI, SBGetSegmentsMI, SBGetTimeAndValueMI, SBIsReadyMI, SBIsTimeUpMI, SBRebufferMI,
                   SBResetCCDFMI, SBRestartTimerMI, SBSetDataSkippedFlagMI, SBSetNumProcessedSamplesMI,
                   SBSetReduceUpdatesMI, SBSetReduceUpdatesOverrideMI, SBSetupBufferParamsMI, SBUpdateCCDFMI>(c);
    }
};

} // namespace

ClassInfoPtr spectrumBufferClass() { return std::make_unique<SpectrumBufferCOSClassInfo>(); }

} // namespace tracery::binding
