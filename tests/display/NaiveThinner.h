#pragma once

#include <tracery/DataThinner.h>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

/// The rules of both thinners, point by point.
namespace naive {

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInf = std::numeric_limits<double>::infinity();

using Doubles = std::vector<double>;

inline double noInf(double x) { return std::isinf(x) ? kNaN : x; }

/// The rule written out point by point.
inline Doubles thinBatch(const Doubles& data, double ratio, double& pixelStart)
{
    Doubles out;
    double minV = kInf, minT = kInf, maxV = -kInf, maxT = -kInf;
    bool pending = false;
    for (std::size_t k = 0; k < data.size(); k += 2) {
        const double t = data[k], v = data[k + 1], d = t - pixelStart;
        if (pixelStart == -kInf || d * ratio >= 0.5 || std::isnan(pixelStart)) {
            if (pending) {
                const bool maxFirst = maxT < minT;
                out.insert(out.end(), {noInf(maxFirst ? maxT : minT), noInf(maxFirst ? maxV : minV)});
                if (maxT != minT)
                    out.insert(out.end(), {noInf(maxFirst ? minT : maxT), noInf(maxFirst ? minV : maxV)});
            }
            out.insert(out.end(), {noInf(t), noInf(v)});
            pixelStart = t;
            minV = minT = kInf;
            maxV = maxT = -kInf;
            pending = false;
        } else if (std::isnan(t) || d == 0.0) {
            out.insert(out.end(), {t, v});
        } else {
            if (std::isnan(v) || maxV <= v)
                maxV = v, maxT = t;
            if (std::isnan(v) || v <= minV)
                minV = v, minT = t;
            pending = true;
        }
    }
    return out;
}

/// The streaming rule written out for one channel, real or complex, with extremes enabled or not.
struct ThinnedChannel {
    double min = kInf, max = -kInf, minImag = kInf, maxImag = -kInf, minTime = kInf, maxTime = -kInf;
    bool hasData = false;

    Doubles accumulators() const { return {min, max, minImag, maxImag, minTime, maxTime}; }

    void fold(double t, double v, double w, bool complex)
    {
        if (v >= max || std::isnan(v))
            max = v, maxTime = t;
        if (v <= min || std::isnan(v))
            min = v, minTime = t;
        if (complex && (w >= maxImag || std::isnan(w)))
            maxImag = w;
        if (complex && (w <= minImag || std::isnan(w)))
            minImag = w;
        hasData = true;
    }

    void emit(Doubles& out, bool complex, bool enabled)
    {
        if (enabled && maxTime < minTime) {
            std::swap(min, max);
            std::swap(minImag, maxImag);
            std::swap(minTime, maxTime);
        }
        if (enabled)
            out[0] = minTime, out[3] = maxTime;
        out[1] = enabled ? noInf(min) : kNaN;
        out[4] = enabled ? noInf(max) : kNaN;
        if (complex) {
            out[2] = enabled ? noInf(minImag) : kNaN;
            out[5] = enabled ? noInf(maxImag) : kNaN;
        }
        min = kInf, max = -kInf;
    }

    void open(Doubles& out, double t, double v, double w, bool complex)
    {
        out[6] = t;
        out[7] = noInf(v);
        if (complex)
            out[8] = noInf(w);
        hasData = false;
    }
};

inline Doubles accumulators(const tracery::DataThinner& thinner, std::size_t channel)
{
    using enum tracery::ThinDataMinMax;
    const int c = static_cast<int>(channel);
    return {thinner.getPixelMinMaxValue(c, Min),           thinner.getPixelMinMaxValue(c, Max),
            thinner.getPixelMinMaxImgValue(channel, Min),  thinner.getPixelMinMaxImgValue(channel, Max),
            thinner.getPixelMinMaxTimeValue(channel, Min), thinner.getPixelMinMaxTimeValue(channel, Max)};
}

} // namespace naive
