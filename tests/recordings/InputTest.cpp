#include "recordings/RecordingFiles.h"

#include <sndfile.h>

#include <cstring>
#include <random>

using namespace tracery::recordings;

namespace {

class InputTest : public RecordingFiles {
protected:
    /// A sound file of 8000 frames per second; value(frame * channels + channel) is drawn from a seeded
    /// generator.
    std::string writeSound(const std::string& name, int format, int channels, std::size_t frames,
                           double scale = 0.9) const
    {
        SF_INFO info{};
        info.samplerate = 8000;
        info.channels = channels;
        info.format = format;
        SNDFILE* file = sf_open(path(name).c_str(), SFM_WRITE, &info);
        std::vector<double> values = noise(frames * static_cast<std::size_t>(channels), scale);
        EXPECT_EQ(sf_writef_double(file, values.data(), static_cast<sf_count_t>(frames)),
                  static_cast<sf_count_t>(frames));
        sf_close(file);
        return path(name);
    }

    static std::vector<double> noise(std::size_t count, double scale)
    {
        std::mt19937 random(7);
        std::uniform_real_distribution<double> uniform(-scale, scale);
        std::vector<double> values(count);
        for (double& value : values)
            value = static_cast<float>(uniform(random));
        return values;
    }

    std::string writeSigMf(const std::string& base, const std::string& global, const std::string& bytes,
                           const std::string& captures = "[]") const
    {
        write(base + ".sigmf-data", bytes);
        return write(base + ".sigmf-meta", "{\"global\": {" + global + "}, \"captures\": " + captures + "}");
    }

    /// A FLAC file as a stream has it, whose header does not know the number of frames.
    static std::string withoutLength(std::string flac)
    {
        flac[21] = static_cast<char>(flac[21] & 0xF0);
        return flac.replace(22, 4, 4, '\0');
    }

    /// One recording of every kind, with few enough steps to try every one of them.
    std::vector<std::unique_ptr<Recording>> everyKind() const
    {
        std::vector<std::unique_ptr<Recording>> all;
        const auto add = [&](const std::string& file, const OpenOptions& options = {}) {
            all.push_back(openRecording(file, options));
        };
        add(write("times.csv", "time,a,b\n0,1,2\n0.5,,3\n0.5,4,5\n0.5,6,7\n2,8,nan\n3.25,9,10\n"));
        add(write("rate.csv", "1\n2\nnan\n4\n5\n"), {3.0});
        add(writeSound("int.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 2, 40));
        add(writeSound("float.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 3, 40, 5.0));
        add(writeSound("exact.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 1, 9000));
        add(write("endless.flac", withoutLength(read("exact.flac"))));
        add(writeSound("packets.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 1, 9000));
        add(writeSound("noseek.wav", SF_FORMAT_WAV | SF_FORMAT_GSM610, 1, 640));
        add(writeSigMf("iq", R"("core:datatype": "cf32_le", "core:sample_rate": 7.5, "core:num_channels": 2)",
                       std::string(480, 'x')));
        return all;
    }
};

Block after(const Block& all, std::size_t step, const RecordingInfo& info)
{
    const auto tail = [](const std::vector<double>& v, std::size_t from) {
        return std::vector<double>(v.begin() + static_cast<std::ptrdiff_t>(from), v.end());
    };
    const std::size_t values = step * info.channels.size();
    return {tail(all.times, step), tail(all.real, values), tail(all.imag, info.complex ? values : 0)};
}

TEST_F(InputTest, BlocksOfAnySizeSeekingAndTheRangeAgreeWithAllSteps)
{
    for (const auto& recording : everyKind()) {
        SCOPED_TRACE(recording->info().path);
        const Block all = rest(*recording);
        EXPECT_EQ(all.real.size(), all.steps() * recording->info().channels.size());
        EXPECT_EQ(all.imag.size(), recording->info().complex ? all.real.size() : 0);
        EXPECT_EQ(all.steps(), recording->info().steps.value_or(all.steps()));
        for (const std::size_t blockSteps : {1U, 7U, 1000U}) {
            recording->seek(-kInfinity);
            EXPECT_TRUE(same(rest(*recording, blockSteps), all)) << blockSteps;
        }
        // To the last step before a time.
        std::vector<double> times{-kInfinity, -1, kInfinity};
        for (std::size_t i = 0; i < all.steps(); i += 1 + all.steps() / 50)
            times.insert(times.end(), {all.times[i], std::nextafter(all.times[i], kInfinity)});
        std::ranges::shuffle(times, std::mt19937(1));
        for (const double time : times) {
            const auto notBefore = std::ranges::lower_bound(all.times, time) - all.times.begin();
            recording->seek(time);
            const auto step = static_cast<std::size_t>(std::max<std::ptrdiff_t>(notBefore - 1, 0));
            EXPECT_TRUE(same(rest(*recording), after(all, step, recording->info()))) << time;
        }
        // The range leaves the place alone.
        recording->seek(-kInfinity);
        Block block;
        recording->read(block, 3);
        const TimeRange range = recording->range();
        EXPECT_EQ(range.first, all.times.front());
        EXPECT_EQ(range.last, all.times.back());
        EXPECT_TRUE(same(rest(*recording), after(all, 3, recording->info())));
    }
}

TEST_F(InputTest, SoundKeepsItsValuesAndTellsItsFormat)
{
    const auto volts = openRecording(writeSound("v.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 2, 500, 12.0), {});
    EXPECT_EQ(volts->info().format, "WAV, 32 bit float");
    EXPECT_EQ(volts->info().rate, 8000.0);
    EXPECT_EQ(volts->info().channels[1].name, "ch2");
    EXPECT_EQ(rest(*volts).real, noise(1000, 12.0));

    const auto sound = openRecording(writeSound("s.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1, 500), {});
    EXPECT_EQ(sound->info().format, "WAV, signed 16 bit PCM");
    const std::string bytes = read("s.wav");
    const Block all = rest(*sound);
    ASSERT_EQ(all.steps(), 500U);
    for (std::size_t i = 0; i < 500; ++i) {
        std::int16_t sample = 0;
        std::memcpy(&sample, bytes.data() + 44 + 2 * i, 2);
        EXPECT_EQ(all.real[i], sample / 32768.0);
        EXPECT_EQ(all.times[i], static_cast<double>(i) / 8000.0);
    }
}

TEST_F(InputTest, WavFilesCutShortAreRefused)
{
    const int pcm = SF_FORMAT_PCM_16;
    for (const int format : {SF_FORMAT_WAV | pcm, SF_ENDIAN_BIG | SF_FORMAT_WAV | pcm, SF_FORMAT_RF64 | pcm}) {
        const auto size = std::filesystem::file_size(writeSound("cut.wav", format, 1, 100));
        EXPECT_EQ(failure("cut.wav"), "none");
        std::filesystem::resize_file(path("cut.wav"), size - 31);
        const std::string start = std::to_string(size - 200), end = std::to_string(size - 31);
        EXPECT_EQ(failure("cut.wav"), "cut.wav: byte " + end +
                                          ": the file ends here; its header promises 200 bytes of "
                                          "samples from byte " +
                                          start + ", found 169");
    }
}

TEST_F(InputTest, WavFilesWhoseLengthWasNeverFilledInAreReadToTheirEnd)
{
    writeSound("stream.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1, 100);
    for (const std::uint32_t length :
         {0U, 0x7FFFF000U, 0x7FFFFFDBU, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFDBU, 0xFFFFFFFEU, 0xFFFFFFFFU}) {
        std::string bytes = read("stream.wav");
        std::memcpy(bytes.data() + 40, &length, sizeof length);
        EXPECT_EQ(rest(*openRecording(write("open.wav", bytes), {})).steps(), 100U) << length;
    }
}

TEST_F(InputTest, WavFilesLongerThanTheirLengthFieldAreReadToTheEnd)
{
    writeSound("head.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1, 100);
    const std::string head = read("head.wav").substr(0, 44);
    const auto length = [](std::uint64_t value) {
        std::string field;
        for (int i = 0; i < 4; ++i, value >>= 8)
            field += static_cast<char>(value & 0xFF);
        return field;
    };
    constexpr std::uint64_t kWrap = std::uint64_t{1} << 32, kBytes = kWrap + 1000;
    const std::string chunk = "LIST" + length(4) + "INFO";
    struct Case {
        std::string head;
        std::uint64_t bytes; ///< of samples
        std::string after;
    };
    const std::string rf64 = "RF64" + length(~0U) + "WAVEds64" + length(28) + std::string(28, '\0') +
                             head.substr(12, 24) + "data" + length(~0U);
    for (const Case& each :
         {Case{head.substr(0, 40) + length(0), kBytes, ""}, Case{head.substr(0, 40) + length(~0U), kBytes, ""},
          Case{head.substr(0, 40) + length(0x7FFFF000), kBytes / 2, ""},
          Case{head.substr(0, 40) + length(0x7FFFF000), 0x7FFFF000, chunk},
          Case{head.substr(0, 40) + length(kBytes), kBytes, ""},
          Case{head.substr(0, 40) + length(kBytes), kBytes, chunk},
          Case{head.substr(0, 40) + length(kBytes), kBytes + kWrap, chunk}, Case{rf64, kBytes, ""},
          Case{head.substr(0, 40) + length(kBytes), 1000, std::string(5000, '\0')}}) {
        write("long.wav", each.head);
        std::filesystem::resize_file(path("long.wav"), each.head.size() + each.bytes - 2); // a hole
        std::ofstream(path("long.wav"), std::ios::binary | std::ios::app) << std::string("\0\x40", 2) << each.after;
        const auto recording = openRecording(path("long.wav"), {});
        const std::uint64_t steps = each.bytes / 2;
        EXPECT_EQ(recording->info().steps, steps);
        EXPECT_EQ(recording->range().last, static_cast<double>(steps - 1) / 8000);
        recording->seek(recording->range().last);
        const Block tail = rest(*recording);
        EXPECT_EQ(tail.real, (std::vector<double>{0, 0.5}));
    }
    std::string big = head;
    big.replace(0, 4, "RIFX").replace(16, 4, std::string("\0\0\0\x10", 4)).replace(40, 4, length(0));
    std::filesystem::resize_file(write("long.wav", big), kBytes);
    EXPECT_EQ(failure("long.wav"),
              "long.wav: byte 40: more than 4 GiB of samples follow, which a big-endian WAV file has no length for");
}

TEST_F(InputTest, BrokenCompressedSoundIsToldWithTheFrame)
{
    writeSound("whole.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 1, 40000);
    const std::string whole = read("whole.flac");
    write("cut.flac", whole.substr(0, whole.size() / 2));
    EXPECT_TRUE(failure("cut.flac").starts_with("cut.flac: frame 16384: ")) << failure("cut.flac");
    write("hole.flac", std::string(whole).replace(whole.size() / 2, 200, 200, '\0'));
    EXPECT_TRUE(failure("hole.flac").starts_with("hole.flac: frame 16384: ")) << failure("hole.flac");
}

TEST_F(InputTest, EverySigMfTypeIsScaledToItsRange)
{
    struct Case {
        std::string type, bytes; // one pair of numbers
        double first, second;
    };
    using namespace std::string_literals;
    const std::vector<Case> cases{
        {"f32_le", "\0\0\x20\xC1\0\0\0\x3F"s, -10, 0.5},
        {"f32_be", "\xC1\x20\0\0\x3F\0\0\0"s, -10, 0.5},
        {"f64_le", "\0\0\0\0\0\0\x24\xC0\0\0\0\0\0\0\xE0\x3F"s, -10, 0.5},
        {"f64_be", "\xC0\x24\0\0\0\0\0\0\x3F\xE0\0\0\0\0\0\0"s, -10, 0.5},
        {"i32_le", "\0\0\0\x80\0\0\0\x40"s, -1, 0.5},
        {"i32_be", "\x80\0\0\0\x7F\xFF\xFF\xFF"s, -1, 2147483647 / 2147483648.0},
        {"i16_le", "\0\x80\xFF\x7F"s, -1, 32767 / 32768.0},
        {"i16_be", "\x80\0\x40\0"s, -1, 0.5},
        {"u32_le", "\0\0\0\0\xFF\xFF\xFF\xFF"s, -1, 1},
        {"u32_be", "\0\0\0\x01\xFF\xFF\xFF\xFF"s, (1 - 4294967295 / 2.0) / (4294967295 / 2.0), 1},
        {"u16_le", "\x01\0\xFF\xFF"s, (1 - 32767.5) / 32767.5, 1},
        {"u16_be", "\0\x01\0\0"s, (1 - 32767.5) / 32767.5, -1},
        {"i8", "\x80\x40"s, -1, 0.5},
        {"u8", "\x80\xFF"s, 0.5 / 127.5, 1},
    };
    for (const Case& c : cases) {
        const std::string rate = R"(", "core:sample_rate": 4)", type = R"("core:datatype": ")";
        const auto iq = openRecording(writeSigMf("x", type + "c" + c.type + rate, c.bytes), {});
        const Block pair = rest(*iq);
        EXPECT_EQ(pair.real, std::vector{c.first}) << c.type;
        EXPECT_EQ(pair.imag, std::vector{c.second}) << c.type;
        EXPECT_EQ(iq->info().format, "SigMF c" + c.type);
        const Block row = rest(*openRecording(writeSigMf("x", type + "r" + c.type + rate, c.bytes), {}));
        EXPECT_EQ(row.real, (std::vector{c.first, c.second})) << c.type;
        EXPECT_EQ(row.times, (std::vector{0.0, 0.25}));
    }
}

TEST_F(InputTest, SigMfPairsAreFoundByAnyOfTheirNames)
{
    writeSigMf("a", R"("core:datatype": "ci8", "core:num_channels": 2, "core:trailing_bytes": 1)",
               "##\x10\x20\x30\x40#",
               R"([{"core:frequency": 868e6, "core:header_bytes": 2}, {"core:sample_start": 1}])");
    for (const std::string name : {"a.sigmf-meta", "a.sigmf-data", "a.sigmf", "a"}) {
        const auto recording = openRecording(path(name), {2.0});
        EXPECT_EQ(recording->info().path, path(name));
        EXPECT_EQ(recording->info().centerFrequency, 868e6);
        const Block all = rest(*recording);
        EXPECT_EQ(all.real, (std::vector{0.125, 0.375}));
        EXPECT_EQ(all.imag, (std::vector{0.25, 0.5}));
    }
}

TEST_F(InputTest, WhatIsWrongWithASigMfPairIsToldWithTheFile)
{
    const auto failureOf = [&](const std::string& global, const std::string& bytes,
                               const std::string& captures = "[]") {
        writeSigMf("x", global, bytes, captures);
        return failure("x");
    };
    const std::string good = R"("core:datatype": "cu8", "core:sample_rate": 4)";
    EXPECT_EQ(failureOf(good, "abc"),
              "x.sigmf-data: byte 3: the samples end here, within a step: expected a multiple of 2 "
              "bytes, found 3");
    EXPECT_EQ(failureOf(good, "ab", R"([{"core:header_bytes": 2}])"), "x: holds no samples");
    EXPECT_EQ(failureOf(good, ""), "x.sigmf-data: the file is empty");
    EXPECT_EQ(failureOf(good, "ab", R"([{"core:header_bytes": 3}])"),
              "x.sigmf-data: byte 2: the file ends here, within the header and trailing bytes of its description");
    EXPECT_EQ(failureOf(good, "ab", R"([{}, {"core:header_bytes": 3}])"),
              "x.sigmf-meta: core:header_bytes: expected it in the first capture only");
    EXPECT_EQ(failureOf(good + R"(, "core:num_channels": 0)", "ab"),
              "x.sigmf-meta: core:num_channels: expected 1 to 65536, found 0");
    EXPECT_EQ(failureOf(R"("core:datatype": "cf32")", "ab"),
              "x.sigmf-meta: core:datatype: expected a type such as cf32_le, ri16_le or cu8, found \"cf32\"");
    EXPECT_EQ(failureOf(R"("core:datatype": "cu8", "core:sample_rate": "4")", "ab"),
              "x.sigmf-meta: core:sample_rate: expected a number, found \"4\"");
    EXPECT_EQ(failureOf(R"("core:sample_rate": 4)", "ab"), "x.sigmf-meta: core:datatype is missing");
    EXPECT_EQ(failureOf(R"("core:datatype": "cu8")", "ab"), "x: gives neither times nor a rate");
    EXPECT_TRUE(failureOf("\n\"core:datatype\": ,", "ab").starts_with("x.sigmf-meta: line 2, column 18: not JSON: "));

    write("x.sigmf-meta", "[]");
    EXPECT_EQ(failure("x"), "x.sigmf-meta: the description: expected an object, found []");
    write("x.sigmf-meta", "{\"global\": {" + good + "}}");
    std::filesystem::remove(path("x.sigmf-data"));
    EXPECT_EQ(failure("x.sigmf-meta"), "x.sigmf-data: no such file");
    EXPECT_EQ(failure("y.sigmf-data"), "y.sigmf-meta: no such file");
    write("z.sigmf", "archive");
    EXPECT_TRUE(failure("z.sigmf").starts_with("z.sigmf: is a SigMF archive"));
}

TEST_F(InputTest, FilesThatAreNoRecordingsAreToldInOneLine)
{
    for (const std::string ending : {".wav", ".csv"}) {
        EXPECT_EQ(failure("no\nthing" + ending), "no?thing" + ending + ": no such file");
        std::filesystem::create_directory(path("folder" + ending));
        EXPECT_EQ(failure("folder" + ending), "folder" + ending + ": is a directory, expected a file");
        write("empty" + ending, "");
        EXPECT_EQ(failure("empty" + ending), "empty" + ending + ": the file is empty");
    }
    write("text.doc", "hello");
    EXPECT_TRUE(failure("text.doc").starts_with("text.doc: unknown format; expected WAV, FLAC")) << failure("text.doc");
    write("head.wav", std::string("RIFF\x04\0\0\0WAVE", 12));
    EXPECT_TRUE(failure("head.wav").starts_with("head.wav: cannot be decoded: ")) << failure("head.wav");
    std::string noise(20000, '\0');
    std::ranges::generate(noise, [random = std::mt19937(1)]() mutable { return static_cast<char>(random()); });
    for (const std::string& tag : {std::string(), std::string("ID3\3\0\0\0\0\0\0", 10)}) {
        write("noise.mp3", tag + noise);
        EXPECT_EQ(failure("noise.mp3"), "noise.mp3: cannot be decoded: damaged, or of a kind that is not read");
    }
    writeSound("none.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1, 0);
    EXPECT_EQ(failure("none.wav"), "none.wav: holds no samples");
}

TEST_F(InputTest, ARateIsAskedForOnceAndIsPositive)
{
    write("times.csv", "time,a\n1,2\n");
    EXPECT_EQ(failure("times.csv", {10.0}), "times.csv: has its own times");
    writeSound("own.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1, 10);
    EXPECT_EQ(failure("own.wav", {10.0}), "own.wav: has its own rate, 8000 steps per second");
    write("none.csv", "a\n2\n");
    EXPECT_EQ(failure("none.csv", {10.0}), "none");
    for (const double rate : {0.0, -1.0, kInfinity, kNaN})
        EXPECT_TRUE(failure("none.csv", {rate}).starts_with("none.csv: the rate must be a positive number")) << rate;
}

} // namespace
