#include "CacheFile.h"
#include "CaptureModel.h"

#include <tracery/captures/openCapture.h>
#include <tracery/recordings/Recording.h>

#include <sndfile.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

namespace tracery::captures {

namespace {

namespace fs = std::filesystem;
using recordings::Block;
using recordings::InputError;

class CaptureFiles : public testing::Test {
protected:
    CaptureFiles()
    {
        // In memory where there is a place: disks are slow to change files as often as these tests do.
        std::string name =
            (fs::exists("/dev/shm") ? "/dev/shm" : fs::temp_directory_path().string()) + "/captures-XXXXXX";
        if (mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no temporary directory");
        folder_ = name;
        options_.cacheFolder = path("cache");
        options_.notice = [this](const std::string& text) { notices_.push_back(text); };
    }
    ~CaptureFiles() override { fs::remove_all(folder_); }

    std::string path(const std::string& name) const { return (folder_ / name).string(); }
    std::string write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }
    static std::string content(const std::string& name)
    {
        std::ifstream file(name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::string writeSound(const std::string& name, int format, std::size_t frames, int channels = 1) const
    {
        SF_INFO info{};
        info.samplerate = 44100;
        info.channels = channels;
        info.format = format;
        SNDFILE* file = sf_open(path(name).c_str(), SFM_WRITE, &info);
        std::mt19937 random(3);
        std::vector<double> values(frames * static_cast<std::size_t>(channels));
        for (double& value : values)
            value = static_cast<double>(random() % 20001) / 10000 - 1;
        sf_write_double(file, values.data(), static_cast<sf_count_t>(values.size()));
        sf_close(file);
        return path(name);
    }
    std::string writeTable(const std::string& name, int rows) const
    {
        std::string text = "time,a,b\n";
        std::mt19937 random(5);
        for (int i = 0; i < rows; ++i)
            text += std::to_string(i / 3) + ".00" + std::to_string(i % 3) + "," + std::to_string(random() % 1000) +
                    "." + std::to_string(random() % 10) + "," +
                    (random() % 50 == 0 ? "" : std::to_string(random() % 9)) + "\n";
        return write(name, text);
    }
    std::string cacheFile() const
    {
        for (const auto& entry : fs::directory_iterator(path("cache")))
            return entry.path();
        return {};
    }

    /// What reading the recording to its end gives.
    static CaptureModel modelOf(const std::string& file, const recordings::OpenOptions& options = {})
    {
        const auto recording = recordings::openRecording(file, options);
        CaptureModel model;
        model.channels = recording->info().channels.size();
        model.complex = recording->info().complex;
        if (recording->info().rate)
            model.axis = TimeAxis{{}, Rate::of(*recording->info().rate)};
        for (Block block; recording->read(block, 1000), block.steps() != 0;)
            for (std::size_t i = 0; i < block.real.size(); ++i) {
                model.values.push_back(block.real[i]);
                if (model.complex)
                    model.values.push_back(block.imag[i]);
                if (i % model.channels == 0)
                    model.times.push_back({Duration::of(block.times[i / model.channels])});
            }
        return model;
    }

    static void expectAgrees(const CaptureModel& model, const Capture& capture, int windows = 30)
    {
        ASSERT_EQ(capture.end(), model.steps());
        CaptureMaker maker(1);
        Doubles points;
        for (int i = 0; i < windows; ++i) {
            const Window window = maker.window(model);
            capture.points(window, points);
            ASSERT_TRUE(sameBits(points, thinned(model.full(window), window.columnsPerSecond, window.finishLast)));
        }
    }

    /// The same of every sample and time.
    static void expectSame(const CaptureModel& model, const Capture& capture)
    {
        const auto steps = static_cast<std::size_t>(model.steps());
        Doubles line(steps), times(steps);
        capture.readTimes(0, steps, model.timeOf(0), times.data());
        for (std::size_t c = 0; c < model.channels; ++c) {
            capture.read({c, Part::Real, 0, steps, 1}, line.data());
            Doubles pairs;
            for (std::size_t i = 0; i < steps; ++i)
                pairs.insert(pairs.end(), {times[i], line[i]});
            ASSERT_TRUE(sameBits(pairs, model.full({c, Part::Real, 0, model.steps(), model.timeOf(0), 1, false})));
        }
    }

    static std::string failureOf(const auto& action)
    {
        try {
            action();
        } catch (const std::exception& error) {
            return error.what();
        }
        return "none";
    }

    fs::path folder_;
    CaptureOptions options_;
    std::vector<std::string> notices_;
};

} // namespace

TEST_F(CaptureFiles, HoldWhatReadersRead)
{
    const struct {
        const char* name;
        int format;
    } kSounds[] = {{"u8.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_U8},
                   {"i16.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16},
                   {"i24.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24},
                   {"i32.wav", SF_FORMAT_WAVEX | SF_FORMAT_PCM_32},
                   {"f32.wav", SF_FORMAT_RF64 | SF_FORMAT_FLOAT},
                   {"f64.wav", SF_FORMAT_WAV | SF_FORMAT_DOUBLE},
                   {"big.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16 | SF_ENDIAN_BIG},
                   {"ulaw.wav", SF_FORMAT_WAV | SF_FORMAT_ULAW},
                   {"i16.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16},
                   {"i24.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_24}};
    std::vector<std::string> files{writeTable("table.csv", 70000)};
    for (const auto& sound : kSounds)
        files.push_back(writeSound(sound.name, sound.format, 70000, 1 + static_cast<int>(files.size() % 3)));
    std::string wide; // more bytes a step than are handled as one chunk
    for (int row = 0; row < 1500; ++row)
        for (int column = 0; column < 300; ++column)
            wide += std::to_string(column == 0 ? row : row * column % 7) + (column < 299 ? ',' : '\n');
    files.push_back(write("wide.csv", wide));
    for (const char* type : {"cf32_be", "ri16_le", "cu8", "ru32_be", "ci8"}) {
        std::string data(80000, '\0');
        std::mt19937 random(9);
        for (std::size_t i = 0; i < data.size(); ++i)
            data[i] = static_cast<char>(type[1] == 'f' && i % 4 == 0 ? 0x40 : random());
        write(std::string(type) + ".sigmf-data", data);
        files.push_back(
            write(std::string(type) + ".sigmf-meta",
                  std::string(R"({"global":{"core:version":"1.0.0","core:sample_rate":1e6,"core:datatype":")") + type +
                      R"("},"captures":[],"annotations":[]})"));
    }
    for (const std::string& file : files) {
        SCOPED_TRACE(file);
        const CaptureModel model = modelOf(file);
        const std::uint64_t valueBytes = fs::file_size(file);
        int told = 0;
        options_.progress = [&told](double) { ++told; };
        expectAgrees(model, openCapture(file, options_));
        EXPECT_GT(told, 0);
        if (file.ends_with("i16.wav")) {
            EXPECT_LT(fs::file_size(cacheFile()), valueBytes / 25 + 4096);
        }
        told = 0;
        expectAgrees(model, openCapture(file, options_)); // kept
        EXPECT_EQ(told, 0);
        EXPECT_EQ(listCache(options_.cacheFolder).size(), 1);
        clearCache(options_.cacheFolder);
        CaptureOptions without;
        without.cacheFolder.clear();
        expectAgrees(model, openCapture(file, without));
        EXPECT_EQ(listCache(options_.cacheFolder).size(), 0);
    }
    EXPECT_EQ(notices_, std::vector<std::string>());
}

TEST_F(CaptureFiles, DamageOfAnyByteIsFound)
{
    for (const std::string& file :
         {writeTable("a.csv", 40), writeSound("a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 300)}) {
        const CaptureModel model = modelOf(file);
        openCapture(file, options_);
        const std::string kept = cacheFile(), good = content(kept);
        std::size_t refused = 0, rebuilt = 0;
        for (std::size_t i = 0; i <= good.size(); i += i < 1000 || i + 800 > good.size() ? 1 : 7) {
            std::string bad = good;
            if (i == good.size())
                bad.resize(good.size() / 2);
            else
                bad[i] = static_cast<char>(bad[i] ^ (1 << i % 8));
            std::ofstream(kept, std::ios::binary) << bad;
            notices_.clear();
            const std::string failure = failureOf([&] { expectSame(model, openCapture(file, options_)); });
            if (notices_.size() == 1 && failure == "none") {
                ++rebuilt;
                ASSERT_EQ(content(kept), good);
            } else {
                ++refused;
                ASSERT_NE(failure.find("damaged here, and was removed"), failure.npos)
                    << "byte " << i << ": " << failure;
            }
        }
        EXPECT_GT(rebuilt, 500);
        EXPECT_EQ(refused, model.axis ? 0 : 40 * 24); // what lies there: two values and a time a step
        fs::remove(kept);
    }
}

TEST_F(CaptureFiles, WhatChangesWhileItIsOpenIsRefused)
{
    const std::string file = writeSound("a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 200000);
    const Capture capture = openCapture(file, options_);
    Doubles points;
    const Window window{0, Part::Real, 0, 200000, {}, 1000, false};
    options_.progress = [](double) { throw std::runtime_error("enough"); };
    EXPECT_EQ(failureOf([&] { openCapture(writeTable("b.csv", 9), options_); }), "enough");
    options_.progress = nullptr;
    EXPECT_EQ(listCache(options_.cacheFolder).size(), 1);
    capture.points(window, points);
    fs::resize_file(file, 1000);
    EXPECT_EQ(failureOf([&] { capture.points(window, points); }),
              file + ": the file has become shorter: 1000 bytes, 400044 when it was opened");
    fs::resize_file(file, 400044);
    EXPECT_EQ(failureOf([&] { capture.points(window, points); }),
              file + ": the file was written to after it was opened");
    // Another content of the same size, told as of the same time: only looking tells.
    const auto time = fs::last_write_time(file);
    writeSound("a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 200000);
    fs::last_write_time(file, time);
    expectAgrees(modelOf(file), openCapture(file, options_));
    ASSERT_EQ(notices_.size(), 1);
    EXPECT_TRUE(notices_[0].starts_with(file + ": its overview is built anew: ") &&
                notices_[0].ends_with(": it is of an older state of the file"))
        << notices_[0];
    const Capture again = openCapture(file, options_);
    EXPECT_THROW(again.points({0, Part::Real, 5, 200000, {}, 1, false}, points), std::out_of_range);
    EXPECT_THROW(again.points({1, Part::Real, 0, 1, {}, 1, false}, points), std::out_of_range);
    EXPECT_THROW(again.points({0, Part::Imaginary, 0, 1, {}, 1, false}, points), std::out_of_range);
    EXPECT_THROW(again.points({0, Part::Real, 0, 1, {{0, 0}, true}, 1, false}, points), TimeError);
}

TEST_F(CaptureFiles, ACacheThatCannotBeWrittenIsDoneWithout)
{
    const std::string sound = writeSound("a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 100000);
    const std::string table = writeTable("a.csv", 3000);
    options_.cacheFolder = sound + "/cache"; // a folder cannot be there
    expectAgrees(modelOf(sound), openCapture(sound, options_));
    expectAgrees(modelOf(table), openCapture(table, options_));
    ASSERT_EQ(notices_.size(), 2);
    EXPECT_TRUE(notices_[0].starts_with(sound + ": its overview is not kept: ")) << notices_[0];
    EXPECT_TRUE(notices_[1].starts_with(table + ": its samples are not kept: ")) << notices_[1];

    options_.cacheFolder = path("cache");
    const CaptureModel model = modelOf(sound);
    const pid_t child = fork(); // as if the disk were full
    if (child == 0) {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit full{1000, 1000};
        setrlimit(RLIMIT_FSIZE, &full);
        notices_.clear();
        expectAgrees(model, openCapture(sound, options_));
        const std::string failure = failureOf([&] { openCapture(table, options_); });
        const bool good = !HasFailure() && notices_.size() == 2 && failure.find("File too large") != failure.npos &&
                          fs::is_empty(options_.cacheFolder);
        _exit(good ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST_F(CaptureFiles, BuildersAtOnceDoNotDisturbEachOther)
{
    const std::string table = writeTable("a.csv", 20000);
    const CaptureModel model = modelOf(table);
    options_.notice = nullptr;
    for (int round = 0; round < 5; ++round) {
        clearCache(options_.cacheFolder);
        for (int i = 0; i < 3; ++i)
            if (fork() == 0) {
                expectAgrees(model, openCapture(table, options_), 5);
                _exit(HasFailure() ? 1 : 0);
            }
        for (int i = 0; i < 3; ++i) {
            int status = -1;
            wait(&status);
            EXPECT_EQ(status, 0);
        }
        EXPECT_EQ(std::distance(fs::directory_iterator(options_.cacheFolder), {}), 1);
    }
}

TEST_F(CaptureFiles, TheCacheIsBounded)
{
    options_.mostCacheBytes = 20000;
    std::vector<std::string> files;
    for (int i = 0; i < 6; ++i) {
        files.push_back(writeSound(std::to_string(i) + ".wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1000));
        openCapture(files.back(), options_);
        for (const CacheEntry& entry : listCache(options_.cacheFolder)) // a day older, each
            fs::last_write_time(entry.path, fs::last_write_time(entry.path) - std::chrono::hours(24));
    }
    const std::vector<CacheEntry> entries = listCache(options_.cacheFolder);
    ASSERT_GE(entries.size(), 2);
    std::uint64_t bytes = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        EXPECT_EQ(entries[i].recording, files[files.size() - 1 - i]);
        bytes += entries[i].bytes;
    }
    EXPECT_LE(bytes, options_.mostCacheBytes);
    EXPECT_EQ(clearCache(options_.cacheFolder), bytes);
    EXPECT_TRUE(listCache(options_.cacheFolder).empty());
    EXPECT_TRUE(listCache(path("absent")).empty());
}

} // namespace tracery::captures
