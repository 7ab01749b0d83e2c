#include "buffers/SpectrumFixtures.h"
#include "support/FaultSweep.h"

#include <complex>
#include <functional>

using namespace tracery;
using namespace tracery::test;

namespace {

TEST(SpectrumBufferFaultTest, AnOperationThatRunsOutOfMemoryHasNotHappened)
{
    const HostArrayPtr frame = matrix(300, 2, ramp(600)), power = matrix(3, 2, {5, 6, 7, 8, 9, 1e-3}), one = row({1});
    const std::vector<std::complex<double>> pairs(100);
    const struct {
        const char* name;
        std::function<void(SpectrumBuffer&)> operation;
        bool allocates = true;
    } cases[] = {
        {"a frame", [&](auto& b) { b.AddValue(frame.get(), 0, true); }},
        {"a frame beside", [&](auto& b) { b.addtoBuffer(frame.get()); }},
        {"pairs", [&](auto& b) { b.addtoBuffer(pairs.data(), 100, 1); }},
        {"samples", [&](auto& b) { b.addtoBuffer(getRealData(frame.get()), 100, true, 1); }},
        {"another length", [](auto& b) { b.setSegmentLength(30); }},
        {"another overlap", [](auto& b) { b.setOverlapPercent(25); }},
        {"more channels", [](auto& b) { b.setNumChannels(3); }},
        {"real samples", [](auto& b) { b.setComplexityFlag(kReal); }},
        {"parameters", [&](auto& b) { b.setupBufferParams(one.get(), nullptr, one.get(), nullptr, false); }},
        {"a time", [&](auto& b) { b.AddTime(one.get(), 0), b.clearBackTo(one.get()); }, false},
        {"clear", [](auto& b) { b.clear(); }, false},
        {"flush", [](auto& b) { b.flush(); }, false},
        {"rebuffer", [](auto& b) { b.rebuffer(); }},
        {"settings",
         [](auto& b) {
             b.setSegmentsPerBlock(2), b.setReduceUpdates(false), b.setReduceUpdatesOverride(true);
             b.setNumProcessedSamples(7), b.restartTimer(), b.isTimeUp(), b.isReady();
         },
         false},
        {"statistics", [&](auto& b) { updateCCDF(b, power.get()); }},
        {"statistics anew", [](auto& b) { b.resetCCDF(); }, false},
        {"what is ready",
         [](auto& b) {
             HandedOut<2> out;
             b.GetTimeAndValue(0, out[0], out[1]);
         }},
        {"getters",
         [](auto& b) {
             HostArrayPtr result(b.getAvailableSegments());
             result.reset(b.getComplexityFlag()), result.reset(b.GetType());
             result.reset(b.getCCDFHistogram()), result.reset(b.getCCDFTotalUnbinned());
         }},
        {"a new buffer", [](auto&) { TestBuffer(16, 0, kComplex, 3); }},
    };
    for (const auto& c : cases)
        EXPECT_EQ(failEveryAllocation(c.name, usedBuffer, c.operation, contents) > 0, c.allocates) << c.name;
}

} // namespace
