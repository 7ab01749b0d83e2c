#include "StepFile.h"

#include <tracery/recordings/Recording.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <vector>

namespace tracery::captures {

using recordings::InputError;

namespace {

FileState stateOf(int descriptor)
{
    struct stat found {};
    if (fstat(descriptor, &found) != 0)
        return {};
    return {found.st_dev, found.st_ino, static_cast<std::uint64_t>(found.st_size), found.st_mtim.tv_sec,
            found.st_mtim.tv_nsec};
}

} // namespace

StepFile::StepFile(const std::string& path) : path_(path), descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC))
{
    if (descriptor_ < 0)
        throw InputError(path, "", "cannot be opened: " + std::generic_category().message(errno));
    state_ = stateOf(descriptor_);
}

StepFile::~StepFile() { close(descriptor_); }

void StepFile::read(std::uint64_t position, std::span<std::byte> into) const
{
    while (!into.empty()) {
        const ssize_t got = pread(descriptor_, into.data(), into.size(), static_cast<off_t>(position));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            throw InputError(path_, "byte " + std::to_string(position),
                             got == 0 ? "the file has become shorter"
                                      : "cannot be read: " + std::generic_category().message(errno));
        into = into.subspan(static_cast<std::size_t>(got));
        position += static_cast<std::uint64_t>(got);
    }
}

void StepFile::check() const
{
    const FileState now = stateOf(descriptor_);
    if (now == state_)
        return;
    throw InputError(path_, "",
                     now.size < state_.size ? "the file has become shorter: " + std::to_string(now.size) + " bytes, " +
                                                  std::to_string(state_.size) + " when it was opened"
                                            : "the file was written to after it was opened");
}

std::uint64_t StepFile::contentHash() const
{
    constexpr std::uint64_t kPieces = 32, kPiece = 4096;
    std::vector<std::byte> bytes;
    const std::uint64_t last = state_.size - std::min(state_.size, kPiece);
    for (std::uint64_t i = 0; i < kPieces; ++i) {
        const std::uint64_t from = last / (kPieces - 1) * i + (i == kPieces - 1 ? last % (kPieces - 1) : 0);
        const auto size = static_cast<std::size_t>(std::min(kPiece, state_.size - from));
        bytes.resize(bytes.size() + size);
        read(from, std::span(bytes).last(size));
    }
    return hashOf(bytes);
}

bool StepFile::waits(std::uint64_t position) const
{
    char byte = 0;
    const iovec into{&byte, 1};
    return preadv2(descriptor_, &into, 1, static_cast<off_t>(position), RWF_NOWAIT) < 0 && errno == EAGAIN;
}

void StepFile::expect(std::uint64_t position, std::size_t size) const
{
    posix_fadvise(descriptor_, static_cast<off_t>(position), static_cast<off_t>(size), POSIX_FADV_WILLNEED);
}

/// Each step can be undone when the word is known, so no other word leads to the same.
std::uint64_t hashOf(std::span<const std::byte> bytes)
{
    constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15, kOther = 0xC2B2AE3D27D4EB4F;
    std::uint64_t lanes[4]{1, 2, 3, 4};
    const auto take = [&lanes](const std::byte* from, std::size_t size) {
        for (std::size_t i = 0; i < 4; ++i) {
            std::uint64_t word = 0;
            if (size > 8 * i)
                std::memcpy(&word, from + 8 * i, std::min<std::size_t>(8, size - 8 * i));
            lanes[i] = std::rotl((lanes[i] ^ word) * kOdd, 29);
        }
    };
    std::size_t done = 0;
    for (; done + 32 <= bytes.size(); done += 32)
        take(bytes.data() + done, 32);
    take(bytes.data() + done, bytes.size() - done);
    std::uint64_t hash = bytes.size();
    for (const std::uint64_t lane : lanes)
        hash = (std::rotl(hash, 23) ^ lane) * kOther;
    return hash ^ hash >> 31;
}

} // namespace tracery::captures
