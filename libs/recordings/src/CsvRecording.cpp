#include "CsvRecording.h"

#include "EvenRecording.h"

#include <tracery/basics/Text.h>

#include <fast_float/fast_float.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

namespace tracery::recordings {

using namespace basics;

namespace {

constexpr std::uint64_t kTailBytes = 65536;
constexpr std::uint64_t kDigitRows = 64; // the first ones tell how times are written, and now and then another
constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

struct Field {
    double value;
    std::size_t length; ///< in characters, up to its separator or the end of the line
};

/// The field at the front of `rest`; none when it is not a number. Nearly every field is a bare number, so
/// that comes first: parsing finds the end of the field as well.
std::optional<Field> parseField(std::string_view rest, char separator)
{
    const char* const end = rest.data() + rest.size();
    double value = 0;
    const auto [stop, error] = fast_float::from_chars(rest.data(), end, value);
    if (error == std::errc() && (stop == end || *stop == separator))
        return Field{std::isnan(value) ? kMissing : value, static_cast<std::size_t>(stop - rest.data())};

    const std::string_view field = firstField(rest, separator);
    const std::string_view content = fieldContent(field);
    const std::optional<double> number = content.empty() ? kMissing : parseNumber(content);
    if (!number)
        return std::nullopt;
    return Field{std::isnan(*number) ? kMissing : *number, field.size()};
}

std::string lineOf(const Line& line) { return "line " + std::to_string(line.number); }

/// A field as an error shows it; long ones are cut.
std::string quoted(std::string_view field)
{
    constexpr std::size_t kShown = 40;
    const bool isLong = field.size() > kShown;
    return "'" + std::string(field.substr(0, kShown)) + (isLong ? "..." : "") + "'";
}

} // namespace

CsvRecording::CsvRecording(File file, const OpenOptions& options) : file_(std::move(file)), lines_(file_)
{
    const std::string& path = file_.path();
    Line line;
    const bool hasLine = lines_.next(line);
    if (hasLine)
        layout_ = readLayout(path, line, options.rate.has_value());
    if (!hasLine || (layout_.hasHeader && !lines_.next(line)))
        throw InputError(path, "", "holds no rows of numbers");
    if (layout_.hasTimes && options.rate)
        throw InputError(path, "", "has its own times", InputError::Kind::RateKnown);

    info_.path = path;
    info_.format = "CSV";
    info_.channels = layout_.channels;
    if (!layout_.hasTimes)
        info_.rate = options.rate.value_or(1);

    // Where the file is not what it seems, asking for a rate would mislead.
    first_ = {line.offset, line.number, {}};
    std::vector<double> values;
    firstTime_ = parseRow(line, progress_, values);
    if (!layout_.hasTimes)
        info_.rate = chooseRate(path, std::nullopt, options);
    goTo(first_);
}

void CsvRecording::WrittenDigits::note(std::string_view number)
{
    int digits = 0, behindPoint = 0, exponent = 0;
    bool point = false;
    for (std::size_t i = 0; i < number.size(); ++i) {
        const char c = number[i];
        if (c == 'e' || c == 'E') {
            number.remove_prefix(i + 1);
            number.remove_prefix(number.starts_with('+') ? 1 : 0);
            std::from_chars(number.data(), number.data() + number.size(), exponent);
            break;
        }
        point |= c == '.';
        if (c < '0' || c > '9')
            continue;
        digits += digits > 0 || c != '0' ? 1 : 0;
        behindPoint += point ? 1 : 0;
    }
    significant = std::max(significant, digits);
    decimals = std::max(decimals, behindPoint - exponent);
}

double CsvRecording::lastDigit(double time) const
{
    const WrittenDigits& digits = progress_.timeDigits;
    if (!layout_.hasTimes || digits.significant == 0)
        return 0;
    // Numbers have as many decimals, or as many digits in all: then the last place of large ones is the greater.
    const double inFile = std::abs(time) * layout_.timeUnitsPerSecond;
    const int first = inFile > 0 ? static_cast<int>(std::floor(std::log10(inFile))) : -digits.decimals;
    const int last = std::max(-digits.decimals, first + 1 - digits.significant);
    return std::pow(10.0, last) / layout_.timeUnitsPerSecond;
}

TimeRange CsvRecording::range()
{
    if (file_.isLive())
        return {firstTime_, std::numeric_limits<double>::infinity()};
    if (!range_ && layout_.hasTimes) {
        try {
            const std::uint64_t tail = file_.size() - std::min(file_.size(), kTailBytes);
            const std::optional<double> last =
                lastTime(std::max(tail, first_.offset), first_.lineNumber, tail > first_.offset);
            if (last && *last >= firstTime_)
                range_ = {firstTime_, *last};
        } catch (const InputError&) {
            // Something is wrong with the table. Reading from the front meets it again and knows its line.
        }
    }
    if (!range_)
        range_ = {firstTime_, lastTime(first_.offset, first_.lineNumber, false).value()};
    return *range_;
}

std::optional<double> CsvRecording::lastTime(std::uint64_t offset, std::uint64_t lineNumber, bool cut) const
{
    LineReader lines(file_);
    lines.goTo(offset, lineNumber);
    std::optional<double> time;
    Line line;
    Progress progress;
    std::vector<double> values;
    if (cut)
        lines.next(line);
    for (; lines.next(line); values.clear())
        time = parseRow(line, progress, values);
    return time;
}

void CsvRecording::seek(double time)
{
    goTo(first_);
    Place lastBefore = first_;
    Line line;
    std::vector<double> values;
    for (bool before = true; before && lines_.next(line); values.clear()) {
        const Place here{line.offset, line.number, progress_};
        before = parseRow(line, progress_, values) < time;
        if (before)
            lastBefore = here;
    }
    goTo(lastBefore);
}

void CsvRecording::read(Block& block, std::size_t maxSteps)
{
    block.times.clear();
    block.real.clear();
    block.imag.clear();
    if (failure_)
        std::rethrow_exception(failure_);
    try {
        Line line;
        while (block.steps() < maxSteps && (block.steps() == 0 || lines_.ready()) && lines_.next(line))
            block.times.push_back(parseRow(line, progress_, block.real));
    } catch (const InputError&) {
        if (block.steps() == 0)
            throw;
        block.real.resize(block.steps() * info_.channels.size()); // without the first fields of the bad row
        failure_ = std::current_exception();                      // when the rows before it are read
    }
}

void CsvRecording::goTo(const Place& place)
{
    lines_.goTo(place.offset, place.lineNumber);
    progress_ = place.before;
    failure_ = nullptr;
}

double CsvRecording::parseRow(const Line& line, Progress& progress, std::vector<double>& values) const
{
    // A blank line may be a value that is missing; passed over, it would shift the times of all that follow.
    if (!layout_.hasTimes && line.blankLine != 0 && progress.rows != 0)
        throw InputError(info_.path, "line " + std::to_string(line.blankLine),
                         "expected a row, found a blank line; a missing value is written nan");

    const std::size_t columns = layout_.columns();
    double time = layout_.hasTimes ? 0.0 : stepTime(progress.rows, *info_.rate);
    std::string_view rest = line.text;
    for (std::size_t column = 0; column < columns; ++column) {
        const std::optional<Field> field = parseField(rest, layout_.separator);
        if (!field)
            fail(line, column, "expected a number");
        if (column == 0 && layout_.hasTimes && (progress.rows < kDigitRows || progress.rows % kDigitRows == 0))
            progress.timeDigits.note(rest.substr(0, field->length));
        rest.remove_prefix(field->length);
        if (rest.empty() != (column + 1 == columns))
            fail(line, column, "");
        if (!rest.empty())
            rest.remove_prefix(1);
        if (column == 0 && layout_.hasTimes)
            time = parseTime(line, field->value, progress);
        else
            values.push_back(field->value);
    }
    ++progress.rows;
    return time;
}

double CsvRecording::parseTime(const Line& line, double fileTime, Progress& progress) const
{
    constexpr double kLargestTime = 1e300; // so that differences, and spans times pixels, are numbers
    if (!(std::abs(fileTime) <= kLargestTime))
        fail(line, 0, std::isfinite(fileTime) ? "expected a time from -1e300 to 1e300" : "expected a time");
    if (fileTime < progress.lastTime)
        throw InputError(info_.path, lineOf(line),
                         "time " + numberText(fileTime) + " comes after " + numberText(progress.lastTime) +
                             "; times must not decrease");
    progress.lastTime = fileTime;
    return fileTime / layout_.timeUnitsPerSecond;
}

/// The wrong number of fields explains whatever else is wrong with a row, so it is told first.
void CsvRecording::fail(const Line& line, std::size_t column, const std::string& expected) const
{
    const std::size_t fields = countFields(line.text, layout_.separator);
    if (fields != layout_.columns())
        throw InputError(info_.path, lineOf(line),
                         "expected " + std::to_string(layout_.columns()) + " fields, found " + std::to_string(fields));
    std::string_view rest = line.text;
    for (std::size_t i = 0; i < column; ++i)
        rest.remove_prefix(firstField(rest, layout_.separator).size() + 1);
    throw InputError(info_.path, lineOf(line) + ", column " + std::to_string(column + 1),
                     expected + ", found " + quoted(fieldContent(firstField(rest, layout_.separator))));
}

} // namespace tracery::recordings
