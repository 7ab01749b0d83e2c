#pragma once

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace fs = std::filesystem;

/// Runs the program in a folder that goes away with the test.
class ProgramTest : public ::testing::Test, protected tracery::test::TemporaryFolder {
protected:
    ProgramTest()
    {
        std::string table = "time,v [V],w\n";
        for (int i = 0; i < 1000; ++i)
            table += std::to_string(i * 0.001) + "," + std::to_string(i / 100 % 2) + "," +
                     (i >= 300 && i < 400 ? "" : std::to_string(i % 7)) + "\n";
        write("good.csv", table);
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

    const fs::path& folder_ = path();
};
