#include "stream/StandardInput.h"

#include "libraries.h"

#include <tracery/basics/TemporaryPath.h>
#include <tracery/recordings/Recording.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <system_error>
#include <vector>

namespace scope {

namespace {

[[noreturn]] void fail(const std::string& what, int error)
{
    throw InputError("standard input", "", what + ": " + std::strerror(error));
}

bool isText(const std::vector<char>& bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte >= 0x20 || byte == '\t' || byte == '\r' || byte == '\n';
    });
}

/// Fills the buffer, which becomes smaller at the end: a pipe gives a few bytes at a time.
void fill(std::vector<char>& buffer)
{
    std::size_t size = 0;
    for (ssize_t got = 1; got != 0 && size < buffer.size();) {
        got = read(STDIN_FILENO, buffer.data() + size, buffer.size() - size);
        if (got > 0)
            size += static_cast<std::size_t>(got);
        else if (got < 0 && errno != EINTR)
            fail("cannot be read", errno);
    }
    buffer.resize(size);
}

/// A file of one's own.
class Spool {
public:
    Spool()
    {
        std::vector<char> buffer(1 << 16);
        fill(buffer);
        if (buffer.empty())
            throw InputError("standard input", "", "is empty");
        makeFolder();
        file_.emplace(folder_->path() + (isText(buffer) ? "/stdin.csv" : "/stdin.sound"));
        const int descriptor = open(path().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (descriptor < 0)
            failToKeep(errno);
        for (; !buffer.empty(); fill(buffer))
            writeAll(descriptor, buffer.data(), buffer.size());
        if (close(descriptor) != 0)
            failToKeep(errno);
    }

    const std::string& path() const { return file_->path(); }

private:
    [[noreturn]] void failToKeep(int error) const { fail("cannot be kept in " + folder_->path(), error); }

    void makeFolder()
    {
        std::error_code error;
        const std::filesystem::path parent = std::filesystem::temp_directory_path(error);
        if (error)
            fail("cannot be kept in the folder of TMPDIR", error.value());
        std::string name = (parent / "tracery-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr)
            fail("cannot be kept in " + parent.string(), errno);
        folder_.emplace(name);
    }

    void writeAll(int descriptor, const char* data, std::size_t size) const
    {
        while (size > 0) {
            const ssize_t written = write(descriptor, data, size);
            if (written < 0 && errno != EINTR)
                failToKeep(errno);
            if (written > 0) {
                data += written;
                size -= static_cast<std::size_t>(written);
            }
        }
    }

    std::optional<TemporaryPath> folder_;
    std::optional<TemporaryPath> file_; ///< goes first
};

const Spool* made = nullptr;

} // namespace

const std::string& spoolStandardInput()
{
    static const Spool spool;
    made = &spool;
    return spool.path();
}

std::unique_ptr<Recording> openInput(const std::string& path, const OpenOptions& options)
{
    return openRecording(path == kStandardStream ? spoolStandardInput() : path, options);
}

std::string nameStandardInput(std::string message)
{
    if (made == nullptr)
        return message;
    const std::string& path = made->path();
    for (std::size_t at = 0; (at = message.find(path, at)) != std::string::npos;)
        message.replace(at, path.size(), "standard input");
    return message;
}

} // namespace scope
