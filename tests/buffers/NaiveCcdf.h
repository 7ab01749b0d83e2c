#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace tracery::test {

/// The power statistics, formula after formula, a logarithm a sample.
struct NaiveCcdf {
    using Matrix = std::vector<double>;

    static std::int64_t indexOf(double p, double K)
    {
        const double i = std::ceil(std::log(p) * K);
        return i >= -2147483648.0 && i <= 2147483647.0 ? static_cast<std::int64_t>(i) : INT32_MIN;
    }

    void update(const double* power, std::size_t rows, std::size_t columns, int bins, double resolution)
    {
        K = (10 / std::log(10.0)) / resolution;
        N = bins;
        if (columns != channels) {
            reset();
            histogram.resize(columns * static_cast<std::size_t>(N));
            for (auto* v : {&peak, &sum, &count, &unbinned})
                v->resize(columns);
            channels = columns;
        }
        for (std::size_t c = 0; c < columns; ++c) {
            const double* column = power + c * rows;
            double* bin = histogram.data() + c * static_cast<std::size_t>(N);
            const double p = extractPeak(column, rows, c);
            if (indexOf(peak[c], K) < indexOf(p, K))
                shift(c, p, bin);
            const std::int64_t iPeak = indexOf(peak[c], K);
            for (std::size_t i = 0; i < rows; ++i)
                if (const double v = column[i]; v < INFINITY) {
                    const std::int64_t j = N - iPeak - 1 + indexOf(v, K);
                    if (j < 0 || v <= 0)
                        unbinned[c] += 1;
                    else if (j < N)
                        bin[j] += 1;
                }
        }
    }

    double extractPeak(const double* column, std::size_t rows, std::size_t c)
    {
        double frameSum = 0, frameCount = 0, max = 0;
        for (std::size_t i = 0; i < rows; ++i)
            if (column[i] < INFINITY) {
                frameSum += column[i];
                frameCount += 1;
                if (column[i] > max)
                    max = column[i];
            }
        sum[c] += frameSum;
        count[c] += frameCount;
        return max;
    }

    void shift(std::size_t c, double newPeak, double* bin)
    {
        if (peak[c] > 0) {
            std::int64_t s = indexOf(newPeak, K) - indexOf(peak[c], K);
            s = s < 0 ? 0 : s > N ? N : s;
            for (std::int64_t j = 0; j < s; ++j)
                unbinned[c] += bin[j];
            for (std::int64_t j = 0; j < N; ++j)
                bin[j] = j + s < N ? bin[j + s] : 0;
        }
        peak[c] = newPeak;
    }

    /// Level and percentage columns, one after the other.
    Matrix distribution(std::size_t c) const
    {
        const double avg = sum[c] / count[c], step = (10 / std::log(10.0)) / K;
        const std::int64_t iPeak = indexOf(peak[c], K), iAvg = indexOf(avg, K);
        std::int64_t j0 = N - iPeak - 2 + iAvg;
        j0 = j0 < 0 ? 0 : j0 > N ? N : j0;
        double d = avg > 0 ? 10 * std::log10(std::exp(static_cast<double>(iPeak - N + 1 + j0) / K) / avg) : 0;
        const double* bin = histogram.data() + static_cast<std::int64_t>(c) * N;
        double cum = unbinned[c];
        for (std::int64_t j = 0; j < j0; ++j)
            cum += bin[j];
        Matrix levels, percentages;
        for (std::int64_t j = j0; j < N; ++j) {
            cum += bin[j];
            levels.push_back(d);
            percentages.push_back((1 - cum / count[c]) * 100);
            d += step;
        }
        levels.insert(levels.end(), percentages.begin(), percentages.end());
        return levels;
    }

    /// Those of the channels in use: a reset leaves more behind.
    Matrix totals(Matrix of) const
    {
        of.resize(channels);
        return of;
    }

    void reset()
    {
        channels = 0;
        histogram.clear();
    }

    std::vector<double> histogram, peak, sum, count, unbinned;
    std::size_t channels = 0;
    std::int64_t N = 0;
    double K = 0;
};

} // namespace tracery::test
