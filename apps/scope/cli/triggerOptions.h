#pragma once

#include "libraries.h"

#include <tracery/measures/TriggerSettings.h>

#include <CLI/CLI.hpp>

#include <functional>

namespace scope::cli {

/// The options of a trigger. `chosen` is called when --trigger is given.
void addTrigger(CLI::App& command, TriggerSettings& settings, std::function<void()> chosen);

/// What must hold between the options of a trigger. throws  UsageError
void checkTrigger(const CLI::App& command, const TriggerSettings& settings, bool triggered);

} // namespace scope::cli
