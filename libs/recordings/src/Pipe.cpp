#include "Pipe.h"

#include <tracery/recordings/Recording.h>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace tracery::recordings {

namespace {

constexpr std::size_t kChunk = std::size_t{1} << 17;
constexpr std::size_t kKept = std::size_t{4} << 20; // several of the longest lines of a table

[[noreturn]] void fail(const std::string& name, std::uint64_t at, const std::string& message)
{
    throw InputError(name, "byte " + std::to_string(at), message);
}

bool isReadable(int descriptor)
{
    pollfd each{descriptor, POLLIN, 0};
    return poll(&each, 1, 0) > 0;
}

} // namespace

Pipe::Pipe(int descriptor, std::string name, int stopAt)
    : descriptor_(descriptor), stopAt_(stopAt), stopped_(eventfd(0, EFD_CLOEXEC)), name_(std::move(name))
{
    if (stopped_ < 0)
        throw InputError(name_, "", "cannot be read: " + std::generic_category().message(errno));
}

Pipe::~Pipe() { close(stopped_); }

std::size_t Pipe::read(std::uint64_t offset, std::span<char> into)
{
    if (offset < keptFrom_)
        fail(name_, offset, "cannot be read again");
    while (offset >= keptFrom_ + kept_.size())
        if (readOn() == 0)
            return 0;
    const auto from = static_cast<std::size_t>(offset - keptFrom_);
    const std::size_t count = std::min(into.size(), kept_.size() - from);
    std::copy_n(kept_.begin() + static_cast<std::ptrdiff_t>(from), count, into.begin());
    return count;
}

bool Pipe::ready() const { return awaitInput(0); }

void Pipe::stop() const noexcept
{
    const std::uint64_t once = 1;
    [[maybe_unused]] const ssize_t written = ::write(stopped_, &once, sizeof once);
}

/// Whether there is something to read, or the end, or it is stopped. A negative time waits for that.
bool Pipe::awaitInput(int milliseconds) const
{
    pollfd each[] = {{descriptor_, POLLIN, 0}, {stopped_, POLLIN, 0}, {stopAt_, POLLIN, 0}};
    int found = 0;
    do
        found = poll(each, std::size(each), milliseconds);
    while (found < 0 && errno == EINTR);
    return found != 0;
}

/// Waits for the next bytes and keeps them. Returns how many; none at the end.
std::size_t Pipe::readOn()
{
    awaitInput(-1);
    if (isReadable(stopAt_))
        fail(name_, keptFrom_ + kept_.size(), "interrupted");
    if (isReadable(stopped_))
        return 0;
    if (kept_.size() >= 2 * kKept) {
        keptFrom_ += kept_.size() - kKept;
        kept_.erase(kept_.begin(), kept_.end() - static_cast<std::ptrdiff_t>(kKept));
    }
    const std::size_t before = kept_.size();
    kept_.resize(before + kChunk);
    ssize_t got = 0;
    do
        got = ::read(descriptor_, kept_.data() + before, kChunk);
    while (got < 0 && errno == EINTR);
    kept_.resize(before + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    if (got < 0)
        fail(name_, keptFrom_ + before, "cannot be read: " + std::generic_category().message(errno));
    return static_cast<std::size_t>(got);
}

} // namespace tracery::recordings
