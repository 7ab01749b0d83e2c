#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

namespace scope {

/// A file with bytes in it, read at any place.
class File {
public:
    /// throws  InputError: missing, a directory or a device, not to be opened, empty
    explicit File(const std::string& path);

    const std::string& path() const { return path_; }
    std::uint64_t size() const { return size_; } ///< bytes when it was opened

    /// Reads from byte `offset` on. Returns the number of bytes read: fewer than asked for only at the end.
    /// throws  InputError when the system fails to read
    std::size_t read(std::uint64_t offset, std::span<char> into) const;

private:
    struct Close {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    std::string path_;
    std::uint64_t size_ = 0;
    std::unique_ptr<std::FILE, Close> file_;
};

} // namespace scope
