#include "cli/commandLine.h"

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
