#include <tracery/measures/WindowFunction.h>

#include <array>
#include <cmath>
#include <numbers>

namespace tracery::measures {

namespace {

struct CosineSum {
    const char* name;
    std::array<double, 5> terms;
};

CosineSum definitionOf(WindowFunction window)
{
    switch (window) {
    case WindowFunction::Rectangular:
        return {"rectangular", {1}};
    case WindowFunction::Hann:
        return {"hann", {0.5, -0.5}};
    case WindowFunction::Hamming: // with the rounded weights that are usual
        return {"hamming", {0.54, -0.46}};
    case WindowFunction::BlackmanHarris: // Harris 1978, four terms, side lobes below -92 dB
        return {"blackman-harris", {0.35875, -0.48829, 0.14128, -0.01168}};
    case WindowFunction::FlatTop: // D'Antona and Ferrero 2006, five terms
        break;
    }
    return {"flat-top", {0.21557895, -0.41663158, 0.277263158, -0.083578947, 0.006947368}};
}

} // namespace

const char* nameOf(WindowFunction window) { return definitionOf(window).name; }

std::array<double, 5> windowTerms(WindowFunction window) { return definitionOf(window).terms; }

std::vector<double> windowSamples(WindowFunction window, std::size_t length)
{
    const std::array<double, 5> terms = windowTerms(window);
    std::vector<double> samples(length);
    for (std::size_t n = 0; n < length; ++n) {
        const double phase = 2 * std::numbers::pi * static_cast<double>(n) / static_cast<double>(length);
        for (std::size_t k = 0; k < terms.size(); ++k)
            samples[n] += terms[k] * std::cos(static_cast<double>(k) * phase);
    }
    return samples;
}

} // namespace tracery::measures
