#include "RawRecording.h"

#include "EvenRecording.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace tracery::recordings {

namespace {

struct Named {
    const char* name;
    const char* stored;
    const char* text;
};
constexpr Named kFormats[] = {{"f64", "rf64_le", "64 bit floating point"},
                              {"f32", "rf32_le", "32 bit floating point"},
                              {"s16", "ri16_le", "signed 16 bit"}};

const Named& find(const std::string& path, const std::string& format)
{
    for (const Named& each : kFormats)
        if (format == each.name)
            return each;
    throw InputError(path, "", "the format is csv, f64, f32 or s16, found '" + format + "'");
}

} // namespace

RawRecording::RawRecording(File file, const std::string& format, std::size_t columns, const OpenOptions& options)
    : file_(std::move(file))
{
    const Named& named = find(file_.path(), format);
    if (columns == 0)
        throw InputError(file_.path(), "", "has 1 column or more, found 0");
    format_ = sampleFormat(named.stored).value();
    stepBytes_ = columns * format_.sampleSize();
    info_.path = file_.path();
    info_.format = std::string("raw, ") + named.text;
    info_.channels = numberedChannels(columns);
    info_.rate = chooseRate(info_.path, std::nullopt, options);
}

TimeRange RawRecording::range() { return {0, std::numeric_limits<double>::infinity()}; }

void RawRecording::seek(double time)
{
    while (stepTime(next_ + 1, *info_.rate) < time && fill(1) > 0) {
        const double ahead = (time - stepTime(next_, *info_.rate)) * *info_.rate - 1;
        const auto most = static_cast<std::size_t>(std::clamp(ahead, 1.0, 65536.0));
        const std::size_t passed = std::min(fill(most), most);
        bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(passed * stepBytes_));
        next_ += passed;
    }
}

void RawRecording::read(Block& block, std::size_t maxSteps)
{
    const std::size_t count = std::min(fill(maxSteps), maxSteps);
    block.times.resize(count);
    for (std::size_t i = 0; i < count; ++i)
        block.times[i] = stepTime(next_ + i, *info_.rate);
    block.real.resize(count * info_.channels.size());
    block.imag.clear();
    format_.decode(bytes_.data(), format_.sampleSize(), block.real);
    bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(count * stepBytes_));
    next_ += count;
}

/// Has at least one step's bytes at hand, and up to `most` as far as they have come. Returns how many; none at the end.
std::size_t RawRecording::fill(std::size_t most)
{
    const auto missing = [&](std::size_t steps) { return bytes_.size() < steps * stepBytes_; };
    while (missing(1) || (missing(most) && file_.ready())) {
        const std::size_t before = bytes_.size();
        bytes_.resize(most * stepBytes_);
        const std::size_t got = file_.read(offset_, std::span(bytes_).subspan(before));
        bytes_.resize(before + got);
        offset_ += got;
        if (got > 0)
            continue;
        if (offset_ == 0)
            throw InputError(info_.path, "", "holds no samples");
        if (missing(1) && !bytes_.empty())
            throw InputError(info_.path, "byte " + std::to_string(offset_),
                             "ends within a step of " + std::to_string(stepBytes_) + " bytes");
        break;
    }
    return bytes_.size() / stepBytes_;
}

} // namespace tracery::recordings
