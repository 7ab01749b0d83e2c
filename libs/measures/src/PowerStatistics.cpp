#include <tracery/host/Arrays.h>
#include <tracery/measures/PowerStatistics.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tracery::measures {

using namespace tracery;

PowerStatistics::PowerStatistics(std::size_t width, std::vector<std::size_t> channels, int bins,
                                 double resolutionDecibels)
    : width_(width), numbers_(std::move(channels)), bins_(bins), resolution_(resolutionDecibels),
      channels_(numbers_.size())
{}

/// Calls take(a channel's totals, power, place of the value) for every sample, channel by channel.
template <class Take>
void PowerStatistics::forPowers(std::span<const double> real, std::span<const double> imag, Take&& take)
{
    for (std::size_t c = 0; c < channels_.size(); ++c)
        for (std::size_t i = numbers_[c]; i < real.size(); i += width_)
            take(channels_[c], real[i] * real[i] + (imag.empty() ? 0 : imag[i] * imag[i]), i);
}

void PowerStatistics::add(std::span<const double> real, std::span<const double> imag)
{
    const HostArrayPtr powers = makeMatrix(real.size() / width_, channels_.size());
    auto next = realValues(powers.get()).begin();
    forPowers(real, imag, [&](Channel& totals, double power, std::size_t i) {
        *next++ = power;
        if (!std::isfinite(power)) {
            ++totals.leftOut;
            totals.tooLarge |= std::isfinite(real[i]) && (imag.empty() || std::isfinite(imag[i]));
            return;
        }
        totals.zero &= real[i] == 0 && (imag.empty() || imag[i] == 0);
        ++totals.samples;
        totals.sum += power;
        totals.peak = std::max(totals.peak, power);
    });
    auto outputs = outputsOf<4>(
        [&](auto&... out) { buffer_.updateCCDF(powers.get(), bins_, resolution_, out...); }); // the curves last
    curves_ = std::move(outputs.back());
}

void PowerStatistics::countAbove(std::span<const double> real, std::span<const double> imag)
{
    forPowers(real, imag, [](Channel& totals, double power, std::size_t) {
        totals.above += std::isfinite(power) && power > totals.average() ? 1 : 0;
    });
}

std::vector<PowerStatistics::Point> PowerStatistics::curve(std::size_t index) const
{
    const HostArray* table = getCell(curves_.get(), index);
    const std::size_t rows = getDimensions(table)[0];
    const double* levels = getRealData(table);
    std::vector<Point> points;
    for (std::size_t i = 0; i < rows; ++i) {
        points.push_back({levels[i], levels[rows + i]});
        if (points.back().percent <= 0)
            break;
    }
    return points;
}

} // namespace tracery::measures
