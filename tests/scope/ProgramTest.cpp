// The program as a person runs it: exit status, one line for what is wrong, pictures whole or not at all.

#include "scope/Program.h"

#include <tracery/basics/Text.h>

#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <regex>
#include <set>

namespace {

TEST_F(ProgramTest, SaysWhatIsWrongInOneLineAndLeavesNoPicture)
{
    write("text.csv", "time,a\n0,1\n1,abc\n");
    write("uneven.csv", "time,v\n0,1\n1,2\n10,3\n11,4\n");
    std::string drifting = "time,v\n"; // steps from 1 s to 1.3 s
    for (int i = 0; i < 1000; ++i)
        drifting += std::to_string(i * (1 + 0.00015 * i)) + ",0\n";
    write("drifting.csv", drifting);
    std::string zeros = "v\n";
    for (int i = 0; i < 70000; ++i)
        zeros += "0\n";
    write("long.csv", zeros);
    write("zero.csv", "time,v\n0,0\n1,0\n");
    write("extremes.csv", "time,huge,tiny,zero\n0,1e154,1e-162,0\n1,1e154,0,0\n2,-1e154,0,0\n3,-1e200,0,0\n");
    write("far.csv", "time,v\n-1.7e308,1\n1.7e308,2\n");
    write("half.raw", "abc");
    std::string heads = "time", values = "0";
    for (int i = 0; i < 3800; ++i) {
        heads += ",c" + std::to_string(i);
        values += ",1";
    }
    write("broad.csv", heads + '\n' + values + '\n');
    std::string names = "time", noughts;
    for (int i = 1; i <= 4097; ++i) {
        names += ',' + std::to_string(i);
        noughts += ",0";
    }
    write("wide.csv", names + "\n0" + noughts + "\n1" + noughts + '\n');
    write("file", "");
    write("blanks.txt", "time v\n0 1\n1 2\n");
    std::string sound; // frames of silence, and then nothing that is one
    for (int i = 0; i < 10; ++i)
        sound += "\xff\xfb\x90\x64" + std::string(413, '\0');
    for (unsigned i = 0; i < 5000; ++i)
        sound += static_cast<char>(i * i * 2654435761U >> 24);
    write("broken.mp3", sound);
    std::string today = "time,v\n"; // where times are 0.24 µs apart
    for (int i = 0; i < 1000; ++i)
        today += "1760000000.000" + std::to_string(1000 + i).substr(1) + "," + std::to_string(i / 10 % 2) + "\n";
    write("today.csv", today);
    write("escape.csv", "time,v\x1b[2J\n0,1\n");
    fs::create_directory(folder_ / "folder.csv");
    fs::create_symlink("/dev/null", folder_ / "null.csv");
    fs::create_symlink("/dev/null", folder_ / "null.png");
    struct Case {
        const char* arguments;
        const char* expected;
    };
    const Case cases[] = {
        {"view nothing.csv -o o.png", "nothing.csv: "},
        {"view text.csv -o o.png", "text.csv: line 3, column 2"},
        {"info text.csv", "text.csv: line 3, column 2"},
        {"info broken.mp3", "broken.mp3: "},
        {"info blanks.txt", "blanks.txt: line 1: expected headings in UTF-8"},
        {"view good.csv --from 5 --span 1 -o o.png", "no samples between 5 s and 6 s"},
        {"view good.csv --channels w --from 0.31 --span 0.05 -o o.png", "no samples between"},
        {"view good.csv --channels q -o o.png", "there is no channel 'q'; there are v, w"},
        {"view good.csv --span -1 -o o.png", "--span must be positive"},
        {"view good.csv --span 1x -o o.png", "--span: expected a number"},
        {"view good.csv --size 12 -o o.png", "--size: expected WIDTHxHEIGHT"},
        {"view good.csv --size 99x100 -o o.png", "100 to 20000 pixels"},
        {"view good.csv --frob -o o.png", "--frob"},
        {"view good.csv --titel x -o o.png", "there is no option '--titel'; did you mean '--title'?"},
        {"viw good.csv", "there is no command 'viw'; did you mean 'view'?"},
        {"info good.csv --rate=1 --json=x", "there is no option '--json'"},
        {"events good.csv more=1.csv", "'more=1.csv' is one word too many"},
        {"view good.csv --trigger edge --nth -1 -o o.png", "--nth: expected a whole number from 1, found '-1'\n"},
        {"view good.csv --trigger edge --nth 1.5 -o o.png", "--nth: expected a whole number from 1, found '1.5'\n"},
        {"play good.csv --frames -1", "--frames: expected a whole number from 0, found '-1'\n"},
        {"events good.csv --block 0", "--block: expected a whole number from 1 to 16777216, found '0'\n"},
        {"view good.csv -o ''", "--output: expected a name, found ''"},
        {"view good.csv --channels '' -o o.png", "--channels: expected names or numbers with commas, found ''"},
        {"view good.csv --channels 1, -o o.png", "--channels: expected names or numbers with commas, found '1,'"},
        {"events good.csv --source ''", "--source: expected a name, found ''"},
        {"play good.csv --out-dir ''", "--out-dir: expected a name, found ''"},
        {"info ''", "FILE: expected a name, found ''"},
        {"events good.csv --trigger window --polarity rising",
         "--polarity: this trigger takes inside, outside or either, found 'rising'"},
        {"view good.csv --polarity inside --trigger edge -o o.png",
         "--polarity: this trigger takes rising, falling or either, found 'inside'"},
        {"view escape.csv --channels \"$(printf 'a\\nb')\" -o o.png", "there is no channel 'a?b'; there are v?[2J"},
        {"spectrum good.csv --window han", "found 'han'; did you mean 'hann'?"},
        {"info - < /dev/null", "standard input: is empty"},
        {"view - -o o.png < text.csv", "standard input: line 3, column 2"},
        {"view -o o.png", "FILE"},
        {"view good.csv -o missing/o.png", "missing/o.png: "},
        {"view good.csv -o o.gif", "o.gif: "},
        {"view good.csv --channels 1 good.csv -o missing/o.png", "missing/o.png: "}, // the list ends before FILE
        {"view good.csv --trigger edge --level 9 -o o.png", "the level 9 is outside the signal's range"},
        {"view good.csv --trigger timeout -o o.png", "--trigger timeout needs a --timeout"},
        {"view good.csv --trigger edge --span 100m --nth 50 -o o.png", "only 5 windows are shown, of 5 events"},
        {"events good.csv --source 3", "there is no channel '3'"},
        {"events good.csv --polarity up",
         "--polarity: expected one of rising, falling, either, inside, outside, found 'up'"},
        {"view good.csv --level 0.5 -o o.png", "--level does nothing without --trigger"},
        {"view good.csv --trigger edge --upper 1 -o o.png", "--upper does nothing with this trigger"},
        {"view good.csv --trigger edge --nth 0 -o o.png", "--nth: expected a whole number from 1, found '0'"},
        {"events good.csv --position 3", "--position"},
        {"events good.csv --from 9", "good.csv: no samples at or after 9 s"},
        {"events good.csv --part imaginary", "good.csv: the trigger channel is real"},
        {"view good.csv --overrun jump -o o.png", "--overrun: expected one of wrap, scroll"},
        {"view good.csv --overrun wrap --until -1 -o o.png", "--until: expected a time after the start, 0 s"},
        {"view good.csv --overrun wrap --span 1e-17 -o o.png", "is too short to tell times apart"},
        {"view today.csv --span 1n -o o.png", "a span of 1 ns is too short to tell times apart at 1760000000 s"},
        {"view today.csv --from 1.76G --span 2u -o o.png", "a span of 2 µs is too short to tell times apart"},
        {"view today.csv --overrun scroll --span 2u -o o.png", "a span of 2 µs is too short to tell times apart"},
        {"view today.csv --trigger edge --level 0.5 --span 1n -o o.png", "a span of 1 ns is too short to tell times"},
        {"events today.csv --level auto --span 1n", "a span of 1 ns is too short to tell times apart"},
        {"play today.csv --span 1n", "a span of 1 ns is too short to tell times apart"},
        {"view good.csv --until 1 -o o.png", "--until does nothing without --overrun"},
        {"view good.csv --overrun wrap --trigger edge -o o.png", "--overrun streams without a trigger"},
        {"view good.csv --overrun wrap --from 2 -o o.png", "no samples at or after 2 s"},
        {"spectrum good.csv -o o.gif", "must end in .png or .svg, that of a table in .csv"},
        {"spectrum good.csv --size 1x1 -o o.png", "pixels"},
        {"spectrum good.csv -o missing/o.csv", "missing/o.csv: "},
        {"spectrum text.csv -o o.csv", "text.csv: line 3, column 2"},
        {"spectrum good.csv --channels q -o o.csv", "there is no channel 'q'"},
        {"spectrum good.csv --segment 1001 -o o.png", "good.csv: 1000 samples are too few for a segment of 1001"},
        {"spectrum good.csv --span 15m -o o.png", "15 samples are too few for a segment of 16"},
        {"spectrum long.csv --rate 1 --segment 65537 -o o.png", "--segment: the transform of 65537 samples is slow"},
        {"spectrum good.csv --segment 1 -o o.png", "--segment: expected 2 to 1048576 samples, found '1'"},
        {"spectrum good.csv --segment 1.001k -o o.png", "are too few for a segment of 1001"},
        {"spectrum good.csv --channels , -o o.png", "--channels: expected names or numbers with commas, found ','"},
        {"spectrum good.csv --overlap 100 -o o.png", "--overlap: expected a percentage"},
        {"spectrum good.csv --window round -o o.png", "--window: expected one of hann, "},
        {"spectrum good.csv --prominence -1 -o o.png", "--prominence: expected 0 to 300 dB, found '-1'"},
        {"spectrum good.csv --range 301 -o o.png", "--range: expected 0 to 300 dB, found '301'"},
        {"spectrum good.csv --from 5 -o o.png", "no samples at or after 5 s"},
        {"spectrum good.csv --from 0.1002 --span 0.5m -o o.png", "no samples between 100.2 ms and 100.7 ms"},
        {"spectrum good.csv --channels w --from 0.3 --span 0.1 -o o.csv", "channel 'w' has only missing"},
        {"spectrum good.csv --channels w --from 0.25 --span 0.1 --segment 64 -o o.csv",
         "channel 'w' has missing or infinite values in every segment, the first at 300 ms: "},
        {"spectrum extremes.csv --channels 1 --segment 4 -o o.csv", "channel 'huge' has values too large to square"},
        {"spectrum extremes.csv --channels 2,3 --segment 4 -o o.csv", "channel 'zero' is zero throughout"},
        {"ccdf extremes.csv --channels 1 -o o.png", "channel 'huge' has values too large to square"},
        {"ccdf extremes.csv --channels 2,3 -o o.png", "channel 'tiny' has values too small to square"},
        {"spectrum uneven.csv --segment 2 -o o.png", "the time steps are uneven, 1 s to 9 s, the longest after 1 s: "},
        {"ccdf uneven.csv -o o.png", "the time steps are uneven, 1 s to 9 s, the longest after 1 s: shares of samples"},
        {"spectrum drifting.csv -o o.png", "drifting.csv: the time steps are uneven: at 4.0024 s they are"},
        {"spectrum good.csv -o null.csv", "null.csv: cannot be written: it is no regular file"},
        {"view good.csv -o null.png", "null.png: cannot be written: it is no regular file"},
        {"ccdf good.csv -o folder.csv", "folder.csv: cannot be written: Is a directory"},
        {"ccdf good.csv --resolution 0 -o o.png", "--resolution: expected 0.001 to 10 dB"},
        {"ccdf good.csv --span 0 -o o.png", "--span must be positive"},
        {"ccdf good.csv --channels w --from 0.3 --span 0.1 -o o.csv", "channel 'w' has only missing"},
        {"ccdf zero.csv -o o.png", "channel 'v' is zero throughout"},
        {"classes Nothing", "there is no class 'Nothing'; there are TimeBuffer, "},
        {"classes --module no.so", "no.so: no such file"},
        {"classes --module good.csv", "good.csv: is not a library"},
        {"classes --module '" OLD_MODULE "'", "built for another version of the seam"},
        {"", "subcommand"},
        {"play - --format mp3 --rate 1k <half.raw", "standard input: the format is csv, f64, f32 or s16, found 'mp3'"},
        {"play - --format s16 --rate 1k --columns 2 <half.raw",
         "standard input: byte 3: ends within a step of 4 bytes"},
        {"play - --format s16 --rate 1k </dev/null", "standard input: holds no samples"},
        {"play - --format s16 <half.raw",
         "standard input: gives neither times nor a rate: say the steps per second with --rate"},
        {"play - </dev/null", "standard input: holds no rows"},
        {"play - <text.csv", "standard input: line 3, column 2"},
        {"play - --trigger edge --level 50% <good.csv", "the range of standard input is not known"},
        {"play good.csv --format s16", "are of standard input"},
        {"play good.csv --theme dark", "--theme does nothing without --out-dir"},
        {"play good.csv --out-dir unmade --size 20000x20000", "a .png, has at most 67108864 of them, not 20000 × 20000\n"},
        {"spectrum good.csv -o o.csv --size 300x300", "--size does nothing for a table: o.csv"},
        {"ccdf good.csv -o -.csv --theme dark", "--theme does nothing for a table: -.csv"},
        {"play good.csv --out-dir file", "file: the folder cannot be made"},
        {"play good.csv --rate-factor 0", "--rate-factor must be positive"},
        {"play nothing.csv", "nothing.csv: no such file"},
        // Numbers that nothing can come of (docs/limits.md).
        {"view long.csv --rate 1e300 -o o.png", "long.csv: the rate must be a positive number"},
        {"events long.csv --rate 1e-320", "long.csv: the rate must be a positive number"},
        {"view good.csv --span 1e-320 -o o.png", "--span: expected 1e-18 to 1e18, found 1e-320"},
        {"events good.csv --span 1e300", "--span: expected 1e-18 to 1e18, found 1e+300"},
        {"play good.csv --rate-factor 1e-320", "--rate-factor: expected 1e-18 to 1e18"},
        {"view good.csv --size 100x20001 -o o.png", "100 to 20000 pixels"},
        {"view good.csv --size 8193x8192 -o o.png", "at most 67108864 of them, not 8193 × 8192"},
        {"view broad.csv -o o.png", "3800 lines are too many, 1104 pixels wide: at most 3799 are drawn"},
        {"play broad.csv --span 1 --out-dir .", "3800 lines are too many, 1104 pixels wide: at most 3799 are drawn"},
        {"ccdf broad.csv --bins 2208 -o o.csv", "3800 channels are too many for --bins 2208: at most 3799 are measured"},
        {"ccdf wide.csv --bins 1 -o o.png", "4097 channels are too many: at most 4096 are measured; choose some"},
        {"spectrum wide.csv --segment 2 --channels 1,2,3,4,5,6,7,8,9,10,11,12 -o o.csv",
         "'10' is zero throughout and 2 more\n"},
        {"view broad.csv --stack --size 100x599 -o o.png", "3800 panels are too many, 599 pixels high: at most 49"},
        {"spectrum good.csv --peaks 99999999999999999999 -o o.png", "--peaks: expected a whole number from 0 to 1000"},
        {"play - --format f64 --rate 1 --columns 1025", "--columns: expected a whole number from 1 to 1024"},
        {"info far.csv", "far.csv: line 2, column 1: expected a time from -1e300 to 1e300"},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.arguments);
        const Outcome outcome = run(each.arguments);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_NE(outcome.err.find(each.expected), std::string::npos) << outcome.err;
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        const auto left = std::count_if(fs::directory_iterator(folder_), {}, [](const fs::directory_entry& entry) {
            const std::string name = entry.path().filename().string();
            return name.starts_with("o.") || name == "unmade" || entry.path().extension() == ".part";
        });
        EXPECT_EQ(left, 0);
    }
}

TEST_F(ProgramTest, AWriteThatFailsIsToldInOneLineAndLeavesNoHalfFile)
{
    const std::string full = ">/dev/full", small = "trap '' 25; ulimit -f 1;"; // SIGXFSZ ignored, 512 or 1024 bytes
    const struct {
        const char* arguments;
        std::string before, sink;
        bool whole = false; ///< the file may be there, whole
    } cases[] = {
        {"info good.csv", "", full},
        {"classes", "", full},
        {"events good.csv", "", full},
        {"events good.csv --json", "", full},
        {"--help", "", full},
        {"--version", "", full},
        {"view good.csv -o -", "", full},
        {"info good.csv", "", ">&-"},
        {"play good.csv --rate-factor 1000", "", full},
        {"view good.csv -o o.png", "", full, true},
        {"spectrum good.csv --channels v -o o.csv", "", full, true},
        {"ccdf good.csv --channels v -o o.svg", "", full, true},
        {"view good.csv -o o.png", "", ">&-", true},
        {"view good.csv -o o.png", small, ">/dev/null"},
        {"view good.csv -o o.svg", small, ">/dev/null"},
        {"spectrum good.csv --channels v -o o.csv", small, ">/dev/null"},
        {"ccdf good.csv --channels v -o o.svg", small, ">/dev/null"},
        {"play good.csv --rate-factor 1000 --out-dir .", small, ">/dev/null"},
        {"view good.csv -o /proc/o.png", "", ">/dev/null"},
        {"play good.csv --out-dir /proc/frames", "", ">/dev/null"},
        {"play good.csv --rate-factor 0.5 --out-dir gone", "mkdir gone; (sleep 0.5; rm -r gone) &", ">/dev/null"},
        {"info good.csv", "sleep 0.2;", "; echo $? >status.txt; } | :"},
        {"events good.csv", "sleep 0.2;", "; echo $? >status.txt; } | :"},
        {"view good.csv -o -", "sleep 0.2;", "; echo $? >status.txt; } | :"},
        {"play good.csv --rate-factor 0.01", "sleep 0.2;", "; echo $? >status.txt; } | :"}, // within its 100 s
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(std::string(each.arguments) + ' ' + each.before + ' ' + each.sink);
        const bool piped = each.sink.ends_with("| :");
        for (const char* name : {"o.png", "o.svg", "o.csv"})
            write(name, "before");
        const Outcome outcome = run(each.arguments, piped ? "{ " + each.before : each.before, each.sink);
        if (piped) { // whoever reads no more has what it wanted
            EXPECT_EQ(read("status.txt") + outcome.err, "0\n");
            continue;
        }
        EXPECT_EQ(outcome.status, 2);
        EXPECT_NE(outcome.err.find("cannot be "), std::string::npos) << outcome.err;
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder_)) {
            const std::string name = entry.path().filename().string();
            EXPECT_FALSE(name.ends_with(".part") || name.starts_with("frame-")) << name;
            if (name.starts_with("o.") && read(name) != "before") {
                EXPECT_TRUE(each.whole && read(name) == wholeFile(each.arguments)) << name;
            }
        }
    }
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__clang__) // which take memory of their own
TEST_F(ProgramTest, ManyLinesAndManyFilesTakeTheMemoryOfWhatTheyHold)
{
    std::string heads = "time", values, rows = "v\n", files;
    for (int i = 0; i < 3799; ++i) {
        heads += ",c" + std::to_string(i);
        values += "," + std::to_string(i % 10);
    }
    write("broad.csv", heads + "\n0" + values + "\n1" + values + '\n');
    for (int i = 0; i < 40000; ++i)
        rows += "1\n";
    write("rows.csv", rows);
    for (int i = 0; i < 100; ++i)
        files += " rows.csv";
    for (const std::string& command : {std::string("view broad.csv -o o.png"), "view --rate 1 -o o.png" + files}) {
        const Outcome outcome = run(command, "ulimit -v 200000;"); // KiB
        EXPECT_EQ(outcome.status, 0) << outcome.err;
    }
}
#endif

TEST_F(ProgramTest, KernelsThatAreNotKnownAreRefused)
{
    EXPECT_EQ(run("info good.csv", "TRACERY_KERNELS=baseline").status, 0);
    EXPECT_EQ(run("info good.csv", "TRACERY_KERNELS=").status, 0);
    for (const char* command : {"info good.csv", "classes", "--version"}) {
        const Outcome outcome = run(command, "TRACERY_KERNELS=basline");
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err.find("tracery-scope: TRACERY_KERNELS: there are no kernels 'basline' for this processor, "
                                   "known are baseline"),
                  0U)
            << outcome.err;
    }
}

TEST_F(ProgramTest, ListsTheClassesOfAModuleFromAFile)
{
    const Outcome own = run("classes");
    const Outcome loaded = run("classes --module '" TRACERY_LIBRARY "'");
    EXPECT_EQ(own.status, 0) << own.err;
    EXPECT_NE(own.out.find("TimeBuffer"), std::string::npos);
    EXPECT_EQ(own.out.find("ScopeLineAnimator"), std::string::npos) << "a class of the host";
    EXPECT_EQ(loaded.out, own.out) << loaded.err;
    const Outcome demo = run("classes --module '" DEMO_MODULE "'");
    EXPECT_EQ(demo.status, 0) << demo.err;
    EXPECT_NE(demo.out.find("demo."), std::string::npos) << demo.out;
}

TEST_F(ProgramTest, TheSameRecordingGivesTheSamePictureWithTheTrigger)
{
    for (const char* arguments : {"view good.csv -o %.svg", "view good.csv -o %.png --stack --title T",
                                  "view good.csv -o %.svg --overrun scroll --span 100m", "spectrum good.csv -o %.svg",
                                  "spectrum good.csv -o %.csv", "ccdf good.csv -o %.SVG",
                                  "view good.csv -o %.svg --trigger edge --level 50% --span 100m --nth 2"}) {
        SCOPED_TRACE(arguments);
        std::string pictures[2];
        for (int i = 0; i < 2; ++i) {
            std::string command = arguments;
            command.replace(command.find('%'), 1, "o" + std::to_string(i));
            const Outcome outcome = run(command);
            ASSERT_EQ(outcome.status, 0) << outcome.err;
            pictures[i] = read(outcome.out.substr(0, outcome.out.find('\n')));
        }
        EXPECT_GT(pictures[0].size(), 1000U);
        EXPECT_EQ(pictures[0], pictures[1]);
    }
}

TEST_F(ProgramTest, APictureNeverReplacesItsRecordingAndShowsItsFirstSample)
{
    fs::copy_file(folder_ / "good.csv", folder_ / "data.csv");
    fs::create_hard_link(folder_ / "data.csv", folder_ / "data.png");
    for (const char* arguments :
         {"view data.csv -o data.png", "spectrum data.csv -o data.csv", "ccdf data.csv -o data.png"}) {
        const Outcome refused = run(arguments);
        EXPECT_EQ(refused.status, 2);
        EXPECT_NE(refused.err.find("would replace the recording"), std::string::npos) << refused.err;
        EXPECT_EQ(read("data.png"), read("good.csv"));
    }

    fs::create_directory(folder_ / "there");
    fs::create_symlink("there/second.csv", folder_ / "first.csv");
    fs::create_symlink("third.csv", folder_ / "there/second.csv");
    for (int i = 0; i < 2; ++i) { // the file at the end of the links: a new one, then that one
        EXPECT_EQ(run("ccdf good.csv -o first.csv").status, 0);
        EXPECT_TRUE(fs::is_symlink(folder_ / "first.csv") && fs::is_symlink(folder_ / "there/second.csv"));
        EXPECT_GT(fs::file_size(folder_ / "there/third.csv"), 100U);
    }

    write("one.csv", "time,v\n5,1\n");
    EXPECT_EQ(run("view one.csv -o o.png").status, 0);
    EXPECT_EQ(run("view good.csv --from 0.999 -o o.png").status, 0) << "the last sample by itself";
}

TEST_F(ProgramTest, InfoTellsExtremesApart)
{
    write("fine.csv", "time,a,b\n1760000000.000001,5.000000001,1\n1760000000.000002,4.999999999,5806.546\n");
    const Outcome fine = run("info fine.csv");
    for (const char* text : {"1760000000.000001 s to 1760000000.000002 s", " 4.999999999  5.000000001 ", " 5806.546 "})
        EXPECT_NE(fine.out.find(text), std::string::npos) << fine.out;
    for (const char* frequency : {"1090000000,1.09 GHz", "868950000,868.95 MHz", "868950001.125,868.950001125 MHz",
                                  "900e6,900 MHz", "0.1,100 mHz", "123456789012345.6,123.4567890123456 THz"}) {
        const std::string text = frequency;
        const std::size_t comma = text.find(',');
        write("r.sigmf-meta", R"({"global": {"core:datatype": "cu8", "core:version": "1.0.0", "core:sample_rate": 1e5},
            "captures": [{"core:sample_start": 0, "core:frequency": )" +
                                  text.substr(0, comma) + R"(}], "annotations": []})");
        write("r.sigmf-data", "abcdefgh");
        const Outcome radio = run("info r.sigmf-meta");
        EXPECT_NE(radio.out.find("  center    " + text.substr(comma + 1) + "\n"), std::string::npos) << radio.out;
    }
    std::mt19937_64 random(1);
    for (int i = 0; i < 10000; ++i) {
        const auto any = [&] { return std::ldexp(std::uniform_real_distribution(-1.0, 1.0)(random), i % 200 - 100); };
        double low = any(), high = any();
        if (i % 2 == 0) {
            low = static_cast<float>(low);
            high = std::nextafter(static_cast<float>(low), 1e30F);
        }
        const auto [lowText, highText] = tracery::basics::rangeText(low, high);
        EXPECT_TRUE(i % 2 == 0 ? std::stof(lowText) == low && std::stof(highText) == high && lowText.size() < 17
                               : std::stod(lowText) == low && std::stod(highText) == high)
            << lowText << ' ' << highText;
    }
}

TEST_F(ProgramTest, AutoLevelLooksAtBatchesShortBesideTheSpan)
{
    // The signal drops to a tenth: one level for both would miss the second half.
    std::string table = "time,v\n";
    for (int i = 0; i < 2000; ++i)
        table += std::to_string(i * 0.01) + "," + (i / 100 % 2 == 1 ? "0" : i < 1000 ? "10" : "1") + "\n";
    write("drop.csv", table);
    for (const char* block : {"", " --block 7", " --block 100000"})
        EXPECT_NE(run(std::string("events drop.csv --span 0.5") + block).out.find("# found=9 "), std::string::npos)
            << block;
}

TEST_F(ProgramTest, EventsCountWhatTheHoldoffRefusedAndNoneIsNoFailure)
{
    const Outcome json = run("events good.csv --level 0.5 --span 10m --json --holdoff 0.3");
    EXPECT_NE(json.out.find("{\"type\":\"summary\",\"found\":3,\"shown\":3"), std::string::npos) << json.out;
    EXPECT_NE(json.out.find("\"held_off\":2}"), std::string::npos) << json.out;
    const Outcome nothing = run("events good.csv --level 3");
    EXPECT_EQ(nothing.status, 0);
    EXPECT_NE(nothing.err.find("nothing triggers"), std::string::npos);
}

TEST_F(ProgramTest, MeasurementsPrintTheirTotalsAndSayWhatTheyLeftOut)
{
    const Outcome spectrum = run("spectrum good.csv --scale psd --from 0 --span 1 --peaks 1 -o o.csv");
    EXPECT_EQ(spectrum.status, 0) << spectrum.err;
    // w counts 0 to 6 at 1 kHz, over and over.
    for (const char* part : {"o.csv\n10 segments of 128 samples, hann, noise bandwidth 11.72 Hz\nv: peaks (Hz, ",
                             "\nw: peaks (Hz, dB re 1/Hz)\n   1            142.9 "})
        EXPECT_NE(spectrum.out.find(part), std::string::npos) << spectrum.out;
    EXPECT_NE(run("spectrum good.csv --range 0 -o p.csv").out.find("v: no peaks\nw: no peaks\n"), std::string::npos);
    EXPECT_NE(spectrum.err.find("left out for missing or infinite values: w 4 of 14\n"), std::string::npos)
        << spectrum.err;
    const std::string table = read("o.csv");
    EXPECT_EQ(table.substr(0, table.find('\n')), "frequency [Hz],v [dB re 1 V²/Hz],w [dB re 1/Hz]");
    EXPECT_EQ(std::count(table.begin(), table.end(), '\n'), 1 + 65);

    write("dead.csv", "time,dead,none,live\n0,0,,1\n1,0,,2\n2,0,,1\n3,0,,1\n");
    for (const char* arguments : {"spectrum dead.csv --segment 2 -o o.csv", "ccdf dead.csv -o o.csv"}) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.err, "tracery-scope: left out: channel 'dead' is zero throughout; channel 'none' has only "
                               "missing or infinite values\n");
        EXPECT_EQ(read("o.csv").find("dead"), std::string::npos);
    }

    // A logic line that is written where it changes, and one that misses a value: the mean goes by time.
    write("held.csv", "time,v,w\n0,0,\n8,0,2\n8,1,4\n10,1,1\n");
    const Outcome held = run("info held.csv");
    for (const char* line : {" minimum      maximum mean by time    missing\n",
                             "  1 v                           0            1          0.2          0\n",
                             "  2 w                           1            4      2.16667          1\n"})
        EXPECT_NE(held.out.find(line), std::string::npos) << held.out;
    EXPECT_NE(run("info good.csv").out.find(" maximum         mean    missing\n"), std::string::npos);

    const Outcome ccdf = run("ccdf good.csv --channels v,w -o o.csv");
    for (const char* line : {"v: 1000 samples\n", "  average power  0.5          V² (-3.0103 dB re 1 V²)\n",
                             "  PAPR           3.0103 dB\n", "  above average  50.0000 %\n", "w: 900 samples\n"})
        EXPECT_NE(ccdf.out.find(line), std::string::npos) << ccdf.out;
    EXPECT_NE(ccdf.err.find("w 100 of 1000\n"), std::string::npos) << ccdf.err;
}

TEST_F(ProgramTest, StandardStreamsStandForFiles)
{
    for (const std::string command : {"view", "ccdf", "spectrum --channels v"})
        for (const std::string ending : {".png", ".svg"}) {
            ASSERT_EQ(run(command + " good.csv --title x -o o" + ending).status, 0);
            const Outcome piped = run(command + " - --title x -o -" + ending + " < good.csv");
            EXPECT_EQ(piped.status, 0) << piped.err;
            EXPECT_EQ(piped.out, read("o" + ending)) << command;
        }
    EXPECT_EQ(run("events - --level 0.5 < good.csv").out, run("events good.csv --level 0.5").out);
    EXPECT_EQ(run("view - < good.csv").out, "stdin.png\n");

    std::string wav("RIFF\x28\0\0\0WAVEfmt \x10\0\0\0\x01\0\x01\0\x40\x1f\0\0\x80\x3e\0\0\x02\0\x10\0data\x04\0\0\0",
                    44);
    write("two.wav", wav + "abcd");
    const std::string slowly = "mkdir -p tmp; export TMPDIR=tmp; (head -c 4 two.wav; sleep 0.2; tail -c +5 two.wav) | ";
    EXPECT_NE(run("info -", slowly).out.find("  steps     2\n"), std::string::npos) << "known by more than four bytes";
    EXPECT_NE(run("spectrum - -o o.csv", slowly).err.find("standard input: 2 samples are too few"), std::string::npos);
    EXPECT_NE(run("info - < good.csv", "TMPDIR=missing").err.find("standard input: cannot be kept"), std::string::npos);
    std::string table = "time,v\n"; // more than is looked at before it is kept
    for (int i = 0; i < 20000; ++i)
        table += std::to_string(i) + ",1\n";
    write("big.csv", table);
    for (const auto& [how, status] : {std::pair{"-s TERM 0.3", 128 + 15}, {"-s HUP 0.3 nohup", 0}}) {
        const std::string interrupted = "export TMPDIR=tmp; (cat big.csv; sleep 0.6) | exec timeout --preserve-status ";
        EXPECT_EQ(run("info -", interrupted + how).status, status) << how;
    }
    EXPECT_TRUE(fs::is_empty(folder_ / "tmp")) << "nothing stays, whatever ends the program";
}

TEST_F(ProgramTest, SpectraTakeTimesAsEvenThatRoundingMadeUneven)
{
    // A tone in a bin, at times rounded to doubles (where they are large) and to decimals.
    struct Rounded {
        double first, rate;
        int decimals;
        bool even;
    };
    for (const Rounded& each :
         {Rounded{1760000000, 10e6, 7, true}, Rounded{1760000000, 4e6, 9, true}, Rounded{1760000000, 320e3, 9, true},
          Rounded{0, 3e6, 6, true}, Rounded{5, 700e3, 6, true}, Rounded{5, 700e3, 9, false},
          Rounded{1760000000, 10e3, 6, false}}) {
        std::string table = "time,v\n";
        for (int i = 0; i < 4096; ++i) {
            char row[80];
            const auto late = each.even || i % 7 != 3 ? 0.0L : 0.6L; // of a step
            const auto time = (static_cast<long double>(i) + late) / static_cast<long double>(each.rate);
            std::snprintf(row, sizeof row, "%.*Lf,%.6f\n", each.decimals, static_cast<long double>(each.first) + time,
                          std::sin(2 * 3.14159265358979 * i / 16));
            table += row;
        }
        write("rounded.csv", table);
        const Outcome outcome = run("spectrum rounded.csv --segment 256 --peaks 1 -o o.csv");
        EXPECT_EQ(outcome.status, each.even ? 0 : 2) << each.rate << outcome.err;
        const std::size_t at = outcome.out.find("   1 ");
        if (each.even && at != std::string::npos)
            EXPECT_NEAR(std::stod(outcome.out.substr(at + 4)), each.rate / 16, each.rate * 1e-3) << outcome.out;
        else
            EXPECT_NE(outcome.err.find(" uneven"), std::string::npos) << outcome.out;
    }
}

TEST_F(ProgramTest, LongRecordingsTakeNoMoreMemoryThanShortOnesNorAskForItAgain)
{
    const auto pagesTaken = [&](const std::string& arguments) {
        rusage before{}, after{};
        getrusage(RUSAGE_CHILDREN, &before);
        EXPECT_EQ(run(arguments, "ASAN_OPTIONS=$ASAN_OPTIONS:quarantine_size_mb=1").status, 0) << arguments;
        getrusage(RUSAGE_CHILDREN, &after);
        return after.ru_minflt - before.ru_minflt;
    };
    // 10 MHz at the time stamps of today, where doubles are more than two steps apart.
    std::string table = "time,v\n";
    for (int i = 0; i < 400000; ++i) {
        const std::string fraction = std::to_string(i);
        table +=
            "1760000000." + std::string(7 - fraction.size(), '0') + fraction + (i / 500 % 2 == 0 ? ",0\n" : ",1\n");
    }
    write("few.csv", table.substr(0, table.rfind('\n', table.size() / 10) + 1));
    write("many.csv", table);
    for (const std::string command : {"events --level 0.5 --span 10u ", "view --span 1 -o o.png "}) {
        EXPECT_LT(pagesTaken(command + "many.csv") - pagesTaken(command + "few.csv"), 2000) << command;
    }
    const std::string header(
        "RIFF\0\0\0\0WAVEfmt \x10\0\0\0\x01\0\x01\0\x40\x1f\0\0\x80\x3e\0\0\x02\0\x10\0data\0\0\0\0", 44);
    for (const char* name : {"few.wav", "many.wav"})
        write(name, header);
    fs::resize_file(folder_ / "few.wav", 1 << 20);
    fs::resize_file(folder_ / "many.wav", 80 << 20);
    EXPECT_LT(pagesTaken("view -o o.png many.wav") - pagesTaken("view -o o.png few.wav"), 4000);
}

TEST_F(ProgramTest, ThemesDifferInColoursOnly)
{
    std::vector<std::string> shapes;
    std::set<std::string> pictures;
    for (const std::string theme : {"light", "dark", "print"}) {
        ASSERT_EQ(run("view good.csv --channels v -o o.svg --theme " + theme).status, 0);
        pictures.insert(read("o.svg"));
        shapes.push_back(std::regex_replace(read("o.svg"), std::regex("rgb\\([^)]*\\)|stroke-opacity=\"[^\"]*\""), ""));
    }
    EXPECT_EQ(pictures.size(), 3U);
    EXPECT_EQ(shapes[0], shapes[1]);
    EXPECT_EQ(shapes[0], shapes[2]);
}

} // namespace
