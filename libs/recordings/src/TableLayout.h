#pragma once

#include "LineReader.h"

#include <tracery/recordings/Recording.h>

namespace tracery::recordings {

/// What the first line of a table tells about its columns.
struct TableLayout {
    char separator = ',';
    bool hasHeader = false;        ///< otherwise the first line is a row of numbers already
    bool hasTimes = false;         ///< the first column holds the time of each row
    double timeUnitsPerSecond = 1; ///< 1000 when times are in milliseconds
    std::vector<Channel> channels; ///< the other columns
    std::size_t columns() const { return channels.size() + (hasTimes ? 1 : 0); }
};

/// Finds out about the columns from the first line: the separator (tab, semicolon or comma), the names and
/// units, as in "time [ms]; v (mV)", and whether there are times, which is so when the first column is called
/// time, t, seconds or sec, or when there are no names and no rate is given.
/// throws  InputError: no column but the time, a time unit that is not known
TableLayout readLayout(const std::string& path, const Line& first, bool hasRate);

/// The field at the front of `rest`, without its separator.
std::string_view firstField(std::string_view rest, char separator);

/// What a field holds: without the blanks around it and the quotes around those.
std::string_view fieldContent(std::string_view field);

std::size_t countFields(std::string_view line, char separator);

} // namespace tracery::recordings
