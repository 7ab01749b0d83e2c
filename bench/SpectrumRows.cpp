#include "Harness.h"
#include "PlainSubjects.h"

#include <cstring>

namespace tracery::bench {

namespace {

/// Segments into kept memory, beside memcpy of as many bytes as they have, in as many calls as there are frames.
Row segmentRow(std::size_t held, std::size_t frame, std::size_t segment, int overlapPercent, Target target)
{
    const std::string place = held == 1 << 14 ? "L2" : held == 1 << 20 ? "L3" : "DRAM";
    const std::string data = place + ", frames of " + std::to_string(frame) + ", segments of " +
                             std::to_string(segment) + ", overlap " + std::to_string(overlapPercent) + " %";
    return {"segmentation", data, target, [=] {
                const std::size_t step = segment - segment * static_cast<std::size_t>(overlapPercent) / 100;
                const std::size_t part = frame * segment / step, whole = held / frame * part;
                const auto input = std::make_shared<std::vector<double>>(part, 1.0);
                const auto out = std::make_shared<std::vector<double>>(whole);
                return Work{static_cast<double>(held), segmentation(held, frame, segment, overlapPercent),
                            [=] {
                                for (std::size_t at = 0; at < whole; at += part)
                                    std::memcpy(out->data() + at, input->data(), part * sizeof(double));
                                touchMemory();
                            },
                            tracery_plain::bench::segmentation(held, frame, segment, overlapPercent)};
            }};
}

} // namespace

Rows spectrumRows()
{
    Rows rows;
    const std::pair<std::size_t, double> places[] = {{1 << 14, 0.9}, {1 << 20, 0.75}, {1 << 24, 0.7}};
    for (const auto& [held, target] : places)
        for (const int overlap : {0, 50, 75})
            rows.push_back(segmentRow(held, 1 << 12, 1 << 10, overlap, {target, {}, {}}));
    rows.push_back(segmentRow(1 << 14, 64, 1 << 10, 50, {}));
    rows.push_back(segmentRow(1 << 14, 1 << 12, 64, 50, {}));
    return rows;
}

} // namespace tracery::bench
