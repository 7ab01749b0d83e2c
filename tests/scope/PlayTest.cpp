// Playing, through the program, and what it reads and shows.

#include "CsvRecording.h"
#include "RawRecording.h"
#include "display/TextFrame.h"
#include "recordings/RecordingFiles.h"
#include "scope/Program.h"
#include "trigger/TriggeredWindow.h"

#include <unistd.h>

#include <cstring>

using namespace scope;

namespace {

class PlayTest : public ProgramTest {
protected:
    struct Totals {
        unsigned long long in = 0, lost = 0, written = 0, dropped = 0;
        unsigned redraws = 0;
        double seconds = 0, perSecond = 0, most = 0;
    };
    Totals totalsOf(const Outcome& outcome)
    {
        Totals totals;
        const std::size_t at = outcome.out.find("samples: ");
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_NE(at, std::string::npos) << outcome.out;
        const std::string text = outcome.out.substr(std::min(at, outcome.out.size()));
        EXPECT_EQ(std::sscanf(text.c_str(),
                              "samples: %llu in, %llu lost\nredraws: %u in %lf s, one at the end, before it "
                              "%lf a second, at most %lf; frames: %llu written, %llu dropped",
                              &totals.in, &totals.lost, &totals.redraws, &totals.seconds, &totals.perSecond,
                              &totals.most, &totals.written, &totals.dropped),
                  8);
        EXPECT_LE(totals.perSecond, totals.most) << text;
        return totals;
    }
    std::size_t picturesIn(const std::string& folder)
    {
        std::size_t count = 0;
        while (fs::exists(folder_ / folder / ("frame-00000" + std::to_string(count + 1) + ".png")))
            ++count;
        return count;
    }
};

TEST_F(PlayTest, LosesNothingAndRedrawsAtMostOnceAPeriod)
{
    // A second of recording in half a second, at most ten redraws a second; then with a trigger.
    for (const char* options : {"", " --overrun wrap", " --trigger edge --level 0.5 --span 0.2"}) {
        fs::remove_all(folder_ / "new");
        const Totals totals =
            totalsOf(run(std::string("play good.csv --rate-factor 2 --refresh 0.1 --out-dir new/frames") + options));
        EXPECT_EQ(totals.in, 2000U);
        EXPECT_EQ(totals.lost, 0U);
        EXPECT_GE(totals.seconds, 0.49) << "it plays at the recording's pace";
        EXPECT_LE(totals.redraws, totals.seconds / 0.1 + 1) << "and the last one is forced";
        EXPECT_GE(totals.written, 1U);
        EXPECT_LE(totals.written + totals.dropped, totals.redraws);
        EXPECT_EQ(picturesIn("new/frames"), totals.written);
    }
    const Totals two = totalsOf(run("play good.csv --refresh 20m --frames 2 --out-dir two"));
    EXPECT_EQ(two.written, 2U);
    EXPECT_LT(two.in, 2000U) << "frames end it before the recording does";
    EXPECT_EQ(picturesIn("two"), 2U);
}

TEST_F(PlayTest, StandardInputGivesTheFramesOfTheFile)
{
    std::string raw;
    std::string table = "a,b\n";
    for (int i = 0; i < 1000; ++i)
        for (const double value : {i % 9 * 0.25, i / 100 * 0.5}) {
            raw.append(reinterpret_cast<const char*>(&value), sizeof value);
            table += std::to_string(value) + (raw.size() % 16 == 0 ? "\n" : ",");
        }
    write("raw.f64", raw);
    write("table.csv", table);
    // One redraw, the forced one at the end: it does not depend on the clock.
    const std::string options = " --rate 1k --span 0.4 --title T --rate-factor 1e6 --refresh 100 --out-dir ";
    for (const char* command :
         {"play table.csv%sfile", "play -%scsv <table.csv", "play - --format f64 --columns 2%sraw <raw.f64"}) {
        std::string each = command;
        const Totals totals = totalsOf(run(each.replace(each.find("%s"), 2, options)));
        EXPECT_EQ(totals.in, 2000U);
        EXPECT_EQ(totals.lost, 0U);
        EXPECT_EQ(totals.written, 1U);
    }
    const std::string expected = read("file/frame-000001.png");
    EXPECT_GT(expected.size(), 1000U);
    EXPECT_EQ(read("csv/frame-000001.png"), expected);
    const Outcome names = run("play - --format f64 --columns 2 --rate 1k --rate-factor 1e6 --refresh 100 <raw.f64");
    EXPECT_NE(names.out.find("ch2  0 … 4.5 ▁"), std::string::npos) << names.out;
}

TEST_F(PlayTest, EndsWithTotalsOfWhatCameOnCtrlCAndWhenTheSourceFails)
{
    // Before the header, before the first row, within the third row, whose first two are one step each.
    const std::pair<const char*, unsigned long long> cases[] = {{"", 0}, {"t,v\\n", 0}, {"time,v\\n0,1\\n1,2\\n2,", 1}};
    for (const auto& [sent, steps] : cases) {
        // exec: the program is what timeout interrupts, and its status is the pipeline's. --foreground: a second interrupt,
        // to the whole group, would kill it.
        const Outcome outcome = run("--version >/dev/null && (printf '" + std::string(sent) +
                                    "'; sleep 1.2) | exec timeout --foreground -s INT " +
                                    "--preserve-status 0.6 '" TRACERY_SCOPE "' play -");
        EXPECT_EQ(totalsOf(outcome).in, steps) << sent << outcome.err;
        EXPECT_EQ(outcome.err, "");
    }
    std::string table = "time,v\n";
    for (int i = 0; i < 500; ++i)
        table += std::to_string(i) + "," + std::to_string(i % 10) + "\n";
    write("bad.csv", table + "500,bad\n");
    const Outcome failed = run("play - --rate-factor 1e6 --span 9 <bad.csv");
    EXPECT_EQ(failed.status, 2);
    EXPECT_NE(failed.out.find("samples: 500 in, 0 lost"), std::string::npos) << failed.out;
    EXPECT_NE(failed.out.find("v  0 … 9"), std::string::npos) << "the last picture shows it";
}

TEST(PipeTest, HandsOutWhatHasComeAndKeepsHalfSteps)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const auto send = [&](const void* data, std::size_t size) {
        ASSERT_EQ(::write(ends[1], data, size), static_cast<ssize_t>(size));
    };
    const auto sendText = [&](const char* text) { send(text, std::strlen(text)); };
    Block block;
    sendText("time,v\n0,1\n1,");
    CsvRecording table(File::pipe(ends[0], "pipe"), {});
    EXPECT_EQ(table.info().channels.at(0).name, "v");
    table.read(block, 100);
    EXPECT_EQ(block.times, std::vector<double>{0}) << "the rows that are there, without waiting";
    sendText("2\n2,3\n3");
    table.read(block, 100);
    EXPECT_EQ(block.times, (std::vector<double>{1, 2}));
    EXPECT_EQ(block.real, (std::vector<double>{2, 3}));
    sendText(",4\n");
    table.read(block, 100);
    EXPECT_EQ(block.times, std::vector<double>{3});

    RawRecording raw(File::pipe(ends[0], "pipe"), "s16", 2, {.rate = 10});
    const std::int16_t samples[] = {16384, -32768, 8192, 0, 0, 16384};
    send(samples, 7);
    raw.read(block, 100);
    EXPECT_EQ(block.real, (std::vector<double>{0.5, -1})) << "a step and a half";
    send(reinterpret_cast<const char*>(samples) + 7, 5);
    raw.read(block, 1);
    raw.read(block, 100);
    EXPECT_EQ(block.times, std::vector<double>{0.2});
    EXPECT_EQ(block.real, (std::vector<double>{0, 0.5}));
    raw.stop();
    raw.read(block, 100);
    EXPECT_EQ(block.steps(), 0U) << "a reading that would wait has ended";
    close(ends[0]);
    close(ends[1]);
}

TEST(TextFrameTest, ShowsSpikesOfBothWaysGapsAndRanges)
{
    Figure figure;
    figure.title = "T";
    figure.xMax = 10;
    figure.panels.resize(1);
    Trace trace{"a", {}};
    for (int i = 0; i < 1000; ++i)
        if (i < 400 || i >= 500)
            trace.points.push_back({i * 0.01, i == 250 ? 4.0 : i == 750 ? -4.0 : 0.0});
        else if (i == 450)
            trace.points.push_back({kNaN, kNaN});
    figure.panels[0].traces = {trace, {"sparse", {{0, 0}, {9.99, 7}}}, {"none", {}}};
    const std::vector<std::string> rows = drawText(figure, 30, 2);
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_NE(rows[0].find("(2 of 3 lines)"), std::string::npos) << rows[0];
    EXPECT_EQ(rows[1], "a  -4 … 4     ▅▅▅▅█▅▅ ▅▅▅▅▁▅▅▅");
    EXPECT_EQ(rows[2], "sparse  0 … 7 ▁▁▂▂▃▃▄▄▅▅▆▆▇▇██");
    for (const auto& [xMin, span, heading] : {std::tuple{0.0, 10.0, "T  0 s … 10 s"},
                                              {1760000000.00123, 0.5e-3, "T  1760000000.00123 s … 1760000000.00173 s"},
                                              {1760000000.0, 2.0, "T  1760000000 s … 1760000002 s"}}) {
        figure.xMin = xMin;
        figure.xMax = xMin + span;
        EXPECT_EQ(drawText(figure, 60, 9)[0], heading);
    }
    figure.xMax = figure.xMin + 20e-6;
    markTrigger(figure, {{}, 1760000000.00123, {}, {}, false}, {});
    EXPECT_EQ(figure.xLabel, "Time from trigger at 1760000000.00123 s");
}

} // namespace
