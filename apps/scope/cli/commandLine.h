#pragma once

#include <CLI/CLI.hpp>

/// The commands of the program: each adds itself, with its options, and runs when it is chosen.
namespace scope::cli {

void addInfo(CLI::App& app);
void addView(CLI::App& app);
void addPlay(CLI::App& app);
void addEvents(CLI::App& app);
void addSpectrum(CLI::App& app);
void addCcdf(CLI::App& app);
void addClasses(CLI::App& app);

} // namespace scope::cli
