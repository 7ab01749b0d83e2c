#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace scope {

/// The file that a command leaves behind.
struct Output {
    std::string path;
    bool isTable = false;

    /// Where numbers for people are printed: standard error when standard output has the file.
    std::FILE* report() const;

    /// What may be written: pictures alone, or .csv tables, too.
    enum class Kinds { Pictures, PicturesAndTables };
};

/// Tells early, before a long reading, what would go wrong at the end.
/// path      as given; empty: the first file's name, in the current folder, with `ending`
/// throws    UsageError when a file of `files` would be replaced; std::runtime_error whose text names the path and what
///           is wrong (ending, size of a picture, cannot be written)
Output chooseOutput(const std::string& path, const std::vector<std::string>& files, const std::string& ending,
                    Output::Kinds kinds, int width, int height);

/// Whether a file of this name is a table.
bool isTable(const std::string& path);

/// Prints where the result is, unless that is standard output.
void announce(const std::string& path);

/// `title`, or the file's name when there is none.
std::string headingOf(const std::string& title, const std::string& file);

/// A field of a table, in quotes if it needs them.
std::string csvField(const std::string& text);

/// Writes a text file that appears whole or not at all. throws  as chooseOutput
void writeText(const std::string& path, const std::string& text);

} // namespace scope
