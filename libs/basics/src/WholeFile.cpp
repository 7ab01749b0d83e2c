#include <tracery/basics/WholeFile.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace tracery::basics {

namespace {

namespace fs = std::filesystem;

/// What a path names in the end, whether it is there or not. Links without end are left to `status` to find.
fs::path behindLinks(fs::path path)
{
    std::error_code error;
    constexpr int kMostLinks = 40; // as many as the kernel follows
    for (int i = 0; i < kMostLinks && fs::is_symlink(path, error); ++i)
        path = path.parent_path() / fs::read_symlink(path, error);
    return path;
}

} // namespace

WholeFile::WholeFile(std::string path) : path_(std::move(path))
{
    if (isStandardOutput(path_))
        return;
    target_ = behindLinks(path_);
    std::error_code error;
    const fs::file_status status = fs::status(path_, error);
    if (status.type() == fs::file_type::none)
        fail(error.value());
    if (fs::exists(status) && !fs::is_regular_file(status))
        fail(fs::is_directory(status) ? EISDIR : 0);
    // In the same directory, for a name can only move within a file system. Exclusive, so that no file is
    // ever shared.
    const fs::path directory = fs::path(target_).parent_path();
    for (int number = 0; descriptor_ < 0; ++number) {
        temporary_.emplace(directory /
                           (".tracery-" + std::to_string(getpid()) + "-" + std::to_string(number) + ".part"));
        descriptor_ = open(temporary_->path().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor_ < 0 && errno != EEXIST)
            fail(errno);
        if (descriptor_ < 0)
            temporary_->forget();
    }
}

WholeFile::~WholeFile()
{
    if (descriptor_ >= 0)
        close(descriptor_);
}

bool WholeFile::write(const void* data, std::size_t size) noexcept
{
    const char* next = static_cast<const char*>(data);
    if (isStandardOutput(path_)) {
        try {
            waiting_.append(next, size);
        } catch (const std::exception&) {
            error_ = ENOMEM;
        }
    } else {
        writeTo(descriptor_, next, size);
    }
    return error_ == 0;
}

void WholeFile::writeTo(int descriptor, const char* next, std::size_t size) noexcept
{
    while (error_ == 0 && size > 0) {
        const ssize_t written = ::write(descriptor, next, size);
        if (written >= 0) {
            next += written;
            size -= static_cast<std::size_t>(written);
        } else if (errno != EINTR) {
            error_ = errno;
        }
    }
}

void WholeFile::keep()
{
    if (isStandardOutput(path_)) {
        writeTo(STDOUT_FILENO, waiting_.data(), waiting_.size());
        if (error_ != 0)
            fail(error_);
        return;
    }
    if (error_ == 0 && close(std::exchange(descriptor_, -1)) != 0)
        error_ = errno;
    if (error_ == 0 && std::rename(temporary_->path().c_str(), target_.c_str()) != 0)
        error_ = errno;
    if (error_ != 0)
        fail(error_);
    temporary_->forget();
}

void WholeFile::fail(int error) const
{
    throw std::runtime_error((isStandardOutput(path_) ? "standard output" : path_) +
                             ": cannot be written: " + (error == 0 ? "it is no regular file" : std::strerror(error)));
}

} // namespace tracery::basics
