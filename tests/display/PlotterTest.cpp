#include "support/Expect.h"
#include "support/TestHost.h"

#include <tracery/AbstractTimeDomainPlotter.h>
#include <tracery/WrappingTimeDomainController.h>

#include <algorithm>
#include <cmath>

using namespace tracery;
using namespace tracery::test;

namespace {

using Doubles = std::vector<double>;
constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(PlotterTest, ModesAndControllersChangeTogether)
{
    AbstractTimeDomainPlotter plotter, other;
    const auto wraps = [&] {
        const auto controller = plotter.getTimeOverrunModeController();
        return controller->getPlotter() == &plotter &&
               dynamic_cast<WrappingTimeDomainController*>(controller.get()) != nullptr;
    };
    EXPECT_EQ(plotter.getTimeOverrunModeController(), nullptr);
    plotter.setTimeOverrunMode(TimeOverrunModeEnum::Wrap);
    EXPECT_TRUE(wraps());
    plotter.setTimeOverrunMode(static_cast<TimeOverrunModeEnum>(7));
    EXPECT_FALSE(wraps());
    EXPECT_EQ(static_cast<int>(plotter.getTimeOverrunMode()), 7);
    const auto given = std::make_shared<WrappingTimeDomainController>();
    plotter.setTimeOverrunModeController(given);
    EXPECT_TRUE(wraps()) << "it gets this plotter";
    other.setTimeOverrunModeController(given);
    EXPECT_EQ(given->getPlotter(), &other);

    auto object = std::make_shared<FakeObject<int>>();
    plotter.setCOSInterface(object);
    given->setCOSInterface(object);
    EXPECT_EQ(plotter.getCOSInterface(), given->getCOSInterface());
    object.reset();
    EXPECT_EQ(plotter.getCOSInterface(), nullptr) << "only referred to";
    EXPECT_EQ(given->getCOSInterface(), nullptr);
}

TEST(PlotterTest, BeginsWithAWindowOfTenSecondsAndNothingKnown)
{
    AbstractTimeDomainPlotter plotter;
    EXPECT_EQ((Doubles{plotter.getStartTime(), plotter.getOriginTime(), plotter.getTimeSpan(), plotter.getTimeWrap(),
                       plotter.getEndTime(), plotter.getMaxSiblingTimeStepWidth()}),
              (Doubles{0, 0, 10, 10, 0, 0}));
    EXPECT_TRUE(plotter.getEnableOverrunMode());
    EXPECT_FALSE(plotter.getIsComplex() || plotter.getPlotMagPhase() || plotter.hasBusPorts() ||
                 plotter.getSettingProperties() || plotter.getFrameProcessing() || plotter.getDeleteAxes());
    EXPECT_EQ(plotter.getTimeOverrunMode(), TimeOverrunModeEnum::Wrap);
    EXPECT_EQ(std::pair(plotter.getFirstPortID(), plotter.getEffectiveFirstPortID()), std::pair(-1, -1));
    EXPECT_EQ(plotter.getSampleTimes(), Doubles{0});
    EXPECT_EQ(plotter.getTimeDisplayOffset(), Doubles{0});
    EXPECT_TRUE(plotter.getPortIndex().empty());
    EXPECT_EQ(std::ranges::count_if(plotter.getYExtents(), [](double y) { return std::isnan(y); }), 4);
    plotter.setPortIndex(3);
    plotter.setPortIndex(5);
    EXPECT_EQ(plotter.getPortIndex(), (std::vector{3, 5}));
    plotter.resetPortIndex();
    EXPECT_TRUE(plotter.getPortIndex().empty());
}

TEST(PlotterTest, NoValuesKeepSampleTimesAndEmptyOffsets)
{
    AbstractTimeDomainPlotter plotter;
    EXPECT_EQ(plotter.getTimeStepWidth(), Doubles{0});
    plotter.getLengthOfChannelsWriteable() = {1, 4, 0, kInf, 5};
    const Doubles times{0.1, 1, 2, 3};
    plotter.setSampleTimes(times.data(), 4);
    EXPECT_EQ(plotter.getTimeStepWidth(), (Doubles{0, 0.75, 0, 0, 0})) << "not finite twice, then no sample time";
    plotter.setSampleTimes(times.data(), 0);
    EXPECT_EQ(plotter.getSampleTimes(), times);
    plotter.setSampleTimes(plotter.getSampleTimes().data() + 2, 2);
    EXPECT_EQ(plotter.getSampleTimes(), (Doubles{2, 3})) << "from its own values";
    plotter.setTimeDisplayOffset(times.data(), 0);
    EXPECT_EQ(plotter.getTimeDisplayOffset(), Doubles{});
}

struct OpenPlotter : AbstractTimeDomainPlotter {
    using AbstractTimeDomainPlotter::lines;
};

TEST(PlotterTest, KeepsCopiesOfAxesLinesAndDimensions)
{
    const TestHost countsArrays;
    OpenPlotter plotter;
    plotter.setPreviousEndTimeForLine(0, 5);
    EXPECT_EQ(plotter.getPreviousEndTimeForLine(0), 0);
    plotter.setAxes(row({1, 2}).get());
    plotter.setLines(row({3, 4, 5}).get());
    plotter.setPreviousEndTimeForLine(2, 5);
    plotter.setAxes(nullptr);
    plotter.setLines(nullptr);
    EXPECT_EQ(plotter.getPreviousEndTimeForLine(2), 5) << "null lines start nothing anew";
    const HostArrayPtr lines(plotter.getLines());
    EXPECT_EQ(realOf(lines.get()), (Doubles{3, 4, 5}));
    plotter.setLines(lines.get());
    EXPECT_EQ(plotter.getPreviousEndTimeForLine(2), -kInf) << "new lines do";
    EXPECT_EQ(getArrayScope(plotter.lines()), HostArrayScope::persistent);
    plotter.destroyHostArrayObtainedFromGet(const_cast<HostArray*>(plotter.lines()));
    EXPECT_EQ(plotter.getNumLines(), 3U) << "the held lines stay";
    HostArray* axes = plotter.getAxes();
    EXPECT_EQ(realOf(axes), (Doubles{1, 2}));
    plotter.releaseHostArray(axes);

    const auto shape = [&] { return std::vector<std::size_t>{plotter.getMaxDimsRows(), plotter.getMaxDimsCols()}; };
    EXPECT_EQ(shape(), (std::vector<std::size_t>{1, 2}));
    plotter.setMaxDimensions(matrix(3, 2, {1, 2, 3, 4, 5, 6}).get());
    for (const HostArrayPtr& bad :
         {HostArrayPtr(), HostArrayPtr(createLogicalScalar(true)), HostArrayPtr(createCellMatrix(0, 0))})
        EXPECT_EQ(failure([&] { plotter.setMaxDimensions(bad.get()); }), "InvalidMaxDimensions");
    EXPECT_EQ(shape(), (std::vector<std::size_t>{3, 2}));
    EXPECT_EQ(plotter.getMaxDimensions().back(), 6);
    plotter.setMaxDimensions(matrix(0, 0, {}).get());
    EXPECT_EQ(shape(), (std::vector<std::size_t>{0, 0}));
    EXPECT_TRUE(plotter.getMaxDimensions().empty());
}

TEST(PlotterTest, LooksUpLinesAndTransformsOnFirstUse)
{
    TestHost host;
    const HostScope scope(host);
    const auto transform = std::make_shared<FakeObject<int>>(), foreign = std::make_shared<FakeObject<int>>();
    const auto line = std::make_shared<FakeObject<TimeScopeLine>>();
    line->object->setLine(objectArray({foreign}).get());
    host.parentOf = [&](const HostObjectRef& object) { return objectArray({object == foreign ? transform : nullptr}); };
    const std::vector<HostObjectRef> objects{line, foreign, nullptr, line};
    AbstractTimeDomainPlotter plotter;
    EXPECT_EQ(plotter.getTransform(0), nullptr);
    plotter.setLines(objectArray(objects).get());
    EXPECT_TRUE(plotter.isLineCacheEmpty());
    EXPECT_EQ(plotter.getTimeScopeLine(3), line->object);
    for (std::size_t i : {0U, 1U, 2U, 3U, 9U}) {
        EXPECT_EQ(plotter.getTimeScopeLine(i), i % 3 == 0 && i < 9 ? line->object : nullptr) << i;
        EXPECT_EQ(plotter.getTransform(i), i % 3 == 0 && i < 9 ? transform : nullptr) << i;
    }
    EXPECT_TRUE(plotter.transformIsInCache(3));
    EXPECT_FALSE(plotter.transformIsInCache(4));
    line->object.reset();
    EXPECT_EQ(plotter.getTimeScopeLine(3), nullptr) << "deleted by the host";
    EXPECT_EQ(plotter.getTransform(3), transform) << "from the cache";
    plotter.setLines(objectArray(objects).get());
    EXPECT_TRUE(plotter.isLineCacheEmpty());
    EXPECT_EQ(plotter.getTransform(0), nullptr);

    line->object = std::make_shared<TimeScopeLine>();
    line->object->setLine(objectArray({foreign}).get());
    plotter.setLines(objectArray(objects).get());
    host.parentOf = [&](const HostObjectRef&) {
        plotter.setLines(objectArray({nullptr}).get()); // in the middle of a look-up
        return objectArray({transform});
    };
    EXPECT_EQ(plotter.getTransform(0), transform);
    EXPECT_EQ(plotter.getTransform(0), nullptr) << "of the new lines";
}

} // namespace
