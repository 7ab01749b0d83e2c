#include "recordings/RecordingFiles.h"

#include <random>

using namespace tracery::recordings;

namespace {

using TableInputTest = RecordingFiles;

TEST_F(TableInputTest, TablesAreUnderstoodFromTheirFirstLine)
{
    struct Case {
        std::string name, text;
        std::vector<std::string> channels; // name and unit in turn
        std::vector<double> times, values;
        OpenOptions options = {};
    };
    const std::vector<Case> cases{
        {"plain.csv", "time,a,b\n1,2,3\n4,5,6", {"a", "", "b", ""}, {1, 4}, {2, 3, 5, 6}},
        {"units.csv", "Time (ms);v [V];\"i; \"\"x\"\" (mA)\"\n1;2;3\n", {"v", "V", "i; \"x\"", "mA"}, {0.001}, {2, 3}},
        {"tabs.TSV", "t [\u00b5s]\ta,b\n3\t4\n", {"a,b", ""}, {3e-6}, {4}},
        {"windows.txt", "\xEF\xBB\xBFseconds,a\r\n1,2\r\n\r\n3,4\r\n\r\n", {"a", ""}, {1, 3}, {2, 4}},
        {"comments.csv", "# made by hand\n\ntime,,b\n# first\n1,2,3\n #last\n", {"ch1", "", "b", ""}, {1}, {2, 3}},
        {"bare.csv", "1,2,3\n4,5,6\n", {"ch1", "", "ch2", ""}, {1, 4}, {2, 3, 5, 6}},
        {"bareRate.csv", ",2\n3,4\n", {"ch1", "", "ch2", ""}, {0, 0.1}, {kNaN, 2, 3, 4}, {10.0}},
        {"rate.csv", "\"1\",time\n3,4\n", {"1", "", "time", ""}, {0}, {3, 4}, {10.0}},
        {"values.csv",
         "t,a,b,c,d\n+0, nan,NaN ,-nan,\n1,inf,-Infinity,+1e-3,\" 7 \"\n",
         {"a", "", "b", "", "c", "", "d", ""},
         {0, 1},
         {kNaN, kNaN, kNaN, kNaN, kInfinity, -kInfinity, 1e-3, 7}},
    };
    for (const Case& c : cases) {
        const auto recording = openRecording(write(c.name, c.text), c.options);
        std::vector<std::string> channels;
        for (const Channel& channel : recording->info().channels)
            channels.insert(channels.end(), {channel.name, channel.unit});
        EXPECT_EQ(channels, c.channels) << c.name;
        EXPECT_EQ(recording->info().rate, c.options.rate) << c.name;
        const Block all = rest(*recording);
        EXPECT_TRUE(same(all.times, c.times)) << c.name;
        EXPECT_TRUE(same(all.real, c.values)) << c.name;
    }
}

TEST_F(TableInputTest, WhatIsWrongWithATableIsToldWithItsPlace)
{
    const std::string longText(100, 'x');
    const std::vector<std::pair<std::string, std::string>> cases{
        {"time,a,b\n1,2,3\n\n#\n4,5\n", "line 5: expected 3 fields, found 2"},
        {"time,a\n1,2\n3,x,4\n", "line 3: expected 2 fields, found 3"},
        {"time,a\n1,2\n3,4,\n", "line 3: expected 2 fields, found 3"},
        {"time,a,b\n1,2, abc \n", "line 2, column 3: expected a number, found 'abc'"},
        {"time,a\n1,1e\n", "line 2, column 2: expected a number, found '1e'"},
        {"time,a\n1,+-1\n", "line 2, column 2: expected a number, found '+-1'"},
        {"time,a\n1,a\tb\r\r\n", "line 2, column 2: expected a number, found 'a?b'"},
        {"time,a\n1," + longText, "line 2, column 2: expected a number, found '" + longText.substr(0, 40) + "...'"},
        {"time [ms],a\n0.6,1\n0.5,1\n", "line 3: time 0.5 comes after 0.6; times must not decrease"},
        {"time,a\n,1\n", "line 2, column 1: expected a time, found ''"},
        {"time,a\n1,1\nnan,1\n", "line 3, column 1: expected a time, found 'nan'"},
        {"time,a\n1,1\ninf,1\n", "line 3, column 1: expected a time, found 'inf'"},
        {"time [min],a\n1,1\n", "line 1, column 1: expected times in s, ms, us or ns, found 'min'"},
        {"time\n1\n", "line 1: expected a column of values after the time"},
        {"time,a\n# nothing\n\n", "holds no rows of numbers"},
        {"\n", "holds no rows of numbers"},
        {"a,time\n1,2\n", "gives neither times nor a rate"},
        {"\x80g\x03,\xfe\n\x9f\n", "line 1: expected headings in UTF-8, with commas, semicolons or tabs between them"},
        {"\x80g,\xfe\n\x9f\xff,1\n", "line 2, column 1: expected a number, found '\x9f\xff'"},
        {"time,a\n1," + std::string(1 << 20, ' '), "line 2: longer than 1048576 bytes"},
    };
    for (const auto& [text, message] : cases) {
        write("bad.csv", text);
        EXPECT_EQ(failure("bad.csv"), "bad.csv: " + message);
    }
    write("bad.csv", "a\n1\n\n2\n");
    EXPECT_EQ(failure("bad.csv", {1.0}),
              "bad.csv: line 3: expected a row, found a blank line; a missing value is written nan");
}

TEST_F(TableInputTest, RowsThatStraddleChunksAreReadWhole)
{
    std::string text = "time,a,b\n";
    std::vector<double> times, values;
    std::mt19937 random(3);
    for (int i = 0; i < 30000; ++i) {
        const double a = std::uniform_real_distribution(-1e3, 1e3)(random);
        const std::string shown = std::to_string(a);
        text += std::to_string(i) + "," + shown + "," + std::string(random() % 20, ' ') + "\n";
        times.push_back(i);
        values.insert(values.end(), {std::strtod(shown.c_str(), nullptr), kNaN});
    }
    const std::string comments = "# " + std::string(100000, '-') + "\n"; // hides the rows from a look at the end only
    for (const std::string& end : {std::string(), comments}) {
        const auto recording = openRecording(write("long.csv", text + end), {});
        EXPECT_EQ(recording->range().last, times.back());
        const Block all = rest(*recording, 999);
        EXPECT_TRUE(same(all.times, times));
        EXPECT_TRUE(same(all.real, values));
    }
}

TEST_F(TableInputTest, FaultsInRowsPassedOverAreFound)
{
    std::string rows;
    for (int i = 0; i < 20000; ++i)
        rows += std::to_string(i) + (i == 5000 ? ",oops\n" : ",1\n");
    const auto recording = openRecording(write("bad.csv", "time,a\n" + rows), {});
    EXPECT_THROW(recording->seek(10000), InputError);
    EXPECT_NO_THROW(recording->seek(4000));

    // Where the end alone shows that times decrease, the rows are gone through for the first fault and its
    // line.
    const auto rangeFailure = [&](const std::string& text) -> std::string {
        try {
            openRecording(write("bad.csv", text), {})->range();
        } catch (const InputError& error) {
            return error.what();
        }
        return "none";
    };
    EXPECT_NE(rangeFailure("time,a\n" + rows + "1,1\n").find("line 5002, column 2: "), std::string::npos);
    EXPECT_NE(rangeFailure("time,a\n1e9,1\n" + rows).find("line 3: time 0 comes after"), std::string::npos);
}

} // namespace
