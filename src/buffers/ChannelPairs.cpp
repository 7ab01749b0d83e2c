// What the reads of a channel make of the samples laid out.

#include "buffers/ChannelRead.h"
#include "buffers/allocateDoubles.h"

#include <cmath>

namespace tracery {

namespace {

double magnitudeOf(double re, double im) { return im == 0 ? std::abs(re) : std::hypot(re, im); }

/// Degrees.
double phaseOf(double re, double im)
{
    constexpr double kDegreesPerRadian = 57.29577951308232;
    return std::atan2(im, re) * kDegreesPerRadian;
}

/// The zero that an extreme came to is the first one met, of either sign, as in a fold value by value.
void settleZero(double& extreme, double before, std::span<const double> pairs)
{
    if (extreme != 0 || before == 0)
        return;
    std::size_t i = 1;
    while (pairs[i] != 0)
        i += 2;
    extreme = pairs[i];
}

} // namespace

DisplayPairs::DisplayPairs(std::span<const double, 4> limits)
    : before_{{limits[0], limits[1]}, {limits[2], limits[3]}}, ranges_{before_[0], before_[1]}
{}

void DisplayPairs::layOut(const ChannelRead& read, double timeOffset)
{
    columns_ = read.samples();
    real_ = allocateDoubles(2 * columns_);
    imag_ = allocateDoubles(2 * columns_);
    read.layOut(read.steps().real, timeOffset, ranges_[0], of(real_));
    complex_ = read.steps().imag.has_value();
    if (complex_)
        read.layOut(*read.steps().imag, timeOffset, ranges_[1], of(imag_));
}

void DisplayPairs::finish(bool toMagnitudePhase)
{
    if (real_ == nullptr)
        return;
    const std::span<double> reals = of(real_), imags = of(imag_);
    if (!complex_) {
        for (std::size_t i = 0; i < reals.size(); i += 2) {
            imags[i] = reals[i];
            imags[i + 1] = 0.0;
        }
        ranges_[1].widen(0.0);
    }
    if (toMagnitudePhase) {
        ranges_[0] = before_[0];
        ranges_[1] = before_[1];
        for (std::size_t i = 1; i < reals.size(); i += 2) {
            const double magnitude = magnitudeOf(reals[i], imags[i]);
            imags[i] = phaseOf(reals[i], imags[i]);
            reals[i] = magnitude;
            ranges_[0].widen(magnitude);
            ranges_[1].widen(imags[i]);
        }
        return;
    }
    for (const std::size_t part : {0U, 1U}) {
        const std::span<const double> pairs = part == 0 ? reals : imags;
        settleZero(ranges_[part].least, before_[part].least, pairs);
        settleZero(ranges_[part].greatest, before_[part].greatest, pairs);
    }
}

HostArray* DisplayPairs::take()
{
    return real_ != nullptr ? adoptDoubleMatrix(2, columns_, std::move(real_), std::move(imag_)) : nullptr;
}

std::vector<double> DisplayPairs::limits() const
{
    return {ranges_[0].least, ranges_[0].greatest, ranges_[1].least, ranges_[1].greatest};
}

void PartPairs::layOut(const ChannelRead& read, double after, double upTo, std::span<double> pairs)
{
    using Part = TimeBuffer::SamplePart;
    const StepsView& steps = read.steps();
    complex_ = steps.imag.has_value();
    pairs_ = pairs;
    count_ = read.layOutWithin(part_ == Part::imaginary && complex_ ? *steps.imag : steps.real, after, upTo, pairs);
    if (complex_ && (part_ == Part::magnitude || part_ == Part::phase)) {
        imag_.resize(pairs.size());
        read.layOutWithin(*steps.imag, after, upTo, imag_);
    }
}

std::uint64_t PartPairs::finish()
{
    using Part = TimeBuffer::SamplePart;
    if (part_ == Part::real || (part_ == Part::imaginary && complex_))
        return count_;
    for (std::size_t i = 1; i < 2 * count_; i += 2) {
        const double im = complex_ ? imag_[i] : 0.0;
        pairs_[i] = part_ == Part::imaginary   ? im
                    : part_ == Part::magnitude ? magnitudeOf(pairs_[i], im)
                                               : phaseOf(pairs_[i], im);
    }
    return count_;
}

} // namespace tracery
