#pragma once

#include "TableLayout.h"

#include <exception>
#include <limits>

namespace tracery::recordings {

/// A table of numbers as text, one row a step. A field that is blank or "nan" is a missing value; times must
/// be there and must not decrease. Without a column of times, row i is at i / rate.
class CsvRecording final : public Recording {
public:
    /// throws  InputError: not a table, no rows, without times and rate, with both
    CsvRecording(File file, const OpenOptions& options);

    const RecordingInfo& info() const override { return info_; }
    /// Reads the end of the file; the whole of it where there are no times, as rows must be counted then.
    TimeRange range() override;
    /// Reads from the front to there, as a table has no other way to find a time.
    void seek(double time) override;
    /// Of standard input the rows that are there, having waited for one.
    void read(Block& block, std::size_t maxSteps) override;
    void stop() override { file_.stop(); }

private:
    /// What the rows up to some place leave behind for the next one.
    struct Progress {
        std::uint64_t rows = 0;
        double lastTime = -std::numeric_limits<double>::infinity(); ///< in the units of the file
    };
    /// The beginning of a row.
    struct Place {
        std::uint64_t offset = 0;
        std::uint64_t lineNumber = 0;
        Progress before;
    };

    void goTo(const Place& place);
    /// Appends the values of a row to `values`. Returns its time in seconds.
    double parseRow(const Line& line, Progress& progress, std::vector<double>& values) const;
    double parseTime(const Line& line, double fileTime, Progress& progress) const;
    /// The time of the last row of the file, having read all that begin at byte `offset` or later; the first
    /// line there does not count when `cut`, as it may have begun earlier.
    std::optional<double> lastTime(std::uint64_t offset, std::uint64_t lineNumber, bool cut) const;
    [[noreturn]] void fail(const Line& line, std::size_t column, const std::string& expected) const;

    File file_;
    LineReader lines_;
    Progress progress_;          ///< of what lines_ has given
    std::exception_ptr failure_; ///< of the row after those that are read
    TableLayout layout_;
    RecordingInfo info_;
    Place first_;
    double firstTime_ = 0;
    std::optional<TimeRange> range_; ///< once it is known
};

} // namespace tracery::recordings
