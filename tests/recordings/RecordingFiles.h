#pragma once

#include <tracery/recordings/Recording.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

namespace tracery::recordings {

inline constexpr double kInfinity = std::numeric_limits<double>::infinity();
inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Files in a folder that goes away with the test.
class RecordingFiles : public testing::Test {
protected:
    RecordingFiles()
    {
        std::string name = (std::filesystem::temp_directory_path() / "input-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no temporary directory");
        folder_ = name;
    }
    ~RecordingFiles() override { std::filesystem::remove_all(folder_); }

    std::string path(const std::string& name) const { return (folder_ / name).string(); }

    std::string write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }

    std::string content(const std::string& name) const
    {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// What is wrong with a file on the way from opening to its end, without the folder's name.
    std::string failure(const std::string& name, const OpenOptions& options = {}) const
    {
        try {
            const auto recording = openRecording(path(name), options);
            for (Block block; recording->read(block, 100), block.steps() != 0;) {
            }
        } catch (const InputError& error) {
            const std::string text = error.what(), folder = folder_.string() + "/";
            return text.starts_with(folder) ? text.substr(folder.size()) : text;
        }
        return "none";
    }

    std::filesystem::path folder_;
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
