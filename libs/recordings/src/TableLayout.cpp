#include "TableLayout.h"

#include "EvenRecording.h"

#include <tracery/basics/Text.h>

#include <algorithm>
#include <array>

namespace tracery::recordings {

using namespace basics;

namespace {

struct Heading {
    std::string text;
    bool quoted = false;
};

/// The fields of a line of names. Inside quotes a separator is a character like others, and two quotes stand
/// for one.
std::vector<Heading> splitHeadings(std::string_view line, char separator)
{
    std::vector<Heading> headings(1);
    bool inQuotes = false;
    for (const char c : line) {
        if (c == separator && !inQuotes) {
            headings.emplace_back();
        } else if (c == '"') {
            if (!inQuotes && headings.back().quoted)
                headings.back().text += c;
            headings.back().quoted = true;
            inQuotes = !inQuotes;
        } else {
            headings.back().text += c;
        }
    }
    for (Heading& heading : headings)
        heading.text = trimmed(heading.text);
    return headings;
}

/// Commas come last: they also stand inside numbers and names of files that have another separator.
char findSeparator(std::string_view line)
{
    for (const char separator : {'\t', ';', ','}) {
        if (splitHeadings(line, separator).size() > 1)
            return separator;
    }
    return ',';
}

/// A first line of numbers is a row. Fields may be missing from it, but not all of them.
bool isRow(const std::vector<Heading>& headings)
{
    const auto isNumber = [](const Heading& h) { return !h.quoted && parseNumber(h.text).has_value(); };
    const auto fits = [&](const Heading& h) { return isNumber(h) || h.text.empty(); };
    return std::ranges::all_of(headings, fits) && std::ranges::any_of(headings, isNumber);
}

/// "v [mV]" and "v (mV)" give a name and a unit.
Channel splitUnit(std::string_view heading)
{
    const auto open = heading.ends_with(']') ? '[' : heading.ends_with(')') ? '(' : '\0';
    const std::size_t at = open == '\0' ? std::string_view::npos : heading.rfind(open);
    if (at == std::string_view::npos)
        return {std::string(heading), ""};
    return {std::string(trimmed(heading.substr(0, at))),
            std::string(trimmed(heading.substr(at + 1, heading.size() - at - 2)))};
}

bool isTimeName(const std::string& name)
{
    constexpr std::array<std::string_view, 4> kNames{"time", "t", "seconds", "sec"};
    return std::ranges::find(kNames, lowerCase(name)) != kNames.end();
}

double timeUnitsPerSecond(const std::string& path, const Line& line, const std::string& unit)
{
    constexpr std::array<std::pair<std::string_view, double>, 6> kUnits{
        {{"", 1.0}, {"s", 1.0}, {"ms", 1e3}, {"us", 1e6}, {"\u00b5s", 1e6}, {"ns", 1e9}}};
    const auto found = std::ranges::find(kUnits, unit, [](const auto& entry) { return entry.first; });
    if (found == kUnits.end())
        throw InputError(path, "line " + std::to_string(line.number) + ", column 1",
                         "expected times in s, ms, us or ns, found '" + unit + "'");
    return found->second;
}

} // namespace

TableLayout readLayout(const std::string& path, const Line& first, bool hasRate)
{
    TableLayout layout;
    layout.separator = findSeparator(first.text);
    const std::vector<Heading> headings = splitHeadings(first.text, layout.separator);
    layout.hasHeader = !isRow(headings);
    if (!layout.hasHeader) {
        layout.hasTimes = !hasRate;
        layout.channels = numberedChannels(headings.size() - (layout.hasTimes ? 1 : 0));
    } else {
        for (const Heading& heading : headings)
            layout.channels.push_back(splitUnit(oneLine(heading.text)));
        const Channel& column = layout.channels.front();
        layout.hasTimes = isTimeName(column.name);
        // Where the file is not what it seems, asking for a rate would mislead.
        const bool binary = first.text.find('\0') != std::string_view::npos;
        const bool onlyBlanks = headings.size() == 1 && !hasRate && column.name.find(' ') != std::string::npos;
        if (binary || onlyBlanks)
            throw InputError(path, "line " + std::to_string(first.number),
                             "expected headings in UTF-8, with commas, semicolons or tabs between them");
        if (layout.hasTimes) {
            layout.timeUnitsPerSecond = timeUnitsPerSecond(path, first, column.unit);
            layout.channels.erase(layout.channels.begin());
        }
        for (std::size_t i = 0; i < layout.channels.size(); ++i) {
            if (layout.channels[i].name.empty())
                layout.channels[i].name = channelName(i);
        }
    }
    if (layout.channels.empty())
        throw InputError(path, "line " + std::to_string(first.number), "expected a column of values after the time");
    return layout;
}

std::string_view firstField(std::string_view rest, char separator) { return rest.substr(0, rest.find(separator)); }

std::string_view fieldContent(std::string_view field)
{
    field = trimmed(field);
    if (field.size() >= 2 && field.front() == '"' && field.back() == '"')
        field = trimmed(field.substr(1, field.size() - 2));
    return field;
}

std::size_t countFields(std::string_view line, char separator)
{
    return 1 + static_cast<std::size_t>(std::ranges::count(line, separator));
}

} // namespace tracery::recordings
