#pragma once

#include "support/TemporaryFolder.h"

#include <tracery/recordings/Recording.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace tracery::recordings {

inline constexpr double kInfinity = std::numeric_limits<double>::infinity();
inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Files in a folder that goes away with the test.
class RecordingFiles : public testing::Test, protected test::TemporaryFolder {
protected:
    /// What is wrong with a file on the way from opening to its end, without the folder's name.
    std::string failure(const std::string& name, const OpenOptions& options = {}) const
    {
        try {
            const auto recording = openRecording(path(name), options);
            for (Block block; recording->read(block, 100), block.steps() != 0;) {
            }
        } catch (const InputError& error) {
            const std::string text = error.what(), folder = TemporaryFolder::path().string() + "/";
            return text.starts_with(folder) ? text.substr(folder.size()) : text;
        }
        return "none";
    }
};

inline bool same(const std::vector<double>& a, const std::vector<double>& b)
{
    return std::ranges::equal(a, b, [](double x, double y) { return x == y || (std::isnan(x) && std::isnan(y)); });
}

inline bool same(const Block& a, const Block& b)
{
    return same(a.times, b.times) && same(a.real, b.real) && same(a.imag, b.imag);
}

/// Reads on to the end.
inline Block rest(Recording& recording, std::size_t blockSteps = 64)
{
    Block all;
    for (Block block; recording.read(block, blockSteps), block.steps() != 0;) {
        EXPECT_LE(block.steps(), blockSteps);
        all.times.insert(all.times.end(), block.times.begin(), block.times.end());
        all.real.insert(all.real.end(), block.real.begin(), block.real.end());
        all.imag.insert(all.imag.end(), block.imag.begin(), block.imag.end());
    }
    return all;
}

} // namespace tracery::recordings
