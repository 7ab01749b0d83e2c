#include "cli/triggerOptions.h"

#include "cli/options.h"

namespace scope::cli {

namespace {

/// "50%" is a share of the signal's range, anything else a value.
LevelSetting parseLevel(const std::string& text, const char* option)
{
    const bool share = text.ends_with('%');
    double value = 0;
    quantity(value, option)(share ? text.substr(0, text.size() - 1) : text);
    return {share ? value / 100 : value, share};
}

/// The same, or "auto" for none.
auto levelOrAuto(std::optional<LevelSetting>& target, const char* option)
{
    return [&target, option](const std::string& text) {
        target.reset();
        if (text != "auto")
            target = parseLevel(text, option);
    };
}

/// A window is gone into or out of, a level crossed upward or downward.
void checkPolarity(const std::string& way, bool ofWindow)
{
    const bool isPlace = way == "inside" || way == "outside";
    if (way != "either" && isPlace != ofWindow)
        throw UsageError("--polarity: this trigger takes " +
                         std::string(ofWindow ? "inside, outside" : "rising, falling") + " or either, found '" + way +
                         "'");
}

} // namespace

void addTrigger(CLI::App& command, TriggerSettings& settings, std::function<void()> chosen)
{
    using namespace tracery::TDTC;
    const auto option = [&](const char* name, const char* type, Reader read, const char* text) {
        add(command, name, type, std::move(read), text)->group("Trigger");
    };
    const auto type = oneOf(settings.type, "--trigger",
                            {{"edge", TypeEnum::Edge},
                             {"pulse-width", TypeEnum::PulseWidth},
                             {"transition", TypeEnum::Transition},
                             {"runt", TypeEnum::Runt},
                             {"window", TypeEnum::Window},
                             {"timeout", TypeEnum::Timeout}});
    option(
        "--trigger", "TYPE", [type, chosen](const std::string& text) { type(text), chosen(); },
        "edge, pulse-width, transition, runt, window or timeout");
    option(
        "--mode", "MODE",
        oneOf(
            settings.mode, "--mode",
            {{"auto", ModeEnum::Auto}, {"normal", ModeEnum::Normal}, {"once", ModeEnum::Once}, {"off", ModeEnum::Off}}),
        "auto, normal, once or off [default: normal]");
    option("--polarity", "WAY",
           oneOf(settings.detector.polarity, "--polarity",
                 {{"rising", PolarityEnum::Positive},
                  {"falling", PolarityEnum::Negative},
                  {"either", PolarityEnum::Either},
                  {"inside", PolarityEnum::Positive},
                  {"outside", PolarityEnum::Negative}}),
           "rising, falling or either; of a window, inside, outside or either [default: rising or inside]");
    option("--level", "LEVEL", levelOrAuto(settings.level, "--level"),
           "Level of edge and timeout: a value, a share of the signal's range such as 50%, or auto, the middle of the "
           "last span [default: auto; 50% for timeout]");
    option(
        "--hysteresis", "LEVEL",
        [&settings](const std::string& text) { settings.hysteresis = parseLevel(text, "--hysteresis"); },
        "How far beyond the level the signal must have been before it counts [default: 0]");
    option("--upper", "LEVEL", levelOrAuto(settings.upper, "--upper"),
           "Upper level of the other types [default: auto, 90% of the last span's range]");
    option("--lower", "LEVEL", levelOrAuto(settings.lower, "--lower"),
           "Lower level of the other types [default: auto, 10% of the last span's range]");
    option("--min-time", "TIME", duration(settings.detector.minTime, "--min-time"),
           "Shortest pulse or transition [default: 0]");
    option("--max-time", "TIME", duration(settings.detector.maxTime, "--max-time"),
           "Longest pulse or transition [default: any]");
    option("--timeout", "TIME", duration(settings.detector.timeout, "--timeout"),
           "How long without a crossing is a timeout");
    option("--holdoff", "TIME", duration(settings.detector.holdoff, "--holdoff"),
           "Least time between two events [default: 0]");
    option(
        "--position", "SHARE",
        [&settings](const std::string& text) { settings.position = parseLevel(text, "--position").value; },
        "Place of the event in the window, 0 left to 1 right [default: 0.5]");
    option("--delay", "TIME", quantity(settings.delay, "--delay"), "Time from the event to that place [default: 0]");
    notEmpty(add(
                 command, "--source", "CHANNEL", [&settings](const std::string& text) { settings.source = text; },
                 "Channel to trigger on, a name or a number from 1 [default: the first]"))
        ->group("Trigger");
    option("--part", "PART",
           oneOf(settings.part, "--part",
                 {{"real", ComplexityEnum::Real},
                  {"imaginary", ComplexityEnum::Imaginary},
                  {"magnitude", ComplexityEnum::Magnitude},
                  {"phase", ComplexityEnum::Phase}}),
           "real, imaginary, magnitude or phase (degrees) of a complex channel [default: real]");
}

void checkTrigger(const CLI::App& command, const TriggerSettings& settings, bool triggered)
{
    using tracery::TDTC::TypeEnum;
    const auto given = [&](const char* option) { return command.get_option(option)->count() > 0; };
    for (const CLI::Option* option : command.get_options())
        if (!triggered && option->get_group() == "Trigger" && option->count() > 0)
            throw UsageError(option->get_name() + " does nothing without --trigger TYPE");
    for (const char* option : {"--level", "--hysteresis"})
        if (settings.usesTwoLevels() && given(option))
            throw UsageError(std::string(option) + " is of edge and timeout; this trigger takes --upper and --lower");
    for (const char* option : {"--upper", "--lower", "--min-time", "--max-time"})
        if (triggered && !settings.usesTwoLevels() && given(option))
            throw UsageError(std::string(option) + " does nothing with this trigger, which takes --level");
    if (given("--polarity"))
        checkPolarity(command.get_option("--polarity")->as<std::string>(), settings.type == TypeEnum::Window);
    if (settings.type == TypeEnum::Timeout && !(settings.detector.timeout > 0))
        throw UsageError("--trigger timeout needs a --timeout TIME longer than 0");
    if (triggered && settings.type != TypeEnum::Timeout && given("--timeout"))
        throw UsageError("--timeout is of --trigger timeout");
    if (!(settings.position >= 0 && settings.position <= 1))
        throw UsageError("--position: expected 0 (left) to 1 (right), or 0% to 100%");
    if (settings.detector.maxTime < settings.detector.minTime)
        throw UsageError("--max-time is less than --min-time: no duration fits");
    if (settings.hysteresis.value < 0)
        throw UsageError("--hysteresis must not be negative");
}

} // namespace scope::cli
