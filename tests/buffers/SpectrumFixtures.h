#pragma once

#include "support/Expect.h"
#include "support/FakeTimer.h"

#include <tracery/SpectrumBuffer.h>

#include <algorithm>
#include <numeric>

namespace tracery::test {

using Samples = std::vector<double>;
using Frame = std::vector<Samples>;

constexpr auto kReal = HostComplexity::real;
constexpr auto kComplex = HostComplexity::complex;

/// A buffer whose timer is always up, unless started.
class TestBuffer : public SpectrumBuffer {
public:
    TestBuffer(std::uint32_t length, double percent, HostComplexity complexity = kReal, std::uint32_t channels = 1,
               std::unique_ptr<FakeTimer>&& owned = std::make_unique<FakeTimer>())
        : TestBuffer(length, percent, complexity, channels, std::move(owned), *owned)
    {}
    void add(const Samples& column) { AddValue(matrix(column.size(), 1, column).get(), 0, true); }
    HostArrayPtr segments() { return HostArrayPtr(getAvailableSegments()); }
    FakeTimer& timer;

private:
    TestBuffer(std::uint32_t length, double percent, HostComplexity complexity, std::uint32_t channels,
               std::unique_ptr<FakeTimer>&& owned, FakeTimer& fake)
        : SpectrumBuffer(length, percent, complexity, channels, std::move(owned)), timer(fake)
    {}
};

inline Samples ramp(std::size_t count, double first = 1)
{
    Samples values(count);
    std::iota(values.begin(), values.end(), first);
    return values;
}

/// An array of `channels` columns from a frame of as many, or of twice as many with the imaginary parts behind.
inline HostArrayPtr arrayOf(const Frame& frame, std::size_t channels)
{
    HostArrayPtr array(createDoubleMatrix(frame[0].size(), channels, frame.size() > channels ? kComplex : kReal));
    for (std::size_t c = 0; c < frame.size(); ++c) {
        double* to = c < channels ? getRealData(array.get()) : getImagData(array.get());
        std::copy(frame[c].begin(), frame[c].end(), to + c % channels * frame[c].size());
    }
    return array;
}

/// What a call throws, in the words of hosts.
template <class Call>
std::string refusal(Call&& call)
{
    try {
        call();
    } catch (const Error& error) {
        return error.name();
    } catch (const std::exception& error) {
        return error.what();
    }
    return "none";
}

inline void updateCCDF(SpectrumBuffer& buffer, const HostArray* power, int bins = 50, double resolution = 0.5)
{
    HostArray* results[4] = {};
    buffer.updateCCDF(power, bins, resolution, results[0], results[1], results[2], results[3]);
    std::for_each(results, results + 4, destroyArray);
}

} // namespace tracery::test
