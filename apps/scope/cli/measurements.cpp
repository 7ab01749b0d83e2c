// The commands that measure: spectrum and ccdf.

#include "cli/commandLine.h"
#include "cli/options.h"
#include "commands/measureCommands.h"
#include "commands/output.h"

#include <cmath>
#include <memory>

namespace scope::cli {

namespace {

constexpr std::uint32_t kMostSegment = 1U << 20U;

void addMeasure(CLI::App& command, MeasureOptions& options, const std::string& ending)
{
    notEmpty(command.add_option("FILE", options.file, "The recording; - is standard input"))->required();
    notEmpty(command.add_option(
        "-o,--output", options.output,
        "The picture, .png or .svg, or the numbers as a table, .csv; -, -.svg or -.csv is standard output "
        "[default: FILE's name with " +
            ending + "]"));
    addChannels(command, options.channels, "Channels to measure: names or numbers from 1, with commas [default: all]");
    add(command, "--from", "TIME", quantity(options.stretch.from, "--from"),
        "Where to start [default: the recording's start]");
    add(command, "--span", "TIME", quantity(options.stretch.span, "--span"),
        "How much time to measure [default: to the recording's end]");
    addPicture(command, options);
    addRate(command, options.rate);
}

void check(const CLI::App& command, const MeasureOptions& options)
{
    requirePositive(options.stretch.span, "--span");
    if (isTable(options.output))
        requireNone(command, {"--size", "--theme", "--title"}, "for a table: " + options.output);
}

Reader segment(std::optional<std::uint32_t>& samples)
{
    return [&samples](const std::string& text) {
        double number = 0;
        quantity(number, "--segment")(text);
        if (!(number >= 2 && number <= kMostSegment &&
              std::abs(number - std::round(number)) < 1e-6)) // 1.001k is rounded
            throw UsageError("--segment: expected 2 to " + std::to_string(kMostSegment) + " samples, found '" + text +
                             "'");
        samples = static_cast<std::uint32_t>(std::round(number));
    };
}

Reader overlap(double& percent)
{
    return [&percent](const std::string& text) {
        quantity(percent, "--overlap")(text.ends_with('%') ? text.substr(0, text.size() - 1) : text);
        if (!(percent >= 0 && percent < 100))
            throw UsageError("--overlap: expected a percentage from 0 up to, not including, 100, found '" + text + "'");
    };
}

} // namespace

void addSpectrum(CLI::App& app)
{
    const auto options = std::make_shared<SpectrumOptions>();
    CLI::App* spectrum = app.add_subcommand("spectrum", "Draw the power spectrum of a recording and print its peaks");
    spectrum->footer(
        "Averages the spectra of windowed segments that overlap. A spectrum of a real signal reaches from 0 Hz to "
        "half\n"
        "the rate, one of IQ samples around the file's centre frequency. With --scale power a sine shows its mean\n"
        "square, with psd noise shows its density. Segments with missing values are left out. Peaks are interpolated\n"
        "between the bins: the level of a sine is true to 0.01 dB with every window, six bins\n"
        "from others and 2.5 bins from the ends of a real signal's spectrum. What does not stand out of the\n"
        "bins around it by --prominence is no peak.\n"
        "Examples:\n  tracery-scope spectrum guitar.wav --peaks 8\n"
        "  tracery-scope spectrum radio.sigmf-meta --segment 4096 --unit dBFS -o radio.svg\n"
        "  tracery-scope spectrum shaker.csv --channels x,z --scale psd --from 3 --span 2 -o psd.csv");
    addMeasure(*spectrum, *options, "-spectrum.png");
    add(*spectrum, "--segment", "N", segment(options->segment),
        "Samples in a segment [default: the power of two, 16 to 16384, that leaves 8 averages or those asked for]");
    add(*spectrum, "--overlap", "PERCENT", overlap(options->overlapPercent), "Of segments [default: 50]");
    add(*spectrum, "--window", "NAME",
        oneOf(options->window, "--window",
              {{"hann", WindowFunction::Hann},
               {"hamming", WindowFunction::Hamming},
               {"blackman-harris", WindowFunction::BlackmanHarris},
               {"flat-top", WindowFunction::FlatTop},
               {"rectangular", WindowFunction::Rectangular}}),
        "hann, hamming, blackman-harris (far side lobes lowest), flat-top (levels of bins exact) or rectangular "
        "[default: "
        "hann]");
    add(*spectrum, "--averages", "N", wholeNumber(options->averages, "--averages", 1, 1'000'000'000),
        "How many segments to average at most [default: all there are]");
    add(*spectrum, "--scale", "SCALE",
        oneOf(options->scale, "--scale", {{"power", SpectrumScale::Power}, {"psd", SpectrumScale::Density}}),
        "power, or psd for power per hertz [default: power]");
    add(*spectrum, "--unit", "UNIT",
        oneOf(options->unit, "--unit",
              {{"dB", LevelUnit::Decibel}, {"dBFS", LevelUnit::FullScale}, {"linear", LevelUnit::Linear}}),
        "dB re 1 unit², dBFS re a sine of amplitude 1 (of IQ, an exponential), or linear [default: dB]");
    add(*spectrum, "--peaks", "N", wholeNumber(options->peaks, "--peaks", 0, 1000),
        "How many peaks to mark and print for each channel [default: 5]");
    add(
        *spectrum, "--prominence", "DB",
        [options = options.get()](const std::string& text) {
            quantity(options->prominence, "--prominence")(text);
            if (!(*options->prominence >= 0 && *options->prominence <= 300))
                throw UsageError("--prominence: expected 0 to 300 dB, found '" + text + "'");
        },
        "How far a peak must stand out of its surroundings [default: as far as noise does in one spectrum of a "
        "hundred, "
        "6 dB at least]");
    add(
        *spectrum, "--range", "DB",
        [options = options.get()](const std::string& text) {
            quantity(options->range, "--range")(text);
            if (!(options->range >= 0 && options->range <= 300))
                throw UsageError("--range: expected 0 to 300 dB, found '" + text + "'");
        },
        "How far below the strongest a peak may be; the rounding of samples is below [default: 100]");
    spectrum->callback([options, spectrum] {
        check(*spectrum, *options);
        runSpectrum(*options);
    });
}

void addCcdf(CLI::App& app)
{
    const auto options = std::make_shared<CcdfOptions>();
    CLI::App* ccdf = app.add_subcommand("ccdf", "Draw how much of a recording is how far above its average power");
    ccdf->footer(
        "The curve gives the percentage of samples whose power is above a level in dB over the average (CCDF),\n"
        "beside that of complex Gaussian noise. Average and peak power, their ratio (PAPR) and the share of\n"
        "samples above the average are printed; they are exact, not rounded to bins.\n"
        "Examples:\n  tracery-scope ccdf speech.wav\n"
        "  tracery-scope ccdf radio.sigmf-meta --resolution 0.05 -o radio.csv");
    addMeasure(*ccdf, *options, "-ccdf.png");
    add(
        *ccdf, "--resolution", "DB",
        [options = options.get()](const std::string& text) {
            quantity(options->resolutionDecibels, "--resolution")(text);
            if (!(options->resolutionDecibels >= 1e-3 && options->resolutionDecibels <= 10))
                throw UsageError("--resolution: expected 0.001 to 10 dB, found '" + text + "'");
        },
        "Width of a bin of the curve [default: 0.1]");
    add(*ccdf, "--bins", "N", wholeNumber(options->bins, "--bins", 1, 100000),
        "How many bins the curve has, from the peak down [default: 1000]");
    ccdf->callback([options, ccdf] {
        check(*ccdf, *options);
        runCcdf(*options);
    });
}

} // namespace scope::cli
