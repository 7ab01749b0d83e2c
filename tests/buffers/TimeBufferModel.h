#pragma once

#include "buffers/TimeBufferReads.h"

#include <tracery/DataPattern.h>

#include <algorithm>
#include <functional>

namespace tracery::test {

/// A TimeBuffer and the plain model of it, on which the same operations are done; `Random` generates the choices.
template <class Random>
class RandomBuffer : BufferReads<Random> {
    using Base = BufferReads<Random>;
    using Base::attempt, Base::below, Base::chance, Base::within, Base::anyValue, Base::checkAll, Base::checkReads;
    using Base::gaps_, Base::patternFound_, Base::last_, Base::sampleTimes_;
    using Base::run_, Base::memory_, Base::buffer_, Base::ports_, Base::type_, Base::threadSafe_, Base::oneTimeForAll_;

public:
    RandomBuffer(Random& random, BufferRun& run) : Base(random, run) { setUp(); }
    ~RandomBuffer() { run_.shortages += memory_.failures(); }

    void step()
    {
        const std::uint64_t choice = below(100), k = below(ports_.size());
        const bool apart = std::any_of(ports_.begin(), ports_.end(), [](const auto& port) { return !port.isLevel(); });
        if (apart && chance(0.6))
            addPending();
        else if (choice < 45)
            addSteps(k, below(12));
        else if (choice < 55)
            addTimes(k, below(6));
        else if (choice < 60)
            addArray(k, {}); // without its times, so mostly refused
        else if (choice < 76)
            drop(choice);
        else if (choice < 82)
            changeCapacity();
        else if (choice < 88)
            changeExtents(k);
        else if (choice < 90)
            setUp();
        else
            changeSettings(k);
        checkAll();
        checkReads(below(ports_.size()));
    }

private:
    void setUp()
    {
        std::vector<PortModel> ports(below(4) + 1);
        const auto type = chance(0.5) ? BufferType::SingleRate : BufferType::MultipleRate;
        const bool threadSafe = chance(0.4), unequal = chance(0.5);
        const std::uint64_t common = below(chance(0.2) ? 60 : 10);
        Counts capacities, extents, nDim;
        std::vector<HostComplexity> complexity;
        for (PortModel& port : ports) {
            port.complex = chance(0.4);
            port.capacity = unequal ? below(10) : common;
            port.maxExtents.resize(below(4));
            for (auto& extent : port.maxExtents)
                extent = chance(0.02) ? 0 : below(chance(0.2) ? 12 : 4) + 1;
            capacities.push_back(port.capacity);
            nDim.push_back(port.maxExtents.size());
            extents.insert(extents.end(), port.maxExtents.begin(), port.maxExtents.end());
            complexity.push_back(port.complex ? HostComplexity::complex : HostComplexity::real);
        }
        if (!ports_.empty() && chance(0.3)) {
            memory_.withoutMemory([this] { buffer_.resetInitialized(); });
            ports_.clear();
            checkAll();
        }
        attempt("none",
                [&] { buffer_.ResetBuffer(capacities, extents, nDim, ports.size(), type, complexity, threadSafe); });
        ports_ = ports;
        type_ = type;
        threadSafe_ = threadSafe;
        oneTimeForAll_ = type == BufferType::SingleRate && !threadSafe;
        shared_ = oneTimeForAll_ &&
                  std::adjacent_find(capacities.begin(), capacities.end(), std::not_equal_to<>()) == capacities.end();
        last_.assign(ports_.size(), -3.0);
        sampleTimes_.assign(2 * ports_.size(), 0.0);
        gaps_ = chance(0.2);
        restartPattern();
    }
    void restartPattern()
    {
        std::uint64_t width = 0;
        for (const PortModel& port : ports_)
            width += port.width();
        pattern_ = DataPattern(static_cast<int>(width));
        patternFound_ = false;
    }

    // ---- Writing

    std::vector<PortModel*> withTimesOf(std::uint64_t k)
    {
        std::vector<PortModel*> those;
        for (PortModel& port : ports_)
            if (oneTimeForAll_ || &port == &ports_[k])
                those.push_back(&port);
        return those;
    }
    /// Times that go on, in places the same for long.
    Samples newTimes(std::uint64_t k, std::size_t n)
    {
        const double same = chance(0.1) ? 1 : 0.2;
        Samples times(n);
        double& last = last_[oneTimeForAll_ ? 0 : k];
        for (double& t : times)
            t = last += chance(same) ? 0.0 : within(0, 1);
        return times;
    }
    void addTimes(std::uint64_t k, std::size_t n)
    {
        const Samples times = newTimes(k, n);
        const HostArrayPtr array = row(times);
        const bool plain = chance(0.5);
        attempt("none", [&] { plain ? buffer_.AddTime(times.data(), n, k) : buffer_.AddTime(array.get(), k); });
        for (PortModel* port : withTimesOf(k))
            port->addTimes(times);
    }
    /// n steps, with all that they need, as one operation or several.
    void addSteps(std::uint64_t k, std::size_t n)
    {
        if (!oneTimeForAll_ || chance(0.1))
            return addArray(k, newTimes(k, n));
        addTimes(k, n);
        for (std::uint64_t i = 0; i < ports_.size(); ++i)
            addArray(i, {}, n);
    }
    void addPending()
    {
        for (std::uint64_t k = 0; k < ports_.size(); ++k)
            for (const std::size_t part : {0U, 1U})
                if (const std::uint64_t n = ports_[k].pending[part]; n > 0 && chance(0.7)) {
                    if (part == 0 && n == ports_[k].pending[1] && chance(0.5))
                        addArray(k, {}, n);
                    else
                        addPart(k, part, chance(0.05) ? n + 1 : n);
                    ++run_.apart;
                }
    }

    /// Extents of n steps, mostly within the port's, at times the whole steps flattened.
    Counts newDims(const PortModel& port, std::uint64_t n)
    {
        Counts dims = port.maxExtents;
        if (chance(0.02)) {
            dims.assign(below(5), 0);
            for (auto& dim : dims)
                dim = below(4) + 1;
            return dims;
        }
        if (chance(0.6))
            for (auto& extent : dims)
                extent = extent == 0 ? 0 : below(extent) + 1;
        if (dims.empty() || (dims == port.maxExtents && chance(0.5)))
            dims = {port.width()};
        if (n != 1 || chance(0.8))
            dims.push_back(n);
        return dims;
    }
    void note(const PortModel::Input& input, const double* values)
    {
        if (input.steps > 0 && !patternFound_)
            patternFound_ = pattern_.addValueAndCheckPattern(values[0]);
        run_.patterns += patternFound_ ? 1 : 0;
    }

    /// An array to port k, after its times or with them: then for as many steps, else for n.
    void addArray(std::uint64_t k, const Samples& times, std::uint64_t n = 0)
    {
        PortModel& port = ports_[k];
        const bool both = !times.empty();
        const bool refresh = port.arrayDims.empty() || chance(0.8);
        n = both ? times.size() : n;
        Counts dims = refresh ? newDims(port, n) : Counts{productOf(port.arrayDims) + below(2), 1};
        if (dims.size() < 2)
            dims.resize(2, 1);
        const bool complex = chance(0.5);
        const HostArrayPtr array(createNumericArray(dims.size(), dims.data(), HostClassID::double_,
                                                    complex ? HostComplexity::complex : HostComplexity::real));
        const std::uint64_t elements = getNumberOfElements(array.get());
        double* const data[] = {getRealData(array.get()), getImagData(array.get())};
        Samples parts[2] = {Samples(elements), Samples(elements)};
        for (const std::size_t part : {0U, 1U})
            for (std::uint64_t i = 0; i < elements && data[part] != nullptr; ++i)
                data[part][i] = parts[part][i] = anyValue();
        dims.assign(getDimensions(array.get()), getDimensions(array.get()) + getNumberOfDimensions(array.get()));
        const PortModel::Input input = port.inputOf(refresh || elements == 0 ? dims : port.arrayDims);
        std::string expected = input.fits ? "none" : "AddValueInputFormatError";
        for (std::size_t part = 0; part < port.numParts() && input.fits; ++part)
            if (port.pending[part] + times.size() != input.steps)
                expected = "AddValueError";
        const HostArrayPtr timeRow = row(times);
        attempt(expected, [&] {
            both ? buffer_.addTimeAndValue(timeRow.get(), array.get(), k, refresh)
                 : buffer_.AddValue(array.get(), k, refresh);
        });
        if (expected != "none")
            return;
        if (both)
            for (PortModel* each : withTimesOf(k))
                each->addTimes(times);
        if (refresh && elements > 0)
            port.arrayDims = dims;
        for (std::size_t part = 0; part < port.numParts(); ++part) {
            note(input, parts[part].data());
            port.addValues(part, input, parts[part].data());
        }
    }

    /// Plain values of one part for n times.
    void addPart(std::uint64_t k, std::size_t part, std::uint64_t n)
    {
        PortModel& port = ports_[k];
        const Counts dims = newDims(port, n);
        const PortModel::Input input = port.inputOf(dims);
        const auto complexity = part == 0 ? HostComplexity::real : HostComplexity::complex;
        const std::string expected = part == 1 && !port.complex          ? "AddComplexDataError"
                                     : !input.fits                       ? "AddValueInputFormatError"
                                     : input.steps != port.pending[part] ? "AddValueError"
                                                                         : "none";
        Samples values(productOf(dims));
        for (double& value : values)
            value = anyValue();
        std::vector<std::complex<double>> pairs(values.size(), {77, 77});
        for (std::size_t i = 0; i < values.size(); ++i)
            part == 0 ? pairs[i].real(values[i]) : pairs[i].imag(values[i]);
        const bool asPairs = chance(0.5);
        attempt(expected, [&] {
            asPairs ? buffer_.AddValue(pairs.data(), dims, k, complexity)
                    : buffer_.AddValue(values.data(), dims, k, complexity);
        });
        if (expected != "none")
            return;
        note(input, values.data());
        port.addValues(part, input, values.data());
    }

    // ---- Changes

    void drop(std::uint64_t choice)
    {
        const double to = chance(0.03) ? INFINITY : last_[below(last_.size())] - within(-1, 4);
        memory_.withoutMemory([&] {
            choice < 64 ? buffer_.Clear() : choice < 71 ? buffer_.ClearBackTo(to) : buffer_.clearUptoLastTime();
        });
        for (PortModel& port : ports_) {
            const std::size_t before = port.steps.size();
            choice < 64 ? port.clear() : choice < 71 ? port.clearBackTo(to) : port.clearUptoLastTime();
            port.cleared = port.cleared || port.steps.size() < before;
        }
    }

    void changeCapacity()
    {
        if (chance(0.2))
            return attempt("none", [&] { buffer_.reserveCapacity(); }); // which shows in nothing but memory
        Counts capacities(ports_.size(), below(14) + 1);
        const bool one = shared_ && chance(0.5);
        if (!shared_)
            for (auto& capacity : capacities)
                capacity = below(chance(0.2) ? 60 : 14) + 1;
        attempt("none", [&] { buffer_.SetMaxNumTimeSteps(one ? Counts{capacities[0]} : capacities); });
        for (std::size_t k = 0; k < ports_.size(); ++k) {
            ports_[k].capacity = capacities[k];
            ports_[k].trim();
        }
    }

    void changeExtents(std::uint64_t k)
    {
        std::vector<Counts> extents;
        std::size_t width = 1;
        const bool all = chance(0.3);
        for (const PortModel& port : ports_) {
            extents.push_back(port.maxExtents);
            for (auto& extent : extents.back())
                extent = (all || extents.size() == k + 1) && chance(0.5) ? below(5) + 1 : extent;
            width = std::max(width, port.maxExtents.size());
        }
        Samples columns(ports_.size() * width, 1.0);
        for (std::size_t i = 0; i < ports_.size(); ++i)
            for (std::size_t d = 0; d < extents[i].size(); ++d)
                columns[i + d * ports_.size()] = static_cast<double>(extents[i][d]) + 0.9;
        const HostArrayPtr array = matrix(ports_.size(), width, columns);
        const std::vector<int> ofOne(extents[k].begin(), extents[k].end());
        attempt("none", [&] { all ? buffer_.SetMaxDimensions(array.get()) : buffer_.SetMaxDimensions(ofOne, k); });
        for (std::size_t i = 0; i < ports_.size(); ++i) {
            PortModel& port = ports_[i];
            if (!all && !shared_ && i != k)
                continue;
            port.cleared = true;
            port.clear();
            if (port.maxExtents != extents[i])
                port.arrayDims.clear();
            port.maxExtents = extents[i];
        }
        restartPattern();
    }

    void changeSettings(std::uint64_t k)
    {
        const bool all = chance(0.5);
        for (std::size_t i = all ? 0 : 2 * k; i < (all ? sampleTimes_.size() : 2 * k + 2); ++i)
            sampleTimes_[i] = anyValue();
        const Samples ofOne(&sampleTimes_[2 * k], &sampleTimes_[2 * k] + 2);
        std::vector<std::uint8_t> flags;
        for (PortModel& port : ports_)
            flags.push_back(static_cast<std::uint8_t>((port.linear = chance(0.5)) ? below(255) + 1 : 0));
        patternFound_ = chance(0.5) && patternFound_;
        memory_.withoutMemory([&] {
            all ? buffer_.SetSampleTimes(sampleTimes_) : buffer_.SetSampleTimes(k, ofOne);
            buffer_.setIsLinearInterpolation(flags);
            patternFound_ ? buffer_.setDataHasNaNPattern(true) : buffer_.resetNaNPattern();
        });
    }

    bool shared_ = false;
    DataPattern pattern_{0};
};

} // namespace tracery::test
