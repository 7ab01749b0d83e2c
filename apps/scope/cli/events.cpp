#include "cli/commandLine.h"
#include "cli/options.h"
#include "cli/triggerOptions.h"
#include "commands/commands.h"

#include <memory>

namespace scope::cli {

void addEvents(CLI::App& app)
{
    const auto options = std::make_shared<EventsOptions>();
    CLI::App* events = app.add_subcommand("events", "Print every trigger event of a recording and what became of it");
    events->footer(
        "One row an event, in order: its time, what became of it (shown; overlap: before the last window had\n"
        "passed; superseded by a later one; not_full: the recording ends inside its window; disarmed: once\n"
        "had its window; free_run: no event, mode auto), and the window when shown. A summary follows, with the\n"
        "events that --holdoff kept out (held_off), which are not among the found.\n"
        "Example:\n  tracery-scope events ecg.csv --level 0.4 --hysteresis 0.3 --span 1");
    notEmpty(events->add_option("FILE", options->file, "The recording; - is standard input"))->required();
    addTrigger(*events, options->trigger, [] {});
    add(*events, "--from", "TIME", quantity(options->from, "--from"),
        "Where to start [default: the recording's start]");
    add(*events, "--span", "TIME", quantity(options->span, "--span"),
        "How much time a window shows [default: a tenth of the recording]");
    addRate(*events, options->rate);
    add(*events, "--block", "N", wholeNumber(options->blockSteps, "--block", 1, 1U << 24U),
        "Samples handed to the detector at once [default: 1024]");
    events->add_flag("--json", options->json, "JSON lines in place of CSV");
    events->callback([options, events] {
        checkTrigger(*events, options->trigger, true);
        requirePositive(options->span, "--span");
        runEvents(*options);
    });
}

} // namespace scope::cli
