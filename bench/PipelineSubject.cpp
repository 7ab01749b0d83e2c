// A scope at work, from written frames to drawn points. Compiled twice, as Subjects.cpp.

#include "Subjects.h"

#include <tracery/DrawScheduler.h>
#include <tracery/TimeBuffer.h>
#include <tracery/TimeDomainTriggerController.h>
#include <tracery/TimeScopeLine.h>
#include <tracery/host/Arrays.h>
#include <tracery/host/Host.h>

#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>

namespace tracery::bench {

namespace {

using namespace hostobj;

constexpr std::size_t kPorts = 4, kFrame = 256;
constexpr double kSampleRate = 1e6, kFramePeriod = kFrame / kSampleRate;
constexpr double kSpan = 1.0, kRedrawsASecond = 20, kColumns = 2000;
constexpr std::size_t kDistinctFrames = 64; // then the signal repeats
constexpr std::size_t kBlock = 1 << 13;     // samples read at once: they stay in the L2 cache with what is made of them

/// Takes in the points that lines draw, and nothing else.
struct PointSink : Host, ObjectSystem, Graphics, COSClass {
    [[noreturn]] static void refuse() { throw std::logic_error("the pipeline needs no such thing"); }

    COSNameID getName() const override { return "veltra.graphics.animation.ScopeLineAnimator"; }
    COSClassPtr findClass(const COSNameID&) const override { return {COSClassPtr(), this}; }
    HostOutputs callStaticMethod(const COSNameID&, const COSNameID& method, HostInputs in, std::size_t) override
    {
        if (method.text() != "addXY")
            return {};
        const double* pairs = getRealData(in[1]);
        const std::uint64_t doubles = getNumberOfElements(in[1]);
        for (std::uint64_t i = 0; i < doubles; ++i)
            sum = std::rotl(sum, 1) ^ std::bit_cast<std::uint64_t>(pairs[i]);
        points += doubles / 2;
        return {};
    }
    std::unique_ptr<HookRegistration> addCommitHook(CommitHook) override { return nullptr; }
    void commitDatabaseUpdates(int) override {}
    ObjectSystem& objects() override { return *this; }
    Graphics& graphics() override { return *this; }

    Features& features() override { refuse(); }
    Console& console() override { refuse(); }
    Functions& functions() override { refuse(); }
    Performance::CooperativeTaskManager::TaskManager& tasks() override { refuse(); }
    COSPackage& rootPackage() override { refuse(); }
    void addPackage(std::unique_ptr<const COSPackageInfo>) override { refuse(); }
    COSPackage* findPackage(const COSNameID&) override { refuse(); }
    COSClient& publicClient() override { refuse(); }
    bool hasMethod(const COSInterfacePtr&, const COSNameID&) const override { refuse(); }
    HostOutputs callMethod(const COSInterfacePtr&, const COSNameID&, HostInputs, std::size_t) override { refuse(); }
    HostArrayPtr getProperty(const COSInterfacePtr&, const COSNameID&) override { refuse(); }
    COSInterfacePtr objectOfHandle(double) override { refuse(); }
    COSInterfacePtr wrapPayload(const COSNameID&, std::unique_ptr<InstancePayload>) override { refuse(); }

    std::uint64_t points = 0;
    std::uint64_t sum = 0; ///< of the bits of all points
};

/// Up whenever the signal's time says so.
struct SignalTimer : Timer {
    void setTimeout(double) override {}
    double getTimeout() const override { return 1 / kRedrawsASecond; }
    void start() override { up = false; }
    void stop() override {}
    bool isTimeUp() override { return up; }
    bool up = false;
};

class Pipeline {
public:
    Pipeline()
    {
        constexpr auto kSteps = static_cast<std::uint64_t>(3 * kSpan / kFramePeriod);
        buffer_.ResetBuffer({kSteps}, TimeBuffer::Counts(kPorts, kFrame), TimeBuffer::Counts(kPorts, 1), kPorts,
                            BufferType::MultipleRate, std::vector<HostComplexity>(kPorts, HostComplexity::real), true);
        buffer_.reserveCapacity();
        trigger_.setMode(TDTC::ModeEnum::Normal);
        trigger_.setAutoLevel(false);
        trigger_.setHysteresis(0.5);
        std::mt19937 random(1);
        std::uniform_real_distribution<double> noise(-0.2, 0.2);
        for (auto& port : frames_)
            for (std::size_t i = 0; i < kDistinctFrames; ++i) {
                port.push_back(makeMatrix(kFrame, 1));
                for (std::size_t j = 0; j < kFrame; ++j)
                    getRealData(port.back().get())[j] =
                        std::sin(6.28318530717958648 * static_cast<double>(i * kFrame + j) /
                                 (kDistinctFrames * kFrame)) +
                        noise(random);
            }
        const std::uint64_t one[] = {1, 1};
        const HostArrayPtr object(createObjectArray("line", 2, one));
        for (TimeScopeLine& line : lines_)
            line.setLine(object.get());
        scheduler_.Init(1 / kRedrawsASecond, 0.5);
        scheduler_.Bind(DrawSchedulerTask([this] { draw(); }));
        for (int i = 0; i < 4; ++i)
            runOneSecond();
    }

    void runOneSecond()
    {
        for (int i = 0; i < static_cast<int>(kRedrawsASecond); ++i) {
            redraw_ += 1 / kRedrawsASecond;
            for (; now_ + kFramePeriod <= redraw_; now_ += kFramePeriod, ++frame_) {
                *getRealData(time_.get()) = now_;
                for (std::size_t port = 0; port < kPorts; ++port)
                    buffer_.addTimeAndValue(time_.get(), frames_[port][frame_ % kDistinctFrames].get(), port, false);
            }
            timer_->up = true;
            scheduler_.DataAddedToLine(true);
            scheduler_.TaskComplete(false);
        }
    }

    std::uint64_t points() const { return host_.points; }
    std::uint64_t sum() const { return host_.sum; }

private:
    /// The whole window, at each redraw, whether it is new or still the last one.
    void draw()
    {
        double start = 0, end = 0;
        trigger_.getTriggerWindow(buffer_, true, kFramePeriod, 0, 0, 0, now_, kSpan, false, start, end);
        trigger_.getLastTriggerWindow(start, end);
        for (std::size_t port = 0; std::isfinite(start) && port < kPorts; ++port)
            drawLine(lines_[port], port, start, end);
    }

    /// Block by block, each from where the last one opened a column, so that no column's extremes are lost. The points
    /// are those of the whole line.
    void drawLine(TimeScopeLine& line, std::size_t port, double start, double end)
    {
        line.reset();
        double from = std::nextafter(start, -1.0);
        for (bool first = true;; first = false) {
            double* pairs = getRealData(block_.get());
            const std::uint64_t count = buffer_.GetSamplesBetween(from, end, port, 0, true, kFramePeriod,
                                                                  TimeBuffer::SamplePart::real, {pairs, 2 * kBlock});
            const HostArrayPtr thinned(
                line.getLineThinData(block_.get(), static_cast<int>(count), kColumns / kSpan, !first));
            const std::uint64_t doubles = getNumberOfElements(thinned.get());
            if (doubles == 0)
                return;
            line.plotData(thinned.get(), false, 0);
            from = getRealData(thinned.get())[doubles - 2];
        }
    }

    PointSink host_;
    HostScope scope_{host_};
    TimeBuffer buffer_;
    TimeDomainTriggerController trigger_;
    std::array<TimeScopeLine, kPorts> lines_;
    SignalTimer* timer_ = new SignalTimer; // the scheduler's
    DrawScheduler scheduler_{std::unique_ptr<Timer>(timer_)};
    std::array<std::vector<HostArrayPtr>, kPorts> frames_;
    HostArrayPtr time_ = makeScalar(0);
    HostArrayPtr block_ = makeMatrix(2, kBlock);
    double now_ = 0;
    double redraw_ = 0;
    std::size_t frame_ = 0;
};

} // namespace

PipelineRun makePipeline()
{
    const auto pipeline = std::make_shared<Pipeline>();
    return {[pipeline] { pipeline->runOneSecond(); }, pipeline->points(), pipeline->sum()};
}

} // namespace tracery::bench
