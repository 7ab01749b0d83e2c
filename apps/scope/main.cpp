#include "commands.h"
#include "quantity.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <functional>
#include <sstream>
#include <utility>
#include <vector>

namespace {

constexpr int kBadInput = 2;

constexpr const char* kAbout =
    "Turns recordings into pictures of their signals.\n\n"
    "FILE is a WAV, FLAC, Ogg or other sound file; a table (.csv, .tsv, .txt) with a header line such as\n"
    "'time,v [V]', one row a time step, blank or nan where a value is missing; or a SigMF recording\n"
    "(.sigmf-meta). Times are in seconds. Values take SI prefixes: 10u, 2.5ms, 48k.";

/// A value with an SI prefix, checked where the option is read so that the message names it.
auto quantity(std::optional<double>& target, const char* option)
{
    return [&target, option](const std::string& text) {
        target = scope::parseQuantity(text);
        if (!target || !(*target - *target == 0))
            throw scope::UsageError(std::string(option) + ": expected a number such as 0.5, 10u or 2.5ms, found '" +
                                    text + "'");
    };
}

void parseSize(const std::string& text, scope::ViewOptions& options)
{
    int used = 0;
    if (std::sscanf(text.c_str(), "%5dx%5d%n", &options.width, &options.height, &used) != 2 ||
        static_cast<std::size_t>(used) != text.size())
        throw scope::UsageError("--size: expected WIDTHxHEIGHT in pixels, such as 1200x600, found '" + text + "'");
}

/// The text of an option as one of a list of names.
template <class Value>
auto oneOf(Value& target, const char* option, std::vector<std::pair<const char*, Value>> names)
{
    return [&target, option, names = std::move(names)](const std::string& text) {
        std::string known;
        for (const auto& [name, value] : names) {
            if (text == name) {
                target = value;
                return;
            }
            known += (known.empty() ? "" : ", ") + std::string(name);
        }
        throw scope::UsageError(std::string(option) + ": expected one of " + known + ", found '" + text + "'");
    };
}

/// "50%" is a share of the signal's range, anything else a value.
scope::LevelSetting parseLevel(const std::string& text, const char* option)
{
    const bool share = text.ends_with('%');
    std::optional<double> value;
    quantity(value, option)(share ? text.substr(0, text.size() - 1) : text);
    return {share ? *value / 100 : *value, share};
}

/// The same, or "auto" for none.
auto levelOrAuto(std::optional<scope::LevelSetting>& target, const char* option)
{
    return [&target, option](const std::string& text) {
        target.reset();
        if (text != "auto")
            target = parseLevel(text, option);
    };
}

/// A time that may not be negative.
auto duration(double& target, const char* option)
{
    return [&target, option](const std::string& text) {
        std::optional<double> value;
        quantity(value, option)(text);
        if (*value < 0)
            throw scope::UsageError(std::string(option) + " must not be negative, found '" + text + "'");
        target = *value;
    };
}

/// The options of a trigger. `chosen` is called when --trigger is given.
void addTrigger(CLI::App& command, scope::TriggerSettings& settings, std::function<void()> chosen)
{
    using namespace tracery::TDTC;
    const auto option = [&](const char* name, std::function<void(const std::string&)> read, const char* text) {
        return command.add_option_function<std::string>(name, std::move(read), text)->group("Trigger");
    };
    const auto type = oneOf(settings.type, "--trigger",
                            {{"edge", TypeEnum::Edge},
                             {"pulse-width", TypeEnum::PulseWidth},
                             {"transition", TypeEnum::Transition},
                             {"runt", TypeEnum::Runt},
                             {"window", TypeEnum::Window},
                             {"timeout", TypeEnum::Timeout}});
    option(
        "--trigger", [type, chosen](const std::string& text) { type(text), chosen(); },
        "edge, pulse-width, transition, runt, window or timeout")
        ->type_name("TYPE");
    option(
        "--mode",
        oneOf(
            settings.mode, "--mode",
            {{"auto", ModeEnum::Auto}, {"normal", ModeEnum::Normal}, {"once", ModeEnum::Once}, {"off", ModeEnum::Off}}),
        "auto, normal, once or off [default: normal]")
        ->type_name("MODE");
    option("--polarity",
           oneOf(settings.polarity, "--polarity",
                 {{"rising", PolarityEnum::Positive},
                  {"falling", PolarityEnum::Negative},
                  {"either", PolarityEnum::Either},
                  {"inside", PolarityEnum::Positive},
                  {"outside", PolarityEnum::Negative}}),
           "rising, falling or either; of a window, inside, outside or either [default: rising or inside]")
        ->type_name("WAY");
    option("--level", levelOrAuto(settings.level, "--level"),
           "Level of edge and timeout: a value, a share of the signal's range such as 50%, or auto, the middle of the "
           "last span [default: auto; 50% for timeout]")
        ->type_name("LEVEL");
    option(
        "--hysteresis",
        [&settings](const std::string& text) { settings.hysteresis = parseLevel(text, "--hysteresis"); },
        "How far beyond the level the signal must have been before it counts [default: 0]")
        ->type_name("LEVEL");
    option("--upper", levelOrAuto(settings.upper, "--upper"),
           "Upper level of the other types [default: auto, 90% of the last span's range]")
        ->type_name("LEVEL");
    option("--lower", levelOrAuto(settings.lower, "--lower"),
           "Lower level of the other types [default: auto, 10% of the last span's range]")
        ->type_name("LEVEL");
    option("--min-time", duration(settings.minTime, "--min-time"), "Shortest pulse or transition [default: 0]")
        ->type_name("TIME");
    option("--max-time", duration(settings.maxTime, "--max-time"), "Longest pulse or transition [default: any]")
        ->type_name("TIME");
    option("--timeout", duration(settings.timeout, "--timeout"), "How long without a crossing is a timeout")
        ->type_name("TIME");
    option("--holdoff", duration(settings.holdoff, "--holdoff"), "Least time between two events [default: 0]")
        ->type_name("TIME");
    option(
        "--position",
        [&settings](const std::string& text) {
            std::optional<double> value;
            quantity(value, "--position")(text.ends_with('%') ? text.substr(0, text.size() - 1) : text);
            settings.position = text.ends_with('%') ? *value / 100 : *value;
        },
        "Place of the event in the window, 0 left to 1 right [default: 0.5]")
        ->type_name("SHARE");
    option(
        "--delay",
        [&settings](const std::string& text) {
            std::optional<double> value;
            quantity(value, "--delay")(text);
            settings.delay = *value;
        },
        "Time from the event to that place [default: 0]")
        ->type_name("TIME");
    option(
        "--source", [&settings](const std::string& text) { settings.source = text; },
        "Channel to trigger on, a name or a number from 1 [default: the first]")
        ->type_name("CHANNEL");
    option("--part",
           oneOf(settings.part, "--part",
                 {{"real", ComplexityEnum::Real},
                  {"imaginary", ComplexityEnum::Imaginary},
                  {"magnitude", ComplexityEnum::Magnitude},
                  {"phase", ComplexityEnum::Phase}}),
           "real, imaginary, magnitude or phase (degrees) of a complex channel [default: real]")
        ->type_name("PART");
}

/// What must hold between the options of a trigger.
void checkTrigger(const CLI::App& command, const scope::TriggerSettings& settings, bool triggered)
{
    using tracery::TDTC::TypeEnum;
    const auto given = [&](const char* option) { return command.get_option(option)->count() > 0; };
    for (const CLI::Option* option : command.get_options())
        if (!triggered && option->get_group() == "Trigger" && option->count() > 0)
            throw scope::UsageError(option->get_name() + " does nothing without --trigger TYPE");
    for (const char* option : {"--level", "--hysteresis"})
        if (settings.usesTwoLevels() && given(option))
            throw scope::UsageError(std::string(option) +
                                    " is of edge and timeout; this trigger takes --upper and --lower");
    for (const char* option : {"--upper", "--lower", "--min-time", "--max-time"})
        if (triggered && !settings.usesTwoLevels() && given(option))
            throw scope::UsageError(std::string(option) + " does nothing with this trigger, which takes --level");
    if (settings.type == TypeEnum::Timeout && !(settings.timeout > 0))
        throw scope::UsageError("--trigger timeout needs a --timeout TIME longer than 0");
    if (triggered && settings.type != TypeEnum::Timeout && given("--timeout"))
        throw scope::UsageError("--timeout is of --trigger timeout");
    if (!(settings.position >= 0 && settings.position <= 1))
        throw scope::UsageError("--position: expected 0 (left) to 1 (right), or 0% to 100%");
    if (settings.maxTime < settings.minTime)
        throw scope::UsageError("--max-time is less than --min-time: no duration fits");
    if (settings.hysteresis.value < 0)
        throw scope::UsageError("--hysteresis must not be negative");
}

void requirePositive(const std::optional<double>& value, const char* option)
{
    if (value && !(*value > 0))
        throw scope::UsageError(std::string(option) + " must be positive");
}

void addInfo(CLI::App& app, scope::InfoOptions& options)
{
    CLI::App* info = app.add_subcommand("info", "Print what recordings hold: format, rate, times, channels, extremes");
    info->add_option("FILE", options.files, "Recordings")->required();
    info->add_option_function<std::string>("--rate", quantity(options.rate, "--rate"),
                                           "Samples per second, for a file that gives no times")
        ->type_name("HZ");
    info->callback([&options] { scope::runInfo(options); });
}

void addView(CLI::App& app, scope::ViewOptions& options, scope::TriggerSettings& settings)
{
    CLI::App* view = app.add_subcommand("view", "Draw recordings against time");
    view->footer("Examples:\n  tracery-scope view speech.wav\n"
                 "  tracery-scope view bus.csv --from 1.2m --span 50u -o glitch.svg\n"
                 "  tracery-scope view left.wav right.flac --channels 1,2 --size 1600x900\n"
                 "  tracery-scope view probe.csv --trigger edge --level 50% --span 2m");
    view->add_option("FILE", options.files, "Recordings; several share the time axis")->required();
    view->add_option("-o,--output", options.output, "The picture, .png or .svg [default: FILE's name with .png]");
    // One word, or it would swallow a FILE that follows.
    view->add_option_function<std::string>(
            "--channels",
            [&options](const std::string& text) {
                std::istringstream list(text);
                for (std::string name; std::getline(list, name, ',');)
                    options.channels.push_back(name);
            },
            "Channels to draw: names or numbers from 1, with commas")
        ->type_name("LIST");
    view->add_option_function<std::string>("--from", quantity(options.from, "--from"),
                                           "Where the picture starts [default: the recording's start]")
        ->type_name("TIME");
    view->add_option_function<std::string>("--span", quantity(options.span, "--span"),
                                           "How much time it shows [default: to the recording's end]")
        ->type_name("TIME");
    view->add_option_function<std::string>(
            "--size", [&options](const std::string& text) { parseSize(text, options); },
            "Width and height in pixels [default: 1200x600]")
        ->type_name("WxH");
    view->add_flag("--stack", options.stack, "Draw every channel in axes of its own");
    view->add_option("--title", options.title, "Heading [default: the file's name]");
    view->add_option_function<std::string>("--rate", quantity(options.rate, "--rate"),
                                           "Samples per second, for a file that gives no times")
        ->type_name("HZ");
    view->add_option_function<std::string>(
            "--overrun",
            [&options](const std::string& text) {
                using tracery::TimeOverrunModeEnum;
                auto mode = TimeOverrunModeEnum::Wrap;
                oneOf(mode, "--overrun",
                      {{"wrap", TimeOverrunModeEnum::Wrap}, {"scroll", TimeOverrunModeEnum::Scroll}})(text);
                options.overrun = mode;
            },
            "Stream the recording past a window of --span [default: a tenth]; at its right edge, wrap to a new sweep "
            "or scroll")
        ->type_name("MODE");
    view->add_option_function<std::string>("--until", quantity(options.until, "--until"),
                                           "Where streaming with --overrun stops [default: the recording's end]")
        ->type_name("TIME");
    addTrigger(*view, settings, [&options] { options.trigger.emplace(); });
    view->add_option("--nth", options.nth, "Which triggered window to draw, from 1 [default: 1]")->group("Trigger");
    view->callback([&options, &settings, view] {
        checkTrigger(*view, settings, options.trigger.has_value());
        if (options.trigger)
            options.trigger = settings;
        if (options.nth == 0)
            throw scope::UsageError("--nth: windows count from 1, found 0");
        requirePositive(options.span, "--span");
        if (options.overrun && options.trigger)
            throw scope::UsageError("--overrun streams without a trigger: leave --trigger or --overrun out");
        if (options.until && !options.overrun)
            throw scope::UsageError("--until does nothing without --overrun");
        scope::runView(options);
    });
}

void addEvents(CLI::App& app, scope::EventsOptions& options)
{
    CLI::App* events = app.add_subcommand("events", "Print every trigger event of a recording and what became of it");
    events->footer(
        "One row an event, in order: its time, what became of it (shown; overlap: before the last window had\n"
        "passed; superseded by a later one; not_full: the recording ends inside its window; disarmed: once\n"
        "had its window; free_run: no event, mode auto), and the window when shown. A summary follows, with the\n"
        "events that --holdoff kept out (held_off), which are not among the found.\n"
        "Example:\n  tracery-scope events ecg.csv --level 0.4 --hysteresis 0.3 --span 1");
    events->add_option("FILE", options.file, "The recording")->required();
    addTrigger(*events, options.trigger, [] {});
    events
        ->add_option_function<std::string>("--from", quantity(options.from, "--from"),
                                           "Where to start [default: the recording's start]")
        ->type_name("TIME");
    events
        ->add_option_function<std::string>("--span", quantity(options.span, "--span"),
                                           "How much time a window shows [default: a tenth of the recording]")
        ->type_name("TIME");
    events
        ->add_option_function<std::string>("--rate", quantity(options.rate, "--rate"),
                                           "Samples per second, for a file that gives no times")
        ->type_name("HZ");
    events->add_option("--block", options.blockSteps, "Samples handed to the detector at once [default: 1024]")
        ->check(CLI::Range(std::size_t{1}, std::size_t{1} << 24));
    events->add_flag("--json", options.json, "JSON lines in place of CSV");
    events->callback([&options, events] {
        checkTrigger(*events, options.trigger, true);
        requirePositive(options.span, "--span");
        scope::runEvents(options);
    });
}

void addClasses(CLI::App& app, scope::ClassesOptions& options)
{
    CLI::App* classes = app.add_subcommand("classes", "Print the classes that the library publishes to its host");
    classes->add_option("NAME", options.name, "Only this class, with or without its packages");
    classes->callback([&options] { scope::runClasses(options); });
}

int complain(const std::string& message)
{
    std::fprintf(stderr, "tracery-scope: %s\n", message.c_str());
    return kBadInput;
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app(kAbout, "tracery-scope");
    app.require_subcommand(1);
    app.set_version_flag("--version", "tracery-scope " TRACERY_VERSION);
    scope::InfoOptions infoOptions;
    scope::ViewOptions viewOptions;
    addInfo(app, infoOptions);
    scope::TriggerSettings viewTrigger;
    scope::EventsOptions eventsOptions;
    addView(app, viewOptions, viewTrigger);
    addEvents(app, eventsOptions);
    scope::ClassesOptions classesOptions;
    addClasses(app, classesOptions);
    try {
        app.parse(argc, argv);
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
            return complain("standard output: cannot be written");
        return 0;
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            return app.exit(error); // --help, --version
        return complain(std::string(error.what()) + " (see --help)");
    } catch (const std::exception& error) {
        return complain(error.what());
    }
}
