#pragma once

#include <nlohmann/json_fwd.hpp>

#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Measures kernels beside what they are held against, in one process on one core: the cases of a row take turns, so that
/// a machine that drifts drifts for all of them, and medians of rounds are compared.
namespace tracery::bench {

/// The cases of a row. Each call does the same work; any but `ours` may be missing.
struct Work {
    double items = 1;            ///< what a call works on: samples, or seconds of signal
    std::function<void()> ours;  ///< the library
    std::function<void()> limit; ///< what the machine allows for such work: a copy, or one pass over the bytes
    std::function<void()> plain; ///< the formulas as they stand
};

/// What a row should reach.
struct Target {
    std::optional<double> ofLimit;     ///< at least this share of the limit's speed
    std::optional<double> timesPlain;  ///< at least this many times as fast as the plain form
    std::optional<double> mostSeconds; ///< at most this many seconds an item
};

struct Row {
    std::string kernel;
    std::string data; ///< sizes, and where the data fit
    Target target;
    std::function<Work()> make; ///< called when the row's turn has come
};
using Rows = std::vector<Row>;

/// Keeps a result alive that nobody reads.
template <class Value>
void keep(const Value& value)
{
    asm volatile("" : : "g"(&value) : "memory");
}

/// Makes the compiler believe that all memory was read and written.
inline void touchMemory() { asm volatile("" : : : "memory"); }

/// A row's medians; NaN where a case is missing. Ratios are medians of the ratios of single rounds.
struct Measured {
    double secondsPerItem = std::numeric_limits<double>::quiet_NaN();
    double ofLimit = std::numeric_limits<double>::quiet_NaN();
    double timesPlain = std::numeric_limits<double>::quiet_NaN();
};

/// Seconds this thread has had a core: what others do on it meanwhile does not count.
double processorTime();

/// Runs `rounds` rounds; each times every case for some milliseconds.
Measured measure(const Work& work, int rounds);

// One function a file of rows.
Rows bufferRows();
Rows ccdfRows();
Rows pipelineRows();
Rows spectrumRows();
Rows thinningRows();
Rows triggerRows();

// Tables of their own: printed, and given back.

/// How long the longest write takes while a buffer grows to its capacity, beside rings that grow by copying.
nlohmann::json worstWriteTable();
/// What a sample costs as sizes grow.
nlohmann::json scalingTable(int rounds);

} // namespace tracery::bench
