#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace fs = std::filesystem;

/// Runs the program in a folder that goes away with the test.
class ProgramTest : public ::testing::Test {
protected:
    ProgramTest()
    {
        std::string name = (fs::temp_directory_path() / "tracery-program-XXXXXX").string();
        folder_ = mkdtemp(name.data());
        std::string table = "time,v [V],w\n";
        for (int i = 0; i < 1000; ++i)
            table += std::to_string(i * 0.001) + "," + std::to_string(i / 100 % 2) + "," +
                     (i >= 300 && i < 400 ? "" : std::to_string(i % 7)) + "\n";
        write("good.csv", table);
    }
    ~ProgramTest() override { fs::remove_all(folder_); }

    void write(const std::string& name, const std::string& text) { std::ofstream(folder_ / name) << text; }
    std::string read(const std::string& name)
    {
        std::ifstream file(folder_ / name);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    struct Outcome {
        int status;
        std::string out;
        std::string err;
    };
    /// before  shell commands ahead of the program
    /// sink    where its output goes
    Outcome run(const std::string& arguments, const std::string& before = "", const std::string& sink = ">stdout.txt")
    {
        const std::string command = "cd '" + folder_.string() + "' && " + before + " '" TRACERY_SCOPE "' " + arguments +
                                    " 2>stderr.txt " + sink;
        const int status = std::system(command.c_str());
        return {WEXITSTATUS(status), read("stdout.txt"), read("stderr.txt")};
    }

    /// The file that such a command leaves when nothing fails.
    std::string wholeFile(const std::string& arguments)
    {
        return run(arguments).status == 0 ? read(arguments.substr(arguments.rfind(' ') + 1)) : "";
    }

    fs::path folder_;
};
