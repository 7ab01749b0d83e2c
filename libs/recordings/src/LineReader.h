#pragma once

#include "File.h"

#include <string_view>
#include <vector>

namespace tracery::recordings {

struct Line {
    std::string_view text;       ///< without its end; valid until the next line is read
    std::uint64_t offset = 0;    ///< of its first byte in the file
    std::uint64_t number = 0;    ///< the first of the file is 1
    std::uint64_t blankLine = 0; ///< the last blank line passed over before it; 0 when there is none
};

/// The lines of a text file that hold something, in order: blank ones and comments, which begin with '#', are
/// skipped. Lines end with LF or CR LF; a byte order mark is skipped. Memory does not grow with the file.
class LineReader {
public:
    static constexpr std::size_t kMaxLine = std::size_t{1} << 20; ///< bytes

    /// file  outlives the reader
    explicit LineReader(const File& file);

    /// Goes to the line that begins at byte `offset` and has this number.
    void goTo(std::uint64_t offset, std::uint64_t number);

    /// Reads the next line; false at the end of the file.
    /// throws  InputError: a line longer than kMaxLine, or a failure to read
    bool next(Line& line);
    /// Whether next() would not wait for a line that has not come yet.
    bool ready();

private:
    bool nextRaw(Line& line);
    bool fill();

    const File* file_;
    std::vector<char> buffer_;
    std::size_t begin_ = 0; ///< what is not yet given out lies in [begin_, end_) of the buffer
    std::size_t end_ = 0;
    std::uint64_t endOffset_ = 0; ///< place in the file of end_
    std::uint64_t number_ = 1;    ///< of the line at begin_
};

} // namespace tracery::recordings
