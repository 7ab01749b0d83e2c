#include "input/Recording.h"

namespace scope {

namespace {

// Texts quote what the file holds, and that may be anything: control characters become '?', so that it stays
// one line.
std::string oneLine(const std::string& path, const std::string& where, const std::string& message)
{
    std::string text = path + ": " + (where.empty() ? where : where + ": ") + message;
    for (char& c : text) {
        if ((c >= 0 && c < ' ') || c == '\x7f')
            c = '?';
    }
    return text;
}

} // namespace

InputError::InputError(const std::string& path, const std::string& where, const std::string& message)
    : std::runtime_error(oneLine(path, where, message))
{}

} // namespace scope
