#pragma once

#include "cli/suggestion.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace scope::cli {

std::vector<std::string> commandNames(CLI::App& app);

/// A suggestion among the options of the command that is being read.
std::string nearOption(CLI::App& app, const std::string& word);

/// The manual page of all commands, for man(1).
std::string manualPage(CLI::App& app, const std::string& version);

/// A script that completes commands, options and files in bash.
std::string bashCompletion(CLI::App& app);

} // namespace scope::cli
