#pragma once

#include "buffers/Ring.h"

#include <tracery/DataPattern.h>
#include <tracery/TimeBuffer.h>
#include <tracery/host/Error.h>

#include <boost/thread/lock_types.hpp>
#include <boost/thread/mutex.hpp>

#include <atomic>
#include <map>
#include <optional>
#include <span>

namespace tracery {

/// Doubles for an array to come, not filled. throws  std::bad_alloc
HostDoubles allocateDoubles(std::uint64_t count);

/// Everything a TimeBuffer knows. Its functions take no lock and assume a valid port where they take one.
struct TimeBuffer::State {
    /// The times of one port, or of all when they are shared.
    struct TimeLine {
        Ring ring;
        std::uint64_t steps = 0; ///< ever written, less those cleared; not capped by the capacity
    };

    /// One part, real or imaginary, of a port's values. A step takes elementsPerStep places.
    struct ValueLine {
        Ring ring;
        std::uint64_t steps = 0;
    };

    struct Port {
        Counts extents; ///< maximum extents of one step
        std::uint64_t elementsPerStep;
        ValueLine real;
        std::optional<ValueLine> imag; ///< of a complex port
        Counts arrayExtents;           ///< of the last array that gave its extents
        bool takeArrayExtents = true;  ///< the next array gives its extents in any case
        bool linear = false;

        bool complex() const { return imag.has_value(); }
        /// Calls use(line) for the real values and the imaginary ones, if there are any.
        template <class Use>
        void forEachPart(Use&& use)
        {
            use(real);
            if (imag)
                use(*imag);
        }
    };

    /// What a write of values comes to: `steps` steps, either whole ones end to end or smaller ones of `extents`.
    struct Write {
        std::uint64_t steps = 0;
        std::uint64_t elements = 0; ///< of the whole input
        bool whole = true;
        Counts extents;    ///< of one step of the input
        Counts subscripts; ///< room to walk them
    };

    /// Stored steps, inclusive, counted from the oldest.
    struct StepRange {
        std::uint64_t first;
        std::uint64_t last;
        std::uint64_t count() const { return last + 1 - first; }
    };

    /// What a search came to; `last` is not looked for when there is no first.
    struct FoundSteps {
        std::optional<std::uint64_t> first;
        std::optional<std::uint64_t> last;
        std::optional<StepRange> range() const
        {
            return first && last && *first <= *last ? std::optional(StepRange{*first, *last}) : std::nullopt;
        }
    };

    mutable boost::mutex mutex;
    std::atomic<bool> threadSafe{false};

    bool initialized = false;
    BufferType type = BufferType::SingleRate;
    bool sharedTime = true;
    std::uint64_t numPorts = 0;
    Counts maxNumTimeSteps;
    std::vector<double> sampleTimes;
    std::vector<Port> ports;
    std::vector<TimeLine> times; ///< one when shared, else one a port
    bool held = false;           ///< all rings are
    bool hasNaNPattern = false;
    DataPattern pattern{0};
    std::uint64_t clearings = 0; ///< how often steps were dropped other than for want of room

    // Set-up (TimeBuffer.cpp)
    void requirePort(std::uint64_t port) const;
    TimeLine& timesOf(std::uint64_t port) { return times[sharedTime ? 0 : port]; }
    const TimeLine& timesOf(std::uint64_t port) const { return times[sharedTime ? 0 : port]; }
    /// Changes the capacities of all rings, and whether they are held.
    void changeCapacities(const Counts& stepsOfPorts, bool hold);
    /// Gives ports new extents. Their rings restart empty, as do those of all ports that share times with them.
    void reshape(const std::map<std::uint64_t, Counts>& extentsOfPorts);
    /// A port with empty rings.
    static Port makePort(Counts extents, bool complex, std::uint64_t maxNumTimeSteps);
    /// A fresh detector, as wide as the ports' steps together.
    static DataPattern makePattern(const std::vector<std::uint64_t>& elementsPerStep);
    /// Calls use(ring) with each ring.
    template <class Use>
    void forEachRing(Use&& use)
    {
        for (TimeLine& line : times)
            use(line.ring);
        for (Port& port : ports)
            port.forEachPart([&](ValueLine& line) { use(line.ring); });
    }

    // Writing (TimeBufferWrite.cpp). Room is made in every ring first, as this alone can fail: either all rings and
    // counters that belong together change, or none.
    template <class Use>
    void forWrittenTimeLines(std::uint64_t port, Use&& use);
    void reserveTimes(std::uint64_t count, std::uint64_t port);
    void addTime(const double* newTimes, std::uint64_t count, std::uint64_t port) noexcept;
    ValueLine& lineFor(std::uint64_t port, HostComplexity complexity);
    /// Checks a write against the port's shape and against the steps of its times.
    Write checkWrite(const Port& port, const ValueLine& line, std::uint64_t timeSteps,
                     std::span<const std::uint64_t> dims) const;
    static void reserveValues(const Port& port, ValueLine& line, const Write& write);
    void write(std::uint64_t port, ValueLine& line, Write& write, const double* values) noexcept;
    /// Both of it at once.
    void reserveAndWrite(std::uint64_t port, ValueLine& line, Write& write, const double* values);
    void addArray(const HostArray* newTimes, const HostArray* values, std::uint64_t port, bool refresh);
    /// Keeps steps aligned with times from the newest end: no value may outlast its time.
    static void dropValuesWithoutTimes(Port& port, const TimeLine& timeLine) noexcept;

    // Reading (TimeBufferRead.cpp)
    /// Whether the port has anything to read. throws when values and times differ.
    bool readable(std::uint64_t port) const;
    /// First step not before `time`, and last step not after it, both widened by the spacing of doubles at `time`.
    static std::optional<std::uint64_t> startingIndex(const Ring& times, double time);
    static std::optional<std::uint64_t> endingIndex(const Ring& times, double time);
    FoundSteps findSteps(std::uint64_t port, double tStart, double tEnd, bool widen) const;
};

/// Holds the buffer's mutex when the buffer is thread safe, or in any case.
class TimeBuffer::Lock {
public:
    enum class When { ifThreadSafe, always };
    explicit Lock(const State& state, When when = When::ifThreadSafe) : lock_(state.mutex, boost::defer_lock)
    {
        if (when == When::always || state.threadSafe)
            lock_.lock();
    }

private:
    boost::unique_lock<boost::mutex> lock_;
};

} // namespace tracery
