#include "commands/PlayCommand.h"

#include "UsageError.h"
#include "commands/Interrupt.h"
#include "commands/output.h"
#include "display/FrameWriter.h"
#include "display/ScopeHost.h"
#include "display/TextFrame.h"
#include "libraries.h"
#include "stream/StandardInput.h"
#include "stream/sources.h"
#include "trigger/LiveDisplay.h"

#include <tracery/DrawScheduler.h>
#include <tracery/basics/quantity.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>

namespace scope {

using tracery::DrawScheduler;

namespace {

using namespace std::chrono_literals;
constexpr auto kIdleSlice = 2ms;
constexpr auto kUntilRedraw = 2ms;     // how late a redraw may be
constexpr auto kUntilInterrupt = 50ms; // how late Ctrl-C may be seen

bool isStandardInput(const PlayOptions& options) { return options.file == "-"; }

/// interrupt  ends standard input
Recordings openPlayed(const PlayOptions& options, const std::optional<Interrupt>& interrupt)
{
    Recordings recordings;
    recordings.push_back(isStandardInput(options) ? openStream(STDIN_FILENO, "standard input", options.format,
                                                               options.columns, {options.rate}, interrupt->descriptor())
                                                  : openInput(options.file, {options.rate}));
    return recordings;
}

/// The window at the start.
Window firstWindow(Recording& recording, const PlayOptions& options)
{
    const TimeRange range = recording.range();
    const double from = options.from.value_or(range.first);
    if (from > range.last)
        throw UsageError(recording.info().path + ": " + nothingAfter(from, range));
    const double span = options.span.value_or(std::isinf(range.last) ? 1 : (range.last - range.first) / 10);
    if (!(span > 0))
        throw UsageError("the recording has a single time: say with --span how much time a window shows");
    requireResolution(span, from, std::isinf(range.last) ? from : range.last,
                      options.trigger ? TimeAxis::FromEvent : TimeAxis::OfTimes);
    return {from, from + span};
}

std::unique_ptr<LiveTrigger> makeTrigger(const Recordings& recordings, const PlayOptions& options, const Window& first)
{
    if (!options.trigger)
        return nullptr;
    const TriggerSettings& settings = *options.trigger;
    if (isStandardInput(options) && settings.needsRange())
        throw UsageError("the range of standard input is not known: give levels as values or auto, not as shares");
    const TriggerSource source = findTriggerSource(recordings, settings, options.channels);
    const SignalRange range =
        rangeForLevels({options.file}, *recordings[0], options.rate, source, settings, first.from);
    return std::make_unique<LiveTrigger>(settings, LineSource{source.port, source.channel, partOf(settings.part)},
                                         range, first.from, first.to - first.from);
}

std::string framePath(const std::string& folder, std::uint64_t number)
{
    char name[40];
    std::snprintf(name, sizeof name, "frame-%06llu.png", static_cast<unsigned long long>(number));
    return (std::filesystem::path(folder) / name).string();
}

/// Where frames go. `screen` outlives it.
FrameWriter::Sink makeSink(const PlayOptions& options, TextScreen& screen)
{
    if (options.folder.empty())
        return [&screen](const Figure& figure, std::uint64_t) { screen.show(figure); };
    requirePictureSize(framePath(options.folder, 1), options.width, options.height);
    std::error_code error;
    std::filesystem::create_directories(options.folder, error);
    if (!std::filesystem::is_directory(options.folder))
        throw UsageError(options.folder + ": the folder cannot be made" + (error ? ": " + error.message() : ""));
    requireWritablePicture(framePath(options.folder, 1), options.width, options.height);
    return [&folder = options.folder](const Figure& figure, std::uint64_t number) {
        writeFigure(figure, framePath(folder, number));
    };
}

/// A task of the process's scheduler, bound for its own lifetime.
class BoundTask {
public:
    explicit BoundTask(std::function<void()> task) : id_(DrawScheduler::getInstance()->Bind(std::move(task))) {}
    ~BoundTask() { DrawScheduler::getInstance()->Unbind(id_); }
    BoundTask(const BoundTask&) = delete;
    BoundTask& operator=(const BoundTask&) = delete;

private:
    std::size_t id_;
};

struct Redraws {
    unsigned count = 0; ///< the last of which does not wait for its time
    double seconds = 0;
    double perSecond() const { return count > 1 ? (count - 1) / seconds : 0; }
};

void printTotals(const LiveFeed::Totals& steps, std::size_t channels, const FrameWriter::Totals& frames,
                 const Redraws& redraws, double period)
{
    std::printf("samples: %llu in, %llu lost\n", static_cast<unsigned long long>(steps.written * channels),
                static_cast<unsigned long long>(steps.lost() * channels));
    std::printf("redraws: %u in %.3f s, one at the end, before it %.4g a second, at most %.4g; "
                "frames: %llu written, %llu dropped\n",
                redraws.count, redraws.seconds, redraws.perSecond(), 1 / period,
                static_cast<unsigned long long>(frames.written), static_cast<unsigned long long>(frames.dropped));
    std::printf("longest wait of the writer: %s\n",
                formatQuantity(std::chrono::duration<double>(steps.longestWrite).count(), "s", 3).c_str());
}

/// Plays to the end or the source's failure, or until enough frames are accepted or Ctrl-C comes.
Redraws play(ScopeHost& host, LiveFeed& feed, LiveDisplay& display, FrameWriter& frames, const PlayOptions& options,
             const Interrupt& interrupt)
{
    bool last = false;
    const auto enough = [&](std::uint64_t count) { return options.frames != 0 && count >= options.frames; };
    const BoundTask draw([&] { display.draw(last); });
    // What a commit shows of the display is a frame.
    const auto picture = host->graphics().addCommitHook([&](int) {
        if (!display.hasPicture() || enough(frames.totals().accepted))
            return;
        const auto makeFigure = [&] {
            Figure figure = display.figure();
            options.applyTo(figure);
            figure.title = headingOf(options.title, options.file);
            return figure;
        };
        frames.offer(makeFigure, last ? FrameWriter::IfBusy::Wait : FrameWriter::IfBusy::Drop);
    });
    DrawScheduler& scheduler = *DrawScheduler::getInstance();
    const auto start = std::chrono::steady_clock::now(); // before the first period
    host.setRefreshPeriod(options.refresh);
    bool ended = false;
    while (!ended && !interrupt.came() && !enough(frames.totals().written)) {
        ended = feed.finished(); // asked before: then nothing comes after what is taken now
        if (display.update(feed))
            scheduler.DataAddedToLine(true);
        if (scheduler.LineHasData())
            scheduler.TaskComplete(false);
        host.idle(kIdleSlice);
        if (!ended)
            feed.waitForSteps(scheduler.LineHasData() ? kUntilRedraw : kUntilInterrupt);
    }
    feed.stop();
    last = true;
    display.update(feed); // what came while the loop ended
    scheduler.TaskComplete(true);
    frames.finish();
    return {scheduler.getDrawCount(), std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count()};
}

} // namespace

void runPlay(const PlayOptions& options)
{
    // A file may take long to open, which Ctrl-C ends as ever.
    std::optional<Interrupt> interrupt;
    if (isStandardInput(options))
        interrupt.emplace();
    Recordings recordings;
    try {
        recordings = openPlayed(options, interrupt);
    } catch (const InputError&) {
        if (!interrupt || !interrupt->came())
            throw;
        return printTotals({}, 0, {}, {}, options.refresh);
    }
    const std::size_t channels = recordings[0]->info().channels.size();
    const Window first = firstWindow(*recordings[0], options);
    TextScreen screen;
    const int columns = options.folder.empty() ? static_cast<int>(screen.columns()) : plotWidth(options.width);
    const std::unique_ptr<LiveTrigger> trigger = makeTrigger(recordings, options, first);
    std::vector<DisplayLine> lines =
        chooseLines(recordings, options.channels, trigger != nullptr ? std::optional(trigger->source()) : std::nullopt);
    requireDrawable(lines, false, columns, options.folder.empty() ? kMaxPixels : options.height);
    FrameWriter::Sink sink = makeSink(options, screen);

    ScopeHost host;
    LiveDisplay display(host, recordings, std::move(lines), first, columns);
    if (trigger != nullptr)
        display.follow(*trigger);
    else
        display.follow(options.overrun);
    FrameWriter frames(std::move(sink));
    LiveFeed feed(
        std::move(recordings[0]),
        {.from = first.from, .factor = options.rateFactor, .history = trigger != nullptr ? trigger->history() : 0});
    if (!interrupt)
        interrupt.emplace();
    const Redraws redraws = play(host, feed, display, frames, options, *interrupt);
    printTotals(feed.totals(), channels, frames.totals(), redraws, options.refresh);
    if (!interrupt->came()) // which cuts a line of standard input short
        feed.check();
}

} // namespace scope
