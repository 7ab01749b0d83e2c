#include "LineReader.h"

#include <tracery/basics/Text.h>
#include <tracery/recordings/Recording.h>

#include <cstring>

namespace tracery::recordings {

using namespace basics;

namespace {
constexpr std::size_t kChunkBytes = std::size_t{1} << 17; // read at once
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
} // namespace

LineReader::LineReader(const File& file) : file_(&file), buffer_(kChunkBytes) {}

void LineReader::goTo(std::uint64_t offset, std::uint64_t number)
{
    begin_ = end_ = 0;
    endOffset_ = offset;
    number_ = number;
}

bool LineReader::next(Line& line)
{
    line.blankLine = 0;
    while (nextRaw(line)) {
        const std::string_view content = trimmed(line.text);
        if (!content.empty() && content[0] != '#')
            return true;
        if (content.empty())
            line.blankLine = line.number;
    }
    return false;
}

bool LineReader::ready()
{
    if (!file_->isLive())
        return true;
    while (std::memchr(buffer_.data() + begin_, '\n', end_ - begin_) == nullptr) {
        if (!file_->ready())
            return false;
        if (!fill())
            break;
    }
    return true;
}

bool LineReader::nextRaw(Line& line)
{
    const void* newline = std::memchr(buffer_.data() + begin_, '\n', end_ - begin_);
    while (newline == nullptr && fill())
        newline = std::memchr(buffer_.data() + begin_, '\n', end_ - begin_);
    if (begin_ == end_)
        return false;

    const char* start = buffer_.data() + begin_;
    const char* stop = newline != nullptr ? static_cast<const char*>(newline) : buffer_.data() + end_;
    line.offset = endOffset_ - (end_ - begin_);
    line.number = number_++;
    begin_ = static_cast<std::size_t>(stop - buffer_.data()) + (newline != nullptr ? 1 : 0);
    if (stop != start && stop[-1] == '\r')
        --stop;
    line.text = {start, stop};
    if (line.offset == 0 && line.text.starts_with(kByteOrderMark))
        line.text.remove_prefix(kByteOrderMark.size());
    return true;
}

/// Moves what is left to the front of the buffer, which grows when a line fills it, and reads on behind that.
/// False at the end of the file.
bool LineReader::fill()
{
    std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
    if (end_ == kMaxLine)
        throw InputError(file_->path(), "line " + std::to_string(number_),
                         "longer than " + std::to_string(kMaxLine) + " bytes");
    if (end_ == buffer_.size())
        buffer_.resize(2 * buffer_.size());
    const std::size_t got = file_->read(endOffset_, std::span(buffer_).subspan(end_));
    end_ += got;
    endOffset_ += got;
    return got != 0;
}

} // namespace tracery::recordings
