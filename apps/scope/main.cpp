#include "cli/commandLine.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
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
    std::fprintf(stderr, "tracery-scope: %s\n", message.c_str());
    return kBadInput;
}

/// The status, once standard output has taken everything.
int delivered(int status)
{
    const bool whole = std::cout.flush().good() && std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    return whole ? status : complain("standard output: cannot be written");
}

} // namespace

int main(int argc, char** argv)
{
    // A reader that has gone, or a file that may not grow, is an error like others, to be told; nothing is left half.
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
    try {
        app.parse(argc, argv);
        return delivered(0);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            return delivered(app.exit(error)); // --help, --version
        return complain(std::string(error.what()) + " (see --help)");
    } catch (const std::bad_alloc&) {
        return complain("not enough memory");
    } catch (const std::exception& error) {
        return complain(error.what());
    }
}
