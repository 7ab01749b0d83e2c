#include "buffers/CcdfStatistics.h"

#include "support/containerErrors.h"
#include "support/lanes.h"

#include <tracery/host/Error.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace tracery {

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
const double kDecibelsPerNeper = 10 / std::log(10.0);

HostArrayPtr copyToMatrix(std::uint64_t rows, std::uint64_t columns, std::span<const std::uint64_t> counts)
{
    HostArrayPtr matrix(createDoubleMatrix(rows, columns, HostComplexity::real));
    std::copy(counts.begin(), counts.end(), getRealData(matrix.get()));
    return matrix;
}

/// The greatest finite power, at least 0. Several chains, because each comparison waits for the one before; no order
/// changes a maximum.
template <class Width>
TRACERY_INLINE double greatestFiniteOf(std::span<const double> powers)
{
    using Lanes = typename Width::Lanes;
    constexpr std::size_t kLanes = sizeof(Lanes) / sizeof(double), kChains = 4;
    Lanes peaks[kChains] = {};
    std::size_t i = 0;
    for (; i + kLanes * kChains <= powers.size(); i += kLanes * kChains)
        for (std::size_t k = 0; k < kChains; ++k) {
            Lanes power;
            load(power, &powers[i + kLanes * k]);
            const Lanes finite = power < kInf ? power : Lanes{};
            peaks[k] = finite > peaks[k] ? finite : peaks[k];
        }
    double peak = 0;
    for (const Lanes& lanes : peaks)
        for (std::size_t lane = 0; lane < kLanes; ++lane)
            peak = std::max(peak, lanes[lane]);
    for (; i < powers.size(); ++i)
        if (powers[i] < kInf && powers[i] > peak)
            peak = powers[i];
    return peak;
}

TRACERY_AVX2 double greatestFiniteAvx2(std::span<const double> powers) { return greatestFiniteOf<FourLanes>(powers); }

} // namespace

void CcdfStatistics::updateCCDF(const double* power, std::uint64_t rows, std::uint64_t channels, int numBins,
                                double resolution, PowerBinTable& table)
{
    binsPerNeper_ = kDecibelsPerNeper / resolution;
    if (!(resolution > 0) || !std::isnormal(binsPerNeper_))
        throw Error(errors::InvalidArgumentType, "the resolution is a positive number of dB");
    refreshCCDFBuffers(channels, numBins);
    const auto bins = static_cast<std::size_t>(numBins);
    for (std::uint64_t channel = 0; channel < channels; ++channel) {
        const Column column(power + channel * rows, rows);
        const std::span histogram(histogram_.data() + channel * bins, bins);
        const double peak = extractPeakPower(column);
        if (getCCDFIndex(peakPower_[channel]) < getCCDFIndex(peak))
            shiftCCDFHistogram(channel, peak, histogram);
        updateCCDFHistogramCount(column, channel, histogram, table);
    }
}

void CcdfStatistics::refreshCCDFBuffers(std::uint64_t channels, int numBins)
{
    std::uint64_t entries = 0;
    if (numBins < 0 || channels > histogram_.max_size() ||
        __builtin_mul_overflow(channels, static_cast<std::uint64_t>(numBins), &entries) ||
        entries > histogram_.max_size())
        throw TooLong();
    if (channels != ccdfChannels_) {
        resetCCDF();
        histogram_.resize(entries);
        peakPower_.resize(channels);
        powerSum_.resize(channels);
        sampleCount_.resize(channels);
        totalUnbinned_.resize(channels);
        ccdfChannels_ = channels;
    }
    if (histogram_.size() != entries)
        throw InvalidSubscript();
}

void CcdfStatistics::resetCCDF()
{
    ccdfChannels_ = 0;
    histogram_.clear();
}

double CcdfStatistics::extractPeakPower(Column column)
{
    return useAvx2() ? greatestFiniteAvx2(column) : greatestFiniteOf<TwoLanes>(column);
}

/// Makes the bin of `newPeak` the top one.
void CcdfStatistics::shiftCCDFHistogram(std::uint64_t channel, double newPeak, std::span<Count> histogram)
{
    double& peak = peakPower_[channel];
    if (peak > 0) {
        const auto bins = static_cast<std::int64_t>(histogram.size());
        const auto shift = std::clamp<std::int64_t>(getCCDFIndex(newPeak) - getCCDFIndex(peak), 0, bins);
        const auto kept = histogram.begin() + shift;
        totalUnbinned_[channel] += std::accumulate(histogram.begin(), kept, Count{0});
        std::fill(std::copy(kept, histogram.end(), histogram.begin()), histogram.end(), Count{0});
    }
    peak = newPeak;
}

/// Counts and sums the finite powers. The sum is formed in the order of the samples; the rest hides behind its latency.
void CcdfStatistics::updateCCDFHistogramCount(Column column, std::uint64_t channel, std::span<Count> histogram,
                                              PowerBinTable& table)
{
    const std::int64_t peakIndex = getCCDFIndex(peakPower_[channel]);
    const std::int64_t lowest = peakIndex - static_cast<std::int64_t>(histogram.size()) + 1;
    double surelyBelow = 0;
    PowerBinTable::View bins;
    if (peakIndex != kNoPowerIndex) {
        table.cover(binsPerNeper_, lowest, peakIndex);
        bins = table.view();
        surelyBelow = getCCDFPwr(lowest - 1) * (1 - PowerBinTable::kEdgeGuard);
    }
    double sum = 0;
    Count notFinite = 0, unbinned = 0;
    for (const double power : column) {
        if (bins.reaches(power)) {
            sum += power;
            const auto bin = static_cast<std::uint64_t>(bins.find(power) - lowest);
            if (bin < histogram.size()) {
                ++histogram[bin];
                continue;
            }
        } else if (power < kInf) {
            sum += power;
        } else {
            ++notFinite;
            continue;
        }
        const std::int64_t bin = power <= 0 || power < surelyBelow ? -1 : getCCDFIndex(power) - lowest;
        if (bin < 0)
            ++unbinned;
        else if (static_cast<std::uint64_t>(bin) < histogram.size())
            ++histogram[static_cast<std::size_t>(bin)];
    }
    powerSum_[channel] += sum;
    sampleCount_[channel] += column.size() - notFinite;
    totalUnbinned_[channel] += unbinned;
}

std::vector<double> CcdfStatistics::averagePowers() const
{
    std::vector<double> averages(ccdfChannels_);
    for (std::size_t channel = 0; channel < averages.size(); ++channel)
        averages[channel] = powerSum_[channel] / static_cast<double>(sampleCount_[channel]);
    return averages;
}

HostArrayPtr CcdfStatistics::getCCDFDistribution(std::uint64_t channel, int numBins) const
{
    const double average = powerSum_[channel] / static_cast<double>(sampleCount_[channel]);
    const double step = kDecibelsPerNeper / binsPerNeper_;
    const std::int64_t peakIndex = getCCDFIndex(peakPower_[channel]);
    const std::int64_t first = std::clamp<std::int64_t>(numBins - peakIndex - 2 + getCCDFIndex(average), 0, numBins);
    double level = 0;
    if (average > 0)
        level = 10 * std::log10(getCCDFPwr(peakIndex - numBins + 1 + first) / average);

    const std::span bins(histogram_.data() + channel * static_cast<std::uint64_t>(numBins),
                         static_cast<std::size_t>(numBins));
    const auto listed = bins.subspan(static_cast<std::size_t>(first));
    HostArrayPtr table(createDoubleMatrix(listed.size(), 2, HostComplexity::real));
    double* levels = getRealData(table.get());
    double* percentages = levels + listed.size();
    const auto samples = static_cast<double>(sampleCount_[channel]);
    Count cumulated = std::accumulate(bins.begin(), bins.begin() + first, totalUnbinned_[channel]);
    for (const Count count : listed) {
        cumulated += count;
        *levels++ = level;
        *percentages++ = (1 - static_cast<double>(cumulated) / samples) * 100;
        level += step;
    }
    return table;
}

HostArrayPtr CcdfStatistics::getCCDFHistogram() const
{
    return copyToMatrix(ccdfChannels_ == 0 ? 0 : histogram_.size() / ccdfChannels_, ccdfChannels_, histogram_);
}

HostArrayPtr CcdfStatistics::getCCDFTotalUnbinned() const
{
    return copyToMatrix(1, ccdfChannels_, {totalUnbinned_.data(), ccdfChannels_});
}

} // namespace tracery
