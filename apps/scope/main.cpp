#include "UsageError.h"
#include "cli/commandLine.h"
#include "cli/manual.h"
#include "libraries.h"
#include "stream/StandardInput.h"

#include <tracery/Kernels.h>
#include <tracery/basics/Text.h>
#include <tracery/host/Error.h>
#include <tracery/recordings/Recording.h>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <iostream>
#include <new>
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
    std::fprintf(stderr, "tracery-scope: %s\n", scope::oneLine(message).c_str());
    return kBadInput;
}

/// What the options can do about a file.
std::string adviceOn(const scope::InputError& error)
{
    using enum scope::InputError::Kind;
    switch (error.kind()) {
    case RateMissing:
        return ": say the steps per second with --rate";
    case RateKnown:
        return ": leave out --rate";
    case Other:
        break;
    }
    return {};
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

/// Kernels that the environment asks for and that are not known, without the identifier that hosts show.
void checkKernels()
{
    try {
        tracery::kernelsInUse();
    } catch (const tracery::Error& error) {
        throw scope::UsageError(std::string(error.what()).substr(error.identifier().size() + 2));
    }
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

/// Standard output could not be written. One that reads it no more, as head does, has what it wanted.
int complainOfOutput(const std::string& message)
{
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    const bool readerHasGone = poll(&output, 1, 0) > 0 && (output.revents & POLLERR) != 0;
    return readerHasGone ? 0 : complain(message);
}

/// The status, once standard output has taken everything.
int delivered(int status)
{
    const bool whole = std::cout.flush().good() && std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    return whole ? status : complainOfOutput("standard output: cannot be written");
}

} // namespace

int main(int argc, char** argv)
{
    // A reader that has gone, or a file that may not grow, fails a write; nothing is left half.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    // Standard streams that are closed must not become files that are opened: text would go into pictures.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", O_RDONLY) != stream)
            return kBadInput;
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
        checkKernels();
        checkCommand(app, argc, argv);
        app.parse(argc, argv);
        return delivered(0);
    } catch (const CLI::ExtrasError& error) {
        const std::vector<std::string> unknown = app.remaining(true);
        if (!unknown.empty() && !unknown[0].starts_with('-'))
            return complain("'" + unknown[0] + "' is one word too many (see --help)");
        const std::string word = unknown.empty() ? error.what() : unknown[0].substr(0, unknown[0].find('='));
        return complain("there is no option '" + word + "'" + nearOption(app, word) + " (see --help)");
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            return delivered(app.exit(error)); // --help, --version
        return complain(std::string(error.what()) + " (see --help)");
    } catch (const scope::InputError& error) {
        return complain(scope::nameStandardInput(error.what()) + adviceOn(error));
    } catch (const std::bad_alloc&) {
        return complain("not enough memory");
    } catch (const std::exception& error) {
        const std::string message = scope::nameStandardInput(error.what());
        return message.starts_with("standard output: ") ? complainOfOutput(message) : complain(message);
    }
}
