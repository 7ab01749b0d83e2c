#include "Styles.h"

#include "Sizes.h"

#include <tracery/basics/cleanText.h>

#include <array>
#include <map>
#include <utility>

namespace tracery::figures {

using namespace basics;

namespace {

constexpr std::array kDashed = {6.0, 2.5};
constexpr std::array kDotted = {1.5, 2.5};
constexpr std::array kDashDotted = {7.0, 2.5, 1.5, 2.5};
constexpr std::array<std::span<const double>, 4> kDashes = {std::span<const double>(), kDashed, kDotted, kDashDotted};
constexpr std::array kReferenceDashes = {4.0, 3.0};
constexpr std::array kLightening = {0.0, 0.3, 0.15, 0.4}; // share of white, by the same number as the dashes

} // namespace

TraceStyle traceStyle(std::size_t number, const Theme& theme)
{
    const Colour pure = theme.traces[number % theme.traces.size()];
    // Once all have come round, dashes tell nothing apart any more, and take ten times as long to draw.
    if (number >= theme.traces.size() * kDashes.size())
        return {pure, kDashes[0]};
    if (theme.everyTraceDashed)
        return {pure, kDashes[(number + number / kDashes.size()) % kDashes.size()]};
    const std::size_t round = number / theme.traces.size();
    const auto lighter = [&](double part) { return part + (1 - part) * kLightening[round]; };
    return {{lighter(pure.red), lighter(pure.green), lighter(pure.blue)}, kDashes[round]};
}

Styles::Styles(const Figure& figure, const Theme& theme)
{
    // Equal labels in one panel are different traces: the second of a name matches the second elsewhere.
    std::map<std::pair<std::string, int>, std::size_t> known;
    std::size_t coloured = 0;
    for (const Panel& panel : figure.panels) {
        std::map<std::string, int> seen;
        std::vector<std::size_t>& numbers = numbers_.emplace_back();
        for (const Trace& trace : panel.traces) {
            const auto [entry, isNew] = known.try_emplace({trace.label, seen[trace.label]++}, labels_.size());
            if (isNew) {
                labels_.push_back(cleanText(trace.label));
                styles_.push_back(trace.reference ? TraceStyle{theme.frame, kReferenceDashes}
                                                  : traceStyle(coloured++, theme));
            }
            numbers.push_back(entry->second);
        }
    }
}

} // namespace tracery::figures
