#include "File.h"

#include <tracery/recordings/Recording.h>

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace tracery::recordings {

namespace {

// The state is looked at before opening: opening a pipe would wait for its writer.
void requireRegularFile(const std::string& path)
{
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (status.type() == std::filesystem::file_type::not_found)
        throw InputError(path, "", "no such file");
    if (error)
        throw InputError(path, "", "cannot be opened: " + error.message());
    if (std::filesystem::is_directory(status))
        throw InputError(path, "", "is a directory, expected a file");
    if (!std::filesystem::is_regular_file(status))
        throw InputError(path, "", "is a pipe or a device, expected a file");
}

std::string lastSystemError() { return std::generic_category().message(errno); }

} // namespace

File::File(const std::string& path) : path_(path)
{
    requireRegularFile(path);
    file_.reset(std::fopen(path.c_str(), "rb"));
    if (!file_)
        throw InputError(path, "", "cannot be opened: " + lastSystemError());
    size_ = std::filesystem::file_size(path);
    if (size_ == 0)
        throw InputError(path, "", "the file is empty");
}

File File::pipe(int descriptor, const std::string& name, int stopAt)
{
    File file;
    file.path_ = name;
    file.pipe_ = std::make_unique<Pipe>(descriptor, name, stopAt);
    return file;
}

void File::stop() const noexcept
{
    if (isLive())
        pipe_->stop();
}

std::size_t File::read(std::uint64_t offset, std::span<char> into) const
{
    if (isLive())
        return pipe_->read(offset, into);
    std::size_t done = 0;
    while (done < into.size()) {
        const auto at = static_cast<off_t>(offset + done);
        const ssize_t got = ::pread(fileno(file_.get()), into.data() + done, into.size() - done, at);
        if (got == 0)
            break;
        if (got > 0)
            done += static_cast<std::size_t>(got);
        else if (errno != EINTR)
            throw InputError(path_, "byte " + std::to_string(offset + done), "cannot be read: " + lastSystemError());
    }
    return done;
}

} // namespace tracery::recordings
