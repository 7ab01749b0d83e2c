#include "Harness.h"
#include "PlainSubjects.h"
#include "buffers/Ring.h"

#include <cstdlib>
#include <cstring>

namespace tracery::bench {

namespace {

namespace plain = tracery_plain::bench;

constexpr std::size_t kL2 = 1 << 15, kDram = 1 << 23; // doubles
constexpr std::size_t kDoublesACall = 1 << 12;

std::string placeOf(std::size_t doubles) { return doubles == kL2 ? "L2" : "DRAM"; }

/// Frames into a full ring, beside memcpy of the same frames to the same places.
Row appendRow(std::size_t frame, std::size_t doubles, Target target)
{
    return {"ring append", "frames of " + std::to_string(frame) + ", " + placeOf(doubles), target, [=] {
                const auto input = std::make_shared<std::vector<double>>(frame, 1.0);
                const auto ring = std::make_shared<Ring>(doubles + 1); // frames come to lie across the end
                ring->reserveFor(doubles + 1);
                ring->appendFill(doubles + 1, 0.0);
                const auto copy = std::make_shared<std::vector<double>>(doubles + 1 + frame);
                return Work{static_cast<double>(std::max(frame, kDoublesACall)),
                            [=] {
                                for (std::size_t i = 0; i < kDoublesACall; i += frame)
                                    ring->append(input->data(), frame);
                                touchMemory();
                            },
                            [=, at = std::size_t{0}]() mutable {
                                for (std::size_t i = 0; i < kDoublesACall; i += frame) {
                                    std::memcpy(copy->data() + at, input->data(), frame * sizeof(double));
                                    at += frame;
                                    at = at > doubles ? at - doubles - 1 : at;
                                }
                                touchMemory();
                            },
                            {}};
            }};
}

/// Doubles one by one, beside push_back without what the library tells the compiler for its rings.
Row appendOneRow()
{
    return {"ring append", "single doubles, L2", {{}, 1.8, {}}, [] {
                const auto ring = std::make_shared<Ring>(kL2);
                ring->reserveFor(kL2);
                ring->appendFill(kL2, 0.0);
                return Work{kDoublesACall,
                            [=] {
                                for (std::size_t i = 0; i < kDoublesACall; ++i) {
                                    const double x = static_cast<double>(i);
                                    ring->append(&x, 1);
                                }
                                touchMemory();
                            },
                            {},
                            pushBacks(kDoublesACall, kL2)};
            }};
}

/// Calls of the buffer; of the limit, a copy of the frame and its time.
Row writeRow(const char* name, decltype(stepWrites) ours, decltype(stepWrites) plainly, std::size_t width)
{
    return {name, "steps of " + std::to_string(width) + ", L2, a call", {}, [=] {
                const std::size_t steps = kL2 / width;
                const auto copy = std::make_shared<std::vector<double>>(2 * kL2), input = copy;
                return Work{1, ours(width, steps),
                            [=, at = std::size_t{0}]() mutable {
                                std::memcpy(copy->data() + at * width, input->data() + kL2, width * sizeof(double));
                                (*copy)[kL2 + at] = 1.0;
                                at = at + 1 == steps ? 0 : at + 1;
                                touchMemory();
                            },
                            plainly(width, steps)};
            }};
}

Row copyRow(std::size_t doubles)
{
    return {"whole-ring read", "into kept memory, " + placeOf(doubles), {0.9, {}, {}}, [=] {
                const auto ring = std::make_shared<Ring>(doubles);
                ring->reserveFor(doubles);
                ring->appendFill(doubles, 1.0);
                ring->appendFill(doubles / 3, 2.0);
                const auto from = std::make_shared<std::vector<double>>(doubles, 1.0);
                const auto to = std::make_shared<std::vector<double>>(doubles);
                return Work{static_cast<double>(doubles),
                            [=] {
                                ring->view().copy(0, doubles, to->data());
                                touchMemory();
                            },
                            [=] {
                                std::memcpy(to->data(), from->data(), doubles * sizeof(double));
                                touchMemory();
                            },
                            [=] {
                                for (std::size_t i = 0; i < doubles; ++i)
                                    (*to)[i] = ring->view()[i];
                                touchMemory();
                            }};
            }};
}

/// New arrays each time: of the limit, memory as new as theirs.
Row wholeReadRow(std::size_t doubles)
{
    return {"whole-port read", "into new arrays, " + placeOf(doubles), {0.9, {}, {}}, [=] {
                const auto from = std::make_shared<std::vector<double>>(doubles, 1.0);
                return Work{static_cast<double>(doubles), wholeRead(16, doubles / 16),
                            [=] {
                                const auto copyOf = [&](std::size_t count) {
                                    void* to = std::malloc(count * sizeof(double));
                                    std::memcpy(to, from->data(), count * sizeof(double));
                                    touchMemory();
                                    return to;
                                };
                                void *times = copyOf(doubles / 16), *values = copyOf(doubles);
                                std::free(times);
                                std::free(values);
                            },
                            plain::wholeRead(16, doubles / 16)};
            }};
}

/// One channel of many; of the limit, a copy of as many bytes as are delivered.
Row channelRow(const char* name, decltype(displayRead) ours, decltype(displayRead) plainly, std::size_t doublesASample,
               std::size_t channels)
{
    constexpr std::size_t kSteps = 1 << 14;
    return {name, std::to_string(channels) + (channels == 1 ? " channel" : " channels"), {}, [=] {
                const auto from = std::make_shared<std::vector<double>>(doublesASample * kSteps, 1.0);
                const auto to = std::make_shared<std::vector<double>>(from->size());
                return Work{kSteps, ours(channels, kSteps),
                            [=] {
                                std::memcpy(to->data(), from->data(), from->size() * sizeof(double));
                                touchMemory();
                            },
                            plainly(channels, kSteps)};
            }};
}

} // namespace

Rows bufferRows()
{
    Rows rows;
    for (const std::size_t doubles : {kL2, kDram})
        for (const std::size_t frame : {256U, 1024U})
            rows.push_back(appendRow(frame, doubles, {0.9, {}, {}}));
    rows.push_back(appendRow(16, kL2, {0.45, {}, {}}));
    rows.push_back(appendOneRow());
    for (const std::size_t width : {1U, 16U, 256U}) {
        rows.push_back(writeRow("AddTime, AddValue", stepWrites, plain::stepWrites, width));
        rows.push_back(writeRow("addTimeAndValue", arrayWrites, plain::arrayWrites, width));
    }
    for (const std::size_t doubles : {kL2, kDram}) {
        rows.push_back(copyRow(doubles));
        rows.push_back(wholeReadRow(doubles));
    }
    for (const std::size_t channels : {1U, 8U, 64U}) {
        rows.push_back(channelRow("display read", displayRead, plain::displayRead, 4, channels));
        rows.push_back(channelRow("trigger read", triggerRead, plain::triggerRead, 2, channels));
        rows.push_back(channelRow("read in blocks", blockRead, plain::blockRead, 2, channels));
    }
    return rows;
}

} // namespace tracery::bench
