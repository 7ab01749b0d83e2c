#pragma once

#include <tracery/DataThinner.h>
#include <tracery/captures/Capture.h>
#include <tracery/captures/LiveCapture.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

namespace tracery::captures {

using Doubles = std::vector<double>;
using recordings::SampleLayout;
using recordings::SampleType;

/// What a capture holds, kept plainly.
struct CaptureModel {
    std::size_t channels = 1;
    bool complex = false;
    SampleLayout layout;
    std::optional<TimeAxis> axis;
    std::vector<Time> times; ///< without an axis
    Doubles values;          ///< line by line within a step

    std::size_t lines() const { return complex ? 2 * channels : channels; }
    std::int64_t steps() const { return static_cast<std::int64_t>(values.size() / lines()); }
    Time timeOf(std::int64_t step) const { return axis ? axis->timeOf(step) : times[static_cast<std::size_t>(step)]; }

    LiveSettings settings() const
    {
        LiveSettings settings;
        settings.channels.resize(channels);
        settings.complex = complex;
        settings.layout = layout;
        settings.axis = axis;
        return settings;
    }

    /// (time, value) pairs of a window, all of them.
    Doubles full(const Window& window) const
    {
        const std::size_t line =
            complex ? 2 * window.channel + (window.part == Part::Imaginary ? 1 : 0) : window.channel;
        std::optional<RelativeTimes> even;
        if (axis)
            even.emplace(*axis, window.origin);
        Doubles pairs;
        for (std::int64_t step = window.first; step < window.first + window.count; ++step) {
            pairs.push_back(even ? (*even)(step) : (timeOf(step) - window.origin).toDouble());
            pairs.push_back(values[static_cast<std::size_t>(step) * lines() + line]);
        }
        return pairs;
    }
};

/// What the thinner makes of pairs; with a last column finished, of one more that opens another.
inline Doubles thinned(const Doubles& pairs, double columnsPerSecond, bool finishLast)
{
    Doubles all = pairs;
    if (finishLast)
        all.insert(all.end(), {std::numeric_limits<double>::infinity(), 0});
    const HostArrayPtr array(createDoubleMatrix(2, all.size() / 2, HostComplexity::real));
    std::copy(all.begin(), all.end(), getRealData(array.get()));
    DataThinner thinner;
    const HostArrayPtr result(
        thinner.getArrayThinData(array.get(), static_cast<int>(all.size() / 2), columnsPerSecond, false));
    const double* first = getRealData(result.get());
    std::size_t count = static_cast<std::size_t>(getNumberOfElements(result.get()));
    if (finishLast)
        count -= 2; // the point that opened the column behind
    return {first, first + count};
}

inline bool sameBits(const Doubles& a, const Doubles& b)
{
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0);
}

/// Captures that are hard on whoever takes many samples for one.
class CaptureMaker {
public:
    explicit CaptureMaker(unsigned seed) : random_(seed) {}

    std::int64_t below(std::int64_t most)
    {
        return static_cast<std::int64_t>(random_() % static_cast<std::uint64_t>(std::max<std::int64_t>(most, 1)));
    }
    bool oneIn(std::int64_t n) { return below(n) == 0; }

    CaptureModel make()
    {
        CaptureModel model;
        model.channels = oneIn(2) ? 1 : static_cast<std::size_t>(1 + below(9));
        model.complex = oneIn(4);
        model.layout.type = static_cast<SampleType>(below(11));
        model.layout.bigEndian = oneIn(3);
        if (oneIn(2))
            chooseScale(model.layout);
        const std::int64_t mostSteps = std::int64_t{1} << (4 + below(14));
        const std::int64_t steps = 1 + below(oneIn(8) ? 2 * mostSteps + 10000 : mostSteps);
        chooseValues(model, steps / (model.channels > 2 ? 4 : 1) + 1);
        chooseTimes(model);
        return model;
    }

    Window window(const CaptureModel& model, std::int64_t begin = 0)
    {
        Window window;
        window.channel = static_cast<std::size_t>(below(static_cast<std::int64_t>(model.channels)));
        window.part = model.complex && oneIn(2) ? Part::Imaginary : Part::Real;
        const std::int64_t steps = model.steps() - begin;
        window.count = oneIn(10) ? steps : below(steps >> below(12)) + 1;
        window.first = begin + below(steps - window.count + 1);
        const std::int64_t near = window.first + below(window.count);
        window.origin = model.timeOf(oneIn(2) ? window.first : near);
        if (oneIn(3))
            window.origin = window.origin - Duration{below(2) * below(100000), below(kFemtosPerSecond)};
        const double span = (model.timeOf(window.first + window.count - 1) - model.timeOf(window.first)).toDouble();
        window.columnsPerSecond = static_cast<double>(1 + below(std::int64_t{1} << below(12))) / (span > 0 ? span : 1);
        const double odd[] = {
            0, -1, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN(), 1e300, 1e-300};
        if (oneIn(20))
            window.columnsPerSecond = odd[below(6)];
        window.finishLast = window.columnsPerSecond > 0 && oneIn(2); // or no column opens behind
        return window;
    }

private:
    void chooseScale(SampleLayout& layout)
    {
        const bool floating = layout.type == SampleType::F32 || layout.type == SampleType::F64;
        if (floating)
            return;
        switch (below(5)) {
        case 0:
            layout.divisor = 0x1p15;
            break;
        case 1:
            layout.bias = 127.5;
            layout.divisor = 127.5;
            break;
        case 2:
            layout.scale = -0.0123; // falls
            layout.offset = 5;
            break;
        case 3:
            layout.scale = 1e-17; // numbers share values
            layout.offset = 1;
            break;
        default:
            layout.scale = 3.3 / 4096;
            layout.offset = -1.1;
        }
    }

    void chooseValues(CaptureModel& model, std::int64_t steps)
    {
        const bool floating = model.layout.type == SampleType::F32 || model.layout.type == SampleType::F64;
        const bool gaps = oneIn(2), infinities = oneIn(3);
        const std::int64_t kind = below(4), few = 1 + below(40), rare = 1 + below(3000);
        // Numbers first, and what they stand for.
        const SampleType type = model.layout.type;
        const int bits = type == SampleType::Bit                              ? 1
                         : type == SampleType::I8 || type == SampleType::U8   ? 8
                         : type == SampleType::I16 || type == SampleType::U16 ? 16
                         : type == SampleType::I24 || type == SampleType::U24 ? 24
                                                                              : 32;
        const bool isSigned = type == SampleType::I8 || type == SampleType::I16 || type == SampleType::I24 ||
                              type == SampleType::I32 || floating;
        const std::int64_t range = std::int64_t{1} << bits, least = isSigned ? -range / 2 : 0;
        double walk = 0;
        for (std::int64_t i = 0; i < steps * static_cast<std::int64_t>(model.lines()); ++i) {
            std::int64_t number = kind == 0 ? below(range) : kind == 1 ? below(few) % range : (i / few) % range;
            if (kind == 3)
                number = oneIn(rare) ? below(range) : range / 2;
            double value = static_cast<double>(least + number);
            if (floating) {
                walk += static_cast<double>(below(201) - 100) * 0.125;
                value = kind == 0 ? walk : kind == 1 ? static_cast<double>(below(few)) - 3 : value * 0.5;
                if (value == 0 && oneIn(2))
                    value = -0.0;
                if (gaps && oneIn(rare))
                    value = std::bit_cast<double>(0x7FF8000000000000U | static_cast<std::uint64_t>(below(99)) << 40);
                if (infinities && oneIn(rare))
                    value =
                        oneIn(2) ? std::numeric_limits<double>::infinity() : -std::numeric_limits<double>::infinity();
                if (type == SampleType::F32)
                    value = static_cast<double>(static_cast<float>(value));
            } else {
                const SampleLayout& l = model.layout;
                value = (value - l.bias) / l.divisor * l.scale;
                value = l.offset == 0 ? value : value + l.offset;
            }
            model.values.push_back(value);
        }
    }

    void chooseTimes(CaptureModel& model)
    {
        const Rate rates[] = {Rate(1'000'000'000), Rate(44100), Rate(30000, 1001), Rate(1, 7), Rate(1024)};
        const Time starts[] = {{}, {{1'772'366'400, 125'000'000}, true}, {{365 * 86400, 333}, false}};
        const Time start = starts[below(3)];
        if (oneIn(2)) {
            model.axis = TimeAxis{start, rates[below(5)]};
            return;
        }
        // Steps that come at once, in bursts, and after long pauses.
        Duration length;
        const std::int64_t unit = oneIn(2) ? 1'000'000 : oneIn(2) ? 1000 : 1;
        const std::int64_t together = 1 + below(oneIn(4) ? 700 : 3);
        for (std::int64_t i = 0; i < model.steps(); ++i) {
            if (i % together == 0)
                length = length + Duration{oneIn(500) ? below(20000) : 0, below(oneIn(9) ? 90'000'000 : 3000) * unit};
            model.times.push_back(start + length);
        }
    }

    std::mt19937_64 random_;
};

} // namespace tracery::captures
