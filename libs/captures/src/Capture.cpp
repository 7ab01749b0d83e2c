#include "CaptureSource.h"
#include "StepTimes.h"
#include "thinWindow.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace tracery::captures {

namespace {

constexpr std::size_t kBytesAtOnce = 1 << 18;

std::size_t lineOf(const CaptureView& view, std::size_t channel, Part part)
{
    if (channel >= view.format.channels || (part == Part::Imaginary && !view.format.complex))
        throw std::out_of_range("a capture of " + std::to_string(view.format.channels) +
                                (view.format.complex ? " complex" : "") + " channels has no such line");
    return view.format.lineOf(channel, part == Part::Imaginary);
}

void requireSteps(const CaptureView& view, std::int64_t first, std::int64_t count)
{
    if (count < 0 || (count > 0 && (first < view.begin || first >= view.end || count > view.end - first)))
        throw std::out_of_range("a capture with steps " + std::to_string(view.begin) + " to " +
                                std::to_string(view.end - 1) + " has no " + std::to_string(count) + " from " +
                                std::to_string(first) + " on");
}

} // namespace

const recordings::RecordingInfo& Capture::info() const { return source_->info; }
const std::optional<TimeAxis>& Capture::axis() const { return source_->axis; }
std::int64_t Capture::begin() const { return source_->view()->begin; }
std::int64_t Capture::end() const { return source_->view()->end; }

Time Capture::timeOf(std::int64_t step) const
{
    const auto view = source_->view();
    requireSteps(*view, step, 1);
    if (view->axis != nullptr)
        return view->axis->timeOf(step);
    const Time time = OwnTimes(*view, view->runs(step / kChunkSteps).front().axis.start).exactly(step);
    view->check();
    return time;
}

std::int64_t Capture::firstFrom(const Time& time) const
{
    const auto view = source_->view();
    if (view->axis != nullptr)
        return std::clamp(view->axis->firstFrom(time), view->begin, view->end);
    if (view->begin == view->end)
        return view->end;
    const auto startOf = [&](std::int64_t chunk) { return view->runs(chunk).front().axis.start; };
    const std::int64_t first = view->begin / kChunkSteps, behind = (view->end + kChunkSteps - 1) / kChunkSteps;
    const std::int64_t chunk = firstThat(first, behind, first, [&](std::int64_t c) { return startOf(c) >= time; });
    const std::int64_t from = std::max(first, chunk - 1) * kChunkSteps;
    OwnTimes times(*view, time); // refuses a time on another scale
    const std::int64_t step = firstThat(from, std::min(chunk * kChunkSteps, view->end), from,
                                        [&](std::int64_t s) { return times.exactly(s) >= time; });
    view->check();
    return step;
}

void Capture::read(const Stretch& stretch, double* into) const
{
    const auto view = source_->view();
    const std::size_t line = lineOf(*view, stretch.channel, stretch.part);
    if (stretch.count == 0)
        return;
    requireSteps(*view, stretch.first, 1);
    const auto between = static_cast<std::uint64_t>(stretch.count - 1);
    if (stretch.stride < 1 || between > static_cast<std::uint64_t>(view->end - 1 - stretch.first) /
                                            static_cast<std::uint64_t>(stretch.stride))
        throw std::out_of_range("a stretch is longer than the capture");
    const auto stride = static_cast<std::size_t>(stretch.stride);
    const std::size_t atOnce = std::max<std::size_t>(kBytesAtOnce / view->format.stepBytes / stride, 1); // samples
    std::vector<std::byte> bytes;
    for (std::size_t done = 0; done < stretch.count;) {
        const auto samples = std::min(atOnce, stretch.count - done);
        const auto count = (samples - 1) * stride + 1;
        bytes.resize(count * view->format.stepBytes);
        view->read(stretch.first + static_cast<std::int64_t>(done) * stretch.stride, count, bytes.data());
        view->format.values(line, bytes.data(), samples, stride, into + done);
        done += samples;
    }
    view->check();
}

void Capture::readTimes(std::int64_t first, std::size_t count, const Time& origin, double* into) const
{
    const auto view = source_->view();
    requireSteps(*view, first, static_cast<std::int64_t>(count));
    const auto fill = [&](auto&& times) {
        for (std::size_t i = 0; i < count; ++i)
            into[i] = times(first + static_cast<std::int64_t>(i));
    };
    if (view->axis != nullptr)
        fill(EvenTimes(*view, origin));
    else
        fill(OwnTimes(*view, origin));
    view->check();
}

void Capture::points(const Window& window, std::vector<double>& points) const
{
    const auto view = source_->view();
    const std::size_t line = lineOf(*view, window.channel, window.part);
    requireSteps(*view, window.first, window.count);
    points.clear();
    thinWindow(
        *view,
        {line, window.first, window.first + window.count, window.origin, window.columnsPerSecond, window.finishLast},
        points);
    view->check();
}

} // namespace tracery::captures
