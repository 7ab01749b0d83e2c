#include "cli/commandLine.h"
#include "cli/options.h"
#include "cli/triggerOptions.h"
#include "commands/PlayCommand.h"

#include <memory>

namespace scope::cli {

namespace {

struct Arguments {
    PlayOptions options;
    TriggerSettings trigger;
};

void check(const CLI::App& play, const Arguments& arguments)
{
    const PlayOptions& options = arguments.options;
    checkTrigger(play, arguments.trigger, options.trigger.has_value());
    const auto given = [&](const char* option) { return play.get_option(option)->count() > 0; };
    requirePositive(options.span, "--span");
    requirePositive(options.rateFactor, "--rate-factor");
    requirePositive(options.refresh, "--refresh");
    if (options.trigger && given("--overrun"))
        throw UsageError("--overrun plays without a trigger: leave --trigger or --overrun out");
    if (options.file != "-" && (given("--format") || given("--columns")))
        throw UsageError("--format and --columns are of standard input, FILE -");
    if (given("--columns") && options.format == "csv")
        throw UsageError("--columns is of raw samples: say --format f64, f32 or s16");
    if (options.folder.empty())
        requireNone(play, {"--size", "--theme"}, "without --out-dir");
}

} // namespace

void addPlay(CLI::App& app)
{
    const auto arguments = std::make_shared<Arguments>();
    PlayOptions& options = arguments->options;
    CLI::App* play = app.add_subcommand("play", "Play a recording in real time, as a running scope shows it");
    play->footer("Shows rows of text on the terminal, or writes numbered pictures with --out-dir. Ctrl-C ends it.\n"
                 "Examples:\n  tracery-scope play speech.wav\n"
                 "  tracery-scope play ecg.csv --trigger edge --level 0.4 --span 2 --out-dir beats\n"
                 "  sampler | tracery-scope play - --format s16 --columns 2 --rate 48k");
    notEmpty(play->add_option("FILE", options.file, "The recording; - is standard input"))->required();
    play->add_option("--format", options.format,
                     "Of standard input: csv, a table; f64, f32 or s16, little-endian samples [default: csv]");
    add(*play, "--columns", "N", wholeNumber(options.columns, "--columns", 1, 1024),
        "How many channels raw standard input has [default: 1]");
    addRate(*play, options.rate);
    add(*play, "--rate-factor", "FACTOR", quantity(options.rateFactor, "--rate-factor"),
        "Seconds of the recording in a second [default: 1]");
    add(*play, "--from", "TIME", quantity(options.from, "--from"), "Where to begin [default: the recording's start]");
    add(*play, "--span", "TIME", quantity(options.span, "--span"),
        "How much time the window shows [default: a tenth of the recording; 1 s of standard input]");
    add(*play, "--overrun", "MODE",
        oneOf(options.overrun, "--overrun",
              {{"scroll", tracery::TimeOverrunModeEnum::Scroll}, {"wrap", tracery::TimeOverrunModeEnum::Wrap}}),
        "At the window's right edge, scroll or wrap to a new sweep [default: scroll]");
    add(*play, "--refresh", "TIME", quantity(options.refresh, "--refresh"),
        "Shortest time between redraws [default: 50m]");
    add(*play, "--frames", "N", wholeNumber(options.frames, "--frames", 0),
        "End after so many frames [default: with the recording]");
    notEmpty(play->add_option("--out-dir", options.folder,
                              "Write pictures frame-000001.png and so on into this folder, in place of those there"))
        ->type_name("DIR");
    addChannels(*play, options.channels, "Channels to draw: names or numbers from 1, with commas");
    addPicture(*play, options);
    addTrigger(*play, arguments->trigger, [&options] { options.trigger.emplace(); });
    play->callback([arguments, play] {
        check(*play, *arguments);
        if (arguments->options.trigger)
            arguments->options.trigger = arguments->trigger;
        runPlay(arguments->options);
    });
}

} // namespace scope::cli
