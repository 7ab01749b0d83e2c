#pragma once

#include "UsageError.h"
#include "cli/suggestion.h"
#include "commands/PictureOptions.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <optional>
#include <string>
#include <type_traits>
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

/// A whole number from `low` to `high`.
template <class Count>
Reader wholeNumber(Count& target, const char* option, std::uint64_t low,
                   std::uint64_t high = std::numeric_limits<std::uint64_t>::max())
{
    return [&target, option, low, high](const std::string& text) {
        std::uint64_t number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc() || end != text.data() + text.size() || number < low || number > high)
            throw UsageError(std::string(option) + ": expected a whole number from " + std::to_string(low) +
                             (high < std::numeric_limits<std::uint64_t>::max() ? " to " + std::to_string(high) : "") +
                             ", found '" + text + "'");
        using Number = std::conditional_t<std::is_arithmetic_v<Count>, Count, std::uint64_t>; // or an optional of one
        target = static_cast<Number>(number);
    };
}

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
/// Has an option refuse the empty text, which would pass for none.
CLI::Option* notEmpty(CLI::Option* option);

void addRate(CLI::App& command, std::optional<double>& rate);
void addChannels(CLI::App& command, std::vector<std::string>& channels, const std::string& text);
/// --size, --theme and --title.
void addPicture(CLI::App& command, PictureOptions& options);
/// Refuses the first of these options that was given: it does nothing, for what `where` says.
void requireNone(const CLI::App& command, std::initializer_list<const char*> options, const std::string& where);

} // namespace scope::cli
