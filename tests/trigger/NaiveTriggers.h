#pragma once

#include <tracery/TDTC.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

/// The rules of every detector over a whole signal, in the plainest form. Slow on purpose.
namespace naive {

struct Sample {
    double t, x;
};
using Signal = std::vector<Sample>;

struct Settings {
    int polarity = 1;
    bool autoLevel = false;
    double level = 0, hysteresis = 0, upper = 2.1, lower = 0.2;
    double minTime = 0, maxTime = std::numeric_limits<double>::infinity(), timeout = 0, holdoff = 0;

    tracery::TDTC::PolarityEnum tdtcPolarity() const { return static_cast<tracery::TDTC::PolarityEnum>(polarity); }
};

struct Outcome {
    std::vector<double> events;
    std::uint64_t heldOff = 0, outOfBounds = 0;
};

class Rules {
public:
    Rules(const Signal& signal, const Settings& settings) : s(signal), c(settings) {}

    Outcome edge()
    {
        const std::vector<bool> crossed = crossings();
        for (std::size_t i = 0; i < s.size(); ++i)
            if (crossed[i])
                candidate(at(i, c.level));
        return out;
    }

    Outcome timeout()
    {
        const std::vector<bool> crossed = crossings();
        double lastCrossing = s.empty() ? 0 : s[0].t;
        for (std::size_t i = 0; i < s.size(); ++i) {
            if (crossed[i])
                lastCrossing = at(i, c.level);
            if (s[i].t - c.timeout > lastCrossing) {
                candidate(s[i].t);
                lastCrossing = inf;
            }
        }
        return out;
    }

    Outcome pulseWidth()
    {
        const double m = (c.upper + c.lower) / 2;
        bool armedRise = false, armedFall = false, highSeen = false, lowSeen = false;
        double rise = nan, fall = nan;
        for (std::size_t i = 0; i < s.size(); ++i) {
            const double x = s[i].x;
            if (armedRise && x > m)
                armedRise = false, rise = at(i, m);
            if (armedFall && x < m)
                armedFall = false, fall = at(i, m);
            if (x < c.lower) {
                if (c.polarity != -1 && highSeen)
                    candidate(at(i, c.lower), fall - rise), highSeen = false;
                armedRise = true, lowSeen = true;
            }
            if (x > c.upper) {
                if (c.polarity != 1 && lowSeen)
                    candidate(at(i, c.upper), rise - fall), lowSeen = false;
                armedFall = true, highSeen = true;
            }
        }
        return out;
    }

    Outcome runt()
    {
        bool above = false, between = false, below = false;
        double start = nan;
        for (std::size_t i = 0; i < s.size(); ++i) {
            const double x = s[i].x;
            if (!between && c.lower < x && x < c.upper) {
                start = below ? at(i, c.lower) : above ? at(i, c.upper) : start;
                between = true;
            }
            if (x >= c.upper) {
                if (c.polarity != 1 && between && above && !below)
                    ends(i, c.upper, start);
                above = true, between = false, below = false;
            }
            if (x <= c.lower) {
                if (c.polarity != -1 && between && below && !above)
                    ends(i, c.lower, start);
                above = false, between = false, below = true;
            }
        }
        return out;
    }

    Outcome transition()
    {
        bool fallStarted = false, riseStarted = false;
        double fallStart = nan, riseStart = nan;
        for (std::size_t i = 0; i < s.size(); ++i) {
            const double x = s[i].x;
            if (i > 0 && s[i - 1].x <= c.lower && x > c.lower)
                riseStarted = true, riseStart = at(i, c.lower);
            if (i > 0 && s[i - 1].x >= c.upper && x < c.upper)
                fallStarted = true, fallStart = at(i, c.upper);
            if (x >= c.upper) {
                if (c.polarity != -1 && riseStarted)
                    ends(i, c.upper, riseStart);
                riseStarted = fallStarted = false;
            }
            if (x <= c.lower) {
                if (c.polarity != 1 && fallStarted)
                    ends(i, c.lower, fallStart);
                riseStarted = fallStarted = false;
            }
        }
        return out;
    }

    Outcome window()
    {
        bool a = false, b = false, inside = false;
        double aboveStart = nan, entry = nan, belowStart = nan;
        for (std::size_t i = 0; i < s.size(); ++i) {
            const double x = s[i].x;
            if (c.polarity != -1 && !inside && c.lower < x && x < c.upper) {
                entry = a ? at(i, c.upper) : b ? at(i, c.lower) : x;
                inside = true;
            }
            if (c.polarity == 1) {
                a = x >= c.upper;
                b = x <= c.lower;
                if ((a || b) && inside)
                    ends(i, a ? c.upper : c.lower, entry), inside = false;
                continue;
            }
            const bool strict = c.polarity == -1;
            if (!a && (strict ? x > c.upper : x >= c.upper))
                a = true, aboveStart = at(i, c.upper);
            if (!b && (strict ? x < c.lower : x <= c.lower))
                b = true, belowStart = at(i, c.lower);
            if (inside && (x >= c.upper || x <= c.lower))
                ends(i, a ? c.upper : c.lower, entry), inside = false;
            if (a && (strict ? x <= c.upper : x < c.upper))
                ends(i, c.upper, aboveStart), a = false;
            if (b && (strict ? x >= c.lower : x > c.lower))
                ends(i, c.lower, belowStart), b = false;
        }
        return out;
    }

private:
    static constexpr double inf = std::numeric_limits<double>::infinity();
    static constexpr double nan = std::numeric_limits<double>::quiet_NaN();

    /// When the line from the sample before to sample i reaches the level.
    double at(std::size_t i, double level) const
    {
        const Sample now = s[i], before = i > 0 ? s[i - 1] : Sample{nan, nan};
        return (now.t - before.t) / (now.x - before.x) * (level - before.x) + before.t;
    }

    std::vector<bool> crossings() const
    {
        const double l = c.level, h = c.hysteresis;
        std::vector<bool> crossed(s.size());
        bool pos = false, neg = false;
        for (std::size_t i = 0; i < s.size(); ++i) {
            const double x = s[i].x;
            if (c.polarity == 1) {
                if (x < l - h)
                    pos = true;
                else if (pos && x > l)
                    pos = false, crossed[i] = true;
                continue;
            }
            if (c.polarity == -1) {
                if (x > l + h)
                    neg = true;
                else if (neg && x < l)
                    neg = false, crossed[i] = true;
                continue;
            }
            if (x < l - h)
                pos = true;
            else if (x > l + h)
                neg = true;
            if (pos && x > l)
                pos = false, crossed[i] = true;
            else if (neg && x < l)
                neg = false, crossed[i] = true;
        }
        return crossed;
    }

    void candidate(double time, std::optional<double> duration = {})
    {
        if (duration && !(c.minTime <= *duration && *duration <= c.maxTime))
            out.outOfBounds += !std::isnan(*duration);
        else if (!std::isfinite(time))
            return;
        else if (time - c.holdoff >= (out.events.empty() ? -inf : out.events.back()))
            out.events.push_back(time);
        else
            ++out.heldOff;
    }

    /// What began at `start` ends where sample i crosses the level.
    void ends(std::size_t i, double level, double start) { candidate(at(i, level), at(i, level) - start); }

    const Signal& s;
    const Settings& c;
    Outcome out;
};

} // namespace naive
