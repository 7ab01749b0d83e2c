#include <tracery/DataThinner.h>

#include <cmath>
#include <utility>

namespace tracery {

namespace {

constexpr auto kMin = static_cast<std::size_t>(ThinDataMinMax::Min);
constexpr auto kMax = static_cast<std::size_t>(ThinDataMinMax::Max);

// The output buffer: three points of three values each.
constexpr std::size_t kEarlierExtreme = 0, kLaterExtreme = 3, kOpeningSample = 6;
constexpr std::size_t kTime = 0, kReal = 1, kImaginary = 2;

std::size_t asIndex(ThinDataMinMax which) { return static_cast<std::size_t>(which); }
std::uint64_t asIndex(int channel) { return static_cast<std::uint64_t>(channel); }

double finiteOrNaN(double value) { return std::isinf(value) ? getNaN() : value; }

double sampleOf(const std::vector<double>& data, int index)
{
    return data.empty() ? getNaN() : data[static_cast<std::size_t>(index)];
}

bool replaces(double value, const std::array<double, 2>& extremes, ThinDataMinMax which)
{
    return std::isnan(value) || (which == ThinDataMinMax::Max ? value >= extremes[kMax] : value <= extremes[kMin]);
}

} // namespace

double DataThinner::getPixelMinMaxValue(int channel, ThinDataMinMax which) const
{
    return at(asIndex(channel)).real[asIndex(which)];
}
void DataThinner::setPixelMinMaxValue(int channel, ThinDataMinMax which, double value)
{
    at(asIndex(channel)).real[asIndex(which)] = value;
}
double DataThinner::getPixelMinMaxImgValue(std::uint64_t channel, ThinDataMinMax which) const
{
    return at(channel).imaginary[asIndex(which)];
}
void DataThinner::setPixelMinMaxImgValue(std::uint64_t channel, ThinDataMinMax which, double value)
{
    at(channel).imaginary[asIndex(which)] = value;
}
double DataThinner::getPixelMinMaxTimeValue(std::uint64_t channel, ThinDataMinMax which) const
{
    return at(channel).time[asIndex(which)];
}
void DataThinner::setPixelMinMaxTimeValue(std::uint64_t channel, ThinDataMinMax which, double time)
{
    at(channel).time[asIndex(which)] = time;
}

void DataThinner::initDataThinningMinMax() { channels_.emplace_back(); }

void DataThinner::reset() { channels_.assign(channels_.size(), Channel()); }

void DataThinner::resetMinMaxVals(int channel) { at(asIndex(channel)).real = kEmptyPair; }

bool DataThinner::needToUpdateTimeBuffer(double time) const
{
    const double distance = time - lastUpdateTime_;
    return lastUpdateTime_ == -getInf() || distance * pixelTimeRatio_ >= 0.5 || distance == 0.0;
}

void DataThinner::thinData(int channelPosition, double& time, std::vector<double>& realData,
                           std::vector<double>& imagData, std::vector<double>& out, int /*count*/, bool isComplex,
                           bool minMaxEnabled, const int& sampleIndex, bool& pixelHadData, const int& channel,
                           bool& needUpdate)
{
    if (channelPosition == 0)
        needUpdate = needToUpdateTimeBuffer(time);
    if (!needUpdate) {
        setMinMaxValues(channelPosition, time, realData, imagData, channel, isComplex, minMaxEnabled, sampleIndex);
        return;
    }

    Channel& accumulated = at(asIndex(channel));
    pixelHadData = accumulated.hasData;
    if (pixelHadData) {
        getMinMaxData(channelPosition, out, time, channel, isComplex, minMaxEnabled);
        resetMinMaxVals(channel);
    }
    out[kOpeningSample + kTime] = time;
    lastSampleDataAdded_ = sampleOf(realData, sampleIndex);
    out[kOpeningSample + kReal] = finiteOrNaN(lastSampleDataAdded_);
    if (isComplex) {
        lastSampleDataAdded_ = sampleOf(imagData, sampleIndex);
        out[kOpeningSample + kImaginary] = finiteOrNaN(lastSampleDataAdded_);
    }
    lastUpdateTime_ = time;
    accumulated.hasData = false;
}

void DataThinner::setMinMaxValues(int /*channelPosition*/, double& time, std::vector<double>& realData,
                                  std::vector<double>& imagData, const int& channel, bool isComplex, bool minMaxEnabled,
                                  int sampleIndex)
{
    if (!minMaxEnabled || realData.empty())
        return;
    Channel& accumulated = at(asIndex(channel));
    const double value = sampleOf(realData, sampleIndex);
    const bool hasImaginary = isComplex && !imagData.empty();
    const double imaginary = hasImaginary ? sampleOf(imagData, sampleIndex) : 0.0;
    for (const ThinDataMinMax which : {ThinDataMinMax::Max, ThinDataMinMax::Min}) {
        if (replaces(value, accumulated.real, which)) {
            accumulated.real[asIndex(which)] = value;
            accumulated.time[asIndex(which)] = time;
        }
        if (hasImaginary && replaces(imaginary, accumulated.imaginary, which))
            accumulated.imaginary[asIndex(which)] = imaginary;
    }
    accumulated.hasData = true;
}

void DataThinner::getMinMaxData(int /*channelPosition*/, std::vector<double>& out, double& /*time*/, const int& channel,
                                bool isComplex, bool minMaxEnabled)
{
    if (!minMaxEnabled) {
        for (const std::size_t point : {kEarlierExtreme, kLaterExtreme}) {
            out[point + kReal] = getNaN();
            if (isComplex)
                out[point + kImaginary] = getNaN();
        }
        return;
    }

    Channel& accumulated = at(asIndex(channel));
    // Swapped where they are stored: the imaginary extremes, which run on, stay swapped.
    if (accumulated.time[kMax] < accumulated.time[kMin])
        for (Pair* pair : {&accumulated.real, &accumulated.imaginary, &accumulated.time})
            std::swap((*pair)[0], (*pair)[1]);
    for (const auto& [point, entry] : {std::pair{kEarlierExtreme, kMin}, std::pair{kLaterExtreme, kMax}}) {
        out[point + kTime] = accumulated.time[entry];
        out[point + kReal] = finiteOrNaN(accumulated.real[entry]);
        if (isComplex)
            out[point + kImaginary] = finiteOrNaN(accumulated.imaginary[entry]);
    }
}

} // namespace tracery
