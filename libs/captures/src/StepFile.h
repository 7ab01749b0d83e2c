#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace tracery::captures {

/// What tells one content of a file from another.
struct FileState {
    std::uint64_t device = 0, node = 0, size = 0;
    std::int64_t seconds = 0, nanoseconds = 0; ///< of the last change

    friend bool operator==(const FileState&, const FileState&) = default;
};

/// A file read at any place, and not for long after it was changed. thread  any
/// throws  recordings::InputError that names the file
class StepFile {
public:
    explicit StepFile(const std::string& path);
    ~StepFile();
    StepFile(const StepFile&) = delete;
    StepFile& operator=(const StepFile&) = delete;

    const std::string& path() const { return path_; }
    const FileState& state() const { return state_; }
    void read(std::uint64_t position, std::span<std::byte> into) const;
    /// throws  when the file is not as it was when it was opened
    void check() const;
    /// A hash of the file's ends and of some places between.
    std::uint64_t contentHash() const;

    /// Whether reading at a place would wait for a disk; that it will be read.
    bool waits(std::uint64_t position) const;
    void expect(std::uint64_t position, std::size_t size) const;

private:
    std::string path_;
    int descriptor_;
    FileState state_;
};

/// Any change of a byte changes it.
std::uint64_t hashOf(std::span<const std::byte> bytes);

} // namespace tracery::captures
