#include "commands/commands.h"
#include "libraries.h"
#include "stream/Progress.h"
#include "stream/sources.h"

#include <tracery/basics/Text.h>
#include <tracery/measures/TriggerScan.h>
#include <tracery/measures/explain.h>

#include <cstdio>

namespace scope {

namespace {

const char* nameOf(const TriggerEvent& event)
{
    if (event.freeRun)
        return "free_run";
    switch (event.fate) {
    case Fate::shown:
        return "shown";
    case Fate::superseded:
        return "superseded";
    case Fate::overlap:
        return "overlap";
    case Fate::disarmed:
        return "disarmed";
    case Fate::notFull:
        return "not_full";
    }
    return "";
}

void printCsv(const TriggerEvent& event)
{
    const bool window = event.fate == Fate::shown;
    std::printf("%s,%s,%s,%s\n", event.freeRun ? "" : numberText(event.time).c_str(), nameOf(event),
                window ? numberText(event.start).c_str() : "", window ? numberText(event.end).c_str() : "");
}

void printJson(const TriggerEvent& event)
{
    std::printf("{\"type\":\"event\",\"time\":%s,\"fate\":\"%s\"",
                event.freeRun ? "null" : numberText(event.time).c_str(), nameOf(event));
    if (event.fate == Fate::shown)
        std::printf(",\"start\":%s,\"end\":%s", numberText(event.start).c_str(), numberText(event.end).c_str());
    std::printf("}\n");
}

void printTotals(const TriggerTotals& totals, bool json)
{
    struct Row {
        const char* name;
        std::uint64_t count;
    };
    const Row rows[] = {{"found", totals.found()},     {"shown", totals.shown},
                        {"overlap", totals.overlap},   {"superseded", totals.superseded},
                        {"not_full", totals.notFull},  {"disarmed", totals.disarmed},
                        {"free_run", totals.freeRuns}, {"held_off", totals.refusedByHoldoff}};
    const char* separator = json ? "{\"type\":\"summary\"," : "# ";
    for (const Row& row : rows) {
        std::printf(json ? "%s\"%s\":%llu" : "%s%s=%llu", separator, row.name,
                    static_cast<unsigned long long>(row.count));
        separator = json ? "," : " ";
    }
    std::printf(json ? "}\n" : "\n");
}

} // namespace

void runEvents(const EventsOptions& options)
{
    const std::vector<std::string> files{options.file};
    const TriggerSource source = findTriggerSource(openAll(files, options.rate), options.trigger.source);
    const double from = options.from.value_or(source.range.first);
    const double span = options.span.value_or((source.range.last - source.range.first) / 10);
    const auto scan = makeScan(files, options.rate, source, options.trigger, from, span, options.blockSteps);

    if (!options.json)
        std::printf("event,fate,window_start,window_end\n");
    TriggerTotals totals;
    {
        Progress progress;
        totals = scan->run(
            [&](const TriggerEvent& event) {
                options.json ? printJson(event) : printCsv(event);
                return std::ferror(stdout) == 0; // else nobody reads on
            },
            [&](double reached) { progress.show((reached - from) / (source.range.last - from)); });
    }
    printTotals(totals, options.json);
    if (std::fflush(stdout) == 0 && totals.shown + totals.freeRuns == 0) {
        const SignalRange range =
            measureRange(openBatches(files, options.rate, source, from), source.channel, options.trigger.part);
        std::fprintf(stderr, "tracery-scope: %s\n",
                     explainNothingShown(options.trigger, scan->controller(), totals, range, span).c_str());
    }
}

} // namespace scope
