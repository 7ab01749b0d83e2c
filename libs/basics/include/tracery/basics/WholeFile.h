#pragma once

#include <tracery/basics/TemporaryPath.h>

#include <cstddef>
#include <optional>
#include <string>

namespace tracery::basics {

/// Whether a path means standard output: "-", or with an ending "-.svg". A file of that name is "./-.svg".
inline bool isStandardOutput(const std::string& path)
{
    return path == "-" || (path.starts_with("-.") && path.find('/') == path.npos);
}

/// A file that appears under its name whole or not at all: what is written goes to a file beside it, which takes the
/// name when it is kept and disappears otherwise, also when a signal ends the program. Of a symbolic link, the file that
/// it names is replaced, which need not exist. Standard output gets all of it when it is kept. What is there and no
/// regular file, such as a device or a pipe, is refused.
class WholeFile {
public:
    /// throws  std::runtime_error, as does `keep`, that names the path and the reason
    explicit WholeFile(std::string path);
    ~WholeFile();
    WholeFile(const WholeFile&) = delete;
    WholeFile& operator=(const WholeFile&) = delete;

    /// False when it failed, now or before; `keep` then says why.
    bool write(const void* data, std::size_t size) noexcept;
    void keep();

private:
    void writeTo(int descriptor, const char* next, std::size_t size) noexcept;
    [[noreturn]] void fail(int error) const; ///< 0: no regular file

    std::string path_;
    std::string waiting_; ///< for standard output
    std::string target_;  ///< behind symbolic links
    std::optional<TemporaryPath> temporary_;
    int descriptor_ = -1;
    int error_ = 0;
};

} // namespace tracery::basics
