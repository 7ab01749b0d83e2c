#include "cli/options.h"

#include "libraries.h"

#include <tracery/basics/Text.h>
#include <tracery/basics/quantity.h>

#include <cstdio>
#include <sstream>

namespace scope::cli {

namespace {

/// A finite value with an SI prefix, checked where the option is read so that the message names it.
double parse(const std::string& text, const char* option)
{
    const std::optional<double> value = parseQuantity(text);
    if (!value || !(*value - *value == 0))
        throw UsageError(std::string(option) + ": expected a number such as 0.5, 10u or 2.5ms, found '" + text + "'");
    return *value;
}

} // namespace

Reader quantity(std::optional<double>& target, const char* option)
{
    return [&target, option](const std::string& text) { target = parse(text, option); };
}

Reader quantity(double& target, const char* option)
{
    return [&target, option](const std::string& text) { target = parse(text, option); };
}

Reader duration(double& target, const char* option)
{
    return [&target, option](const std::string& text) {
        const double value = parse(text, option);
        if (value < 0)
            throw UsageError(std::string(option) + " must not be negative, found '" + text + "'");
        target = value;
    };
}

void requirePositive(const std::optional<double>& value, const char* option)
{
    if (value && !(*value > 0))
        throw UsageError(std::string(option) + " must be positive");
    if (value && !(*value >= 1e-18 && *value <= 1e18))
        throw UsageError(std::string(option) + ": expected 1e-18 to 1e18, found " + numberText(*value));
}

CLI::Option* add(CLI::App& command, const char* name, const char* type, Reader read, const std::string& text)
{
    return command.add_option_function<std::string>(name, std::move(read), text)->type_name(type);
}

CLI::Option* notEmpty(CLI::Option* option)
{
    return option->check(
        [](const std::string& text) { return std::string(text.empty() ? "expected a name, found ''" : ""); });
}

void addRate(CLI::App& command, std::optional<double>& rate)
{
    add(command, "--rate", "HZ", quantity(rate, "--rate"), "Samples per second, for a file that gives no times");
}

void addChannels(CLI::App& command, std::vector<std::string>& channels, const std::string& text)
{
    // One word, or it would swallow a FILE that follows.
    const auto read = [&channels](const std::string& list) {
        std::istringstream names(list + ',');
        for (std::string name; std::getline(names, name, ',');)
            name.empty() ? throw UsageError("--channels: expected names or numbers with commas, found '" + list + "'")
                         : channels.push_back(name);
    };
    add(command, "--channels", "LIST", read, text);
}

void addPicture(CLI::App& command, PictureOptions& options)
{
    const auto readSize = [&options](const std::string& text) {
        int used = 0;
        if (std::sscanf(text.c_str(), "%5dx%5d%n", &options.width, &options.height, &used) != 2 ||
            static_cast<std::size_t>(used) != text.size())
            throw UsageError("--size: expected WIDTHxHEIGHT in pixels, such as 1200x600, found '" + text + "'");
    };
    add(command, "--size", "WxH", readSize, "Width and height in pixels [default: 1200x600]");
    add(command, "--theme", "THEME",
        oneOf(options.theme, "--theme",
              {{"light", ThemeEnum::Light}, {"dark", ThemeEnum::Dark}, {"print", ThemeEnum::Print}}),
        "light, dark, or print, which needs no colours [default: light]");
    command.add_option("--title", options.title, "Heading [default: the file's name]");
}

void requireNone(const CLI::App& command, std::initializer_list<const char*> options, const std::string& where)
{
    for (const char* option : options)
        if (command.get_option(option)->count() > 0)
            throw UsageError(std::string(option) + " does nothing " + where);
}

} // namespace scope::cli
