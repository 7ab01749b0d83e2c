#pragma once

#include "libraries.h"

#include <tracery/recordings/Recording.h>

#include <memory>
#include <string>

namespace scope {

/// The name that stands for standard input, and for standard output.
inline constexpr const char* kStandardStream = "-";

/// Copies standard input to a temporary file, for commands that read a recording more than once, and returns its path;
/// again at later calls. Text gets a name that ends in .csv, anything else is left to the sound reader to recognise.
/// The file goes with the process, also when a signal ends it.
/// throws  InputError: nothing came, or the copy cannot be written
const std::string& spoolStandardInput();

/// Opens a recording of standard input, which is spooled, or of a file. throws  InputError
std::unique_ptr<Recording> openInput(const std::string& path, const OpenOptions& options);

/// A message with the path of the copy replaced by "standard input".
std::string nameStandardInput(std::string message);

} // namespace scope
