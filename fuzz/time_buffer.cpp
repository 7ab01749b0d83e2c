// A TimeBuffer beside its plain model; or alone, with times and arguments of any kind.

#include "Floor.h"
#include "arrays.h"
#include "buffers/TimeBufferModel.h"

using namespace tracery;
using fuzz::anyExtents;
using fuzz::Bytes;
using fuzz::numbersOf;

namespace {

/// A buffer that is asked for anything.
class Any {
public:
    explicit Any(Bytes& bytes) : bytes_(bytes) {}

    void step()
    {
        try {
            test::failure([this] { act(); });
        } catch (const std::bad_alloc&) { // a buffer may be asked to be larger than there is memory for
        }
        EXPECT_LE(buffer_.GetNDim().size(), 6U);
    }

private:
    std::uint64_t count() { return bytes_.below(16) != 0 ? bytes_.below(7) : std::uint64_t{1} << bytes_.below(64); }
    TimeBuffer::Counts counts()
    {
        TimeBuffer::Counts all(bytes_.below(5));
        for (auto& each : all)
            each = count();
        return all;
    }
    HostArrayPtr array()
    {
        if (bytes_.below(16) == 0)
            return bytes_.flag() ? nullptr : HostArrayPtr(createLogicalScalar(true));
        return numbersOf(bytes_, bytes_.flag() ? HostComplexity::real : HostComplexity::complex, anyExtents(bytes_));
    }

    void act()
    {
        const std::uint64_t port = count();
        int first = 0, last = 0;
        HostArray *time = nullptr, *value = nullptr;
        switch (bytes_.below(14)) {
        case 0: {
            std::vector<HostComplexity> complexity(bytes_.below(5));
            for (auto& each : complexity)
                each = bytes_.flag() ? HostComplexity::real : HostComplexity::complex;
            return buffer_.ResetBuffer(counts(), counts(), counts(), bytes_.below(5),
                                       bytes_.flag() ? BufferType::SingleRate : BufferType::MultipleRate, complexity,
                                       bytes_.flag());
        }
        case 1:
            return bytes_.flag() ? buffer_.SetMaxNumTimeSteps(counts()) : buffer_.reserveCapacity();
        case 2:
            return bytes_.flag()
                       ? buffer_.SetMaxDimensions(array().get())
                       : buffer_.SetMaxDimensions({static_cast<int>(count()), static_cast<int>(count())}, port);
        case 3:
            return bytes_.flag() ? buffer_.ClearBackTo(bytes_.number()) : buffer_.clearUptoLastTime();
        case 4:
            return bytes_.flag() ? buffer_.Clear() : buffer_.resetInitialized();
        case 5:
            return buffer_.AddTime(array().get(), port);
        case 6:
            return buffer_.AddValue(array().get(), port, bytes_.flag());
        case 7:
            buffer_.GetIndexRange(port, bytes_.number(), bytes_.number(), bytes_.flag(), first, last);
            return;
        case 8:
            buffer_.GetTimeAndValue(port, time, value, bytes_.number(), bytes_.number(), bytes_.flag());
            break;
        case 9: {
            std::vector<double> limits(bytes_.below(16) != 0 ? 4 : 3);
            buffer_.GetTimeAndValueInterleaved(port, value, limits, bytes_.number(), bytes_.number(), bytes_.number(),
                                               bytes_.number(), count(), count(), bytes_.flag(), bytes_.number(),
                                               static_cast<std::int32_t>(count()), bytes_.flag(), bytes_.flag());
            break;
        }
        case 10: {
            std::vector<double> pairs;
            return buffer_.GetSamplesAfter(bytes_.number(), port, count(), bytes_.flag(), bytes_.number(),
                                           static_cast<TimeBuffer::SamplePart>(bytes_.below(4)), pairs);
        }
        default:
            return buffer_.addTimeAndValue(array().get(), array().get(), port, bytes_.flag());
        }
        destroyArray(time);
        destroyArray(value);
    }

    Bytes& bytes_;
    TimeBuffer buffer_;
};

} // namespace

void fuzz::runInput(Bytes& bytes)
{
    static Floor refusals("refusals", 2000), shortages("operations short of memory", 5000);
    static Floor apart("values that came later than their times", 2000), lost("readers that were late", 300);
    static Floor oneTime("blocks full of one time", 2000), patterns("patterns of NaN", 100),
        pairs("pairs drawn", 20000);
    const std::size_t before = getNumberOfLiveArrays();
    if (bytes.flag()) {
        for (Any subject(bytes); !bytes.isEmpty();)
            subject.step();
    } else {
        test::BufferRun run;
        for (test::RandomBuffer<Bytes> subject(bytes, run); !bytes.isEmpty();)
            subject.step();
        refusals += run.refusals, shortages += run.shortages, apart += run.apart, lost += run.lost;
        oneTime += run.fullOfOneTime, patterns += run.patterns, pairs += run.pairs;
    }
    EXPECT_EQ(getNumberOfLiveArrays(), before);
}
