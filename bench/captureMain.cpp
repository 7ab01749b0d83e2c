// What a capture of many samples costs: usage: tracery_bench_captures FOLDER [SAMPLES]
// Writes a sound file of 16-bit samples to FOLDER and removes it. Rows: windows of any size and place to 2000 columns, beside
// reading and thinning all of their samples; opening; building, beside decoding alone; appending, beside appending alone.

#include <tracery/DataThinner.h>
#include <tracery/captures/LiveCapture.h>
#include <tracery/captures/openCapture.h>

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>

namespace {

using namespace tracery;
using namespace tracery::captures;
using Clock = std::chrono::steady_clock;

double wallSecondsOf(const auto& action)
{
    const auto start = Clock::now();
    action();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// On a core: what others do meanwhile does not count.
double secondsOf(const auto& action)
{
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    };
    const double start = now();
    action();
    return now() - start;
}

void tell(const char* what, std::vector<double> seconds)
{
    std::ranges::sort(seconds);
    const auto at = [&](double share) {
        return 1e3 * seconds[static_cast<std::size_t>(share * static_cast<double>(seconds.size() - 1))];
    };
    std::printf("%-44s median %9.3f ms   p99 %9.3f ms   (%zu)\n", what, at(0.5), at(0.99), seconds.size());
}

/// A wave with noise and rare spikes.
void writeSound(const std::string& path, std::uint64_t samples)
{
    std::ofstream file(path, std::ios::binary);
    const auto put = [&](std::uint32_t value, int size) { file.write(reinterpret_cast<const char*>(&value), size); };
    const auto bytes = static_cast<std::uint32_t>(2 * samples);
    file << "RIFF";
    put(bytes + 36, 4);
    file << "WAVEfmt ";
    put(16, 4), put(1, 2), put(1, 2), put(1'000'000, 4), put(2'000'000, 4), put(2, 2), put(16, 2);
    file << "data";
    put(bytes, 4);
    std::minstd_rand random(1);
    std::vector<std::int16_t> some(1 << 20);
    for (std::uint64_t done = 0; done < samples; done += some.size()) {
        for (std::size_t i = 0; i < some.size(); ++i) {
            const auto k = random();
            some[i] = static_cast<std::int16_t>(static_cast<int>((done + i) / 997 % 20000) - 10000 +
                                                static_cast<int>(k % 999) + (k % 1000003 == 0 ? 12000 : 0));
        }
        file.write(reinterpret_cast<const char*>(some.data()),
                   static_cast<std::streamsize>(2 * std::min<std::uint64_t>(some.size(), samples - done)));
    }
}

Window someWindow(const Capture& capture, std::mt19937_64& random)
{
    Window window;
    const auto steps = static_cast<double>(capture.end());
    const double share = std::uniform_real_distribution<double>(0, 1)(random);
    window.count = std::max<std::int64_t>(static_cast<std::int64_t>(std::pow(steps, 0.5 + 0.5 * share)), 2000);
    window.first = static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(capture.end() - window.count + 1));
    window.origin = capture.timeOf(window.first);
    // A column of the thinner's opens every half of the display's.
    window.columnsPerSecond = 2000 / (static_cast<double>(window.count) / capture.axis()->rate.toDouble());
    return window;
}

void plainly(const Capture& capture, const Window& window)
{
    const auto count = static_cast<std::size_t>(window.count);
    std::vector<double> values(count), times(count);
    capture.read({0, Part::Real, window.first, count, 1}, values.data());
    capture.readTimes(window.first, count, window.origin, times.data());
    const HostArrayPtr pairs(createDoubleMatrix(2, count, HostComplexity::real));
    double* pair = getRealData(pairs.get());
    for (std::size_t i = 0; i < count; ++i)
        pair[2 * i] = times[i], pair[2 * i + 1] = values[i];
    DataThinner thinner;
    const HostArrayPtr points(
        thinner.getArrayThinData(pairs.get(), static_cast<int>(count), window.columnsPerSecond, false));
}

std::uint64_t residentKilobytes()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmHWM:"))
            return std::strtoull(line.c_str() + 6, nullptr, 10);
    return 0;
}

void measureFile(const std::string& file, const std::string& folder)
{
    CaptureOptions options;
    options.cacheFolder = folder;
    std::vector<double> building, decoding;
    for (int i = 0; i < 3; ++i) {
        clearCache(folder);
        decoding.push_back(secondsOf([&] {
            const auto recording = recordings::openRecording(file, {});
            for (recordings::Block block; recording->read(block, 65536), block.steps() != 0;) {
            }
        }));
        building.push_back(secondsOf([&] { openCapture(file, options); }));
    }
    tell("decoding alone", decoding);
    tell("building", building);
    const auto kept = listCache(folder).at(0).bytes;
    std::printf("%-44s %.3f %% of the values\n", "overview",
                100 * static_cast<double>(kept) / static_cast<double>(std::filesystem::file_size(file)));

    std::vector<double> opening;
    for (int i = 0; i < 11; ++i)
        opening.push_back(secondsOf([&] { openCapture(file, options); }));
    tell("opening again", opening);

    const Capture capture = openCapture(file, options);
    std::mt19937_64 random(7);
    std::vector<double> points;
    Window whole = someWindow(capture, random);
    whole.first = 0;
    whole.count = capture.end();
    whole.origin = capture.timeOf(0);
    whole.columnsPerSecond = 2000 / (static_cast<double>(whole.count) / capture.axis()->rate.toDouble());
    std::vector<double> wholes, any, uniform, coarse;
    for (int i = 0; i < 301; ++i) {
        wholes.push_back(secondsOf([&] { capture.points(whole, points); }));
        Window window = someWindow(capture, random);
        any.push_back(secondsOf([&] { capture.points(window, points); }));
        const std::int64_t a = static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(capture.end() - 4000));
        window.count =
            2000 + static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(capture.end() - a - 2000));
        window.first = a;
        window.origin = capture.timeOf(a);
        window.columnsPerSecond = 2000 / (static_cast<double>(window.count) / capture.axis()->rate.toDouble());
        uniform.push_back(secondsOf([&] { capture.points(window, points); }));
        window.columnsPerSecond /= 2;
        coarse.push_back(secondsOf([&] { capture.points(window, points); }));
    }
    tell("whole, 4000 openings", wholes);
    tell("windows of any magnitude, 4000 openings", any);
    tell("windows from any to any, 4000 openings", uniform);
    tell("the same, 2000 openings", coarse);
    std::printf("%-44s %llu MB resident at most\n", "zooming",
                static_cast<unsigned long long>(residentKilobytes() / 1024));
    std::vector<double> plain, same;
    for (int i = 0; i < 11; ++i) {
        Window window = someWindow(capture, random);
        window.count = std::min<std::int64_t>(window.count, 10'000'000);
        window.columnsPerSecond = 2000 / (static_cast<double>(window.count) / capture.axis()->rate.toDouble());
        same.push_back(secondsOf([&] { capture.points(window, points); }));
        plain.push_back(secondsOf([&] { plainly(capture, window); }));
    }
    tell("windows of at most 10^7", same);
    tell("the same plainly", plain);
    std::vector<double> cold;
    for (int i = 0; i < 5; ++i) {
        const int descriptor = open(file.c_str(), O_RDONLY);
        fdatasync(descriptor);
        posix_fadvise(descriptor, 0, 0, POSIX_FADV_DONTNEED);
        close(descriptor);
        cold.push_back(wallSecondsOf([&] { capture.points(whole, points); }));
    }
    tell("whole, samples not in memory, in all", cold);
}

void measureAppend()
{
    constexpr std::size_t kChannels = 8, kFrame = 256, kFrames = 40000;
    std::vector<std::int16_t> frame(kChannels * kFrame);
    std::minstd_rand random(1);
    for (std::int16_t& number : frame)
        number = static_cast<std::int16_t>(random());
    LiveSettings settings;
    settings.channels.resize(kChannels);
    settings.layout.type = recordings::SampleType::I16;
    settings.axis = TimeAxis{{}, Rate(1'000'000)};
    settings.mostSteps = 4'000'000;
    LiveCapture live(settings);
    std::vector<double> values(frame.begin(), frame.end());
    std::vector<double> appending, appendingValues, copying;
    std::vector<std::int16_t> ring(kChannels * 4'000'000);
    std::size_t at = 0;
    for (int round = 0; round < 5; ++round) {
        appending.push_back(secondsOf([&] {
            for (std::size_t i = 0; i < kFrames; ++i)
                live.append(std::as_bytes(std::span(frame)));
        }));
        appendingValues.push_back(secondsOf([&] {
            for (std::size_t i = 0; i < kFrames / 10; ++i)
                live.appendValues(values);
        }));
        copying.push_back(secondsOf([&] {
            for (std::size_t i = 0; i < kFrames; ++i) {
                std::memcpy(ring.data() + at, frame.data(), frame.size() * 2);
                at = (at + frame.size()) % (ring.size() - frame.size());
            }
        }));
    }
    const double samples = static_cast<double>(kChannels * kFrame * kFrames);
    const auto each = [&](const char* what, std::vector<double>& seconds, double count) {
        std::ranges::sort(seconds);
        std::printf("%-44s %.3f ns a sample\n", what, 1e9 * seconds[2] / count);
    };
    each("append of 8 channels, frames of 256", appending, samples);
    each("append of values", appendingValues, samples / 10);
    each("copying into a ring", copying, samples);
}

} // namespace

int main(int count, char** arguments)
{
    if (count < 2) {
        std::fputs("usage: tracery_bench_captures FOLDER [SAMPLES]\n", stderr);
        return 2;
    }
    const std::string folder = arguments[1], file = folder + "/bench-captures.wav";
    const std::uint64_t samples = count > 2 ? std::strtoull(arguments[2], nullptr, 10) : 100'000'000;
    if (!std::filesystem::exists(file))
        writeSound(file, samples);
    measureFile(file, folder + "/bench-captures-cache");
    measureAppend();
    std::filesystem::remove(file);
    std::filesystem::remove_all(folder + "/bench-captures-cache");
}
