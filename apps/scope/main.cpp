#include "UsageError.h"
#include "cli/commandLine.h"
#include "cli/manual.h"
#include "input/StandardInput.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <string>

namespace {

constexpr int kBadInput = 2;

constexpr const char* kAbout =
    "Turns recordings into pictures of their signals.\n\n"
    "FILE is a WAV, FLAC, Ogg or other sound file; a table (.csv, .tsv, .txt) with a header line such as\n"
    "'time,v [V]', one row a time step, blank or nan where a value is missing; or a SigMF recording\n"
    "(.sigmf-meta). Times are in seconds. Values take SI prefixes: 10u, 2.5ms, 48k.";

int complain(const std::string& message)
{
    std::fprintf(stderr, "tracery-scope: %s\n", message.c_str());
    return kBadInput;
}

/// Made from the options as they are, by flags that the help does not show: the build calls them.
void addManual(CLI::App& app)
{
    const auto print = [&app](const char* flag, std::string (*make)(CLI::App&)) {
        const auto run = [&app, make](std::int64_t) {
            std::fputs(make(app).c_str(), stdout);
            throw CLI::Success();
        };
        app.add_flag_function(flag, run)->group("")->trigger_on_parse();
    };
    print("--manual", [](CLI::App& all) { return scope::cli::manualPage(all, TRACERY_VERSION); });
    print("--bash-completion", scope::cli::bashCompletion);
}

/// A first word that is no command is told from a command that is missing.
void checkCommand(CLI::App& app, int argc, char** argv)
{
    const std::string first = argc > 1 ? argv[1] : "";
    const std::vector<std::string> known = scope::cli::commandNames(app);
    if (first.empty() || first[0] == '-' || std::find(known.begin(), known.end(), first) != known.end())
        return;
    throw scope::UsageError("there is no command '" + first + "'" + scope::suggestion(first, known));
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app(kAbout, "tracery-scope");
    app.require_subcommand(1);
    app.set_version_flag("--version", "tracery-scope " TRACERY_VERSION);
    using namespace scope::cli;
    addInfo(app);
    addView(app);
    addPlay(app);
    addEvents(app);
    addSpectrum(app);
    addCcdf(app);
    addClasses(app);
    addManual(app);
    try {
        checkCommand(app, argc, argv);
        app.parse(argc, argv);
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
            return complain("standard output: cannot be written");
        return 0;
    } catch (const CLI::ExtrasError& error) {
        const std::vector<std::string> unknown = app.remaining(true);
        const std::string word = unknown.empty() ? error.what() : unknown[0].substr(0, unknown[0].find('='));
        return complain("there is no option '" + word + "'" + nearOption(app, word) + " (see --help)");
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            return app.exit(error); // --help, --version
        return complain(std::string(error.what()) + " (see --help)");
    } catch (const std::exception& error) {
        return complain(scope::nameStandardInput(error.what()));
    }
}
