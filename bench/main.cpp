// Measures every kernel beside its limit and its plain form, and says which targets are met. It reports and never fails.
// usage: tracery_bench [--filter TEXT] [--rounds N] [--json FILE] [--list | --worst-write | --scaling]

#include "Harness.h"

#include <tracery/Kernels.h>

#include <nlohmann/json.hpp>
#include <sched.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <string_view>

using namespace tracery::bench;

namespace {

struct Options {
    std::string filter;
    std::string json;
    int rounds = 11;
    bool list = false;
    bool worstWrite = false;
    bool scaling = false;
};

[[noreturn]] void usage()
{
    std::fprintf(
        stderr,
        "usage: tracery_bench [--filter TEXT] [--rounds N] [--json FILE] [--list | --worst-write | --scaling]\n");
    std::exit(2);
}

Options readOptions(int argc, char** argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string_view name = argv[i];
        bool* const mode = name == "--list"          ? &options.list
                           : name == "--worst-write" ? &options.worstWrite
                           : name == "--scaling"     ? &options.scaling
                                                     : nullptr;
        if (mode != nullptr) {
            *mode = true;
            continue;
        }
        if (++i == argc)
            usage();
        if (name == "--filter")
            options.filter = argv[i];
        else if (name == "--json")
            options.json = argv[i];
        else if (name == "--rounds" && std::atoi(argv[i]) > 0)
            options.rounds = std::atoi(argv[i]);
        else
            usage();
    }
    return options;
}

/// Keeps the process on the core it is on; measures on any core where that is not allowed.
void pin()
{
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<unsigned>(std::max(sched_getcpu(), 0)), &one);
    if (sched_setaffinity(0, sizeof one, &one) != 0)
        std::fprintf(stderr, "tracery_bench: not bound to one core\n");
}

/// "2.41 (≥ 1.8)", or what there is of it.
std::string withTarget(double value, std::optional<double> target, const char* sign)
{
    char text[64] = "";
    if (target)
        std::snprintf(text, sizeof text, "%.2f (%s %g)", value, sign, *target);
    else if (!std::isnan(value))
        std::snprintf(text, sizeof text, "%.2f", value);
    return text;
}

/// Empty when the row has no target.
std::string verdict(const Measured& m, const Target& t)
{
    if (!t.ofLimit && !t.timesPlain && !t.mostSeconds)
        return "";
    const bool met = (!t.ofLimit || m.ofLimit >= *t.ofLimit) && (!t.timesPlain || m.timesPlain >= *t.timesPlain) &&
                     (!t.mostSeconds || m.secondsPerItem <= *t.mostSeconds);
    return met ? "met" : "missed";
}

nlohmann::json toJson(const Row& row, const Measured& m)
{
    nlohmann::json json{{"kernel", row.kernel}, {"data", row.data}, {"secondsPerItem", m.secondsPerItem}};
    const auto add = [&](const char* name, double value, std::optional<double> target) {
        if (!std::isnan(value))
            json[name] = value;
        if (target)
            json[std::string(name) + "Target"] = *target;
    };
    add("ofLimit", m.ofLimit, row.target.ofLimit);
    add("timesPlain", m.timesPlain, row.target.timesPlain);
    if (row.target.mostSeconds)
        json["mostSecondsPerItem"] = *row.target.mostSeconds;
    if (const std::string text = verdict(m, row.target); !text.empty())
        json["verdict"] = text;
    return json;
}

/// Prints the rows' table, or the rows' names.
nlohmann::json runRows(const Options& options)
{
    nlohmann::json all = nlohmann::json::array();
    if (!options.list)
        std::printf("| kernel | data | an item | of the limit | times plain | verdict |\n|---|---|---|---|---|---|\n");
    for (const auto& rowsOf : {bufferRows, thinningRows, triggerRows, spectrumRows, ccdfRows, pipelineRows})
        for (const Row& row : rowsOf()) {
            const std::string name = row.kernel + ", " + row.data;
            if (name.find(options.filter) == std::string::npos)
                continue;
            if (options.list) {
                std::puts(name.c_str());
                continue;
            }
            const Measured m = measure(row.make(), options.rounds);
            const std::string seconds = row.target.mostSeconds
                                            ? withTarget(m.secondsPerItem, row.target.mostSeconds, "≤") + " s"
                                            : withTarget(m.secondsPerItem * 1e9, {}, "") + " ns";
            std::printf("| %s | %s | %s | %s | %s | %s |\n", row.kernel.c_str(), row.data.c_str(), seconds.c_str(),
                        withTarget(m.ofLimit, row.target.ofLimit, "≥").c_str(),
                        withTarget(m.timesPlain, row.target.timesPlain, "≥").c_str(), verdict(m, row.target).c_str());
            std::fflush(stdout);
            all.push_back(toJson(row, m));
        }
    return all;
}

} // namespace

int main(int argc, char** argv)
{
    const Options options = readOptions(argc, argv);
    try {
        tracery::kernelsInUse();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tracery_bench: %s\n", error.what());
        return 2;
    }
    pin();
    const nlohmann::json all = options.worstWrite ? worstWriteTable()
                               : options.scaling  ? scalingTable(options.rounds)
                                                  : runRows(options);

    if (!options.json.empty() && !(std::ofstream(options.json) << all.dump(1) << '\n')) {
        std::fprintf(stderr, "tracery_bench: cannot write %s\n", options.json.c_str());
        return 2;
    }
}
