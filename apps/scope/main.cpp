#include "commands.h"
#include "quantity.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>

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

void addInfo(CLI::App& app, scope::InfoOptions& options)
{
    CLI::App* info = app.add_subcommand("info", "Print what recordings hold: format, rate, times, channels, extremes");
    info->add_option("FILE", options.files, "Recordings")->required();
    info->add_option_function<std::string>("--rate", quantity(options.rate, "--rate"),
                                           "Samples per second, for a file that gives no times")
        ->type_name("HZ");
    info->callback([&options] { scope::runInfo(options); });
}

void addView(CLI::App& app, scope::ViewOptions& options)
{
    CLI::App* view = app.add_subcommand("view", "Draw recordings against time");
    view->footer("Examples:\n  tracery-scope view speech.wav\n"
                 "  tracery-scope view bus.csv --from 1.2m --span 50u -o glitch.svg\n"
                 "  tracery-scope view left.wav right.flac --channels 1,2 --size 1600x900");
    view->add_option("FILE", options.files, "Recordings; several share the time axis")->required();
    view->add_option("-o,--output", options.output, "The picture, .png or .svg [default: FILE's name with .png]");
    view->add_option("--channels", options.channels, "Channels to draw: names or numbers from 1, with commas")
        ->delimiter(',')
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
    view->add_option("--title", options.title, "Heading [default: the file's name]");
    view->add_option_function<std::string>("--rate", quantity(options.rate, "--rate"),
                                           "Samples per second, for a file that gives no times")
        ->type_name("HZ");
    view->callback([&options] { scope::runView(options); });
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
    addView(app, viewOptions);
    try {
        app.parse(argc, argv);
        return 0;
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            return app.exit(error); // --help, --version
        return complain(std::string(error.what()) + " (see --help)");
    } catch (const std::exception& error) {
        return complain(error.what());
    }
}
