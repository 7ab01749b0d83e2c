#pragma once

#include "buffers/PortRings.h"

#include <tracery/DataPattern.h>
#include <tracery/TimeBuffer.h>

#include <complex>
#include <limits>
#include <map>
#include <span>
#include <vector>

namespace tracery {

/// A port, and what is kept for its owner.
struct Port {
    PortRings rings;
    StepLayout::Counts arrayExtents{}; ///< of the last array that gave its extents
    bool takeArrayExtents = true;      ///< the next array gives its extents in any case
    bool linear = false;
};

/// All ports of a buffer, and what they share. One thread at a time; what throws has changed nothing, because room is
/// made in every ring first, as this alone can fail.
struct Ports {
    using Counts = StepLayout::Counts;
    /// Elements of one step of all ports: the NaN-pattern detector keeps three steps and counts them as int.
    static constexpr std::uint64_t kMaximumElements = std::numeric_limits<int>::max() / 3;

    /// None, before set-up.
    Ports() = default;
    /// The arguments are those of TimeBuffer::ResetBuffer, and so is what it throws.
    Ports(const Counts& maxNumTimeSteps, const Counts& maxDimensions, const Counts& nDim, std::uint64_t nPorts,
          BufferType bufferType, const std::vector<HostComplexity>& complexity, bool isThreadSafe);

    /// throws  InvalidPortID
    void requirePort(std::uint64_t port) const;
    /// Calls use(line, ports) with each line of times and the ports that have it.
    template <class Use>
    void forEachTimeLine(Use&& use)
    {
        const std::size_t ofLine = sharedTime ? ports.size() : 1;
        for (std::size_t k = 0; k < ports.size(); k += ofLine)
            use(ports[k].rings.times(), std::span(ports).subspan(k, ofLine));
    }
    /// Calls use(ring) with each ring.
    template <class Use>
    void forEachRing(Use&& use)
    {
        forEachTimeLine([&](TimeLine& line, std::span<Port>) { use(line.ring); });
        for (Port& port : ports)
            port.rings.forEachLine([&](PortRings::ValueLine& line) { use(line.ring); });
    }

    // Shape (Ports.cpp)
    /// Changes the capacities of all rings, and whether they are held.
    void changeCapacities(const Counts& stepsOfPorts, bool hold);
    /// Gives ports new extents. Their rings restart empty, as do those of all ports that share times with them.
    void reshape(const std::map<std::uint64_t, Counts>& extentsOfPorts);
    /// Drops all steps.
    void clear() noexcept;
    /// Numbers clearings from `clearing` on, which is the set-up.
    void beginAt(std::uint64_t clearing) noexcept;
    /// Drops the steps newer than `time`; all but the newest. Port by port.
    void clearBackTo(double time) noexcept;
    void clearUptoLastTime() noexcept;

    // Writing (PortsWrite.cpp)
    void addTime(Port& port, const double* times, std::uint64_t count);
    void addValue(Port& port, const double* values, const Counts& dims, HostComplexity part);
    void addValue(Port& port, const std::complex<double>* values, const Counts& dims, HostComplexity part);
    /// times  null for values whose times are there already
    void addArray(Port& port, const HostArray* times, const HostArray* values, bool refresh);

    bool initialized = false;
    BufferType type = BufferType::SingleRate;
    bool oneTimeForAll = true; ///< whether times are written to all ports at once
    bool sharedTime = true;    ///< and stored once
    std::uint64_t numPorts = 0;
    Counts maxNumTimeSteps;
    std::vector<double> sampleTimes;
    std::vector<Port> ports;
    bool held = false; ///< all rings are
    bool hasNaNPattern = false;
    DataPattern pattern{0};
    std::uint64_t clearings = 0; ///< how often a time line lost steps other than for want of room, or was new

private:
    /// A fresh detector, as wide as the steps of all ports together.
    static DataPattern patternFor(const Counts& elementsPerStep);
    /// Tells readers of the line's ports to begin anew.
    void noteClearing(TimeLine& line) noexcept { line.clearings = ++clearings; }
    template <class Use>
    void forWrittenTimeLines(Port& port, Use&& use);
    void appendTimes(Port& port, const double* times, std::uint64_t count) noexcept;
    /// Appends values that there is room for.
    void write(Port& port, PortRings::ValueLine& line, StepLayout::Input& input, const double* values) noexcept;
};

} // namespace tracery
