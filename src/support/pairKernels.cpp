#include "support/pairKernels.h"

#include "support/vectorUnit.h"

#include <cstdint>
#include <cstring>

namespace tracery {

namespace {

using Lanes [[gnu::vector_size(32)]] = double;
using Mask [[gnu::vector_size(32)]] = std::int64_t;
constexpr std::size_t kLanes = 4;

template <bool kHasTimes>
TRACERY_INLINE double timeAt(const SampleRun& run, std::size_t i)
{
    if constexpr (kHasTimes)
        return run.lead + run.times[i] + run.offset;
    else
        return (run.first + static_cast<double>(i)) * run.spacing + run.lead + run.offset;
}

/// Calls four(times, values) for whole vectors of samples, and one(time, value) for the rest.
template <bool kHasTimes, bool kSideBySide, class Four, class One>
TRACERY_INLINE void forEachVector(const SampleRun& run, const Four& four, const One& one)
{
    const SampleView& samples = run.values;
    Lanes index = Lanes{0, 1, 2, 3} + run.first;
    std::size_t i = 0;
    for (; i + kLanes <= samples.count; i += kLanes) {
        Lanes times, values;
        if constexpr (kHasTimes) {
            std::memcpy(&times, run.times + i, sizeof times);
            times = run.lead + times + run.offset;
        } else {
            times = index * run.spacing + run.lead + run.offset;
            index += static_cast<double>(kLanes);
        }
        const double* x = &samples[i];
        if constexpr (kSideBySide)
            std::memcpy(&values, x, sizeof values);
        else
            values = Lanes{x[0], x[samples.stride], x[2 * samples.stride], x[3 * samples.stride]};
        four(times, values);
    }
    for (; i < samples.count; ++i)
        one(timeAt<kHasTimes>(run, i), samples[i]);
}

/// The loop that fits the run.
template <class Four, class One>
TRACERY_INLINE void forEachSampleOf(const SampleRun& run, const Four& four, const One& one)
{
    if (run.times == nullptr)
        forEachVector<false, true>(run, four, one);
    else if (run.values.stride == 1)
        forEachVector<true, true>(run, four, one);
    else
        forEachVector<true, false>(run, four, one);
}

TRACERY_INLINE void putPairs(const Lanes& times, const Lanes& values, double* out)
{
    const Lanes first = __builtin_shufflevector(times, values, 0, 4, 1, 5);
    const Lanes second = __builtin_shufflevector(times, values, 2, 6, 3, 7);
    std::memcpy(out, &first, sizeof first);
    std::memcpy(out + kLanes, &second, sizeof second);
}

TRACERY_INLINE double* layOutOf(const SampleRun& run, ValueRange& range, double* out)
{
    Lanes least = Lanes{} + range.least, greatest = Lanes{} + range.greatest;
    forEachSampleOf(
        run,
        [&](const Lanes& times, const Lanes& values) __attribute__((always_inline)) {
            putPairs(times, values, out);
            out += 2 * kLanes;
            least = values < least ? values : least;
            greatest = values > greatest ? values : greatest;
        },
        [&](double time, double value) __attribute__((always_inline)) {
            *out++ = time;
            *out++ = value;
            range.widen(value);
        });
    for (std::size_t k = 0; k < kLanes; ++k) {
        range.least = least[k] < range.least ? least[k] : range.least;
        range.greatest = greatest[k] > range.greatest ? greatest[k] : range.greatest;
    }
    return out;
}

TRACERY_INLINE double* layOutWithin(const SampleRun& run, double after, double upTo, double* out)
{
    const auto put = [&](double time, double value) __attribute__((always_inline))
    {
        out[0] = time;
        out[1] = value;
        out += time > after && time <= upTo ? 2 : 0;
    };
    forEachSampleOf(
        run,
        [&](const Lanes& times, const Lanes& values) __attribute__((always_inline)) {
            const Mask within = (times > after) & (times <= upTo);
            if ((within[0] & within[1] & within[2] & within[3]) != 0) {
                putPairs(times, values, out);
                out += 2 * kLanes;
            } else {
                for (std::size_t k = 0; k < kLanes; ++k)
                    put(times[k], values[k]);
            }
        },
        put);
    return out;
}

TRACERY_AVX2 double* layOutAvx2(const SampleRun& run, ValueRange& range, double* out)
{
    return layOutOf(run, range, out);
}
TRACERY_AVX2 double* layOutWithinAvx2(const SampleRun& run, double after, double upTo, double* out)
{
    return layOutWithin(run, after, upTo, out);
}

} // namespace

double* layOutPairs(const SampleRun& run, ValueRange& range, double* out)
{
    return useAvx2() ? layOutAvx2(run, range, out) : layOutOf(run, range, out);
}

double* layOutPairsWithin(const SampleRun& run, double after, double upTo, double* out)
{
    return useAvx2() ? layOutWithinAvx2(run, after, upTo, out) : layOutWithin(run, after, upTo, out);
}

} // namespace tracery
