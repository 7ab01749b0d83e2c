#pragma once

#include <tracery/measures/WindowFunction.h>

#include <array>
#include <complex>
#include <cstdint>

namespace tracery::measures {

/// What a sine does to the bins around its frequency: for each window known to the last digit, and so is the sine from
/// the bins.
class SineShape {
public:
    /// length   of a segment
    /// complex  of a two-sided spectrum; a one-sided one has the sine's negative frequency as well
    SineShape(WindowFunction window, std::uint32_t length, bool complex);

    using Bins = std::array<double, 5>; ///< powers of the strongest bin, in the middle, and of those around it
    struct Sine {
        double bin;   ///< its frequency in bins
        double power; ///< in the bins' scale
    };
    /// The sine that gives the bin `peak`, counted from 0 Hz, and those around it their powers. Exact for a single sine
    /// that is 2.5 bins from the ends of a one-sided spectrum or more. Of what is no sine, a hill of noise, it is the sine
    /// that is as lopsided.
    Sine fit(double peak, const Bins& bins) const;

    /// What a sine gives a bin, whatever its phase.
    double powerAt(double bin, const Sine& sine) const;

private:
    /// What a sine of power 1 gives.
    struct Shape {
        Bins direct{};
        Bins met{}; ///< more, where it meets its negative frequency in phase
        Bins at(double phase) const;
    };

    std::complex<double> transform(double bins) const;
    Shape shape(double peak, double offset) const;
    double offsetOf(double peak, const Bins& bins, double phase) const;
    double phaseOf(double peak, const Bins& bins) const;

    std::array<double, 5> terms_;
    std::size_t reach_ = 1; ///< terms that the window has
    double length_;
    bool complex_;
};

} // namespace tracery::measures
