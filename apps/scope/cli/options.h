#pragma once

#include "UsageError.h"
#include "cli/suggestion.h"
#include "commands/PictureOptions.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// Readers of options whose messages name the option, and the options that several commands have.
namespace scope::cli {

using Reader = std::function<void(const std::string&)>;

/// A finite value with an SI prefix.
Reader quantity(std::optional<double>& target, const char* option);
Reader quantity(double& target, const char* option);
/// A time that may not be negative.
Reader duration(double& target, const char* option);

/// The text as one of a list of names.
template <class Value>
Reader oneOf(Value& target, const char* option, std::vector<std::pair<const char*, Value>> names)
{
    return [&target, option, names = std::move(names)](const std::string& text) {
        std::string known;
        for (const auto& [name, value] : names) {
            if (text == name) {
                target = value;
                return;
            }
            known += (known.empty() ? "" : ", ") + std::string(name);
        }
        std::vector<std::string> all;
        for (const auto& [name, value] : names)
            all.emplace_back(name);
        throw UsageError(std::string(option) + ": expected one of " + known + ", found '" + text + "'" +
                         suggestion(text, all));
    };
}

/// Positive, and no further from 1 than times and ratios come.
void requirePositive(const std::optional<double>& value, const char* option);

/// An option that `read` takes; `type` stands for its value in the help.
CLI::Option* add(CLI::App& command, const char* name, const char* type, Reader read, const std::string& text);

void addRate(CLI::App& command, std::optional<double>& rate);
void addChannels(CLI::App& command, std::vector<std::string>& channels, const std::string& text);
/// --size, --theme and --title.
void addPicture(CLI::App& command, PictureOptions& options);

} // namespace scope::cli
