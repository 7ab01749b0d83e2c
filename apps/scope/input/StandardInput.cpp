#include "input/StandardInput.h"

#include "input/Recording.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

namespace scope {

namespace {

/// What a signal handler can read.
std::array<char, 4096> spoolFile{};
std::array<char, 4096> spoolFolder{};

void removeSpool()
{
    unlink(spoolFile.data());
    rmdir(spoolFolder.data());
}

void endBySignal(int signal)
{
    removeSpool();
    std::signal(signal, SIG_DFL);
    raise(signal);
}

[[noreturn]] void fail(const std::string& what, int error)
{
    throw InputError("standard input", "", what + ": " + std::strerror(error));
}

bool isText(const char* data, std::size_t size)
{
    return std::all_of(data, data + size, [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte >= 0x20 || byte == '\t' || byte == '\r' || byte == '\n';
    });
}

std::size_t readSome(std::vector<char>& buffer)
{
    ssize_t got = 0;
    do
        got = read(STDIN_FILENO, buffer.data(), buffer.size());
    while (got < 0 && errno == EINTR);
    if (got < 0)
        fail("cannot be read", errno);
    return static_cast<std::size_t>(got);
}

void writeAll(int descriptor, const char* data, std::size_t size)
{
    while (size > 0) {
        const ssize_t written = write(descriptor, data, size);
        if (written < 0 && errno != EINTR)
            fail("cannot be kept in " + std::string(spoolFolder.data()), errno);
        if (written > 0) {
            data += written;
            size -= static_cast<std::size_t>(written);
        }
    }
}

std::string spool()
{
    std::vector<char> buffer(1 << 16);
    std::size_t size = readSome(buffer);
    if (size == 0)
        throw InputError("standard input", "", "is empty");

    const std::string folder = (std::filesystem::temp_directory_path() / "tracery-XXXXXX").string();
    const std::string ending = isText(buffer.data(), size) ? "/stdin.csv" : "/stdin.sound";
    if (folder.size() + ending.size() >= spoolFile.size())
        fail("cannot be kept in " + folder, ENAMETOOLONG);
    std::copy(folder.begin(), folder.end(), spoolFolder.begin());
    if (mkdtemp(spoolFolder.data()) == nullptr)
        fail("cannot be kept in " + folder, errno);
    std::string path = spoolFolder.data() + ending;
    std::copy(path.begin(), path.end(), spoolFile.begin());
    std::atexit(removeSpool);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, endBySignal);

    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (descriptor < 0)
        fail("cannot be kept in " + folder, errno);
    for (; size > 0; size = readSome(buffer))
        writeAll(descriptor, buffer.data(), size);
    if (close(descriptor) != 0)
        fail("cannot be kept in " + folder, errno);
    return path;
}

} // namespace

const std::string& spoolStandardInput()
{
    static const std::string path = spool();
    return path;
}

std::string nameStandardInput(std::string message)
{
    const std::string path = spoolFile.data();
    if (path.empty())
        return message;
    for (std::size_t at = 0; (at = message.find(path, at)) != std::string::npos;)
        message.replace(at, path.size(), "standard input");
    return message;
}

} // namespace scope
