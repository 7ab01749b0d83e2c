#include "commands/output.h"

#include "UsageError.h"
#include "libraries.h"
#include "stream/StandardInput.h"

#include <tracery/basics/Text.h>
#include <tracery/basics/WholeFile.h>
#include <tracery/figures/Figure.h>

#include <cstdio>
#include <filesystem>

namespace scope {

namespace fs = std::filesystem;

namespace {

std::string extensionOf(const std::string& path) { return lowerCase(fs::path(path).extension().string()); }

} // namespace

bool isTable(const std::string& path) { return extensionOf(path) == ".csv"; }

Output chooseOutput(const std::string& path, const std::vector<std::string>& files, const std::string& ending,
                    Output::Kinds kinds, int width, int height)
{
    Output output{path};
    if (path.empty())
        output.path = (files[0] == kStandardStream ? "stdin" : fs::path(files[0]).stem().string()) + ending;
    else if (path == kStandardStream)
        output.path += ending.substr(ending.rfind('.'));
    const std::string extension = extensionOf(output.path);
    if (kinds == Output::Kinds::PicturesAndTables) {
        output.isTable = isTable(output.path);
        if (!output.isTable && extension != ".png" && extension != ".svg")
            throw UsageError(output.path + ": the name of a picture must end in .png or .svg, that of a table in .csv");
    }
    if (output.isTable)
        const WholeFile probe(output.path);
    else
        requireWritablePicture(output.path, width, height);
    for (const std::string& file : files) {
        std::error_code none; // a SigMF recording may be given without its ending: no such file
        if (fs::equivalent(file, output.path, none))
            throw UsageError(output.path + ": the " + (output.isTable ? "table" : "picture") +
                             " would replace the recording: name another with -o");
    }
    return output;
}

std::FILE* Output::report() const { return isStandardOutput(path) ? stderr : stdout; }

std::string headingOf(const std::string& title, const std::string& file)
{
    if (!title.empty())
        return title;
    return file == kStandardStream ? "standard input" : fs::path(file).filename().string();
}

void announce(const std::string& path)
{
    if (!isStandardOutput(path))
        std::printf("%s\n", path.c_str());
}

std::string csvField(const std::string& text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos)
        return text;
    std::string quoted = "\"";
    for (const char c : text)
        quoted.append(c == '"' ? 2 : 1, c);
    return quoted + '"';
}

void writeText(const std::string& path, const std::string& text)
{
    WholeFile file(path);
    file.write(text.data(), text.size());
    file.keep();
}

} // namespace scope
