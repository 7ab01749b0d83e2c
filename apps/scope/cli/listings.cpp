// The commands that only print: info and classes.

#include "cli/commandLine.h"
#include "cli/options.h"
#include "commands/commands.h"

#include <memory>

namespace scope::cli {

void addInfo(CLI::App& app)
{
    const auto options = std::make_shared<InfoOptions>();
    CLI::App* info = app.add_subcommand("info", "Print what recordings hold: format, rate, times, channels, extremes");
    notEmpty(info->add_option("FILE", options->files, "Recordings; - is standard input"))->required();
    addRate(*info, options->rate);
    info->callback([options] { runInfo(*options); });
}

void addClasses(CLI::App& app)
{
    const auto options = std::make_shared<ClassesOptions>();
    CLI::App* classes = app.add_subcommand("classes", "Print the classes that the library publishes to its host");
    notEmpty(classes->add_option("NAME", options->name, "Only this class, with or without its packages"));
    notEmpty(classes->add_option("--module", options->module, "The file of a module to list instead, built elsewhere"))
        ->type_name("PATH");
    classes->callback([options] { runClasses(*options); });
}

} // namespace scope::cli
