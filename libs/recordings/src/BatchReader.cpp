#include <tracery/recordings/BatchReader.h>

#include <algorithm>
#include <utility>

namespace tracery::recordings {

BatchReader::BatchReader(std::unique_ptr<Recording> recording, double from, double to, std::size_t steps,
                         double seconds)
    : recording_(std::move(recording)), from_(from), to_(to), steps_(std::max<std::size_t>(steps, 1)), seconds_(seconds)
{}

Steps BatchReader::next()
{
    if (ended_)
        return {};
    if (!std::exchange(sought_, true))
        recording_->seek(from_);
    if (handedOut_ == block_.steps()) {
        handedOut_ = 0;
        recording_->read(block_, steps_);
        if (block_.steps() == 0) {
            ended_ = true;
            return {};
        }
    }
    const auto first = block_.times.begin() + static_cast<std::ptrdiff_t>(handedOut_);
    auto end = std::upper_bound(first + 1, block_.times.end(), *first + seconds_);
    // One step past the window's end is the last that is wanted.
    const auto past = std::upper_bound(first, end, to_);
    if (past != end) {
        end = past + 1;
        ended_ = true;
    }
    reached_ = *(end - 1);
    const std::size_t before = handedOut_;
    handedOut_ = static_cast<std::size_t>(end - block_.times.begin());
    return stepsOfBlock(before, handedOut_);
}

Steps BatchReader::stepsOfBlock(std::size_t first, std::size_t end) const
{
    const auto part = [&](const std::vector<double>& values, std::size_t width) {
        return values.empty() ? std::span<const double>()
                              : std::span(values).subspan(first * width, (end - first) * width);
    };
    const std::size_t channels = info().channels.size();
    return {part(block_.times, 1), part(block_.real, channels), part(block_.imag, channels)};
}

} // namespace tracery::recordings
