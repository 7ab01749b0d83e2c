#include "cli/commandLine.h"
#include "cli/options.h"
#include "cli/triggerOptions.h"
#include "commands/commands.h"

#include <memory>

namespace scope::cli {

namespace {

struct Arguments {
    ViewOptions options;
    TriggerSettings trigger;
};

void check(const CLI::App& view, const Arguments& arguments)
{
    const ViewOptions& options = arguments.options;
    checkTrigger(view, arguments.trigger, options.trigger.has_value());
    requirePositive(options.span, "--span");
    if (options.overrun && options.trigger)
        throw UsageError("--overrun streams without a trigger: leave --trigger or --overrun out");
    if (options.until && !options.overrun)
        throw UsageError("--until does nothing without --overrun");
}

} // namespace

void addView(CLI::App& app)
{
    const auto arguments = std::make_shared<Arguments>();
    ViewOptions& options = arguments->options;
    CLI::App* view = app.add_subcommand("view", "Draw recordings against time");
    view->footer("Examples:\n  tracery-scope view speech.wav\n"
                 "  tracery-scope view bus.csv --from 1.2m --span 50u -o glitch.svg\n"
                 "  tracery-scope view left.wav right.flac --channels 1,2 --size 1600x900\n"
                 "  tracery-scope view probe.csv --trigger edge --level 50% --span 2m");
    notEmpty(view->add_option("FILE", options.files, "Recordings; several share the time axis; - is standard input"))
        ->required();
    notEmpty(
        view->add_option("-o,--output", options.output,
                         "The picture, .png or .svg; - or -.svg is standard output [default: FILE's name with .png]"));
    addChannels(*view, options.channels, "Channels to draw: names or numbers from 1, with commas");
    add(*view, "--from", "TIME", quantity(options.from, "--from"),
        "Where the picture starts [default: the recording's start]");
    add(*view, "--span", "TIME", quantity(options.span, "--span"),
        "How much time it shows [default: to the recording's end]");
    addPicture(*view, options);
    view->add_flag("--stack", options.stack, "Draw every channel in axes of its own");
    addRate(*view, options.rate);
    const auto overrun = [&options](const std::string& text) {
        using tracery::TimeOverrunModeEnum;
        auto mode = TimeOverrunModeEnum::Wrap;
        oneOf(mode, "--overrun", {{"wrap", TimeOverrunModeEnum::Wrap}, {"scroll", TimeOverrunModeEnum::Scroll}})(text);
        options.overrun = mode;
    };
    add(*view, "--overrun", "MODE", overrun,
        "Stream the recording past a window of --span [default: a tenth of what streams]; at its right edge, wrap to a "
        "new sweep or scroll");
    add(*view, "--until", "TIME", quantity(options.until, "--until"),
        "Where streaming with --overrun stops [default: the recording's end]");
    addTrigger(*view, arguments->trigger, [&options] { options.trigger.emplace(); });
    add(*view, "--nth", "N", wholeNumber(options.nth, "--nth", 1),
        "Which triggered window to draw, from 1 [default: 1]")
        ->group("Trigger");
    view->callback([arguments, view] {
        check(*view, *arguments);
        if (arguments->options.trigger)
            arguments->options.trigger = arguments->trigger;
        runView(arguments->options);
    });
}

} // namespace scope::cli
