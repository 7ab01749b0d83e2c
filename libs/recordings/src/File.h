#pragma once

#include "Pipe.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

namespace tracery::recordings {

/// A file with bytes in it, read at any place; or a pipe, read forward.
class File {
public:
    /// What comes out of a pipe; the arguments are those of Pipe.
    static File pipe(int descriptor, const std::string& name, int stopAt = -1);

    /// throws  InputError: missing, a directory or a device, not to be opened, empty
    explicit File(const std::string& path);

    const std::string& path() const { return path_; }
    std::uint64_t size() const { return size_; } ///< bytes when it was opened; of a pipe 0
    bool isLive() const { return pipe_ != nullptr; }

    /// Reads from byte `offset` on. Returns the number of bytes read: fewer than asked for only at the end. A pipe
    /// gives what is there, having waited for one byte.
    /// throws  InputError when the system fails to read
    std::size_t read(std::uint64_t offset, std::span<char> into) const;
    /// Whether reading on would not wait.
    bool ready() const { return !isLive() || pipe_->ready(); }
    /// Ends the reading of a pipe, also one that waits. thread  any
    void stop() const noexcept;

private:
    File() = default;

    struct Close {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    std::string path_;
    std::uint64_t size_ = 0;
    std::unique_ptr<std::FILE, Close> file_;
    std::unique_ptr<Pipe> pipe_;
};

} // namespace tracery::recordings
