// The readers of recordings, on files and streams of any bytes: what is wrong is said in one line that begins with the
// file's name, and what is read is as it is promised.

#include "Bytes.h"
#include "CsvRecording.h"
#include "RawRecording.h"
#include "support/TemporaryFolder.h"

#include <tracery/recordings/Recording.h>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>

using namespace tracery::recordings;
using tracery::fuzz::Bytes;

namespace {

/// A descriptor that gives these bytes.
class Stream {
public:
    explicit Stream(const std::string& bytes) : descriptor_(memfd_create("stream", 0))
    {
        if (write(descriptor_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
            std::abort();
        lseek(descriptor_, 0, SEEK_SET);
    }
    ~Stream() { close(descriptor_); }
    Stream(const Stream&) = delete;
    File file() const { return File::pipe(descriptor_, "stream"); }

private:
    int descriptor_;
};

struct Settings {
    explicit Settings(Bytes& bytes)
    {
        const std::uint8_t rate = bytes.byte();
        if (rate < 128)
            options.rate = rate % 8 == 0 ? bytes.number() : rate;
        if (bytes.below(4) == 0)
            seekTo = bytes.number();
        blockSteps = 1 + bytes.below(200);
        asksRange = bytes.flag();
    }
    OpenOptions options;
    std::optional<double> seekTo;
    std::size_t blockSteps = 1;
    bool asksRange = false;
};

void readAll(Recording& recording, const Settings& settings)
{
    const RecordingInfo& info = recording.info();
    EXPECT_FALSE(info.channels.empty());
    EXPECT_TRUE(!info.rate || (std::isfinite(*info.rate) && *info.rate > 0));
    if (settings.asksRange) {
        const TimeRange range = recording.range();
        EXPECT_LE(range.first, range.last);
    }
    if (settings.seekTo)
        recording.seek(*settings.seekTo);
    double last = -std::numeric_limits<double>::infinity();
    std::uint64_t steps = 0;
    const std::size_t most = std::min(settings.blockSteps, 1 + 200000 / info.channels.size());
    for (Block block; recording.read(block, most), block.steps() != 0 && steps < 100000; steps += block.steps()) {
        EXPECT_LE(block.steps(), most);
        EXPECT_EQ(block.real.size(), block.steps() * info.channels.size());
        EXPECT_EQ(block.imag.size(), info.complex ? block.real.size() : 0);
        for (const double time : block.times) {
            EXPECT_LE(last, time);
            last = time;
        }
    }
    EXPECT_TRUE(!info.steps || steps <= *info.steps);
}

} // namespace

void tracery::fuzz::runInput(Bytes& bytes)
{
    static const tracery::test::TemporaryFolder folder(std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp");
    constexpr const char* kTables[] = {"a.csv", "a.tsv", "a.txt"};
    constexpr const char* kRaw[] = {"f64", "f32", "s16", "csv8"};
    const std::size_t kind = bytes.below(5);
    const char* const table = bytes.oneOf(kTables);
    const Settings settings(bytes);
    try {
        switch (kind) {
        case 0:
            return readAll(*openRecording(folder.write(table, bytes.rest()), settings.options), settings);
        case 1: {
            std::string both = bytes.rest(), data;
            if (const std::size_t end = both.find('\0'); end != std::string::npos) {
                data = both.substr(end + 1);
                both.resize(end);
            }
            folder.write("a.sigmf-data", data);
            return readAll(*openRecording(folder.write("a.sigmf-meta", both), settings.options), settings);
        }
        case 2:
            return readAll(*openRecording(folder.write("a.wav", bytes.rest()), settings.options), settings);
        case 3: {
            const Stream stream(bytes.rest());
            CsvRecording recording(stream.file(), settings.options);
            return readAll(recording, settings);
        }
        default: {
            const char* const format = bytes.oneOf(kRaw);
            const std::size_t columns = bytes.below(5);
            const Stream stream(bytes.rest());
            RawRecording recording(stream.file(), format, columns, settings.options);
            readAll(recording, settings);
        }
        }
    } catch (const InputError& error) {
        const std::string_view text = error.what();
        EXPECT_TRUE(text.starts_with(folder.path("a.")) || text.starts_with("stream: ")) << text;
        EXPECT_EQ(text.find('\n'), text.npos) << text;
    }
}
