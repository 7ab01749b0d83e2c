// The power statistics of a SpectrumBuffer, as host arrays.

#include "buffers/SpectrumBufferState.h"

#include <tracery/host/Error.h>

#include <algorithm>
#include <utility>

namespace tracery {

namespace {

template <class Values>
HostArrayPtr rowOf(const Values& values)
{
    HostArrayPtr row(createDoubleMatrix(1, values.size(), HostComplexity::real));
    std::copy(values.begin(), values.end(), getRealData(row.get()));
    return row;
}

} // namespace

void SpectrumBuffer::updateCCDF(const HostArray* power, int numBins, double resolution, HostArray*& maxPower,
                                HostArray*& avgPower, HostArray*& totSamples, HostArray*& distTable)
{
    if (power == nullptr)
        throw Error(errors::EmptyInput);
    if (!isDouble(power) || isComplex(power) || (!isEmpty(power) && getRealData(power) == nullptr))
        throw Error(errors::InvalidArgumentType, "powers are real doubles");
    CcdfStatistics& next = state_->nextCcdf;
    next = state_->ccdf;
    next.updateCCDF(getRealData(power), getDimensions(power)[0], getN(power), numBins, resolution, state_->powerBins);

    HostArrayPtr peaks = rowOf(next.peakPowers());
    HostArrayPtr averages = rowOf(next.averagePowers());
    HostArrayPtr counts = rowOf(next.sampleCounts());
    HostArrayPtr tables(createCellMatrix(1, getN(power)));
    for (std::uint64_t channel = 0; channel < getN(power); ++channel)
        setCell(tables.get(), channel, next.getCCDFDistribution(channel, numBins).release());
    std::swap(state_->ccdf, next);
    maxPower = peaks.release();
    avgPower = averages.release();
    totSamples = counts.release();
    distTable = tables.release();
}

void SpectrumBuffer::resetCCDF()
{
    state_->ccdf.resetCCDF();
    state_->powerBins = {};
}

HostArray* SpectrumBuffer::getCCDFHistogram() const { return state_->ccdf.getCCDFHistogram().release(); }
HostArray* SpectrumBuffer::getCCDFTotalUnbinned() const { return state_->ccdf.getCCDFTotalUnbinned().release(); }

} // namespace tracery
