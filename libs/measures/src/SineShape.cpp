#include "SineShape.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tracery::measures {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kMostOffset =
    0.75; // bins; a sine that meets its negative frequency may have its strongest bin beside it
constexpr double kNoOffset = 1e-8;
constexpr double kHardlyAny = 0.05; // of the strongest bin's power
constexpr double kNothing = 1e-4;   // of the amplitude: 0.001 dB
constexpr int kPhases = 16;         // that are tried between -1 and 1
constexpr double kNoPhase = 1e-5;

/// How much more the bin after the strongest has than the one before.
double lopsided(const SineShape::Bins& bins) { return (bins[3] - bins[1]) / bins[2]; }

/// What both have.
double sidesOf(const SineShape::Bins& bins) { return (bins[3] + bins[1]) / bins[2]; }

/// How far two shapes are apart, whatever their power.
double distance(const SineShape::Bins& a, const SineShape::Bins& b)
{
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        sum += std::pow(a[i] / a[2] - b[i] / b[2], 2);
    return sum;
}

/// The offset up to which something holds.
template <class Holds>
double halve(double low, double high, Holds&& holds)
{
    while (high - low > kNoOffset) {
        const double middle = low + (high - low) / 2;
        (holds(middle) ? low : high) = middle;
    }
    return low;
}

} // namespace

SineShape::SineShape(WindowFunction window, std::uint32_t length, bool complex)
    : terms_(windowTerms(window)), length_(length), complex_(complex)
{
    for (std::size_t k = 1; k < terms_.size(); ++k)
        if (terms_[k] != 0)
            reach_ = k + 1;
}

/// The window's transform so many bins from the middle, as a share of that in the middle; less than half a length away.
/// Sums of cosines transform into sums of sin(πx) / tan(π(x - k) / L), and of their value at the segment's ends.
std::complex<double> SineShape::transform(double bins) const
{
    const double nearest = std::round(bins);
    const double sign = std::fmod(nearest, 2) == 0 ? 1 : -1;
    const double sine = sign * std::sin(kPi * (bins - nearest));
    const auto part = [&](double away) {
        const double near = 2 * std::abs(away) < length_ ? away : std::remainder(away, length_); // of short segments
        return std::abs(near) < 1e-9 ? sign * length_ : sine / std::tan(kPi * near / length_);
    };
    double real = terms_[0] * part(bins), ends = terms_[0];
    for (std::size_t k = 1; k < reach_; ++k) {
        const auto away = static_cast<double>(k);
        real += terms_[k] / 2 * (part(bins - away) + part(bins + away));
        ends += terms_[k];
    }
    return std::complex<double>(real, ends * sine) / (length_ * terms_[0]);
}

SineShape::Bins SineShape::Shape::at(double phase) const
{
    Bins bins = direct;
    for (std::size_t i = 0; i < bins.size(); ++i)
        bins[i] += phase * met[i];
    return bins;
}

SineShape::Shape SineShape::shape(double peak, double offset) const
{
    Shape shape;
    std::array<std::complex<double>, 5> both;
    const double far = 2 * peak + offset > length_ / 2 ? length_ : 0; // the transform repeats itself
    for (std::size_t i = 0; i < both.size(); ++i) {
        const double bin = static_cast<double>(i) - 2;
        const std::complex<double> direct = transform(bin - offset);
        const std::complex<double> mirrored = complex_ ? 0 : transform(bin - far + 2 * peak + offset);
        shape.direct[i] = std::norm(direct) + std::norm(mirrored);
        both[i] = direct * std::conj(mirrored);
    }
    const double middle = std::abs(both[2]);
    for (std::size_t i = 0; i < both.size() && middle > 0; ++i)
        shape.met[i] = 2 * (both[i] * std::conj(both[2])).real() / middle;
    return shape;
}

/// Where a sine that meets its negative frequency in a phase is as lopsided, which grows with the offset.
double SineShape::offsetOf(double peak, const Bins& bins, double phase) const
{
    const auto shapeAt = [&](double offset) { return shape(peak, offset).at(phase); };
    const double wanted = lopsided(bins), sides = sidesOf(bins);
    double best = halve(-kMostOffset, kMostOffset, [&](double offset) { return lopsided(shapeAt(offset)) < wanted; });
    if (sides > kHardlyAny)
        return best;
    // Right beside a bin of a window without fading, it may be so at several places: of those with such sides, too, one.
    for (const double way : {-1.0, 1.0}) {
        const double offset =
            way * halve(0, kMostOffset, [&](double each) { return sidesOf(shapeAt(way * each)) < sides; });
        if (distance(shapeAt(offset), bins) < distance(shapeAt(best), bins))
            best = offset;
    }
    return best;
}

/// In which phase the sine meets its negative frequency, the mean over all segments: that whose shape is nearest.
double SineShape::phaseOf(double peak, const Bins& bins) const
{
    if (complex_ || std::abs(transform(0.5 + 2 * peak - (2 * peak > length_ / 2 ? length_ : 0))) < kNothing)
        return 0;
    const auto error = [&](double phase) { return distance(shape(peak, offsetOf(peak, bins, phase)).at(phase), bins); };
    double best = 0, least = error(0), step = 2.0 / kPhases;
    for (int i = 0; i <= kPhases; ++i)
        if (const double each = error(i * step - 1); each < least) {
            best = i * step - 1;
            least = each;
        }
    for (; step > kNoPhase; step /= 2)
        for (const double phase : {std::max(best - step / 2, -1.0), std::min(best + step / 2, 1.0)})
            if (const double each = error(phase); each < least) {
                best = phase;
                least = each;
            }
    return best;
}

double SineShape::powerAt(double bin, const Sine& sine) const
{
    // Whole lengths away it is the same.
    const auto share = [&](double bins) { return std::norm(transform(std::remainder(bins, length_))); };
    return sine.power * (share(bin - sine.bin) + (complex_ ? 0 : share(bin + sine.bin)));
}

SineShape::Sine SineShape::fit(double peak, const Bins& bins) const
{
    const double phase = phaseOf(peak, bins);
    const double offset = offsetOf(peak, bins, phase);
    return {peak + offset, bins[2] / shape(peak, offset).at(phase)[2]};
}

} // namespace tracery::measures
