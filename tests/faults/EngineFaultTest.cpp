// The engine's classes beside the buffers, short of memory at every allocation in turn.

#include "support/FakeTimer.h"
#include "support/FaultSweep.h"
#include "trigger/TriggerFixtures.h"

#include <tracery/AbstractTimeDomainPlotter.h>
#include <tracery/DataPattern.h>
#include <tracery/DrawScheduler.h>
#include <tracery/OneShotTimer.h>
#include <tracery/TimeBuffer.h>
#include <tracery/TimeDomainTriggerController.h>
#include <tracery/TimeScopeLine.h>
#include <tracery/WrappingTimeDomainController.h>
#include <tracery/embedded/EmbeddedHost.h>

#include <functional>
#include <random>
#include <typeinfo>

using namespace tracery;
using namespace tracery::test;

namespace {

/// (time, value) pairs of a signal that goes low, half-way and high, by chance.
template <class Element>
std::vector<Element> signal(int from, int count)
{
    std::mt19937 random(static_cast<unsigned>(from));
    std::vector<Element> pairs;
    for (int i = from; i < from + count; ++i) {
        pairs.emplace_back(i * 0.01);
        pairs.emplace_back(static_cast<int>(random() % 3) - 0.5);
    }
    return pairs;
}

struct Watched {
    std::unique_ptr<AbstractTimeDomainTrigger> detector;
    AbstractTimeDomainTrigger::EventQueue queue;
};

Observation eventsOf(Watched& w)
{
    Observation all(w.queue.begin(), w.queue.end());
    for (const std::uint64_t count :
         {w.detector->getNumAcceptedEvents(), w.detector->getNumHoldoffRefusals(), w.detector->getNumOutOfTimeBounds()})
        all.push_back(static_cast<double>(count));
    for (const double level : {w.detector->getLevel(), w.detector->getUpperLevel(), w.detector->getLowerLevel()})
        all.push_back(level);
    return all;
}

template <class Detector>
void sweepDetector()
{
    const auto sweep = [](auto element, TDTC::PolarityEnum polarity) {
        using Element = decltype(element);
        const std::vector<Element> before = signal<Element>(0, 333), block = signal<Element>(333, 3000);
        const auto feed = [](Watched& w, const std::vector<Element>& pairs) {
            const double extrema[] = {-0.7, 1.7};
            w.detector->updateEventQueue(pairs.data(), pairs.size() / 2, extrema, 1, w.queue);
        };
        const auto make = [&] {
            naive::Settings settings;
            settings.upper = 0.9, settings.lower = 0.1, settings.level = 0.5, settings.timeout = 0.02;
            settings.minTime = 0, settings.maxTime = 1e9;
            auto w = std::make_unique<Watched>();
            w->detector = std::make_unique<Detector>(tracery::make<Detector>(settings));
            w->detector->setPolarity(polarity);
            feed(*w, before);
            return w;
        };
        const long faults = failEveryAllocation(
            typeid(Detector).name(), make, [&](Watched& w) { feed(w, block); }, eventsOf);
        EXPECT_GT(faults, 0) << "no events to keep";
    };
    for (const auto polarity :
         {TDTC::PolarityEnum::Positive, TDTC::PolarityEnum::Negative, TDTC::PolarityEnum::Either}) {
        sweep(double(), polarity);
        sweep(std::complex<double>(), polarity);
    }
}

TEST(EngineFaultTest, ADetectorThatCannotKeepAnEventHasNotSeenTheBlock)
{
    sweepDetector<EdgeTimeDomainTrigger>();
    sweepDetector<PulseWidthTimeDomainTrigger>();
    sweepDetector<RuntTimeDomainTrigger>();
    sweepDetector<TransitionTimeDomainTrigger>();
    sweepDetector<WindowTimeDomainTrigger>();
    sweepDetector<TimeoutTimeDomainTrigger>();
}

using Controller = TimeDomainTriggerController;

Observation stateOf(Controller& c)
{
    const AbstractTimeDomainTrigger& detector = c.getDetector();
    Observation all{static_cast<double>(c.getMode()),
                    static_cast<double>(c.getType()),
                    static_cast<double>(typeid(detector).hash_code() % 1000),
                    c.getLevel(),
                    c.getUpperLevel(),
                    c.getLowerLevel(),
                    c.getLastTriggerTime(),
                    c.getEnableOnceMode() ? 1.0 : 0.0,
                    static_cast<double>(detector.getNumAcceptedEvents())};
    all.insert(all.end(), c.getPendingEvents().begin(), c.getPendingEvents().end());
    for (const Controller::ConsumedEvent& event : c.getConsumedEvents())
        all.push_back(event.time), all.push_back(static_cast<double>(event.fate));
    all.resize(all.size() + 2);
    c.getLastTriggerWindow(all[all.size() - 2], all.back());
    return all;
}

TEST(EngineFaultTest, ATriggerControllerLosesNoSampleAndNoEvent)
{
    TimeBuffer buffer({20000}, {1}, 1);
    const std::vector<double> pairs = signal<double>(0, 3000);
    for (std::size_t i = 0; i < pairs.size(); i += 2)
        buffer.addTimeAndValue(row({pairs[i]}).get(), row({pairs[i + 1]}).get(), 0, true);
    const auto samples = [&](Controller& c, std::size_t from, std::size_t to) {
        for (std::size_t i = from; i < to; ++i)
            c.processSample(pairs[2 * i], pairs[2 * i + 1], pairs[2 * i], 4);
    };
    double start = 0, end = 0;
    const auto once = Promise::nothingHappened, again = Promise::canBeRepeated;
    const struct {
        const char* name;
        std::size_t samples; ///< that were handed in before
        std::function<void(Controller&)> operation;
        Promise promise;
    } cases[] = {
        {"another type", 500, [](Controller& c) { c.setType(TDTC::TypeEnum::Runt); }, once},
        {"the first sample", 0, [&](Controller& c) { samples(c, 0, 1); }, once},
        {"the next sample", 1, [&](Controller& c) { samples(c, 1, 2); }, once},
        {"a sample that fills the block", 1023, [&](Controller& c) { samples(c, 1023, 1024); }, once},
        {"a buffer", 0, [&](Controller& c) { c.processBuffer(buffer, false, 0, 0, 0, 30, 4); }, once},
        // The samples may have been taken in, and the events wait for the next call.
        {"a window of a buffer", 0,
         [&](Controller& c) { c.getTriggerWindow(buffer, false, 0, 0, 0, 0, 30, 4, false, start, end); }, again},
        {"a window of samples", 700, [&](Controller& c) { c.getTriggerWindow(0, 8, 4, false, start, end); }, again},
        {"settings", 100,
         [](Controller& c) {
             c.reset(), c.setMode(TDTC::ModeEnum::Once), c.setSourcePortChannel(2), c.setLevel(2);
             c.setComplexity(TDTC::ComplexityEnum::Phase), c.setPolarity(TDTC::PolarityEnum::Either);
         },
         once},
        {"a new one", 0, [](Controller&) { Controller(); }, once},
    };
    for (const auto& c : cases)
        for (const bool autoLevel : {false, true}) {
            const auto make = [&] {
                auto controller = std::make_unique<Controller>();
                controller->setMode(TDTC::ModeEnum::Auto);
                controller->setAutoLevel(autoLevel);
                controller->setLevel(0.5);
                samples(*controller, 0, c.samples);
                return controller;
            };
            failEveryAllocation(c.name, make, c.operation, stateOf, c.promise);
        }
}

/// A line in a host, and a thinner.
struct Drawn {
    embedded::EmbeddedHost& host;
    HostObjectRef object = host.construct(embedded::LineAnimator::kClassName);
    HostArrayPtr array = hostobj::omCreateScalar(object);
    TimeScopeLine line;
    DataThinner thinner;
    Drawn(embedded::EmbeddedHost& own, const HostArray* points) : host(own)
    {
        line.setLine(array.get());
        line.plotData(points, false, 10);
    }
};

Observation stateOf(Drawn& d)
{
    const auto points = d.host.animator().points(d.object);
    Observation all(points.begin(), points.end());
    for (const DataThinner* thinner : {&d.thinner, d.line.getDataThinner()})
        for (const double value :
             {thinner->getLastUpdateTime(), thinner->getLastSampleDataAdded(), thinner->getPixelTimeRatio()})
            all.push_back(value);
    all.push_back(static_cast<double>(getNumberOfElements(d.line.getLine())));
    DataThinner copy = *d.line.getDataThinner(); // which tells whether its column goes on
    all.push_back(
        static_cast<double>(getN(HostArrayPtr(copy.getArrayThinData(row({60, 1}).get(), 1, 0.001, true)).get())));
    return all;
}

TEST(EngineFaultTest, ALineIsAsBefore)
{
    embedded::EmbeddedHost host;
    const HostScope attached(host);
    const HostArrayPtr points = matrix(2, 600, signal<double>(0, 600));
    const std::uint64_t two[] = {1, 2};
    const HostArrayPtr pair(createObjectArray("handle", 2, two));
    const std::pair<const char*, std::function<void(Drawn&)>> cases[] = {
        {"points", [&](Drawn& d) { d.line.plotData(points.get(), false, 10); }},
        {"thinned points", [&](Drawn& d) { d.line.plotData(points.get(), true, 10); }},
        {"a line", [&](Drawn& d) { d.line.setLine(pair.get()); }},
        {"no points", [&](Drawn& d) { d.line.reset(); }},
        {"extents",
         [&](Drawn& d) {
             double extents[4] = {9, 9, -9, -9};
             d.line.resetLineYExtents(extents, 0, false, 0, 0);
         }},
        {"a transform", [](Drawn& d) { d.line.getTransform(); }},
        {"thinned data",
         [&](Drawn& d) { HandedOut<1>()[0] = d.thinner.getArrayThinData(points.get(), 600, 10, true); }},
        {"a further channel", [](Drawn& d) { d.thinner.initDataThinningMinMax(); }},
        {"a pattern", [](Drawn&) { DataPattern(1000).addValueAndCheckPattern(3); }},
    };
    for (const auto& [name, operation] : cases)
        failEveryAllocation(
            name, [&] { return std::make_unique<Drawn>(host, points.get()); }, operation,
            static_cast<Observation (*)(Drawn&)>(stateOf));
    EXPECT_EQ(host.getNumberOfLiveObjects(), 0U);
}

Observation stateOf(AbstractTimeDomainPlotter& p)
{
    const HostArrayPtr lines(p.getLines()), axes(p.getAxes());
    const auto controller = p.getTimeOverrunModeController();
    Observation all{static_cast<double>(getNumberOfElements(lines.get())),
                    static_cast<double>(getNumberOfElements(axes.get())),
                    p.getPreviousEndTimeForLine(0),
                    p.getPreviousEndTimeForLine(1),
                    static_cast<double>(p.getMaxDimsRows()),
                    static_cast<double>(p.getTimeOverrunMode()),
                    dynamic_cast<const WrappingTimeDomainController*>(controller.get()) != nullptr ? 1.0 : 0.0,
                    controller->getPlotter() == &p ? 1.0 : 0.0};
    const auto add = [&all](const auto& list) { all.insert(all.end(), list.begin(), list.end()); };
    add(p.getSampleTimes()), add(p.getTimeDisplayOffset()), add(p.getMaxDimensions()), add(p.getPortIndex());
    return all;
}

TEST(EngineFaultTest, APlotterIsAsBefore)
{
    const HostArrayPtr one = row({1}), two = row({1, 2});
    const double values[20] = {};
    using Plotter = AbstractTimeDomainPlotter;
    const std::pair<const char*, std::function<void(Plotter&)>> cases[] = {
        {"mode", [](Plotter& p) { p.setTimeOverrunMode(TimeOverrunModeEnum::Wrap); }},
        {"lines", [&](Plotter& p) { p.setLines(two.get()); }},
        {"axes", [&](Plotter& p) { p.setAxes(two.get()); }},
        {"sample times", [&](Plotter& p) { p.setSampleTimes(values, 20); }},
        {"offsets", [&](Plotter& p) { p.setTimeDisplayOffset(values, 20); }},
        {"a port", [](Plotter& p) { p.setPortIndex(4); }},
        {"extents of ports",
         [&](Plotter& p) {
             p.setMaxDimensions(matrix(3, 2, {1, 2, 3, 4, 5, 6}).get());
         }},
        {"caches", [](Plotter& p) { p.getTimeScopeLine(0), p.addTransformToCache(nullptr), p.clearTransformCache(); }},
    };
    const auto make = [&] {
        auto plotter = std::make_unique<Plotter>();
        plotter->setTimeOverrunMode(TimeOverrunModeEnum::Scroll);
        plotter->setLines(one.get());
        plotter->setAxes(one.get());
        return plotter;
    };
    for (const auto& [name, operation] : cases)
        failEveryAllocation(name, make, operation, static_cast<Observation (*)(Plotter&)>(stateOf));
}

TEST(EngineFaultTest, ASchedulerListensAndKeepsItsTasksOrIsAsBefore)
{
    embedded::EmbeddedHost first, second;
    int drawn = 0;
    const struct {
        const char* name;
        std::function<void(DrawScheduler&)> operation;
    } cases[] = {
        {"a task", [&](DrawScheduler& s) { s.Bind({[&drawn] { ++drawn; }}); }},
        {"another host", [&](DrawScheduler& s) { s.Init(0.25, 3); }},
        {"a round", [](DrawScheduler& s) { s.TaskComplete(true); }},
        {"no task", [](DrawScheduler& s) { s.Unbind(0); }},
        {"a new one", [](DrawScheduler&) { DrawScheduler(std::make_unique<OneShotTimer>()); }},
        {"a period",
         [](DrawScheduler&) {
             OneShotTimer timer;
             timer.setTimeout(100), timer.start(), timer.stop();
         }},
    };
    for (const auto& c : cases) {
        const auto make = [&] {
            auto scheduler = std::make_unique<DrawScheduler>(std::make_unique<FakeTimer>());
            {
                const HostScope attached(first);
                scheduler->Init();
            }
            scheduler->Bind({[&drawn] { ++drawn; }});
            if (std::string_view(c.name) == "another host")
                scheduler->Clear(); // so that it listens anew
            return scheduler;
        };
        const auto see = [&](DrawScheduler& s) {
            const bool toFirst = s.getCommitHost() == &first, toSecond = s.getCommitHost() == &second;
            return Observation{static_cast<double>(s.getNumberOfTasks()), s.getIntervalMicroseconds(),
                               s.getSecondSetting(), toFirst ? 1.0 : 0.0, toSecond ? 1.0 : 0.0};
        };
        const HostScope attached(second);
        failEveryAllocation(c.name, make, c.operation, see);
    }
}

} // namespace
