#include <tracery/host/Arrays.h>
#include <tracery/measures/SpectrumEstimate.h>

#include <unsupported/Eigen/FFT>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tracery::measures {

using namespace tracery;

namespace {
constexpr std::size_t kBufferedValues = 65536; // about so many values of segments are in the buffer at once
} // namespace

struct SpectrumEstimate::Transform {
    Eigen::FFT<double> fft{Eigen::FFT<double>::impl_type(), Eigen::FFT<double>::HalfSpectrum};
    std::vector<double> real;
    std::vector<std::complex<double>> complex;
    std::vector<std::complex<double>> bins;
};

SpectrumEstimate::SpectrumEstimate(SpectrumSettings settings)
    : settings_(std::move(settings)), window_(windowSamples(settings_.window, settings_.segment)),
      channels_(settings_.channels.size()), buffer_(settings_.segment, settings_.overlapPercent,
                                                    settings_.complex ? HostComplexity::complex : HostComplexity::real,
                                                    static_cast<std::uint32_t>(settings_.channels.size())),
      transform_(std::make_unique<Transform>())
{
    for (const double sample : window_) {
        windowSum_ += sample;
        windowSquares_ += sample * sample;
    }
    transform_->bins.resize(bins());
    settings_.complex ? transform_->complex.resize(window_.size()) : transform_->real.resize(window_.size());
    for (ChannelSums& sums : channels_)
        sums.power.resize(bins());

    // The buffer begins with zeros, an overlap of them. With some more, the first segment that is free of them begins
    // with the first sample, so that none is lost.
    buffer_.setReduceUpdates(false);
    const std::size_t overlap = buffer_.getNumOverlapSamples(), hop = settings_.segment - overlap;
    notWhole_ = (overlap + hop - 1) / hop;
    if (const std::size_t more = notWhole_ * hop - overlap; more > 0) {
        const HostArrayPtr zeros = makeMatrix(more, channels_.size(), buffer_.getComplexity());
        buffer_.AddValue(zeros.get(), 0, false);
    }
    frameSteps_ = hop * std::max<std::size_t>(1, kBufferedValues / settings_.segment);
}

SpectrumEstimate::~SpectrumEstimate() = default;

void SpectrumEstimate::add(std::span<const double> real, std::span<const double> imag)
{
    const std::size_t most = frameSteps_ * settings_.width;
    for (std::size_t at = 0; at < real.size() && !full(); at += most) {
        const std::size_t count = std::min(most, real.size() - at);
        addFrame(real.subspan(at, count), settings_.complex ? imag.subspan(at, count) : imag);
    }
}

void SpectrumEstimate::addFrame(std::span<const double> real, std::span<const double> imag)
{
    const std::size_t steps = real.size() / settings_.width;
    const HostArrayPtr frame = makeMatrix(steps, channels_.size(), buffer_.getComplexity());
    const auto fill = [&](double* to, std::span<const double> from) {
        for (const std::size_t channel : settings_.channels)
            for (std::size_t i = 0; i < steps; ++i)
                *to++ = from[i * settings_.width + channel];
    };
    fill(getRealData(frame.get()), real);
    if (settings_.complex)
        fill(getImagData(frame.get()), imag);

    buffer_.AddValue(frame.get(), 0, false);
    HostArray* times = nullptr;
    HostArray* segments = nullptr;
    buffer_.GetTimeAndValue(0, times, segments);
    if (const HostArrayPtr owned(segments); owned)
        takeSegments(owned.get());
}

void SpectrumEstimate::takeSegments(const HostArray* segments)
{
    const std::size_t count = getDimensions(segments)[1];
    const double* real = getRealData(segments);
    const double* imag = getImagData(segments);
    for (ChannelSums& sums : channels_)
        for (std::size_t s = 0; s < count; ++s) {
            if (s >= notWhole_ && sums.averages < settings_.mostAverages)
                addSegment(sums, real, imag);
            real += settings_.segment;
            imag += settings_.complex ? settings_.segment : 0;
        }
    notWhole_ -= std::min<std::uint64_t>(notWhole_, count);
}

void SpectrumEstimate::addSegment(ChannelSums& sums, const double* real, const double* imag)
{
    Transform& t = *transform_;
    const std::size_t length = window_.size();
    double energy = 0;
    bool zero = true;
    for (std::size_t i = 0; i < length; ++i) {
        const double re = real[i] * window_[i];
        energy += re * re;
        zero &= re == 0;
        if (!settings_.complex) {
            t.real[i] = re;
            continue;
        }
        const double im = imag[i] * window_[i];
        energy += im * im;
        zero &= im == 0;
        t.complex[i] = {re, im};
    }
    // No bin has more power than this.
    if (!std::isfinite(energy * static_cast<double>(length))) {
        ++sums.leftOut;
        const auto finite = [](double value) { return std::isfinite(value); };
        sums.tooLarge |= std::all_of(real, real + length, finite) &&
                         (!settings_.complex || std::all_of(imag, imag + length, finite));
        return;
    }
    sums.zero &= zero;
    const auto size = static_cast<Eigen::Index>(length);
    settings_.complex ? t.fft.fwd(t.bins.data(), t.complex.data(), size)
                      : t.fft.fwd(t.bins.data(), t.real.data(), size);
    for (std::size_t k = 0; k < t.bins.size(); ++k)
        sums.power[k] += std::norm(t.bins[k]);
    ++sums.averages;
}

bool SpectrumEstimate::full() const
{
    return std::all_of(channels_.begin(), channels_.end(),
                       [&](const ChannelSums& sums) { return sums.averages >= settings_.mostAverages; });
}

double SpectrumEstimate::independentAverages(std::size_t channel) const
{
    const auto count = static_cast<double>(averages(channel));
    const std::size_t hop = settings_.segment - buffer_.getNumOverlapSamples();
    double shares = 1; // of their noise that segments have in common
    for (std::size_t apart = 1; apart * hop < window_.size() && apart < averages(channel); ++apart) {
        double common = 0;
        for (std::size_t n = apart * hop; n < window_.size(); ++n)
            common += window_[n] * window_[n - apart * hop];
        shares += 2 * (1 - static_cast<double>(apart) / count) * std::pow(common / windowSquares_, 2);
    }
    return count / shares;
}

std::vector<double> SpectrumEstimate::power(std::size_t channel, SpectrumScale scale) const
{
    const ChannelSums& sums = channels_[channel];
    const double gain = scale == SpectrumScale::Power ? windowSum_ * windowSum_ : settings_.rate * windowSquares_;
    std::vector<double> power = sums.power;
    for (std::size_t k = 0; k < power.size(); ++k) {
        const bool alone = settings_.complex || k == 0 || 2 * k == settings_.segment; // no negative frequency beside it
        power[k] *= (alone ? 1 : 2) / (gain * static_cast<double>(sums.averages));
    }
    if (settings_.complex) // from the lowest frequency on
        std::rotate(power.begin(), power.begin() + static_cast<std::ptrdiff_t>((power.size() + 1) / 2), power.end());
    return power;
}

std::vector<double> SpectrumEstimate::frequencies() const
{
    std::vector<double> frequencies(bins());
    const std::size_t below = settings_.complex ? frequencies.size() / 2 : 0;
    for (std::size_t k = 0; k < frequencies.size(); ++k)
        frequencies[k] = (settings_.complex ? settings_.centerFrequency : 0) +
                         (static_cast<double>(k) - static_cast<double>(below)) * settings_.rate / settings_.segment;
    return frequencies;
}

double SpectrumEstimate::noiseBandwidth() const { return settings_.rate * windowSquares_ / (windowSum_ * windowSum_); }

} // namespace tracery::measures
